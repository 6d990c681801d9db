#include "benchmarks/figure.h"
#include "benchmarks/streams.h"
#include "benchmarks/watchedclock.h"
#include "camera/driver/backend.h"
#include "camera/recording/intensityrecorder.h"
#include "camera/recording/recorder.h"
#include "camera/recording/recordingbackend.h"
#include "camera/simulation/apsrenderer.h"
#include "camera/simulation/framecounts.h"
#include "camera/simulation/fusionscene.h"
#include "camera/simulation/sensorstream.h"
#include "camera/simulation/simulatedfusioncamera.h"
#include "display/kernels/apsalignment.h"
#include "display/kernels/bgryuv.h"
#include "display/kernels/fusionpainter.h"
#include "playback/fusioncomposer.h"
#include "playback/fusionplayloop.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <limits>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace korvane::simulation;
using korvane::ApsFrame;
using korvane::Event2D;
using korvane::EventCountFrame;
using korvane::kernels::ApsAlignment;

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr std::uint64_t period = SimulatedFusionCamera::framePeriod;
constexpr std::size_t pictureBytes = std::size_t{ApsAlignment::dvsWidth} * ApsAlignment::dvsHeight * 3;
constexpr std::size_t countBytes
    = std::size_t{ApsAlignment::dvsWidth} * ApsAlignment::dvsHeight * 2 * sizeof(std::uint16_t);
constexpr std::size_t frameBytes = std::size_t{ApsAlignment::apsWidth} * ApsAlignment::apsHeight * 3;

SimulatedCameraConfig stageConfig()
{
    const auto all = standardCameras();
    return *std::find_if(all.begin(), all.end(), [](const auto& one) { return one.product == "Pellix"; });
}

/// What a fusion camera sees within one frame's time.
struct Moment
{
    Moment()
    {
        const SimulatedCameraConfig config = stageConfig();
        const auto stage = std::make_shared<const FusionStage>(config.seed);
        SensorStream sensor(std::make_unique<FusionScene>(stage), config.sensor, config.seed);
        ApsRenderer renderer(stage);
        FrameCounts frameCounts;
        while (sensor.time() <= 6 * period) {
            const StreamStep step = sensor.generateStep();
            for (const Event2D& event : step.events) {
                if (event.timestamp > 4 * period && event.timestamp <= 5 * period)
                    events.push_back(event);
            }
            frameCounts.count(step.events);
        }
        frameCounts.closeFrame(4 * period);
        frameCounts.closeFrame(5 * period);
        frameCounts.get(counts, 5 * period);
        const ApsFrame frame = renderer.render(5 * period);
        pixels.assign(frame.pixels, frame.pixels + frameBytes);
    }

    ApsFrame frame() const
    {
        return {pixels.data(), ApsAlignment::apsWidth, ApsAlignment::apsHeight, 5 * period};
    }

    std::vector<Event2D> events;
    std::shared_ptr<EventCountFrame> counts;
    std::vector<std::uint8_t> pixels;
};

const Moment& moment()
{
    static const Moment instance;
    return instance;
}

/// Puts these bytes out of the processor's caches, as another core's or a device's writing leaves them.
template <typename Value>
void evict(const std::vector<Value>& values)
{
#if defined(__x86_64__)
    const auto* const bytes = reinterpret_cast<const char*>(values.data());
    for (std::size_t i = 0; i < values.size() * sizeof(Value); i += 64)
        _mm_clflush(bytes + i);
    _mm_mfence();
#else
    // Larger than any cache, and read after the values.
    static std::vector<char> other(std::size_t{1} << 29U);
    for (std::size_t i = 0; i < other.size(); i += 64)
        benchmark::DoNotOptimize(++other[i]);
#endif
}

/// Milliseconds of `work` at best of so many times, each after `prepare`.
template <typename Prepare, typename Work>
double bestOf(int times, const Prepare& prepare, const Work& work)
{
    double best = std::numeric_limits<double>::max();
    for (int i = 0; i < times; ++i) {
        prepare();
        const auto before = Clock::now();
        work();
        best = std::min(best, figure::milliseconds(Clock::now() - before));
    }
    return best;
}

/// One intensity frame sampled at the event sensor's pixels; the limit copies the rows it reads.
void align_aps(benchmark::State& state)
{
    const Moment& seen = moment();
    const ApsAlignment alignment;
    constexpr std::size_t stride = std::size_t{ApsAlignment::dvsWidth} * 3;
    std::vector<std::uint8_t> picture(pictureBytes);
    std::size_t rows = 0;
    for (int row = 0; row < ApsAlignment::dvsHeight; ++row) {
        const int from = alignment.sourceRow(row);
        rows += from >= 0 && from < ApsAlignment::apsHeight ? 1 : 0;
    }
    for (auto _ : state) {
        const double best = bestOf(
            60, [&seen] { evict(seen.pixels); },
            [&] {
                alignment.align({seen.pixels.data(), std::size_t{ApsAlignment::apsWidth} * 3,
                                 ApsAlignment::apsWidth, ApsAlignment::apsHeight},
                                picture.data(), stride);
                benchmark::DoNotOptimize(picture.data());
            });
        const std::size_t read = rows * ApsAlignment::apsWidth * 3;
        figure::report(state, "ms", figure::Better::Lower, best, figure::secondsToCopy(read, read) * 1e3);
    }
}

/// One intensity frame made a video's picture; the limit copies the frame.
void convert_aps(benchmark::State& state)
{
    const Moment& seen = moment();
    constexpr std::size_t pixels = std::size_t{ApsAlignment::apsWidth} * ApsAlignment::apsHeight;
    std::vector<std::uint8_t> planes(pixels * 3 / 2);
    const korvane::kernels::YuvPlanes picture{planes.data(), planes.data() + pixels,
                                              planes.data() + pixels * 5 / 4, ApsAlignment::apsWidth,
                                              ApsAlignment::apsWidth / 2};
    for (auto _ : state) {
        const double best = bestOf(
            30, [&seen] { evict(seen.pixels); },
            [&] {
                korvane::kernels::bgrToYuv({seen.pixels.data(), std::size_t{ApsAlignment::apsWidth} * 3,
                                            ApsAlignment::apsWidth, ApsAlignment::apsHeight},
                                           picture);
                benchmark::DoNotOptimize(planes.data());
            });
        figure::report(state, "ms", figure::Better::Lower, best,
                       figure::secondsToCopy(frameBytes, frameBytes) * 1e3);
    }
}

/// A camera that has the counts of one moment.
class MomentCamera : public korvane::FusionCamera
{
public:
    bool isConnected() override { return true; }
    void addEventsStreamHandleCallback(EventsCallback) override {}
    void addApsFrameCallback(ApsFrameCallback) override {}
    void start(korvane::STREAM_TYPE) override {}
    void stop(korvane::STREAM_TYPE) override {}
    void startRecording(std::string, korvane::STREAM_TYPE) override {}
    void stopRecording(korvane::STREAM_TYPE) override {}
    bool getEventFrameAt(std::shared_ptr<EventCountFrame>& out, std::uint64_t) override
    {
        out = moment().counts;
        return true;
    }
    korvane::RecorderState recorderState() override { return {}; }
};

/// One picture of the fusion view, while the window still holds the one before; the limit copies the rows
/// that are read, the counts and the picture.
void compose_fusion(benchmark::State& state)
{
    const Moment& seen = moment();
    FusionPicture picture;
    QImage shown;
    FusionComposer composer(picture,
                            {[&shown](const QImage& image) { shown = image; }, [](std::uint64_t) {}});
    composer.setFusionCamera(std::make_shared<MomentCamera>());
    for (auto _ : state) {
        const double best = bestOf(
            60,
            [&seen] {
                evict(seen.pixels);
                evict(seen.counts->counts);
            },
            [&] { composer.onApsFrame(seen.frame()); });
        constexpr std::size_t copied = frameBytes * 100 / 335 + countBytes + pictureBytes;
        figure::report(state, "ms", figure::Better::Lower, best, figure::secondsToCopy(copied, copied) * 1e3);
        figure::note(state, "events", static_cast<double>(seen.events.size()));
    }
}

/// The events of a frame's time counted per pixel; the limit copies them.
void count_events(benchmark::State& state)
{
    const std::vector<Event2D>& events = moment().events;
    std::vector<std::uint16_t> counts(countBytes / sizeof(std::uint16_t));
    for (auto _ : state) {
        const double best = bestOf(
            200, [&counts] { std::fill(counts.begin(), counts.end(), std::uint16_t{0}); },
            [&] {
                korvane::kernels::countEvents(events.data(), events.data() + events.size(), counts,
                                              ApsAlignment::dvsWidth);
                benchmark::DoNotOptimize(counts.data());
            });
        const auto million = static_cast<double>(events.size()) / 1e6;
        const std::size_t bytes = events.size() * sizeof(Event2D);
        figure::report(state, "Mev/s", figure::Better::Higher, million / (best / 1e3),
                       million / figure::secondsToCopy(bytes, bytes));
    }
}

/// A fusion recording of ten seconds, made if it is not there yet: the path of its events; empty when it
/// cannot be made.
QString fusionRecording()
{
    const QDir folder(QString::fromLocal8Bit(streams::dataFolder().c_str()));
    const QString path = folder.filePath(QStringLiteral("stage.raw"));
    const QString finished = folder.filePath(QStringLiteral("stage.whole"));
    if (QFile::exists(finished))
        return path;
    folder.mkpath(QStringLiteral("."));
    QFile::remove(path);
    QFile::remove(folder.filePath(QStringLiteral("stage.mp4")));

    const SimulatedCameraConfig config = stageConfig();
    const auto stage = std::make_shared<const FusionStage>(config.seed);
    SensorStream sensor(std::make_unique<FusionScene>(stage), config.sensor, config.seed);
    ApsRenderer renderer(stage);
    korvane::recording::Recorder events(sensor.geometry(), config.serial);
    korvane::recording::IntensityRecorder frames(ApsAlignment::apsWidth, ApsAlignment::apsHeight);
    events.start(path.toStdString());
    frames.start(path.toStdString());
    std::uint64_t next = period;
    std::uint64_t pushed = 0;
    while (sensor.time() < 10'000'000) {
        const StreamStep step = sensor.generateStep();
        events.push(step.events, step.triggers);
        frames.noteEvents(step.events);
        for (; next < step.until; next += period) {
            frames.push(renderer.render(next));
            // Nothing is in a hurry here: no frame is left out.
            ++pushed;
            while (frames.counts().pictures + 1 < pushed && frames.state().error.empty())
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    events.stop();
    frames.stop();
    if (!events.state().error.empty() || !frames.state().error.empty())
        return {};
    QFile mark(finished);
    mark.open(QIODevice::WriteOnly);
    return path;
}

/// Takes the pictures as the window does: the newest one is held.
class Screen : public FusionPlaybackOutput
{
public:
    void showImage(const QImage& image) override { shown = image; }
    void showTimeStamp(std::uint64_t) override {}
    void showProgress(std::uint64_t, std::uint64_t) override {}
    void fileFinished() override
    {
        const std::lock_guard lock(mutex);
        finished = true;
        changed.notify_all();
    }
    void awaitEnd()
    {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return finished; });
    }

private:
    QImage shown;
    std::mutex mutex;
    std::condition_variable changed;
    bool finished = false; ///< under mutex
};

/// The recording played from its start to its end: ticks a second, and a tick's work in milliseconds.
struct Playback
{
    double ticks = 0;
    double work = 0;
};

bool playRecording(Playback& result)
{
    static std::once_flag registered;
    std::call_once(registered, [] {
        korvane::registerBackend(std::make_shared<korvane::recording::RecordingBackend>());
    });
    static const QString path = fusionRecording();
    if (path.isEmpty())
        return false;
    FusionRecording recording;
    recording.dvsReader = korvane::DvsFileReader::createFileReader(path.toStdString());
    recording.apsReader = korvane::ApsFileReader::createFileReader(path.chopped(4).toStdString() + ".mp4");
    if (!recording.dvsReader || !recording.apsReader || !recording.dvsReader->loadFile()
        || !recording.apsReader->loadFile())
        return false;
    recording.dvsReader->getStartTimestamp(recording.startTimestamp);
    recording.dvsReader->getEndTimestamp(recording.endTimestamp);
    FusionPicture picture;
    Screen screen;
    WatchedClock clock;
    FusionPlayLoop loop(picture, screen, clock);
    loop.start(recording);
    screen.awaitEnd();
    loop.stop();
    result = {clock.ticksPerSecond(), figure::percentile99(clock.work)};
    return true;
}

void fusion_ticks(benchmark::State& state)
{
    for (auto _ : state) {
        Playback played;
        if (!playRecording(played))
            return state.SkipWithError("there is no recording");
        figure::report(state, "ticks/s", figure::Better::Higher, played.ticks,
                       1e6 / FusionPlayLoop::tickPeriod);
        figure::note(state, "work_p99_ms", played.work);
    }
}

/// The limit copies the frame's rows that are read, twice the picture, and nothing for decoding.
void fusion_tick_work_p99(benchmark::State& state)
{
    constexpr std::size_t copied = frameBytes * 100 / 335 + 2 * pictureBytes;
    for (auto _ : state) {
        Playback played;
        if (!playRecording(played))
            return state.SkipWithError("there is no recording");
        figure::report(state, "ms", figure::Better::Lower, played.work,
                       figure::secondsToCopy(copied, copied) * 1e3);
    }
}

/// Pictures of the fusion view a second while the camera records; the limit is the camera's rate.
void fusion_live(benchmark::State& state)
{
    for (auto _ : state) {
        const QTemporaryDir folder;
        const auto camera = SimulatedFusionCamera::make(stageConfig());
        FusionPicture picture;
        QImage shown;
        std::atomic<int> pictures{0};
        FusionComposer composer(picture,
                                {[&](const QImage& image) {
                                     shown = image;
                                     ++pictures;
                                 },
                                 [](std::uint64_t) {}});
        camera->addApsFrameCallback([&composer](const ApsFrame& frame) { composer.onApsFrame(frame); });
        camera->addEventsStreamHandleCallback(
            [&composer](const Event2D* begin, const Event2D* end) { composer.onEvents(begin, end); });
        composer.setFusionCamera(camera);
        camera->start(korvane::STREAM_FUSION);
        while (pictures < 5)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        camera->startRecording(folder.filePath(QStringLiteral("live.raw")).toStdString(),
                               korvane::STREAM_FUSION);
        const int before = pictures;
        const double usedBefore = figure::processorSeconds();
        const auto begin = Clock::now();
        std::this_thread::sleep_for(std::chrono::seconds(10));
        const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
        const int made = pictures - before;
        const double used = figure::processorSeconds() - usedBefore;
        camera->stopRecording(korvane::STREAM_FUSION);
        camera->stop(korvane::STREAM_FUSION);
        composer.setFusionCamera(nullptr);
        if (!camera->recorderState().error.empty())
            return state.SkipWithError(camera->recorderState().error.c_str());
        const auto recorded = camera->recordedFrames();
        figure::report(state, "frames/s", figure::Better::Higher, made / seconds,
                       1e6 / static_cast<double>(period));
        figure::note(state, "cores", used / seconds);
        figure::note(state, "recorded", static_cast<double>(recorded.pictures));
        figure::note(state, "repeated", static_cast<double>(recorded.repeats));
        figure::note(state, "dropped", static_cast<double>(recorded.dropped));
    }
}

BENCHMARK(align_aps)->Iterations(1)->Repetitions(3);
BENCHMARK(convert_aps)->Iterations(1)->Repetitions(3);
BENCHMARK(compose_fusion)->Iterations(1)->Repetitions(3);
BENCHMARK(count_events)->Iterations(1)->Repetitions(3);
BENCHMARK(fusion_ticks)->Iterations(1);
BENCHMARK(fusion_tick_work_p99)->Iterations(1);
BENCHMARK(fusion_live)->Iterations(1)->Repetitions(2);

} // namespace
