#pragma once

#include <QFile>
#include <QString>

namespace korvane::recording {

/// A new file beside the one that it is to become: it goes with this object unless it was kept. One thread at
/// a time.
class TemporaryFile
{
public:
    /// Makes `beside`.part, or .part1, .part2, ... where that is taken, to be read and written unbuffered.
    explicit TemporaryFile(const QString& beside);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    bool isOpen() const { return opened; }
    /// Why the file could not be made.
    QString errorString() const { return file.errorString(); }
    QFile& device() { return file; }
    /// Closes the file and gives it the wanted name or the next free one; false, with the reason in `error`,
    /// when it can be neither closed nor renamed.
    bool keepAs(const QString& wanted, QString& error);

private:
    QFile file;
    bool opened = false;
    bool kept = false;
};

} // namespace korvane::recording
