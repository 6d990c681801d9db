#pragma once

#include "app/config.h"
#include "camera/livesession.h"
#include "display/eventframebuffer.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/scriptedcamera.h"
#include "tests/support/scripteddialogs.h"

#include <QApplication>
#include <QDir>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QThread>
#include <gtest/gtest.h>

#include <memory>
#include <string>

/// A live session with scripted cameras, wired to a window as the program wires it. What the cameras are
/// asked and what the session tells stand in one log.
class LiveSessionTest : public testing::Test
{
protected:
    using Lines = ScriptedLog::Lines;

    LiveSessionTest() : imageArea(&window), play(&window), record(&window)
    {
        config.output_raw_file_path = QDir::current().filePath(QStringLiteral("recorded"));
        timing.setFrameRate(500);
        play.setCheckable(true);
        record.setCheckable(true);
        window.resize(400, 300);
        korvane::registerBackend(backend);
        session = std::make_unique<LiveSession>(state, timing, frames, config, &window, &imageArea);
        wire();
    }
    ~LiveSessionTest() override
    {
        session.reset();
        korvane::unregisterBackend(backend);
    }
    void SetUp() override
    {
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    }

    /// Lets the user pick a row of the camera list, or press another of its buttons.
    void pick(int row, const char* button = "pb_open")
    {
        ScriptedPerson person([row, button](QWidget& modal) {
            auto* const list = modal.findChild<QListWidget*>(QStringLiteral("listWidget_cameras"));
            if (!list)
                return false;
            list->setCurrentRow(row);
            QTest::mouseClick(modal.findChild<QPushButton*>(QLatin1StringView(button)), Qt::LeftButton);
            return true;
        });
        session->slotOpenCamera();
        EXPECT_TRUE(person.isDone()) << "no list was shown";
    }
    /// Opens a DVS-only camera, which then runs.
    std::shared_ptr<ScriptedCamera> openCamera(const std::string& serial = "S1")
    {
        backend->offer(serial, "Halvora");
        EXPECT_TRUE(session->openCameraBySerial(QString::fromStdString(serial)));
        auto camera = backend->opened(serial);
        EXPECT_NE(camera, nullptr);
        log.clear();
        return camera;
    }
    void click(QPushButton& button) { QTest::mouseClick(&button, Qt::LeftButton); }

    static bool wait(const std::function<bool()>& condition) { return QTest::qWaitFor(condition, 30000); }

    ScriptedLog log;
    std::shared_ptr<ScriptedBackend> backend = std::make_shared<ScriptedBackend>(log);
    SourceState state;
    DisplayTiming timing;
    EventFrameBuffer frames;
    Config config{QStringLiteral("session.ini")};
    QWidget window;
    QWidget imageArea;
    QPushButton play;
    QPushButton record;
    QStringList recordingTimes;
    int eventsToShow = 0;
    std::unique_ptr<LiveSession> session;

private:
    void note(const std::string& line)
    {
        EXPECT_EQ(QThread::currentThread(), QApplication::instance()->thread()) << line;
        log.add(line);
    }
    void wire()
    {
        play.move(0, 200);
        record.move(200, 200);
        const LiveSession* const source = session.get();
        QObject::connect(&play, &QPushButton::clicked, &window, [this] { session->playClicked(); });
        QObject::connect(&record, &QPushButton::clicked, &window, [this] { session->recordClicked(); });
        QObject::connect(source, &LiveSession::sourceAboutToChange, &window, [this] {
            note("source about to change, mode " + std::to_string(state.playMode));
            session->release();
        });
        QObject::connect(source, &LiveSession::setShowCameraLiveUI, &window,
                         [this](bool live) { note("live UI " + std::to_string(live)); });
        QObject::connect(source, &LiveSession::resetShowCameraFormTitle, &window,
                         [this](bool show) { note("title " + std::to_string(show)); });
        QObject::connect(source, &LiveSession::toShowCameraSerial, &window,
                         [this](const QString& serial) { note("serial " + serial.toStdString()); });
        QObject::connect(source, &LiveSession::signalShowLeftBottomTips, &window,
                         [this](const QString& tips, KvMessageType type, const QString& path) {
                             note("toast " + std::to_string(type) + " [" + tips.toStdString() + "] ["
                                  + path.toStdString() + ']');
                         });
        QObject::connect(source, &LiveSession::playRequested, &window, [this] {
            note("press play");
            play.click();
        });
        QObject::connect(source, &LiveSession::runningChanged, &window,
                         [this] { play.setChecked(state.filePlaying); });
        QObject::connect(source, &LiveSession::recordingChanged, &record, &QPushButton::setChecked);
        QObject::connect(source, &LiveSession::recordingTimeChanged, &window,
                         [this](const QString& text) { recordingTimes << text; });
        QObject::connect(source, &LiveSession::viewerTypeSelected, &window,
                         [this](korvane::STREAM_TYPE type) { note("viewer " + std::to_string(type)); });
        QObject::connect(source, &LiveSession::toolsChanged, &window, [this] { note("tools"); });
        QObject::connect(source, &LiveSession::triggerEventsToShow, &window, [this] { ++eventsToShow; });
    }
};
