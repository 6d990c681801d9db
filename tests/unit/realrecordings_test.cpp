#include "camera/recording/rawfilereader.h"
#include "camera/recording/recordingbackend.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/referencedecoder.h"
#include "tests/support/temporaryhome.h"
#include "tests/support/temporaryrecordings.h"
#include "tests/support/windows.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>

#include <cstdio>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// Recordings made by others, with what they hold. They are not part of the repository: KORVANE_RECORDINGS
// names the folder. KORVANE_RECORDINGS_CHECKED may name a file that gets the name of each recording checked.

using namespace korvane;
using namespace korvane::recording;

namespace {

constexpr std::uint64_t endless = std::numeric_limits<std::uint64_t>::max();

QDir folder()
{
    return QDir(qEnvironmentVariable("KORVANE_RECORDINGS"));
}

/// Every recording below the folder, relative to it.
QStringList allFiles()
{
    QStringList files;
    QDirIterator found(folder().path(), {QStringLiteral("*.raw")}, QDir::Files, QDirIterator::Subdirectories);
    while (found.hasNext())
        files << folder().relativeFilePath(found.next());
    files.sort();
    return files;
}

QJsonObject readJson(const QString& name)
{
    QFile file(folder().filePath(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
    const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
    EXPECT_FALSE(object.isEmpty()) << name.toStdString() << " says nothing";
    return object;
}

evt::Bytes contentOf(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    const QByteArray bytes = file.readAll();
    return {bytes.begin(), bytes.end()};
}

void noteChecked(const QString& name)
{
    if (!qEnvironmentVariableIsSet("KORVANE_RECORDINGS_CHECKED"))
        return;
    QFile list(qEnvironmentVariable("KORVANE_RECORDINGS_CHECKED"));
    ASSERT_TRUE(list.open(QIODevice::WriteOnly | QIODevice::Append)) << list.fileName().toStdString();
    list.write(name.toLocal8Bit() + '\n');
}

/// A recording as the program opens it, and all it holds.
struct Opened
{
    std::unique_ptr<DvsFileReader> owner;
    RawFileReader* reader = nullptr;
    std::vector<Event2D> events;
    std::vector<EventTriggerIn> triggers;
    std::int64_t timeBase = 0; ///< what the first time word stands for on the sensor's clock, microseconds

    std::int64_t sensorTime(const Event2D& event) const
    {
        return static_cast<std::int64_t>(event.timestamp) + timeBase;
    }
};

/// Nothing where the file is no recording or holds no event.
std::optional<Opened> open(const QString& path)
{
    Opened opened;
    opened.owner = DvsFileReader::createFileReader(QFile::encodeName(path).toStdString());
    opened.reader = dynamic_cast<RawFileReader*>(opened.owner.get());
    if (!opened.reader || !opened.reader->loadFile())
        return std::nullopt;
    opened.events = *opened.reader->getEventsAt(0, endless);
    opened.triggers = *opened.reader->getTriggersAt(0, endless);
    const evt::Bytes bytes = contentOf(path);
    opened.timeBase = reference::decode(opened.reader->encoding(),
                                        std::span(bytes).subspan(opened.reader->fileHeader().bodyOffset),
                                        opened.reader->sensorGeometry())
                          .timeBase;
    return opened;
}

std::optional<Opened> openNamed(const QString& name)
{
    return open(folder().filePath(name));
}

template <typename Value, typename Get>
QString hashOf(const std::vector<Event2D>& events, Get get)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (const Event2D& event : events) {
        const auto value = static_cast<Value>(get(event));
        for (std::size_t byte = 0; byte < sizeof value; ++byte) {
            const char one = static_cast<char>(static_cast<std::uint64_t>(value) >> (8 * byte));
            hash.addData(QByteArrayView(&one, 1));
        }
    }
    return QString::fromLatin1(hash.result().toHex());
}

class RealRecordings : public testing::Test
{
protected:
    RealRecordings() { registerBackend(backend); }
    ~RealRecordings() override { unregisterBackend(backend); }

    const std::shared_ptr<Backend> backend = std::make_shared<RecordingBackend>();
    const CapturedMessages silence;
};

TEST_F(RealRecordings, HoldWhatIsPublishedAboutThem)
{
    const QJsonObject expectations = readJson(QStringLiteral("real/expected.json"));
    for (const QString& name : expectations.keys()) {
        SCOPED_TRACE(name.toStdString());
        const QJsonObject expected = expectations[name].toObject();
        const auto number
            = [&expected](const char* key) { return expected[QLatin1StringView(key)].toInteger(-1); };
        const auto text
            = [&expected](const char* key) { return expected[QLatin1StringView(key)].toString(); };
        const auto found = openNamed(name);
        ASSERT_TRUE(found);

        EXPECT_TRUE(
            QString::fromLatin1(encodingName(found->reader->encoding())).startsWith(text("encoding")));
        const auto& events = found->events;
        ASSERT_EQ(std::int64_t(events.size()), number("events"));
        const auto on
            = std::count_if(events.begin(), events.end(), [](auto& event) { return event.polarity == 1; });
        EXPECT_EQ(on, number("on"));
        EXPECT_EQ(std::int64_t(events.size()) - on, number("off"));
        EXPECT_EQ(found->timeBase, number("time_base_us"));

        std::uint64_t time = 0;
        found->reader->getStartTimestamp(time);
        EXPECT_EQ(std::int64_t(time), number("first_us") - number("time_base_us"));
        found->reader->getEndTimestamp(time);
        EXPECT_EQ(std::int64_t(time), number("last_us") - number("time_base_us"));

        const auto [left, right]
            = std::minmax_element(events.begin(), events.end(), [](auto& a, auto& b) { return a.x < b.x; });
        EXPECT_EQ(QJsonArray({left->x, right->x}), expected[QStringLiteral("x_range")].toArray());
        const auto [top, bottom]
            = std::minmax_element(events.begin(), events.end(), [](auto& a, auto& b) { return a.y < b.y; });
        EXPECT_EQ(QJsonArray({top->y, bottom->y}), expected[QStringLiteral("y_range")].toArray());

        const auto rising = std::count_if(found->triggers.begin(), found->triggers.end(),
                                          [](auto& trigger) { return trigger.polarity == 1; });
        EXPECT_EQ(rising, number("triggers_rising"));
        EXPECT_EQ(std::int64_t(found->triggers.size()) - rising, number("triggers_falling"));

        EXPECT_EQ(hashOf<std::uint64_t>(events, [&](auto& event) { return found->sensorTime(event); }),
                  text("sha256_t_u64le"));
        EXPECT_EQ(hashOf<std::uint16_t>(events, [](auto& event) { return event.x; }), text("sha256_x_u16le"));
        EXPECT_EQ(hashOf<std::uint16_t>(events, [](auto& event) { return event.y; }), text("sha256_y_u16le"));
        EXPECT_EQ(hashOf<std::uint8_t>(events, [](auto& event) { return event.polarity; }),
                  text("sha256_p_u8"));
    }
}

TEST_F(RealRecordings, EdgeCasesHoldWhatIsSaidAboutThem)
{
    const QJsonObject expectations = readJson(QStringLiteral("edge/expected.json"));
    for (const QString& name : expectations.keys()) {
        const QJsonObject expected = expectations[name].toObject();
        SCOPED_TRACE(name.toStdString() + ": " + expected[QStringLiteral("note")].toString().toStdString());
        const auto found = openNamed(QStringLiteral("edge/") + name);
        const qint64 count = expected[QStringLiteral("n_cd")].toInteger(-1);
        if (count == 0) {
            EXPECT_FALSE(found);
            continue;
        }
        ASSERT_TRUE(found);
        ASSERT_EQ(std::int64_t(found->events.size()), count);
        EXPECT_EQ(found->sensorTime(found->events.front()),
                  expected[QStringLiteral("t_first")].toInteger(-1));
        EXPECT_EQ(found->sensorTime(found->events.back()), expected[QStringLiteral("t_last")].toInteger(-1));
        EXPECT_EQ(found->reader->sensorGeometry(), (Geometry{640, 480}));
    }
}

TEST_F(RealRecordings, EdgeCasesAreTheFirstEventsOfTheRecordingTheyWereMadeFrom)
{
    const auto whole = openNamed(QStringLiteral("real/sparklers_evt2_vga.raw"));
    ASSERT_TRUE(whole);
    const QDir edge(folder().filePath(QStringLiteral("edge")));
    const QStringList files = edge.entryList({QStringLiteral("*.raw")});
    EXPECT_FALSE(files.isEmpty());
    for (const QString& file : files) {
        SCOPED_TRACE(file.toStdString());
        const auto found = open(edge.filePath(file));
        if (!found)
            continue;
        ASSERT_LE(found->events.size(), whole->events.size());
        const std::uint64_t shift = found->events.front().timestamp - whole->events.front().timestamp;
        for (std::size_t i = 0; i < found->events.size(); ++i) {
            Event2D expected = whole->events[i];
            expected.timestamp += shift;
            ASSERT_EQ(found->events[i], expected) << "event " << i;
        }
    }
}

TEST_F(RealRecordings, TheEdgeCaseWithTriggersHoldsThem)
{
    const auto found = openNamed(QStringLiteral("edge/evt2_triggers.raw"));
    ASSERT_TRUE(found);
    const std::uint64_t last = found->events.back().timestamp;
    EXPECT_EQ(found->triggers, (std::vector<EventTriggerIn>{{0, 1, last}, {1, 0, last}, {31, 1, last}}));
}

/// What the reader gives for a crafted stream where that is not what the decoder behind reference.json gives.
/// Times on the sensor's clock.
struct DeliberateDifference
{
    const char* reason;
    std::vector<Event2D> events;
};

const std::map<std::string, DeliberateDifference> deliberateDifferences{
    {"evt2_B_mid_backward",
     {"time never runs backwards: the clock was restarted, and time goes on from there",
      {{0, 7, 1, 8589934602}, {1, 7, 1, 8589934613}, {2, 7, 1, 8589934677}}}},
    {"evt2_D_reset_mid_to_zero",
     {"time never runs backwards: the clock was restarted, and time goes on from there",
      {{0, 7, 1, 8589934602}, {1, 7, 1, 8589934613}, {2, 7, 1, 8589934677}}}},
    {"evt2_F_low_out_of_order",
     {"time never runs backwards: a step back of microseconds is held",
      {{0, 7, 1, 64040}, {1, 7, 1, 64040}, {2, 7, 1, 64040}}}},
    {"evt2_H_loop_threshold_157",
     {"a step from the last sixteenth of the range to the first is a wrap, not only one by nearly all of it",
      {{0, 7, 1, 17179869125}, {1, 7, 1, 17179879237}}}},
    {"evt3_B_mid_backward",
     {"time never runs backwards: the clock was restarted, and time goes on from there",
      {{0, 7, 1, 8388708}, {1, 7, 1, 8388809}, {2, 7, 1, 8392905}}}},
    {"evt3_D_reset_mid_to_zero",
     {"time never runs backwards: the clock was restarted, and time goes on from there",
      {{0, 7, 1, 8192100}, {1, 7, 1, 8192151}, {2, 7, 1, 8196247}}}},
    {"evt3_F_low_out_of_order",
     {"time never runs backwards: a step back of microseconds is held",
      {{0, 7, 1, 41460}, {1, 7, 1, 41460}, {2, 7, 1, 41460}}}},
    {"evt3_H_3000_to_953",
     {"time never runs backwards: a step back by less than half the range is a restart of the clock",
      {{0, 7, 1, 12288001}, {1, 7, 1, 12288003}}}},
    {"evt3_V2_lone_vect12_then_addr_x",
     {"vector words are decoded one by one: what follows a lone one is no mask",
      {{100, 7, 1, 40965}, {300, 7, 0, 40965}, {301, 7, 0, 40966}}}},
    {"evt3_V3_triple_at_right_edge",
     {"only the pixels outside the sensor are dropped, not the vectors that hold them",
      {{620, 7, 1, 40965}, {632, 7, 1, 40965}}}},
    {"evt3_V5_standalone_vect8",
     {"vector words are decoded one by one: a lone short one too", {{100, 7, 1, 40965}, {400, 7, 0, 40965}}}},
};

TEST_F(RealRecordings, CraftedStreamsDecodeAsTheReferenceButForDeliberateDifferences)
{
    const QJsonObject references = readJson(QStringLiteral("streams/reference.json"));
    std::size_t differing = 0;
    for (const QString& name : references.keys()) {
        SCOPED_TRACE(name.toStdString());
        std::vector<Event2D> expected;
        for (const auto& value : references[name][QStringLiteral("events")].toArray()) {
            const QJsonArray event = value.toArray();
            expected.emplace_back(static_cast<std::uint16_t>(event[1].toInteger()),
                                  static_cast<std::uint16_t>(event[2].toInteger()),
                                  static_cast<std::uint8_t>(event[3].toInteger()),
                                  static_cast<std::uint64_t>(event[0].toInteger()));
        }
        const auto difference = deliberateDifferences.find(name.toStdString());
        if (difference != deliberateDifferences.end()) {
            EXPECT_NE(difference->second.events, expected) << "there is no difference to state";
            expected = difference->second.events;
            ++differing;
        }
        const auto found = openNamed(QStringLiteral("streams/%1.raw").arg(name));
        ASSERT_EQ(found.has_value(), !expected.empty());
        if (!found)
            continue;
        auto events = found->events;
        for (Event2D& event : events)
            event.timestamp += static_cast<std::uint64_t>(found->timeBase);
        EXPECT_EQ(events, expected) << (difference == deliberateDifferences.end()
                                            ? ""
                                            : difference->second.reason);
    }
    EXPECT_EQ(differing, deliberateDifferences.size()) << "a stated difference has no stream";
}

/// What the reference decoder gives for a file, by the encoding and geometry that the reader found.
reference::Decoded judged(const RawFileReader& reader, const evt::Bytes& file)
{
    return reference::decode(reader.encoding(), std::span(file).subspan(reader.fileHeader().bodyOffset),
                             reader.sensorGeometry());
}

TEST_F(RealRecordings, OpenSeekAndReadWithoutFaultAndWindowsMakeTheWhole)
{
    // Whatever lies in the folder, with or without an expectation.
    for (const QString& name : allFiles()) {
        SCOPED_TRACE(name.toStdString());
        if (auto found = openNamed(name)) {
            const auto whole = judged(*found->reader, contentOf(folder().filePath(name)));
            ASSERT_EQ(found->events, whole.events);
            ASSERT_EQ(found->triggers, whole.triggers);
            RandomStreams random(static_cast<std::uint64_t>(name.size()));
            windows::expectToMatch(*found->reader, whole.events, whole.triggers, random, 60);
            for (const Event2D& event : whole.events) {
                ASSERT_LT(event.x, found->reader->sensorGeometry().width);
                ASSERT_LT(event.y, found->reader->sensorGeometry().height);
                ASSERT_LE(event.polarity, 1);
            }
        }
        if (HasFatalFailure())
            return;
        noteChecked(name);
    }
}

TEST_F(RealRecordings, DamagedCopiesAreReadAsTheReferenceReadsThem)
{
    const TemporaryRecordings copies;
    unsigned loaded = 0;
    for (const QString& name : allFiles()) {
        const evt::Bytes bytes = contentOf(folder().filePath(name));
        for (unsigned copy = 0; copy < (bytes.size() > 100000 ? 2u : 8u); ++copy) {
            RandomStreams random(bytes.size() + copy);
            const auto damaged = random.damaged(bytes);
            SCOPED_TRACE(name.toStdString() + " copy " + std::to_string(copy));
            const auto path = copies.write("damaged.raw", "", damaged);
            QString error;
            const auto reader = RawFileReader::open(path, error);
            if (!reader)
                continue;
            const bool good = reader->loadFile();
            const auto whole = judged(*reader, damaged);
            ASSERT_EQ(good, !whole.events.empty());
            if (!good)
                continue;
            ++loaded;
            windows::expectToMatch(*reader, whole.events, whole.triggers, random, 10);
            if (HasFatalFailure())
                return;
        }
    }
    EXPECT_GT(std::int64_t(loaded), allFiles().size());
}

/// The records with start <= time <= end, their times counted from `base`.
template <typename Records>
Records range(const Records& all, std::uint64_t start, std::uint64_t end, std::uint64_t base)
{
    Records found;
    for (auto record : all) {
        if (record.timestamp < start || record.timestamp > end)
            continue;
        record.timestamp -= base;
        found.push_back(record);
    }
    return found;
}

TEST_F(RealRecordings, AreCutWithoutLoss)
{
    const TemporaryRecordings cuts;
    for (const QString& name : allFiles()) {
        SCOPED_TRACE(name.toStdString());
        const auto whole = openNamed(name);
        if (!whole)
            continue;
        RandomStreams random(whole->events.size());
        const std::uint64_t last = whole->events.back().timestamp;
        // All of it, then a part, then a part of that part.
        std::uint64_t start = 0;
        std::uint64_t end = last;
        RawFileReader* source = whole->reader;
        std::uint64_t ahead = 0; // of the source's times are the recording's
        std::vector<std::unique_ptr<RawFileReader>> owners;
        for (int i = 0; i < 3; ++i) {
            const auto wanted = range(whole->events, start, end, 0);
            const std::string path = cuts.path(std::to_string(i) + ".raw");
            ASSERT_EQ(source->cutFile(start - std::min(start, ahead), end - ahead, path), !wanted.empty());
            if (wanted.empty())
                break;
            owners.push_back(TemporaryRecordings::load(path));
            ASSERT_TRUE(owners.back());
            RawFileReader& cut = *owners.back();
            std::uint64_t first = 0;
            cut.getStartTimestamp(first);
            const std::uint64_t base = wanted.front().timestamp - first;
            EXPECT_EQ(*cut.getEventsAt(0, endless), range(whole->events, start, end, base));
            auto triggers = range(whole->triggers, start, end, base);
            std::erase_if(triggers, [](const EventTriggerIn& trigger) { return trigger.id > 15; });
            EXPECT_EQ(*cut.getTriggersAt(0, endless), triggers);
            EXPECT_EQ(cut.sensorGeometry(), whole->reader->sensorGeometry());
            const auto judged
                = reference::decode(EvtEncoding::Evt3,
                                    std::span<const std::uint8_t>(contentOf(QString::fromStdString(path)))
                                        .subspan(cut.fileHeader().bodyOffset),
                                    cut.sensorGeometry());
            EXPECT_EQ(judged.events, *cut.getEventsAt(0, endless));
            EXPECT_EQ(judged.triggers, triggers);
            EXPECT_EQ(judged.counts, EvtCounts());

            source = &cut;
            ahead = base;
            start = wanted[random.below(wanted.size())].timestamp;
            end = start + random.below(wanted.back().timestamp - start + 1);
            QFile::remove(QString::fromStdString(path));
        }
    }
}

} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (!qEnvironmentVariableIsSet("KORVANE_RECORDINGS")) {
        constexpr int skipped = 77;
        std::puts("SKIPPED: KORVANE_RECORDINGS is not set, so no recordings made by others are checked.");
        return skipped;
    }
    const QString recordings = QDir(qEnvironmentVariable("KORVANE_RECORDINGS")).absolutePath();
    qputenv("KORVANE_RECORDINGS", recordings.toLocal8Bit());
    if (qEnvironmentVariableIsSet("KORVANE_RECORDINGS_CHECKED"))
        qputenv("KORVANE_RECORDINGS_CHECKED",
                QDir::current()
                    .absoluteFilePath(qEnvironmentVariable("KORVANE_RECORDINGS_CHECKED"))
                    .toLocal8Bit());
    if (allFiles().isEmpty()) {
        std::printf("FAILED: there is no recording below KORVANE_RECORDINGS, %s\n", qPrintable(recordings));
        return 1;
    }
    const TemporaryHome home;
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
