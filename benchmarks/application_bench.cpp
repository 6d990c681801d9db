#include "benchmarks/figure.h"
#include "benchmarks/streams.h"
#include "camera/driver/backend.h"
#include "camera/recording/recordingbackend.h"
#include "camera/simulation/simulatedbackend.h"
#include "display/eventframebuffer.h"
#include "display/showimageform.h"
#include "mainwindow/mainwidget.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include <chrono>
#include <memory>

#include <sys/resource.h>

namespace {

constexpr std::size_t gigabyte = 1'000'000'000;

/// The application as it starts, in a folder of its own.
class Application
{
public:
    Application()
    {
        QDir::setCurrent(folder.path());
        static int argc = 1;
        static char name[] = "application_bench";
        static char* argv[] = {name, nullptr};
        application = std::make_unique<QApplication>(argc, argv);
        korvane::registerBackend(std::make_shared<korvane::recording::RecordingBackend>());
        korvane::registerBackend(std::make_shared<korvane::simulation::SimulatedBackend>());
    }

    /// Runs the event loop as the application does: asleep while nothing happens.
    static void run(int milliseconds)
    {
        QEventLoop loop;
        QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
        loop.exec();
    }

private:
    QTemporaryDir folder;
    std::unique_ptr<QApplication> application;
};

Application& application()
{
    static Application instance;
    return instance;
}

double processorSeconds()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// Whether the window shows events: a figure without them would measure an idle window.
bool showsEvents(const MainWidget& window)
{
    const QImage picture = window.findChild<ShowImageForm*>()->shownPixmap().toImage();
    int events = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            events += picture.pixel(x, y) != qRgb(112, 112, 112) ? 1 : 0;
    }
    return events > 1000;
}

/// One of this process's memory figures, in MB.
double residentMegabytes(const char* key)
{
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith(key))
            return line.mid(static_cast<qsizetype>(qstrlen(key)))
                       .simplified()
                       .split(' ')
                       .constFirst()
                       .toDouble()
                / 1000;
    }
    return 0;
}

/// Memory that is not a mapped file's, while a recording of 1 GB plays.
void play_rss(benchmark::State& state)
{
    const char* const folder = std::getenv("KORVANE_BENCH_DATA");
    const std::string path = streams::busyRecording(folder ? folder : "bench-data", gigabyte);
    application();
    for (auto _ : state) {
        MainWidget window;
        window.show();
        window.openRecording(QString::fromStdString(path));
        Application::run(4000);
        if (!showsEvents(window))
            state.SkipWithError("the recording does not play");
        figure::report(state, "MB", figure::Better::Lower, residentMegabytes("RssAnon:"),
                       2 * 1280 * 720 * 4 / 1e6);
    }
}

/// Processor time of the whole application while a camera at 10 million events a second is on the screen, in
/// cores; the limit copies the same events and pictures.
void live_cpu(benchmark::State& state)
{
    application();
    for (auto _ : state) {
        MainWidget window;
        window.show();
        window.openCamera(QStringLiteral("HAL-000001"));
        Application::run(2000);
        const double before = processorSeconds();
        QElapsedTimer timer;
        timer.start();
        Application::run(8000);
        if (!showsEvents(window))
            state.SkipWithError("the camera shows nothing");
        const double cores = (processorSeconds() - before) / (static_cast<double>(timer.elapsed()) / 1000);
        const double limit = figure::secondsToCopy(10'000'000 * 16 + 30 * 1280 * 720 * 4, 1280 * 720 * 4);
        figure::report(state, "cores", figure::Better::Lower, cores, limit);
    }
}

/// Taking a picture over as a pixmap; the limit copies a picture.
void take_frame(benchmark::State& state)
{
    application();
    EventFrameBuffer frames;
    const korvane::Event2D event(1, 1, 1, 1);
    QPixmap pixmap;
    constexpr int rounds = 200;
    const double seconds = figure::bestOfFive([&] {
        for (int i = 0; i < rounds; ++i) {
            frames.addEvents(&event, &event + 1);
            frames.takeFrame(pixmap);
        }
    });
    for (auto _ : state)
        benchmark::DoNotOptimize(seconds);
    constexpr std::size_t picture = 1280 * 720 * 4;
    figure::report(state, "ms", figure::Better::Lower, seconds / rounds * 1e3,
                   figure::secondsToCopy(rounds * picture, picture) / rounds * 1e3);
}

BENCHMARK(take_frame)->Iterations(1)->Repetitions(3);
BENCHMARK(play_rss)->Iterations(1);
BENCHMARK(live_cpu)->Iterations(1);

} // namespace
