#include "benchmarks/figure.h"
#include "benchmarks/streams.h"
#include "camera/recording/evt3encoder.h"
#include "camera/recording/evtdecoder.h"
#include "camera/recording/rawfilereader.h"
#include "display/eventframebuffer.h"
#include "tests/support/decodedvideo.h"
#include "tests/support/pictureluma.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <limits>
#include <random>
#include <span>

#include <sched.h>

namespace {

using korvane::Event2D;
using namespace korvane::recording;

constexpr std::size_t streamBytes = 32 * 1024 * 1024;
constexpr std::size_t outputEvents = 32 * 1024;
constexpr std::size_t gigabyte = 1'000'000'000;

double now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// Decodes a stream into a recycled buffer, all checks on, as windows of recordings are.
std::size_t decodeAll(const EvtDecoder& decoder, const streams::Bytes& bytes, std::vector<Event2D>& out)
{
    EvtState state;
    EvtCounts counts;
    EvtPass pass;
    pass.next = bytes.data();
    pass.end = bytes.data() + bytes.size();
    pass.streamEnd = pass.end;
    pass.geometry = {1280, 720};
    std::size_t events = 0;
    while (pass.end - pass.next >= static_cast<std::ptrdiff_t>(wordSize(decoder.encoding()))) {
        pass.out = out.data();
        pass.outEnd = out.data() + out.size();
        decoder.decode(state, pass, counts);
        events += static_cast<std::size_t>(pass.out - out.data());
        benchmark::DoNotOptimize(out.data());
    }
    return events;
}

void measureDecoding(benchmark::State& state, EvtEncoding encoding, const streams::Bytes& bytes)
{
    const EvtDecoder decoder(encoding);
    std::vector<Event2D> out(outputEvents);
    std::size_t events = 0;
    const double seconds = figure::bestOfFive([&] { events = decodeAll(decoder, bytes, out); });
    for (auto _ : state)
        benchmark::DoNotOptimize(events);
    const double copy = figure::secondsToCopy(events * sizeof(Event2D), outputEvents * sizeof(Event2D));
    state.counters["bytes_per_event"] = static_cast<double>(bytes.size()) / static_cast<double>(events);
    const auto millions = static_cast<double>(events) / 1e6;
    figure::report(state, "Mevents/s", figure::Better::Higher, millions / seconds, millions / copy);
}

void decode_evt3(benchmark::State& state)
{
    measureDecoding(state, EvtEncoding::Evt3, streams::busyEvt3(streamBytes));
}

void decode_evt3_sparse(benchmark::State& state)
{
    measureDecoding(state, EvtEncoding::Evt3, streams::sparseEvt3(streamBytes));
}

void decode_evt2(benchmark::State& state)
{
    measureDecoding(state, EvtEncoding::Evt2, streams::evt2(streamBytes));
}

void decode_evt21(benchmark::State& state)
{
    measureDecoding(state, EvtEncoding::Evt21, streams::evt21(streamBytes));
}

std::unique_ptr<RawFileReader> openRecording(benchmark::State& state, const std::string& path)
{
    QString error;
    auto reader = RawFileReader::open(path, error);
    if (!reader)
        state.SkipWithError(qPrintable(QStringLiteral("cannot open the recording: ") + error));
    return reader;
}

/// Encodes what a stream holds, in batches as a recorder gets them; the limit copies the words written.
void measureEncoding(benchmark::State& state, const streams::Bytes& bytes)
{
    std::vector<Event2D> events(bytes.size());
    const std::size_t count = decodeAll(EvtDecoder(EvtEncoding::Evt3), bytes, events);
    std::vector<std::uint8_t> words;
    double processor = std::numeric_limits<double>::max();
    const double seconds = figure::bestOfFive([&] {
        const double before = figure::processorSeconds();
        Evt3Encoder encoder({1280, 720});
        words.clear();
        constexpr std::size_t batch = 16 * 1024;
        for (std::size_t at = 0; at < count; at += batch)
            encoder.encode({events.data() + at, std::min(batch, count - at)}, {}, words);
        processor = std::min(processor, figure::processorSeconds() - before);
    });
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(words.data());
    const auto millions = static_cast<double>(count) / 1e6;
    figure::note(state, "Mevents_per_cpu_second", millions / processor);
    figure::report(state, "Mevents/s", figure::Better::Higher, millions / seconds,
                   millions / figure::secondsToCopy(words.size(), 1024 * 1024));
}

void encode_evt3(benchmark::State& state)
{
    measureEncoding(state, streams::busyEvt3(8 * 1024 * 1024));
}

void encode_evt3_sparse(benchmark::State& state)
{
    measureEncoding(state, streams::sparseEvt3(8 * 1024 * 1024));
}

/// What an event of the busy stream takes in our words; the limit is what it takes in the source's.
void bytes_per_event(benchmark::State& state)
{
    const auto bytes = streams::busyEvt3(8 * 1024 * 1024);
    std::vector<Event2D> events(bytes.size());
    const std::size_t count = decodeAll(EvtDecoder(EvtEncoding::Evt3), bytes, events);
    std::vector<std::uint8_t> words;
    for ([[maybe_unused]] auto _ : state)
        Evt3Encoder({1280, 720}).encode({events.data(), count}, {}, words);
    figure::report(state, "B", figure::Better::Lower,
                   static_cast<double>(words.size()) / static_cast<double>(count),
                   static_cast<double>(bytes.size()) / static_cast<double>(count));
}

/// Keeps this thread, and those it starts, on one processor as long as it lives.
class OnOneProcessor
{
public:
    OnOneProcessor()
    {
        sched_getaffinity(0, sizeof before, &before);
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(static_cast<unsigned>(sched_getcpu()), &one);
        sched_setaffinity(0, sizeof one, &one);
    }
    ~OnOneProcessor() { sched_setaffinity(0, sizeof before, &before); }
    OnOneProcessor(const OnOneProcessor&) = delete;
    OnOneProcessor& operator=(const OnOneProcessor&) = delete;

private:
    cpu_set_t before = {};
};

/// Cutting 40 million events with verification; the limit copies the words written. The time of the
/// processors stands beside that of the clock, which other work on the machine makes longer.
void measureCut(benchmark::State& state, bool onOneProcessor)
{
    const auto reader = openRecording(state, streams::busyRecording(gigabyte));
    if (!reader || !reader->loadFile()) {
        state.SkipWithError("the recording cannot be loaded");
        return;
    }
    const std::string path = streams::dataFolder() + "/cut.raw";
    constexpr std::uint64_t length = 4'000'000; // microseconds
    std::size_t events = 0;
    reader->streamEvents(0, length, [&events](std::span<const Event2D> piece) {
        events += piece.size();
        return true;
    });
    std::uintmax_t bytes = 0;
    double processor = std::numeric_limits<double>::max();
    bool done = true;
    const double seconds = figure::bestOfFive([&] {
        std::filesystem::remove(path);
        const auto pin = onOneProcessor ? std::make_unique<OnOneProcessor>() : nullptr;
        const double before = figure::processorSeconds();
        done = reader->cutFile(0, length, path) && done;
        processor = std::min(processor, figure::processorSeconds() - before);
    });
    if (done)
        bytes = std::filesystem::file_size(path);
    else
        state.SkipWithError("the recording cannot be cut");
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(seconds);
    const auto millions = static_cast<double>(events) / 1e6;
    figure::note(state, "Mevents_per_cpu_second", millions / processor);
    figure::report(state, "Mevents/s", figure::Better::Higher, millions / seconds,
                   millions / figure::secondsToCopy(bytes, 1024 * 1024));
    std::filesystem::remove(path);
}

void cut(benchmark::State& state)
{
    measureCut(state, true);
}

void cut_two_cores(benchmark::State& state)
{
    measureCut(state, false);
}

/// Exporting six seconds of 10 million events a second, as dense as noise; times real time. The limit decodes
/// and paints the same windows without a video. A video under 35 dB is no figure.
void export_speed(benchmark::State& state)
{
    const auto reader = openRecording(state, streams::busyRecording(gigabyte));
    if (!reader || !reader->loadFile()) {
        state.SkipWithError("the recording cannot be loaded");
        return;
    }
    constexpr std::uint64_t period = 33333; // microseconds
    constexpr std::uint64_t pictures = 180;
    const std::string path = streams::dataFolder() + "/export.mp4";
    double seconds = 0;
    for ([[maybe_unused]] auto _ : state) {
        std::filesystem::remove(path);
        const double start = now();
        if (!reader->exportVideo(0, pictures * period - 1, path)) {
            state.SkipWithError("the recording cannot be exported");
            return;
        }
        seconds = now() - start;
    }
    EventFrameBuffer frames;
    std::uint64_t next = 0;
    double worst = 99;
    const auto compare = [&](const DecodedPicture& picture) {
        const auto window = reader->getEventsAt(next, period);
        next += period;
        frames.addEvents(window->data(), window->data() + window->size());
        worst = std::min(worst, psnr(picture.luma, lumaOf(frames.takeImage())));
    };
    const DecodedVideo video = decodeVideo(QString::fromStdString(path), compare);
    const auto bytes = static_cast<double>(std::filesystem::file_size(path));
    std::filesystem::remove(path);
    if (video.count != pictures || worst < 35) {
        state.SkipWithError("the video is not good enough");
        return;
    }
    state.counters["worst_psnr"] = worst;
    state.counters["megabytes"] = bytes / 1e6;
    const double limit = figure::bestOfFive([&] {
        for (std::uint64_t picture = 0; picture < 30; ++picture) {
            const auto window = reader->getEventsAt(picture * period, period);
            frames.addEvents(window->data(), window->data() + window->size());
            const QImage image = frames.takeImage();
            benchmark::DoNotOptimize(image.constBits());
        }
    });
    constexpr double length = pictures * period / 1e6;
    figure::report(state, "x real time", figure::Better::Higher, length / seconds, 30 * period / 1e6 / limit);
}

/// Seconds that reading these bytes word by word takes at best of five.
double secondsToRead(std::span<const std::uint8_t> bytes)
{
    return figure::bestOfFive([bytes] {
        std::uint64_t sum = 0;
        const auto* const words = reinterpret_cast<const std::uint64_t*>(bytes.data());
        for (std::size_t i = 0; i < bytes.size() / 8; ++i)
            sum += words[i];
        benchmark::DoNotOptimize(sum);
    });
}

/// The scan that loadFile does, over a file in the page cache; the limit reads the same mapping word by word.
void index_scan(benchmark::State& state)
{
    const std::string path = streams::busyRecording(gigabyte);
    const auto reader = openRecording(state, path);
    MappedFile file(QString::fromStdString(path));
    if (!reader || !file.open()) {
        state.SkipWithError("cannot map the recording");
        return;
    }
    const auto bytes = file.bytes();
    const EvtDecoder decoder(EvtEncoding::Evt3);
    const auto body = bytes.subspan(reader->fileHeader().bodyOffset);
    const double limit = secondsToRead(bytes);
    const double seconds = figure::bestOfFive([&] {
        EvtCounts counts;
        const auto index = RecordingIndex::build(decoder, {1280, 720}, body, counts);
        benchmark::DoNotOptimize(index.entries().data());
    });
    for (auto _ : state)
        benchmark::DoNotOptimize(seconds);
    const auto size = static_cast<double>(bytes.size()) / 1e9;
    figure::report(state, "GB/s", figure::Better::Higher, size / seconds, size / limit);
}

/// From createFileReader to a picture with the first window's events in it, the page cache warm.
void open_1gb(benchmark::State& state)
{
    const std::string path = streams::busyRecording(gigabyte);
    double best = 1e9;
    double limit = 1e9;
    for (auto _ : state) {
        for (int i = 0; i < 5; ++i) {
            const double start = now();
            const auto reader = openRecording(state, path);
            if (!reader || !reader->loadFile()) {
                state.SkipWithError("the recording cannot be loaded");
                return;
            }
            EventFrameBuffer frames;
            const auto window = reader->getEventsAt(0, 33333);
            frames.addEvents(window->data(), window->data() + window->size());
            const QImage picture = frames.takeImage();
            benchmark::DoNotOptimize(picture.constBits());
            best = std::min(best, now() - start);
        }
        MappedFile file(QString::fromStdString(path));
        file.open();
        limit = secondsToRead(file.bytes());
    }
    figure::report(state, "s", figure::Better::Lower, best, limit);
}

/// A window of 33 ms at a random place; the limit copies the window's events.
void seek_window_p99(benchmark::State& state)
{
    const std::string path = streams::busyRecording(gigabyte);
    const auto reader = openRecording(state, path);
    if (!reader || !reader->loadFile()) {
        state.SkipWithError("the recording cannot be loaded");
        return;
    }
    std::uint64_t end = 0;
    reader->getEndTimestamp(end);
    std::mt19937_64 random(1);
    std::vector<double> times;
    std::size_t events = 0;
    for (auto _ : state) {
        for (int i = 0; i < 1000; ++i) {
            const std::uint64_t at = random() % (end - 33000);
            const double start = now();
            const auto window = reader->getEventsAt(at, 33000);
            times.push_back(now() - start);
            events = window->size();
        }
    }
    std::sort(times.begin(), times.end());
    const double limit = figure::secondsToCopy(events * sizeof(Event2D), events * sizeof(Event2D));
    figure::report(state, "ms", figure::Better::Lower, times[times.size() * 99 / 100] * 1e3, limit * 1e3);
}

/// Painting windows of 33 ms at 10 million events a second; the limit copies the events.
void add_events(benchmark::State& state)
{
    const auto bytes = streams::busyEvt3(1024 * 1024);
    const EvtDecoder decoder(EvtEncoding::Evt3);
    std::vector<Event2D> events(512 * 1024);
    const std::size_t count = decodeAll(decoder, bytes, events);
    EventFrameBuffer frames;
    constexpr int rounds = 50;
    const double seconds = figure::bestOfFive([&] {
        for (int i = 0; i < rounds; ++i)
            frames.addEvents(events.data(), events.data() + count);
    });
    for (auto _ : state)
        benchmark::DoNotOptimize(count);
    const double copy = figure::secondsToCopy(rounds * count * sizeof(Event2D), count * sizeof(Event2D));
    const auto millions = static_cast<double>(rounds * count) / 1e6;
    figure::report(state, "Mevents/s", figure::Better::Higher, millions / seconds, millions / copy);
}

/// The best of repeated runs is taken: another process on the machine slows some of them down.
BENCHMARK(decode_evt3)->Iterations(1)->Repetitions(3);
BENCHMARK(decode_evt3_sparse)->Iterations(1)->Repetitions(3);
BENCHMARK(decode_evt2)->Iterations(1)->Repetitions(3);
BENCHMARK(decode_evt21)->Iterations(1)->Repetitions(3);
BENCHMARK(encode_evt3)->Iterations(1)->Repetitions(3);
BENCHMARK(encode_evt3_sparse)->Iterations(1)->Repetitions(3);
BENCHMARK(bytes_per_event)->Iterations(1);
BENCHMARK(cut)->Iterations(1)->Repetitions(2);
BENCHMARK(cut_two_cores)->Iterations(1)->Repetitions(2);
BENCHMARK(export_speed)->Iterations(1)->Repetitions(3);
BENCHMARK(index_scan)->Iterations(1)->Repetitions(2);
BENCHMARK(open_1gb)->Iterations(1)->Repetitions(2);
BENCHMARK(seek_window_p99)->Iterations(1)->Repetitions(3);
BENCHMARK(add_events)->Iterations(1)->Repetitions(3);

} // namespace
