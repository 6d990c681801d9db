#pragma once

#include "camera/recording/newfile.h"

#include <QFile>
#include <QString>

namespace korvane::recording {

/// A new file beside the one that it is to become: it goes with this object unless it was kept. One thread at
/// a time.
class TemporaryFile
{
public:
    /// Makes `beside`.part, or .part1, .part2, ... where that is taken, to be written and read without a
    /// buffer in between.
    explicit TemporaryFile(const QString& beside);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    bool isOpen() const { return opened; }
    /// Why the file could not be made.
    QString errorString() const { return newFile.errorString(); }
    /// The name that the file has until it is kept.
    const QString& name() const { return path; }
    /// The file to append to, or else, never both, the one to read, write and seek in.
    NewFile& file() { return newFile; }
    QFile& device();
    /// Brings the file to the disk and gives it the wanted name or the next free one; false, with the reason
    /// in `error`, when it can be neither completed nor renamed.
    bool keepAs(const QString& wanted, QString& error);

private:
    NewFile newFile;
    QFile stream; ///< over the same open file
    QString path;
    bool opened = false;
    bool kept = false;
};

} // namespace korvane::recording
