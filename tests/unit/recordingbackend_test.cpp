#include "camera/recording/recordingbackend.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/evtwriter.h"
#include "tests/support/randomstreams.h"
#include "tests/support/recordprinters.h"
#include "tests/support/temporaryrecordings.h"

#include <QCoreApplication>
#include <QDir>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

using namespace korvane;
using namespace korvane::recording;
using namespace evt;
using namespace std::string_literals;
using testing::HasSubstr;
using testing::SizeIs;

namespace {

Bytes bytesOf(const std::string& text)
{
    return {text.begin(), text.end()};
}

class RecordingBackendTest : public testing::Test
{
protected:
    RecordingBackendTest() { registerBackend(backend); }
    ~RecordingBackendTest() override { unregisterBackend(backend); }

    /// Nothing opens the file, and one log line says so with the path and this reason.
    static void expectRefused(const std::string& path, const char* reason)
    {
        const CapturedMessages messages;
        EXPECT_FALSE(DvsFileReader::createFileReader(path)) << path;
        const auto lines = messages.of(QtWarningMsg) + messages.of(QtInfoMsg) + messages.of(QtCriticalMsg);
        ASSERT_EQ(lines.size(), 1) << lines.join(QLatin1Char('\n')).toStdString();
        EXPECT_THAT(lines[0].toStdString(), HasSubstr(path));
        EXPECT_THAT(lines[0].toStdString(), HasSubstr(reason));
    }

    void expectContentRefused(const char* what, const Bytes& content, const char* reason)
    {
        SCOPED_TRACE(what);
        expectRefused(recordings.write("content.raw", "", content), reason);
    }

    static constexpr const char* unknown = "neither its header nor its content";

    Bytes noise(std::size_t size, std::uint64_t seed = 5)
    {
        return RandomStreams(seed).noise(EvtEncoding::Evt3, size / 2);
    }

    const std::shared_ptr<Backend> backend = std::make_shared<RecordingBackend>();
    TemporaryRecordings recordings;
    const Bytes stream = words3({high3(1), low3(5), row3(7), x3(1, 9), low3(9), x3(0, 10)});
};

TEST_F(RecordingBackendTest, OpensARecordingByItsContentWhateverItsName)
{
    for (const char* name : {"a.raw", "a", "a.txt", "a.mp4", "a.RAW", "A Ü.raw", "% end"}) {
        const auto path = recordings.write(name, TemporaryRecordings::header(EvtEncoding::Evt3), stream);
        const CapturedMessages messages;
        const auto reader = DvsFileReader::createFileReader(path);
        ASSERT_TRUE(reader) << name;
        EXPECT_EQ(messages.warnings().size(), 0);
        ASSERT_TRUE(reader->loadFile());
        EXPECT_THAT(*reader->getEventsAt(0, 100), SizeIs(2));
    }
}

TEST_F(RecordingBackendTest, NothingIsLoadedYet)
{
    const auto path = recordings.write("a.raw", TemporaryRecordings::header(EvtEncoding::Evt3), stream);
    const auto reader = DvsFileReader::createFileReader(path);
    ASSERT_TRUE(reader);
    EXPECT_FALSE(reader->getEventsAt(0, 100));
    EXPECT_TRUE(reader->isEnd());
}

TEST_F(RecordingBackendTest, RefusesWhatIsNoFile)
{
    expectRefused(recordings.path("missing.raw"), "no such file");
    expectRefused(recordings.path("."), "not a file");
    expectRefused(recordings.path("missing/also.raw"), "no such file");
    const auto fifo = recordings.path("fifo.raw");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    expectRefused(fifo, "not a file");
    const auto dangling = recordings.path("dangling.raw");
    ASSERT_EQ(symlink("nowhere", dangling.c_str()), 0);
    expectRefused(dangling, "no such file");
    const CapturedMessages messages;
    EXPECT_FALSE(DvsFileReader::createFileReader(""));
    EXPECT_EQ(messages.warnings().size(), 1);
}

TEST_F(RecordingBackendTest, RefusesAFileThatMayNotBeRead)
{
    // The superuser may read everything: look for a moment with another user's eyes.
    QTemporaryDir folder(QDir::tempPath() + QStringLiteral("/korvane-XXXXXX"));
    const QByteArray path = QFile::encodeName(folder.filePath(QStringLiteral("locked.raw")));
    ASSERT_TRUE(writeFile(QFile::decodeName(path), TemporaryRecordings::header(EvtEncoding::Evt3), stream));
    ASSERT_EQ(chmod(QFile::encodeName(folder.path()).constData(), 0755), 0);
    ASSERT_EQ(chmod(path.constData(), 0), 0);
    const bool superuser = geteuid() == 0;
    if (superuser) {
        ASSERT_EQ(seteuid(65534), 0);
    }
    expectRefused(path.toStdString(), "ermission denied");
    if (superuser) {
        ASSERT_EQ(seteuid(0), 0);
    }
}

TEST_F(RecordingBackendTest, RefusesAFileThatCannotBeReadAlthoughItOpens)
{
    // Address 0 of a process is never mapped: reading there fails.
    expectRefused("/proc/self/mem", "nput/output error");
}

TEST_F(RecordingBackendTest, RefusesAnEmptyFile)
{
    expectContentRefused("empty", {}, "empty");
}

TEST_F(RecordingBackendTest, RefusesText)
{
    const char* const text = "text";
    expectContentRefused("a letter", bytesOf("a"), text);
    expectContentRefused("lines", bytesOf("Hello,\r\n\tworld.\n"), text);
    expectContentRefused("numbers", bytesOf("12,13\n14,15\n"), text);
    expectContentRefused("UTF-8", bytesOf("\xEF\xBB\xBFZ\xC3\xBCrich, \xE5\x8C\x97\xE4\xBA\xAC\n"), text);
    std::string large;
    while (large.size() < (3u << 20))
        large += "A line of a log file, number " + std::to_string(large.size()) + ".\n";
    expectContentRefused("a large text", bytesOf(large), text);
}

TEST_F(RecordingBackendTest, RefusesTextThatStartsLikeAHeader)
{
    // Comments of typesetting and mathematics programs begin with the same two characters.
    const char* const text = "text";
    expectContentRefused("a script", bytesOf("% Plots a sine.\nx = 0:0.1:10;\nplot(x, sin(x));\n"), text);
    expectContentRefused("with an umlaut", bytesOf("% Plot\ntitle('\xC3\x84');\n"), text);
    expectContentRefused("with an umlaut elsewhere", bytesOf("% Plot\ntitle('x\xC3\x84');\n"), text);
    expectContentRefused("comments only", bytesOf("% one\n% two\n"), text);
    expectContentRefused("a lone end", bytesOf("% end\n"), text);
    std::string chinese = "% \xE8\xA7\x86\xE9\xA2\x91\n";
    while (chinese.size() < 5000)
        chinese += "\xE4\xBA\x8B\xE4\xBB\xB6\xE7\x9B\xB8\xE6\x9C\xBA\xE3\x80\x82\n";
    expectContentRefused("Chinese", bytesOf(chinese), text);
}

TEST_F(RecordingBackendTest, RefusesFilesOfOtherKinds)
{
    expectContentRefused("noise", noise(100000), unknown);
    expectContentRefused("zeros", Bytes(100000), unknown);
    expectContentRefused("ones", Bytes(100000, 0xFF), "not a recording");
    expectContentRefused("one zero", Bytes(1), unknown);

    Bytes png = bytesOf(
        "\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\x05\0\0\0\x02\xD0\x08\x02\0\0\0\x40\x1F\xFE\x0C\0\0\x40\0IDAT"s);
    const auto pixels = noise(40000);
    png.insert(png.end(), pixels.begin(), pixels.end());
    expectContentRefused("PNG", png, unknown);

    Bytes zip = bytesOf(
        "PK\x03\x04\x14\0\0\0\x08\0\x21\x5C\x3A\x57\x11\x22\x33\x44\x00\x9C\0\0\x80\xA0\0\0\x05\0\0\0a.raw"s);
    zip.insert(zip.end(), pixels.begin(), pixels.end());
    expectContentRefused("zip", zip, unknown);

    Bytes mp4 = bytesOf("\0\0\0\x20"
                        "ftypisom\0\0\x02\0isomiso2avc1mp41\0\0\0\x08"
                        "free\0\x01\0\0mdat"s);
    mp4.insert(mp4.end(), pixels.begin(), pixels.end());
    for (unsigned i = 0; i < 3000; ++i) { // tables of big-endian numbers
        for (const unsigned shift : {24u, 16u, 8u, 0u})
            mp4.push_back(static_cast<std::uint8_t>((40 + i * 1201) >> shift));
    }
    expectContentRefused("mp4", mp4, unknown);

    Bytes wav = bytesOf(
        "RIFF\x24\x40\0\0WAVEfmt \x10\0\0\0\x01\0\x01\0\x80\xBB\0\0\0\x77\x01\0\x02\0\x10\0data\0\x40\0\0"s);
    int sample = 0;
    for (unsigned i = 0; i < 8000; ++i) {
        sample += i / 100 % 2 == 0 ? 517 : -511;
        append(wav, static_cast<std::uint16_t>(sample), 2);
    }
    expectContentRefused("sound", wav, unknown);

    Bytes bitmap = bytesOf("BM\x36\0\x0C\0\0\0\0\0\x36\0\0\0\x28\0\0\0"s);
    for (unsigned i = 0; i < 200000; ++i)
        bitmap.push_back(static_cast<std::uint8_t>(i / 3 % 256));
    expectContentRefused("bitmap", bitmap, unknown);

    expectRefused(QFile::encodeName(QCoreApplication::applicationFilePath()).toStdString(), unknown);
}

TEST_F(RecordingBackendTest, RefusesAHeaderThatNamesAnotherFormatOrContradictsItself)
{
    expectRefused(recordings.write("four.raw", "% format EVT4;width=640;height=480\n% end\n", stream),
                  "EVT4");
    expectRefused(recordings.write("two.raw", "% evt 2.0\n% format EVT3\n% end\n", stream),
                  "contradicts itself");
    expectRefused(recordings.write("none.raw", "% date 2023-03-29 16:37:46\n% end\n", noise(2000)), unknown);
}

TEST_F(RecordingBackendTest, LooksAtTheFirstMebibyteOnly)
{
    const auto charactersRead = [] {
        QFile file(QStringLiteral("/proc/self/io"));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readLine().trimmed().split(' ').last().toULongLong();
    };
    const auto path = recordings.write("large.raw", TemporaryRecordings::header(EvtEncoding::Evt3), stream);
    const auto junk = recordings.write("junk.raw", "", noise(4000000));
    ASSERT_TRUE(QFile::resize(QString::fromStdString(path), 40 << 20));
    const CapturedMessages messages;
    for (const auto& file : {path, junk}) {
        const auto before = charactersRead();
        DvsFileReader::createFileReader(file);
        EXPECT_LT(charactersRead() - before, (1u << 20) + 65536u) << file;
    }
}

TEST_F(RecordingBackendTest, OffersNothingElse)
{
    EXPECT_FALSE(ApsFileReader::createFileReader(recordings.write("a.raw", "", stream)));
    EXPECT_TRUE(backend->cameraDescriptions().empty());
    EXPECT_FALSE(backend->openCamera("x"));
    EXPECT_FALSE(backend->openFusionCamera("x"));
    EXPECT_FALSE(backend->name().empty());
}

} // namespace
