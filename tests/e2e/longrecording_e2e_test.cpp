#include "tests/e2e/rangesavingstory.h"
#include "widgets/timestamptotext.h"

#include <algorithm>
#include <cstdint>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr std::uint64_t second = 1'000'000;
constexpr std::uint64_t hour = 3600 * second;
constexpr std::uint64_t burstPeriod = 20'000; ///< microseconds
constexpr std::uint64_t bursts = 4 * hour / burstPeriod;
constexpr std::uint64_t lastTime = (bursts - 1) * burstPeriod;
constexpr unsigned rowsOfABurst = 4;

enum class Encoding { Evt2, Evt3 };

/// Four hours of ON events: every 20 ms one in each of the top rows, in a column that goes one to the right
/// each time. EVT 2.0 begins two hours before its clock's own wrap (2^34 us); that of EVT 3.0 wraps
/// every 16.8 s.
struct LongRecording
{
    Encoding encoding;

    /// What the camera's clock says at the first event. Readers count from there.
    std::uint64_t clockAtStart() const
    {
        return encoding == Encoding::Evt2 ? (std::uint64_t(1) << 34) - 2 * hour : 0;
    }

    bool write(const QString& path) const
    {
        evt::Bytes body;
        for (std::uint64_t burst = 0; burst < bursts; ++burst) {
            const std::uint64_t time = clockAtStart() + burst * burstPeriod;
            const auto column = static_cast<unsigned>(burst % 1280);
            if (encoding == Encoding::Evt2)
                appendEvt2(body, time, column);
            else
                appendEvt3(body, time, column);
        }
        const char* const name = encoding == Encoding::Evt2 ? "EVT2" : "EVT3";
        return evt::writeFile(
            path, std::string("% format ").append(name).append(";height=720;width=1280\n% end\n"), body);
    }

private:
    static void appendEvt2(evt::Bytes& body, std::uint64_t time, unsigned column)
    {
        evt::append(body, evt::high2(static_cast<std::uint32_t>((time >> 6) & 0xFFFFFFF)), 4);
        for (unsigned row = 0; row < rowsOfABurst; ++row)
            evt::append(body, evt::cd2(1, static_cast<unsigned>(time & 63), column, row), 4);
    }
    static void appendEvt3(evt::Bytes& body, std::uint64_t time, unsigned column)
    {
        evt::append(body, evt::high3(static_cast<unsigned>((time >> 12) & 0xFFF)), 2);
        evt::append(body, evt::low3(static_cast<unsigned>(time & 0xFFF)), 2);
        for (unsigned row = 0; row < rowsOfABurst; ++row) {
            evt::append(body, evt::row3(row), 2);
            evt::append(body, evt::x3(1, column), 2);
        }
    }
};

class LongRecordingStory : public RangeSavingStory, public testing::WithParamInterface<Encoding>
{
protected:
    void SetUp() override
    {
        RangeSavingStory::SetUp();
        path = QDir::current().filePath(u"long.raw"_s);
        ASSERT_TRUE(recording.write(path));
    }
    void TearDown() override
    {
        QFile::remove(path);
        RangeSavingStory::TearDown();
    }

    static QString text(std::uint64_t time) { return timestampToText(time); }
    QString labelAt(std::uint64_t time) const { return text(time) + u'/' + text(lastTime); }
    std::uint64_t shownTime() const
    {
        const QStringList parts = timeText().section(u'/', 0, 0).split(u':');
        return (parts[0].toULongLong() * 60 + parts[1].toULongLong()) * second + parts[2].toULongLong();
    }
    /// The columns with events in the picture, as the times within 33333 us have them.
    bool showsEventsOf(std::uint64_t time) const
    {
        const QImage image = window->findChild<ShowImageForm*>()->shownPixmap().toImage();
        const QRgb background = image.pixel(0, 719);
        const std::uint64_t first = (time + burstPeriod - 1) / burstPeriod;
        const std::uint64_t last = std::min((time + 33332) / burstPeriod, bursts - 1);
        for (int x = 0; x < 1280; ++x) {
            bool expected = false;
            for (std::uint64_t burst = first; burst <= last; ++burst)
                expected = expected || static_cast<int>(burst % 1280) == x;
            if ((image.pixel(x, 0) != background) != expected)
                return false;
        }
        return true;
    }
    void seekTo(double share) const
    {
        QTest::mouseClick(timeline(), Qt::LeftButton, {},
                          QPoint(static_cast<int>(timeline()->width() * share), timeline()->height() / 2));
    }
    /// Cuts two seconds about a time; the cut has just what was recorded in them.
    void cutAbout(std::uint64_t time)
    {
        const std::uint64_t from = time - second;
        const std::uint64_t to = time + second;
        const QString name = u"cut-%1.raw"_s.arg(time);
        save<KvCutRawFile>([&](KvCutRawFile& dialog) {
            dialog.setStartTime(from);
            dialog.setEndTime(to);
            dialog.setFileName(name);
        });
        ASSERT_TRUE(wait([&] { return QFile::exists(folder + u'/' + name); }));
        ASSERT_TRUE(wait([] { return !QApplication::activeModalWidget(); }));
        const auto found = eventsOf(folder + u'/' + name);
        const std::uint64_t first = (from + burstPeriod - 1) / burstPeriod;
        const std::uint64_t last = std::min(to / burstPeriod, bursts - 1);
        ASSERT_EQ(found.size(), (last - first + 1) * rowsOfABurst);
        for (std::size_t i = 0; i < found.size(); ++i) {
            const std::uint64_t burst = first + i / rowsOfABurst;
            ASSERT_EQ(found[i].x, burst % 1280) << i;
            ASSERT_EQ(found[i].y, i % rowsOfABurst) << i;
            ASSERT_EQ(found[i].timestamp - found.front().timestamp, (burst - first) * burstPeriod) << i;
        }
    }

    LongRecording recording{GetParam()};
};

TEST_P(LongRecordingStory, FourHoursOpenPlaySeekStepAndAreCut)
{
    openPaused(path);
    EXPECT_EQ(timeText(), labelAt(0));

    for (const double share : {0.06, 0.3, 0.47, 0.53, 0.8, 0.96}) {
        seekTo(share);
        const std::uint64_t sought = shownTime();
        const double expected = share * 4.0 * hour;
        EXPECT_NEAR(static_cast<double>(sought), expected, 0.2 * hour) << share;
        ASSERT_TRUE(wait([&] { return showsEventsOf(sought); })) << share << ' ' << sought;
        // A step shows what its own label said before it went on.
        click("pb_next");
        EXPECT_EQ(shownTime(), sought + 30303);
        ASSERT_TRUE(wait([&] { return showsEventsOf(sought); })) << share << ' ' << sought;
        click("pb_prv");
        EXPECT_EQ(shownTime(), sought);
    }

    for (const std::uint64_t time : {10 * second, 2 * hour, 3 * hour, lastTime - 3 * second})
        cutAbout(time);

    // A third of a second before the end, then played: it ends there and returns to the exact start.
    seekTo(0.5);
    drag(timeline()->width() / 2 - 11, timeline()->width() - 1); // by the left edge of the handle
    EXPECT_EQ(timeText(), labelAt(lastTime));
    for (int step = 0; step < 10; ++step)
        click("pb_prv");
    EXPECT_EQ(timeText(), labelAt(lastTime - 10 * 30303));
    click("pb_play");
    ASSERT_TRUE(wait([this] { return !button("pb_play")->isChecked(); })) << timeText().toStdString();
    EXPECT_EQ(timeText(), labelAt(0));
}

INSTANTIATE_TEST_SUITE_P(Encodings, LongRecordingStory, testing::Values(Encoding::Evt2, Encoding::Evt3),
                         [](const auto& made) { return made.param == Encoding::Evt2 ? "Evt2" : "Evt3"; });

} // namespace
