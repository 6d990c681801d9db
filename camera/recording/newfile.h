#pragma once

#include "camera/recording/outputfile.h"

#include <QByteArray>

namespace korvane::recording {

/// A file on disk that did not exist before, written without a buffer in between. One thread at a time.
class NewFile : public OutputFile
{
public:
    NewFile() = default;
    /// Closes the file; it stays.
    ~NewFile() override;

    /// Creates the file. Never opens one that is there, nor the target of a link that leads nowhere.
    bool open(const QString& path);
    /// Whether the last open() failed because the name is taken.
    bool isTaken() const { return taken; }

    bool write(std::span<const std::uint8_t> bytes) override;
    /// Waits until what was written stands on the disk itself; false with `errorString` when it does not.
    bool sync();
    bool close() override;
    /// Takes the open file away; nothing once it is closed, for its name may be another's by then.
    void discard() override;
    /// The open file, which stays this object's; -1 when none is open.
    int handle() const { return descriptor; }
    std::uint64_t size() const override { return length; }
    QString errorString() const override { return error; }

private:
    bool fail(int code);

    QByteArray name; ///< as the system calls the file
    QString error;
    std::uint64_t length = 0;
    int descriptor = -1;
    bool taken = false;
};

} // namespace korvane::recording
