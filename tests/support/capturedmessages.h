#pragma once

#include <QMutex>
#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <functional>

/// Collects the log lines written while it lives, from any thread, and passes none on. At most one lives at a
/// time.
class CapturedMessages
{
public:
    CapturedMessages()
    {
        current = this;
        previous = qInstallMessageHandler(&CapturedMessages::handle);
    }
    ~CapturedMessages()
    {
        qInstallMessageHandler(previous);
        current = nullptr;
    }
    CapturedMessages(const CapturedMessages&) = delete;
    CapturedMessages& operator=(const CapturedMessages&) = delete;

    QStringList of(QtMsgType type) const
    {
        const QMutexLocker lock(&mutex);
        QStringList texts;
        for (const Line& line : lines) {
            if (line.type == type)
                texts << line.text;
        }
        return texts;
    }
    QStringList debug() const { return of(QtDebugMsg); }
    QStringList warnings() const { return of(QtWarningMsg); }

    /// Called with each line by the thread that writes it; set before others write. It writes none itself.
    std::function<void(const QString& line)> onLine;

private:
    struct Line
    {
        QtMsgType type;
        QString text;
    };

    static void handle(QtMsgType type, const QMessageLogContext&, const QString& text)
    {
        {
            const QMutexLocker lock(&current->mutex);
            current->lines.append({type, text});
        }
        if (current->onLine)
            current->onLine(text);
    }

    static inline CapturedMessages* current = nullptr;
    mutable QMutex mutex;
    QList<Line> lines;
    QtMessageHandler previous = nullptr;
};
