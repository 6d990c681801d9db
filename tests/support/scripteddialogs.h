#pragma once

#include <QApplication>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <functional>

/// Stands in for the person in front of modal windows: looks at the one on the screen again and again and
/// acts on it, until told that it is dealt with. GUI thread.
class ScriptedPerson
{
public:
    /// `act` gets the active modal window and answers whether it is done with everything.
    explicit ScriptedPerson(std::function<bool(QWidget& modal)> act)
    {
        QObject::connect(&timer, &QTimer::timeout, &timer, [this, doIt = std::move(act)] {
            QWidget* const modal = QApplication::activeModalWidget();
            if (modal && !done)
                done = doIt(*modal);
        });
        timer.start(5);
    }
    ScriptedPerson(const ScriptedPerson&) = delete;
    ScriptedPerson& operator=(const ScriptedPerson&) = delete;

    bool isDone() const { return done; }

private:
    QTimer timer;
    bool done = false;
};
