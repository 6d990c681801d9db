#pragma once

#include <QString>

/// The path that settings are read from and written to: `path` itself, unless a file stands there that the
/// settings' reader cannot be trusted with. Such a file is renamed to NAME.unusable, with a line in the log.
/// GUI thread.
QString usableConfigFile(const QString& path);
