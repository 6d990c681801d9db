#pragma once

#include <QTemporaryDir>

/// Moves HOME, the XDG folders and the working directory of this process into a fresh temporary folder, so
/// that no test reads or writes the user's files. Lives in main(), before the application object.
class TemporaryHome
{
public:
    TemporaryHome();
    ~TemporaryHome();
    TemporaryHome(const TemporaryHome&) = delete;
    TemporaryHome& operator=(const TemporaryHome&) = delete;

private:
    QTemporaryDir folder;
};
