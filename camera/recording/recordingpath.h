#pragma once

#include <QString>

namespace korvane::recording {

/// `path` (ending in .raw or .mp4), or NAME-1, NAME-2, ... beside it where the name is taken: a name is free
/// when neither its .raw nor its .mp4 exists, not even as a link that leads nowhere. The answer may be taken
/// by the time it is used: create with NewFile or renameToFree.
QString freeRecordingPath(const QString& path);

/// How a file gets a name that no other has.
enum class RenameBy {
    Kernel, ///< by one call that refuses a taken name
    Link, ///< by a second name and the removal of the first, for file systems that do not know that call
};

/// Gives a file another name on the same file system at one stroke, and never that of another file; 0 or the
/// system's error number.
int renameNoReplace(const QString& from, const QString& to, RenameBy method);

/// Gives a finished file the wanted name, or the next free one; the name it got, empty with `error` on
/// failure. Never replaces a file.
QString renameToFree(const QString& temporary, const QString& wanted, QString& error);

} // namespace korvane::recording
