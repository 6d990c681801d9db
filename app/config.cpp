#include "app/config.h"

#include "app/configfile.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr auto outputKey = "Setting/output_raw_file_path"_L1;
constexpr auto inputKey = "Setting/input_raw_file_path"_L1;
constexpr auto languageKey = "Setting/language"_L1;
constexpr auto videoKey = "Setting/video_save_path"_L1;

enum class FolderResult { Usable, NotCreated, NoDocuments };

/// Fills `folder` with the stored text if it names an existing folder, else with the default folder, which is
/// made if missing. Without a documents folder `folder` keeps the stored text and saving does not lose it.
FolderResult loadFolder(const QSettings& settings, QLatin1StringView key, QString& folder)
{
    folder = settings.value(key).toString();
    if (!folder.isEmpty() && QFileInfo(folder).isDir())
        return FolderResult::Usable;
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    if (documents.isEmpty())
        return FolderResult::NoDocuments;
    folder = documents + "/KorvaneData"_L1;
    return QDir().mkpath(folder) ? FolderResult::Usable : FolderResult::NotCreated;
}

void reportFailedFolder(FolderResult result)
{
    if (result == FolderResult::NotCreated)
        qDebug() << "Create raw file path failed.";
}

} // namespace

Config* Config::getInstance(const QString& fileName)
{
    static Config config(fileName);
    return &config;
}

Config::Config(const QString& fileName)
    : settings(std::make_unique<QSettings>(usableConfigFile(fileName), QSettings::IniFormat))
{
    load();
}

Config::~Config()
{
    write();
    settings.reset();
    qDebug() << "Write to config file.";
}

void Config::save()
{
    write();
    qDebug() << "Write to config file.";
}

void Config::load()
{
    // Without a documents folder the remaining settings stay empty on purpose; an empty language shows
    // English texts.
    if (loadFolder(*settings, outputKey, output_raw_file_path) == FolderResult::NoDocuments)
        return;

    const FolderResult input = loadFolder(*settings, inputKey, input_raw_file_path);
    if (input == FolderResult::NoDocuments) {
        qWarning() << "Unable to get documents location.";
        return;
    }
    reportFailedFolder(input);

    language = settings->value(languageKey).toString();
    if (language != "en"_L1 && language != "zh"_L1)
        language = u"en"_s;

    reportFailedFolder(loadFolder(*settings, videoKey, video_save_path));
}

void Config::write()
{
    settings->setValue(outputKey, output_raw_file_path);
    settings->setValue(inputKey, input_raw_file_path);
    settings->setValue(languageKey, language);
    settings->setValue(videoKey, video_save_path);
    settings->sync();
    // What stood in the file stays then.
    if (settings->status() == QSettings::AccessError)
        qWarning().noquote().nospace() << settings->fileName() << ": the settings cannot be written";
}
