#pragma once

#include <QStringList>
#include <QtGlobal>

/// Collects what the GUI thread logs for as long as it lives; one at a time.
class KvCapturedLog
{
public:
    KvCapturedLog()
    {
        lines().clear();
        previous = qInstallMessageHandler(&KvCapturedLog::handle);
    }
    ~KvCapturedLog() { qInstallMessageHandler(previous); }
    KvCapturedLog(const KvCapturedLog&) = delete;
    KvCapturedLog& operator=(const KvCapturedLog&) = delete;

    int count(QLatin1StringView line) const { return static_cast<int>(lines().count(line)); }

private:
    static QStringList& lines()
    {
        static QStringList all;
        return all;
    }
    static void handle(QtMsgType, const QMessageLogContext&, const QString& text) { lines().append(text); }

    QtMessageHandler previous;
};
