#pragma once

#include <QString>

#include <functional>

namespace korvane::recording {

/// `path` (ending in .raw or .mp4), or NAME-1, NAME-2, ... beside it where the name is taken: a name is free
/// when neither its .raw nor its .mp4 exists, not even as a link that leads nowhere. The answer may be taken
/// by the time it is used: create with NewFile or renameToFree.
QString freeRecordingPath(const QString& path);

/// How a file gets a name that no other has.
enum class RenameBy {
    Kernel, ///< by one call that refuses a taken name
    Link, ///< by a second name and the removal of the first, for file systems that do not know that call
    Placeholder, ///< by an empty file of that name, which it replaces: where files have only one name each
};

/// Gives a file another name on the same file system at one stroke, and never that of another file; 0 or the
/// system's error number.
int renameNoReplace(const QString& from, const QString& to, RenameBy method);

using RenameFile = std::function<int(const QString& from, const QString& to, RenameBy method)>;

/// Gives a finished file the wanted name, or the next free one; the name it got, empty with `error` on
/// failure. Never replaces a file. Tries the next method where the file system does not know the one before.
QString renameToFree(const QString& temporary, const QString& wanted, QString& error,
                     const RenameFile& renameFile = renameNoReplace);

} // namespace korvane::recording
