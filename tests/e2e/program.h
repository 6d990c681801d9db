#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QTest>

#include <string>

/// The shipped program, started as a user starts it.
class Program
{
public:
    Program(const QString& replay, const QStringList& arguments, const QString& backends = {})
    {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("KORVANE_REPLAY"), replay);
        environment.insert(QStringLiteral("KORVANE_BACKENDS"), backends);
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        process.setProcessEnvironment(environment);
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.setWorkingDirectory(folder.path());
        process.start(QStringLiteral(KORVANE_EXECUTABLE), arguments);
    }
    ~Program()
    {
        process.terminate();
        process.waitForFinished(30000);
    }
    bool waitForLine(const QString& line) { return waitForText(line + QLatin1Char('\n')); }
    bool waitForText(const QString& wanted)
    {
        return QTest::qWaitFor(
            [this, &wanted] {
                output += QString::fromLocal8Bit(process.readAll());
                return output.contains(wanted);
            },
            60000);
    }
    bool isRunning() const { return process.state() == QProcess::Running; }
    std::string text() const { return output.toStdString(); }

private:
    QTemporaryDir folder;
    QProcess process;
    QString output;
};
