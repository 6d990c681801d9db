#pragma once

#include "camera/driver/backend.h"

#include <QString>

#include <memory>
#include <vector>

namespace korvane::plugins {

/// The backends of the shared libraries in `paths`, a list separated by ':' like PATH, in its order. A
/// library that cannot be used is left out, with one warning in the log that names the file and the reason.
/// What was loaded stays loaded to the end of the process: cameras outlive their backend, and so does their
/// code. Any thread.
std::vector<std::shared_ptr<Backend>> loadBackendLibraries(const QString& paths);

} // namespace korvane::plugins
