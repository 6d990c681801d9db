#include "camera/recording/rawfilereader.h"
#include "playback/kvcutrawfile.h"
#include "playback/kvexportvideoui.h"
#include "tests/fuzz/require.h"
#include "tests/support/temporaryrecordings.h"

#include <QApplication>
#include <QLineEdit>
#include <QRegularExpression>
#include <QtGlobal>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

using namespace korvane;

namespace {

/// The dialogs, and a recording of a tenth of a second to cut and to export.
class Stage
{
public:
    Stage()
    {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
        evt::Bytes words;
        for (std::uint32_t time = 0; time < 100000; time += 64) {
            const std::vector<std::uint32_t> pair{evt::high2(time >> 6U), evt::cd2(1, 5, time / 64 % 32, 7)};
            const evt::Bytes bytes = evt::words2(pair);
            words.insert(words.end(), bytes.begin(), bytes.end());
        }
        reader = TemporaryRecordings::load(folder.write(
            "whole.raw", TemporaryRecordings::header(recording::EvtEncoding::Evt2, {32, 32}), words));
        require(reader != nullptr, "there is a recording");
        all = *reader->getEventsAt(0, 1000000);
    }

    void tryTimes(const QString& first, const QString& second)
    {
        typeInto(cut, first, second);
        typeInto(video, first, second);
        require(cut.startTime() == video.startTime() && cut.endTime() == video.endTime(),
                "both dialogs read a time alike");
        requireNumberOrNothing(first, cut.startTime());
        requireNumberOrNothing(second, cut.endTime());
        tryCut(cut.startTime(), cut.endTime());
        tryExport(video.startTime(), video.endTime());
    }

private:
    static void typeInto(QDialog& dialog, const QString& first, const QString& second)
    {
        dialog.findChild<QLineEdit*>(QStringLiteral("le_start_time"))->setText(first);
        dialog.findChild<QLineEdit*>(QStringLiteral("le_end_time"))->setText(second);
    }
    /// Texts of plain digits are what they say; nothing else is a time but 0, blanks and a sign apart.
    static void requireNumberOrNothing(const QString& text, std::uint64_t time)
    {
        // Nobody types a NUL; a number ends there.
        if (text.contains(QChar(u'\0')))
            return;
        const bool digits = !text.isEmpty() && text.size() <= 19
            && std::all_of(text.begin(), text.end(), [](QChar c) { return c >= u'0' && c <= u'9'; });
        if (digits)
            require(QString::number(time)
                        == QString(text).remove(QRegularExpression(QStringLiteral("^0+(?=.)"))),
                    "digits are the time they write");
        if (text.contains(QLatin1Char('-')))
            require(time == 0, "there is no time below 0");
    }
    void tryCut(std::uint64_t start, std::uint64_t end)
    {
        const std::string path = folder.path("cut.raw");
        const bool made = reader->cutFile(start, end, path);
        std::vector<Event2D> wanted;
        for (const Event2D& event : all) {
            if (event.timestamp >= start && event.timestamp <= end)
                wanted.push_back(event);
        }
        const QString name = QFile::decodeName(path.c_str());
        require(made == QFile::exists(name), "a cut that failed leaves no file");
        if (!made)
            return;
        const auto read = TemporaryRecordings::load(path);
        require(read != nullptr && !wanted.empty(), "a cut holds events");
        require(read->getEventsAt(0, 1000000)->size() == wanted.size(), "a cut holds its range");
        QFile::remove(name);
    }
    void tryExport(std::uint64_t start, std::uint64_t end)
    {
        const std::string path = folder.path("video.mp4");
        const bool made = reader->exportVideo(start, end, path);
        const QString name = QFile::decodeName(path.c_str());
        require(made == QFile::exists(name), "an export that failed leaves no file");
        require(!made || start <= end, "a range that runs backwards makes no video");
        QFile::remove(name);
    }

    TemporaryRecordings folder;
    std::unique_ptr<recording::RawFileReader> reader;
    std::vector<Event2D> all;
    KvCutRawFile cut{nullptr};
    KvExportVideoUI video{nullptr};
};

Stage& stage()
{
    static int argc = 1;
    static char name[] = "fuzz";
    static char* argv[] = {name, nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // Both end with the process, the application last: what it leaves would be taken for leaks.
    static const QApplication application(argc, argv);
    static Stage instance;
    return instance;
}

} // namespace

// Input: two texts, apart by a line feed.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::size_t end = std::min(text.find('\n'), text.size());
    const auto toText = [](std::string_view part) {
        return QString::fromUtf8(part.data(), static_cast<qsizetype>(part.size()));
    };
    stage().tryTimes(toText(text.substr(0, end)), toText(text.substr(std::min(end + 1, text.size()))));
    return 0;
}
