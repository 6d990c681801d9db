#pragma once

#include <QString>
#include <QStringList>

namespace korvane::recording {

/// Whether a path ends in the name of a file, not of a folder.
bool namesFile(const QString& path);

/// The folder of a file to be written, made where it is missing; what was made goes with this object unless
/// it is kept.
class TargetFolder
{
public:
    explicit TargetFolder(const QString& file);
    ~TargetFolder();
    TargetFolder(const TargetFolder&) = delete;
    TargetFolder& operator=(const TargetFolder&) = delete;

    bool exists() const { return made; }
    void keep() { kept = true; }

private:
    const QString folder;
    QStringList missing; ///< innermost first
    bool made = false;
    bool kept = false;
};

} // namespace korvane::recording
