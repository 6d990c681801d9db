#include "benchmarks/figure.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <unistd.h>

#include <algorithm>
#include <limits>

namespace {

/// The shipped program without its splash, in a folder of its own.
class Program
{
public:
    explicit Program(const QStringList& arguments = {QStringLiteral("--no-splash")})
    {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), folder.path());
        // Qt tells what it brings to the screen.
        environment.insert(QStringLiteral("QT_LOGGING_RULES"),
                           QStringLiteral("qt.widgets.painting.info=true"));
        process.setProcessEnvironment(environment);
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.setWorkingDirectory(folder.path());
        clock.start();
        process.start(QStringLiteral(KORVANE_EXECUTABLE), arguments);
    }
    ~Program()
    {
        process.terminate();
        if (!process.waitForFinished(10000))
            process.kill();
        process.waitForFinished(10000);
    }

    /// Milliseconds from the start until the main window was painted; negative when it never was.
    double untilPainted()
    {
        while (process.waitForReadyRead(20000)) {
            while (process.canReadLine()) {
                const QByteArray line = process.readLine();
                if (line.contains("Flushing") && line.contains("MainWidget"))
                    return static_cast<double>(clock.nsecsElapsed()) / 1e6;
            }
        }
        return -1;
    }
    /// Milliseconds from the start to the end.
    double untilEnded()
    {
        process.waitForFinished(20000);
        return static_cast<double>(clock.nsecsElapsed()) / 1e6;
    }
    /// Processor time so far, in seconds.
    double processorSeconds() const
    {
        QFile file(QStringLiteral("/proc/%1/stat").arg(process.processId()));
        if (!file.open(QIODevice::ReadOnly))
            return 0;
        // The name, in brackets, may hold anything; user and system time are the 12th and 13th word behind.
        const QByteArray text = file.readAll();
        const QList<QByteArray> words = text.mid(text.lastIndexOf(')') + 2).split(' ');
        return (words.at(11).toDouble() + words.at(12).toDouble())
            / static_cast<double>(sysconf(_SC_CLK_TCK));
    }

private:
    QTemporaryDir folder;
    QProcess process;
    QElapsedTimer clock;
};

/// From the start of the program to its painted main window; the limit is a start that ends after telling the
/// version.
void startup(benchmark::State& state)
{
    double best = std::numeric_limits<double>::infinity();
    double least = best;
    for ([[maybe_unused]] auto _ : state) {
        for (int i = 0; i < 5; ++i) {
            const double painted = Program().untilPainted();
            if (painted < 0) {
                state.SkipWithError("the main window is not painted");
                return;
            }
            best = std::min(best, painted);
            least = std::min(least, Program({QStringLiteral("--version")}).untilEnded());
        }
    }
    figure::report(state, "ms", figure::Better::Lower, best, least);
}

/// Processor time that a window with nothing open takes in a minute; none would be best.
void idle_cpu(benchmark::State& state)
{
    Program program;
    if (program.untilPainted() < 0) {
        state.SkipWithError("the main window is not painted");
        return;
    }
    QThread::sleep(3);
    for ([[maybe_unused]] auto _ : state) {
        const double before = program.processorSeconds();
        QThread::sleep(60);
        figure::report(state, "s_per_minute", figure::Better::Lower, program.processorSeconds() - before, 0);
    }
}

BENCHMARK(startup)->Iterations(1);
BENCHMARK(idle_cpu)->Iterations(1);

} // namespace
