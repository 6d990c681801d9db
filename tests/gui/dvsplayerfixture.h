#pragma once

#include "display/eventframebuffer.h"
#include "playback/dvsplayer.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/scriptedreader.h"
#include "widgets/kvthreehandleslider.h"

#include <QApplication>
#include <QPushButton>
#include <QTest>
#include <QThread>
#include <gtest/gtest.h>

#include <memory>
#include <utility>

/// A player of a scripted recording with a real timeline, wired to a window as the program wires it.
class DvsPlayerTest : public testing::Test
{
protected:
    using Lines = ScriptedLog::Lines;

    DvsPlayerTest() : timeline(nullptr, 1, 1)
    {
        timeline.resize(800, 30);
        play.setCheckable(true);
        state.playMode = ModeDvsRecording;
        player = std::make_unique<DvsPlayer>(state, timing, frames, timeline);
        QObject::connect(&play, &QPushButton::clicked, &timeline, [this] { player->playClicked(); });
        const DvsPlayer* const source = player.get();
        QObject::connect(source, &DvsPlayer::runningChanged, &timeline,
                         [this] { play.setChecked(state.filePlaying); });
        QObject::connect(source, &DvsPlayer::pauseRequested, &timeline, [this] {
            ++pauses;
            emit play.clicked(false);
        });
        QObject::connect(source, &DvsPlayer::timeTextChanged, &timeline, [this](const QString& text) {
            EXPECT_EQ(QThread::currentThread(), QApplication::instance()->thread());
            label = text;
            ++labels;
        });
        QObject::connect(source, &DvsPlayer::triggerEventsToShow, &timeline, [this] {
            ++announcements;
            if (frames.hasNewEvents())
                picture = frames.takeImage();
        });
        QObject::connect(source, &DvsPlayer::triggerShowPixmap, &timeline, [this](const QPixmap* pixmap) {
            EXPECT_EQ(QThread::currentThread(), QApplication::instance()->thread());
            picture = pixmap->toImage();
            ++pictures;
        });
    }
    ~DvsPlayerTest() override { player.reset(); }

    /// A recording from `first` to `last`, microseconds, at its start.
    void open(std::uint64_t first, std::uint64_t last)
    {
        reader = std::make_shared<ScriptedReader>(first, last);
        player->setRecording(reader);
    }
    /// Puts the position there, as a drag does, and forgets what that did.
    void moveTo(std::uint64_t time)
    {
        player->onSliderTimeMove(static_cast<int>(time));
        timeline.setCenterValue(static_cast<int>(time));
        reader->log.clear();
        forget();
    }
    void forget()
    {
        announcements = pictures = labels = 0;
        picture = QImage();
    }
    void click() { QTest::mouseClick(&play, Qt::LeftButton); }

    /// The columns of the first and the last event in the picture, {-1, -1} without any.
    std::pair<int, int> shownColumns() const
    {
        std::pair<int, int> columns{-1, -1};
        for (int x = 0; x < picture.width(); ++x) {
            if (picture.pixel(x, ScriptedReader::row) != qRgb(191, 188, 180))
                continue;
            if (columns.first < 0)
                columns.first = x;
            columns.second = x;
        }
        return columns;
    }

    static bool wait(const std::function<bool()>& condition) { return QTest::qWaitFor(condition, 30000); }

    SourceState state;
    DisplayTiming timing;
    EventFrameBuffer frames;
    KvThreeHandleSlider timeline;
    QPushButton play;
    std::shared_ptr<ScriptedReader> reader;
    std::unique_ptr<DvsPlayer> player;
    QString label;
    QImage picture;
    int labels = 0; ///< how often the label was written
    int announcements = 0; ///< of events to show
    int pictures = 0; ///< of the play loop
    int pauses = 0; ///< how often the end of playback pressed pause
};
