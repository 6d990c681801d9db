#include "app/config.h"
#include "benchmarks/figure.h"
#include "benchmarks/streams.h"
#include "camera/driver/backend.h"
#include "camera/recording/rawfilereader.h"
#include "camera/recording/recordingbackend.h"
#include "camera/simulation/simulatedbackend.h"
#include "camera/simulation/streameddvscamera.h"
#include "display/eventframebuffer.h"
#include "display/showimageform.h"
#include "mainwindow/mainwidget.h"
#include "settings/settingitembox.h"
#include "settings/sidebardvssettingui.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>
#include <vector>

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
    const std::string path = streams::busyRecording(gigabyte);
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
        const double before = figure::processorSeconds();
        QElapsedTimer timer;
        timer.start();
        Application::run(8000);
        if (!showsEvents(window))
            state.SkipWithError("the camera shows nothing");
        const double cores
            = (figure::processorSeconds() - before) / (static_cast<double>(timer.elapsed()) / 1000);
        const double limit = figure::secondsToCopy(10'000'000 * 16 + 30 * 1280 * 720 * 4, 1280 * 720 * 4);
        figure::report(state, "cores", figure::Better::Lower, cores, limit);
    }
}

/// Twenty events a microsecond, the same step again and again: what costs time is not their making.
class DenseStream : public korvane::simulation::EventStream
{
public:
    DenseStream()
    {
        for (std::uint64_t t = 0; t < stepUs; ++t) {
            for (unsigned i = 0; i < 20; ++i)
                step.emplace_back(static_cast<std::uint16_t>((t * 37 + i * (i < 10 ? 1 : 41)) % 1280),
                                  static_cast<std::uint16_t>(t * 7 % 720), std::uint8_t(t & 1), t);
        }
    }
    korvane::recording::Geometry geometry() const override { return {1280, 720}; }
    std::uint64_t time() const override { return now; }
    std::uint64_t nextTime() const override { return now + stepUs; }
    korvane::simulation::StreamStep generateStep() override
    {
        for (korvane::Event2D& event : step)
            event.timestamp += now > 0 ? stepUs : 0;
        now += stepUs;
        return {step, {}, now};
    }

private:
    static constexpr std::uint64_t stepUs = 4000;
    std::vector<korvane::Event2D> step;
    std::uint64_t now = 0;
};

/// Offers one camera with that stream.
class DenseBackend : public korvane::Backend
{
public:
    static constexpr const char* serial = "BENCH-20M";

    std::string name() const override { return "benchmark"; }
    std::vector<korvane::CameraDescription> cameraDescriptions() override
    {
        return {{serial, "Halvora", name()}};
    }
    std::shared_ptr<korvane::DvsCamera> openCamera(const std::string& wanted) override
    {
        if (wanted != serial)
            return nullptr;
        return std::make_shared<korvane::simulation::StreamedDvsCamera>(serial,
                                                                        std::make_unique<DenseStream>());
    }
};

/// The same while a camera at 20 million events a second is recorded too; the limit copies its events twice,
/// for the recording and for the picture, and the pictures.
void record_cpu(benchmark::State& state)
{
    application();
    const auto backend = std::make_shared<DenseBackend>();
    korvane::registerBackend(backend);
    QTemporaryDir folder;
    QString& output = Config::getInstance(QStringLiteral("config.ini"))->output_raw_file_path;
    const QString before = std::exchange(output, folder.path());
    for ([[maybe_unused]] auto _ : state) {
        MainWidget window;
        window.show();
        window.openCamera(QString::fromLatin1(DenseBackend::serial));
        Application::run(2000);
        auto* const record = window.findChild<QPushButton*>(QStringLiteral("pb_record"));
        QElapsedTimer timer;
        timer.start();
        const double start = figure::processorSeconds();
        record->click();
        Application::run(8000);
        record->click();
        const double seconds = static_cast<double>(timer.elapsed()) / 1000;
        const double cores = (figure::processorSeconds() - start) / seconds;
        if (!showsEvents(window))
            state.SkipWithError("the camera shows nothing");
        // What really came: on a machine with other work the camera is late.
        std::size_t events = 0;
        const QDir recordings(folder.path());
        for (const QString& name : recordings.entryList({QStringLiteral("*.raw")}, QDir::Files)) {
            QString error;
            const auto reader
                = korvane::recording::RawFileReader::open(recordings.filePath(name).toStdString(), error);
            if (reader && reader->loadFile())
                reader->streamEvents(0, ~std::uint64_t(0), [&events](auto piece) {
                    events += piece.size();
                    return true;
                });
        }
        if (events == 0)
            state.SkipWithError("nothing is recorded");
        figure::note(state, "Mevents_per_second", static_cast<double>(events) / seconds / 1e6);
        const double limit = figure::secondsToCopy(2 * 20'000'000 * 16 + 30 * 1280 * 720 * 4, 1280 * 720 * 4);
        figure::report(state, "cores", figure::Better::Lower, cores, limit);
    }
    output = before;
    korvane::unregisterBackend(backend);
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

/// Filling the side bar's six sections from the tools of an open camera until they are drawn; the limit
/// copies the panel's pixels.
void fill_panels(benchmark::State& state)
{
    application();
    const auto camera = korvane::simulation::SimulatedBackend().openCamera("HAL-000001");
    MainWidget window;
    window.show();
    auto* const panel = window.findChild<SidebarDvsSettingUI*>();
    window.findChild<QPushButton*>(QStringLiteral("pb_fold_dvs_setting"))->click();
    Application::run(500);
    using korvane::ToolType;
    double busy = 0;
    const double seconds = figure::bestOfFive([&] {
        const double start = figure::processorSeconds();
        panel->setBiasesToolUI(camera->getTool(ToolType::Biases));
        panel->setTriggerInToolUI(camera->getTool(ToolType::TriggerIn));
        panel->setAntiFlickerToolUI(camera->getTool(ToolType::AntiFlicker));
        panel->setEventRateControlToolUI(camera->getTool(ToolType::EventRateControl));
        panel->setEventTrailFilterToolUI(camera->getTool(ToolType::EventTrailFilter));
        panel->setROIToolUI(camera->getTool(ToolType::Roi));
        QCoreApplication::processEvents();
        panel->repaint();
        const double spent = figure::processorSeconds() - start;
        busy = busy > 0 ? std::min(busy, spent) : spent;
    });
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(seconds);
    const auto sections = panel->findChildren<SettingItemBox*>().size();
    if (sections != 6)
        state.SkipWithError("a section is missing");
    // What it costs where the machine has other work.
    figure::note(state, "processor_ms", busy * 1e3);
    const auto pixels = static_cast<std::size_t>(panel->width()) * static_cast<std::size_t>(panel->height());
    figure::report(state, "ms", figure::Better::Lower, seconds * 1e3,
                   figure::secondsToCopy(pixels * 4, pixels * 4) * 1e3);
}

BENCHMARK(fill_panels)->Iterations(1)->Repetitions(3);
BENCHMARK(take_frame)->Iterations(1)->Repetitions(3);
BENCHMARK(play_rss)->Iterations(1);
BENCHMARK(live_cpu)->Iterations(1);
BENCHMARK(record_cpu)->Iterations(1);

} // namespace
