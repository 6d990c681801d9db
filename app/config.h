#pragma once

#include <QString>

#include <memory>

class QSettings;

/// The four stored settings and the INI file they live in.
/// getInstance() may be called on any thread; the object itself belongs to the GUI thread.
class Config
{
public:
    /// The application's only Config, made from `fileName` at the first call; later calls ignore the name. A
    /// relative name means the working directory of the first call. The file is written once more when the
    /// process exits.
    static Config* getInstance(const QString& fileName);

    /// Loads `fileName` and writes nothing. A missing or unreadable file gives the defaults; one that holds
    /// serialised objects, or more than a MiB, is set aside as NAME.unusable. The application goes through
    /// getInstance(), so that a single object writes the file.
    explicit Config(const QString& fileName);
    /// Writes the file like save().
    ~Config();
    Config(const Config&) = delete;
    Config& operator=(const Config&) = delete;

    /// Writes the four members to the file and flushes it. Errors are not reported.
    void save();

    QString output_raw_file_path; ///< folder for new recordings and cuts
    QString input_raw_file_path; ///< folder in which the choice of a recording starts
    QString video_save_path; ///< folder for exported videos
    QString language; ///< "en" or "zh"; empty if loading ended early for want of a documents folder

private:
    void load();
    void write();

    std::unique_ptr<QSettings> settings;
};
