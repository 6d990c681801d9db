#include "benchmarks/figure.h"
#include "benchmarks/streams.h"
#include "benchmarks/watchedclock.h"
#include "camera/driver/backend.h"
#include "camera/recording/recordingbackend.h"
#include "display/eventframebuffer.h"
#include "playback/dvsplayer.h"
#include "widgets/kvthreehandleslider.h"

#include <QApplication>

#include <chrono>
#include <memory>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using Reader = std::shared_ptr<korvane::DvsFileReader>;

constexpr std::size_t pictureBytes = 1280 * 720 * 4;

/// A loaded recording of `bytes` bytes with this many times 10 million events a second; empty when it cannot
/// be made.
Reader recording(std::size_t bytes, unsigned density)
{
    static std::once_flag registered;
    std::call_once(registered, [] {
        korvane::registerBackend(std::make_shared<korvane::recording::RecordingBackend>());
    });
    const Reader reader = korvane::DvsFileReader::createFileReader(streams::busyRecording(bytes, density));
    return reader && reader->loadFile() ? reader : nullptr;
}

void useApplication()
{
    static int argc = 1;
    static char name[] = "playback_bench";
    static char* argv[] = {name, nullptr};
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    static QApplication application(argc, argv);
}

/// From a press of the next button to the picture as a pixmap, anywhere in a recording of 1 GB; the limit
/// copies the events and the picture.
void next_click(benchmark::State& state)
{
    useApplication();
    const Reader reader = recording(1'000'000'000, 1);
    if (!reader)
        return state.SkipWithError("there is no recording");
    SourceState source;
    source.playMode = ModeDvsRecording;
    DisplayTiming timing;
    EventFrameBuffer frames;
    KvThreeHandleSlider timeline(nullptr, 1, 1);
    DvsPlayer player(source, timing, frames, timeline);
    QPixmap picture;
    QObject::connect(&player, &DvsPlayer::triggerEventsToShow, &timeline, [&] { frames.takeFrame(picture); });
    player.setRecording(reader);
    std::mt19937 generator(7);
    for (auto _ : state) {
        std::vector<double> answers;
        for (int i = 0; i < 400; ++i) {
            const auto last = static_cast<int>(player.endTime() - 100'000);
            player.onSliderTimeMove(std::uniform_int_distribution<int>(0, last)(generator));
            const auto before = Clock::now();
            player.nextClicked();
            answers.push_back(figure::milliseconds(Clock::now() - before));
        }
        constexpr std::size_t copied = 333'330 * sizeof(korvane::Event2D) + pictureBytes;
        figure::report(state, "ms", figure::Better::Lower, figure::percentile99(answers),
                       figure::secondsToCopy(copied, pictureBytes) * 1e3);
    }
}

/// Takes the pictures as the player does, and goes round for ever.
class Screen : public PlaybackView
{
public:
    explicit Screen(std::uint64_t lastTime) : last(lastTime) {}
    std::uint64_t rangeStart() const override { return 0; }
    std::uint64_t rangeEnd() const override { return last; }
    bool isLooping() const override { return true; }
    void addEvents(const korvane::Event2D* begin, const korvane::Event2D* end) override
    {
        frames.addEvents(begin, end);
    }
    void postPicture() override { picture = frames.takeImage(); }
    void postPosition(std::uint64_t, std::uint64_t) override {}
    void postEnd(std::uint64_t) override {}

private:
    std::uint64_t last;
    EventFrameBuffer frames;
    QImage picture;
};

/// Playback at 20 million events a second for a while: ticks a second, or a tick's work in milliseconds.
struct Playback
{
    double ticks = 0;
    double work = 0;
};

Playback watchedPlayback(const Reader& reader)
{
    SourceState source;
    source.playMode = ModeDvsRecording;
    const DisplayTiming timing;
    PlayPosition position;
    position.fileReader = reader;
    std::uint64_t last = 0;
    reader->getEndTimestamp(last);
    Screen screen(last);
    WatchedClock clock;
    DvsPlayLoop loop(source, timing, position, screen, clock);
    loop.start();
    std::this_thread::sleep_for(std::chrono::seconds(10));
    loop.stop();
    return {clock.ticksPerSecond(), figure::percentile99(clock.work)};
}

const Reader& doubleRecording()
{
    static const Reader reader = recording(500'000'000, 2);
    return reader;
}

void play_ticks(benchmark::State& state)
{
    if (!doubleRecording())
        return state.SkipWithError("there is no recording");
    for (auto _ : state)
        figure::report(state, "ticks/s", figure::Better::Higher, watchedPlayback(doubleRecording()).ticks,
                       1e6 / DvsPlayLoop::tickPeriod);
}

/// The limit copies the events and the picture.
void tick_work_p99(benchmark::State& state)
{
    if (!doubleRecording())
        return state.SkipWithError("there is no recording");
    constexpr std::size_t copied = 666'660 * sizeof(korvane::Event2D) + pictureBytes;
    for (auto _ : state)
        figure::report(state, "ms", figure::Better::Lower, watchedPlayback(doubleRecording()).work,
                       figure::secondsToCopy(copied, pictureBytes) * 1e3);
}

BENCHMARK(next_click)->Iterations(1)->Repetitions(3);
BENCHMARK(play_ticks)->Iterations(1);
BENCHMARK(tick_work_p99)->Iterations(1);

} // namespace
