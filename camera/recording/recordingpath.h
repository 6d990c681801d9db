#pragma once

#include <QString>

namespace korvane::recording {

/// `path` (ending in .raw or .mp4), or NAME-1, NAME-2, ... beside it where the name is taken: a name is free
/// when neither its .raw nor its .mp4 exists. The answer may be taken by the time it is used: create with
/// QIODevice::NewOnly or renameToFree.
QString freeRecordingPath(const QString& path);

/// Gives a finished file the wanted name, or the next free one; the name it got, empty with `error` on
/// failure. Never replaces a file.
QString renameToFree(const QString& temporary, const QString& wanted, QString& error);

} // namespace korvane::recording
