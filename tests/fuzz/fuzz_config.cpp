#include "app/config.h"
#include "tests/fuzz/require.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtGlobal>

#include <cstddef>
#include <cstdint>

namespace {

struct Home
{
    Home()
    {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
        qputenv("HOME", folder.path().toLocal8Bit());
        qputenv("XDG_CONFIG_HOME", folder.path().toLocal8Bit());
    }
    QTemporaryDir folder;
};

void requireUsable(const Config& config)
{
    require(config.language == QLatin1String("en") || config.language == QLatin1String("zh"),
            "the language is one of two");
    require(QFileInfo(config.output_raw_file_path).isDir(), "recordings have a folder");
    require(QFileInfo(config.input_raw_file_path).isDir(), "the choice of a recording has a folder");
    require(QFileInfo(config.video_save_path).isDir(), "videos have a folder");
}

} // namespace

// Input: a whole config.ini.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Home home;
    // A name of its own each time: the library keeps what it has read of a file that looks unchanged.
    static std::uint64_t number = 0;
    const QString path = home.folder.filePath(QStringLiteral("config%1.ini").arg(++number));
    QFile file(path);
    require(file.open(QIODevice::WriteOnly), "there is a file");
    file.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size));
    file.close();
    QString language;
    QString videos;
    {
        const Config config(path);
        requireUsable(config);
        language = config.language;
        videos = config.video_save_path;
    }
    // It has been written, and what is written is read back.
    const Config again(path);
    requireUsable(again);
    require(again.language == language && again.video_save_path == videos, "what was saved is read back");
    file.remove();
    QFile::remove(path + QStringLiteral(".unusable"));
    return 0;
}
