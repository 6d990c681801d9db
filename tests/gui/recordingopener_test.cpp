#include "app/config.h"
#include "camera/livesession.h"
#include "camera/recording/recordingbackend.h"
#include "display/eventframebuffer.h"
#include "playback/dvsplayer.h"
#include "playback/recordingopener.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/movingbar.h"
#include "tests/support/scriptedcamera.h"
#include "tests/support/scripteddialogs.h"
#include "tests/support/scriptedreader.h"
#include "widgets/kvthreehandleslider.h"
#include "widgets/waitingwin.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QThread>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <semaphore>

namespace {

/// Takes any file whose name ends in ".scripted" for a recording.
class ScriptedRecordings : public korvane::Backend
{
public:
    explicit ScriptedRecordings(ScriptedLog& callLog) : log(callLog) {}
    std::string name() const override { return "scripted recordings"; }
    std::unique_ptr<korvane::DvsFileReader> createDvsFileReader(const std::string& path) override
    {
        if (!path.ends_with(".scripted"))
            return nullptr;
        log.add("create reader");
        auto reader = std::make_unique<ScriptedReader>(0, 100'000);
        reader->onLoad = [this] {
            log.add("load");
            return !onLoad || onLoad();
        };
        return reader;
    }
    bool isExportedVideo(const std::string& path) override { return path == exportedVideo; }
    std::function<bool()> onLoad;
    std::string exportedVideo;

private:
    ScriptedLog& log;
};

class RecordingOpenerTest : public testing::Test
{
protected:
    using Lines = ScriptedLog::Lines;

    RecordingOpenerTest() : imageArea(&window), play(&window), timeline(nullptr, 1, 1)
    {
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        timeline.resize(800, 30);
        play.setCheckable(true);
        window.resize(400, 300);
        for (const auto& backend : backends())
            korvane::registerBackend(backend);
        session = std::make_unique<LiveSession>(state, timing, frames, config, &window, &imageArea);
        player = std::make_unique<DvsPlayer>(state, timing, frames, timeline);
        opener = std::make_unique<RecordingOpener>(state, *player, config, &window, &imageArea);
        wire();
    }
    ~RecordingOpenerTest() override
    {
        opener.reset();
        player.reset();
        session.reset();
        for (const auto& backend : backends())
            korvane::unregisterBackend(backend);
    }
    void SetUp() override
    {
        QDir::current().mkpath(QStringLiteral("takes"));
        folder = QDir::current().filePath(QStringLiteral("takes"));
        bar = folder + QStringLiteral("/bar.raw");
        ASSERT_TRUE(writeMovingBar(bar, 300));
        config.input_raw_file_path = folder;
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    }

    std::vector<std::shared_ptr<korvane::Backend>> backends() const
    {
        return {recordings, scripted, cameras};
    }
    /// Answers the file dialog.
    void chooseFile(const std::function<void(QFileDialog& dialog)>& answer)
    {
        ScriptedPerson person([&answer](QWidget& modal) {
            auto* const dialog = qobject_cast<QFileDialog*>(&modal);
            if (!dialog)
                return false;
            answer(*dialog);
            return true;
        });
        opener->slotOpenRecording();
        EXPECT_TRUE(person.isDone()) << "no dialog was shown";
    }
    static bool wait(const std::function<bool()>& condition) { return QTest::qWaitFor(condition, 30000); }

    ScriptedLog log;
    std::shared_ptr<korvane::Backend> recordings = std::make_shared<korvane::recording::RecordingBackend>();
    std::shared_ptr<ScriptedRecordings> scripted = std::make_shared<ScriptedRecordings>(log);
    std::shared_ptr<ScriptedBackend> cameras = std::make_shared<ScriptedBackend>(log);
    QString folder;
    QString bar;
    SourceState state;
    DisplayTiming timing;
    EventFrameBuffer frames;
    Config config{QStringLiteral("opener.ini")};
    QWidget window;
    QWidget imageArea;
    QPushButton play;
    KvThreeHandleSlider timeline;
    QString label;
    int pictures = 0;
    std::unique_ptr<LiveSession> session;
    std::unique_ptr<DvsPlayer> player;
    std::unique_ptr<RecordingOpener> opener;

private:
    void note(const std::string& line)
    {
        EXPECT_EQ(QThread::currentThread(), QApplication::instance()->thread()) << line;
        log.add(line);
    }
    void releaseSources()
    {
        note("source about to change, mode " + std::to_string(state.playMode));
        player->release();
        session->release();
    }
    void press()
    {
        if (state.playMode == ModeFusionRecording)
            return;
        if (state.playMode == ModeDvsRecording)
            player->playClicked();
        else
            session->playClicked();
    }
    void wire()
    {
        const auto follow = [this] { play.setChecked(state.filePlaying); };
        QObject::connect(&play, &QPushButton::clicked, &window, [this] { press(); });
        QObject::connect(session.get(), &LiveSession::sourceAboutToChange, &window,
                         [this] { releaseSources(); });
        QObject::connect(session.get(), &LiveSession::playRequested, &play, &QPushButton::click);
        QObject::connect(session.get(), &LiveSession::runningChanged, &window, follow);
        QObject::connect(player.get(), &DvsPlayer::runningChanged, &window, follow);
        QObject::connect(player.get(), &DvsPlayer::pauseRequested, &window, [this] {
            log.add("end");
            emit play.clicked(false);
        });
        QObject::connect(player.get(), &DvsPlayer::timeTextChanged, &window,
                         [this](const QString& text) { label = text; });
        QObject::connect(player.get(), &DvsPlayer::triggerShowPixmap, &window, [this] { ++pictures; });
        QObject::connect(opener.get(), &RecordingOpener::sourceAboutToChange, &window,
                         [this] { releaseSources(); });
        QObject::connect(opener.get(), &RecordingOpener::setShowCameraLiveUI, &window,
                         [this](bool live) { note("live UI " + std::to_string(live)); });
        QObject::connect(opener.get(), &RecordingOpener::resetShowCameraFormTitle, &window,
                         [this](bool show) { note("title " + std::to_string(show)); });
        QObject::connect(opener.get(), &RecordingOpener::playRequested, &window, [this] {
            note("press play, mode " + std::to_string(state.playMode));
            play.click();
        });
        QObject::connect(opener.get(), &RecordingOpener::recordingOpened, &window,
                         [this] { note("opened"); });
        QObject::connect(opener.get(), &RecordingOpener::signalShowLeftBottomTips, &window,
                         [this](const QString& tips, KvMessageType type, const QString& link) {
                             note("toast " + std::to_string(type) + ' ' + tips.toStdString()
                                  + link.toStdString());
                         });
    }
};

} // namespace

TEST_F(RecordingOpenerTest, ARecordingIsLoadedAndPlaysAtOnceToItsEnd)
{
    opener->openRecording(bar);
    EXPECT_EQ(
        log.lines(),
        (Lines{"source about to change, mode 0", "live UI 0", "title 0", "press play, mode 3", "opened"}));
    EXPECT_EQ(state.playMode, ModeDvsRecording);
    EXPECT_TRUE(state.filePlaying);
    EXPECT_TRUE(play.isChecked());
    EXPECT_EQ(player->startTime(), 0u);
    EXPECT_EQ(player->endTime(), 299'000u);
    EXPECT_EQ(timeline.minimum(), 0u);
    EXPECT_EQ(timeline.maximum(), 299'000u);
    EXPECT_TRUE(label.endsWith(QStringLiteral("/00:00:299000"))) << label.toStdString();
    ASSERT_TRUE(wait([this] { return log.contains("end"); }));
    EXPECT_FALSE(play.isChecked());
    EXPECT_GE(pictures, 1);
    EXPECT_EQ(label, QStringLiteral("00:00:000000/00:00:299000"));
}

TEST_F(RecordingOpenerTest, WhatIsNoRecordingIsLeftAloneWithALogLine)
{
    const QString text = folder + QStringLiteral("/notes.raw");
    ASSERT_TRUE(evt::writeFile(text, "These are notes.\n", {}));
    const QString empty = folder + QStringLiteral("/empty.raw");
    ASSERT_TRUE(evt::writeFile(empty, "", {}));
    for (const QString& path : {text, empty, folder, folder + QStringLiteral("/missing.raw")}) {
        const CapturedMessages messages;
        log.clear();
        opener->openRecording(path);
        EXPECT_EQ(messages.debug().count(QStringLiteral("not raw file.")), 1) << path.toStdString();
        EXPECT_EQ(state.playMode, ModeNone);
        EXPECT_FALSE(player->hasRecording());
        EXPECT_FALSE(play.isChecked());
        EXPECT_EQ(log.lines(), (Lines{"source about to change, mode 0"})) << "no message, nothing opened";
    }
}

TEST_F(RecordingOpenerTest, TheFolderIsKeptForTheNextTimeWhateverTheFileIs)
{
    config.input_raw_file_path = QStringLiteral("/elsewhere");
    opener->openRecording(bar);
    EXPECT_EQ(config.input_raw_file_path, folder);
    const CapturedMessages messages;
    opener->openRecording(QStringLiteral("/nowhere/at all/x.raw"));
    EXPECT_EQ(config.input_raw_file_path, QStringLiteral("/nowhere/at all"));
}

TEST_F(RecordingOpenerTest, TheDialogAsksForARawFileInTheLastFolder)
{
    QString caption;
    QString directory;
    QStringList filters;
    QWidget* parent = nullptr;
    chooseFile([&](QFileDialog& dialog) {
        caption = dialog.windowTitle();
        directory = dialog.directory().absolutePath();
        filters = dialog.nameFilters();
        parent = dialog.parentWidget();
        dialog.reject();
    });
    EXPECT_EQ(caption, QStringLiteral("Select a raw file"));
    EXPECT_EQ(QFileInfo(directory), QFileInfo(folder));
    EXPECT_EQ(filters, (QStringList{QStringLiteral("RAW files (*.raw)")}));
    EXPECT_EQ(parent, &window);
}

TEST_F(RecordingOpenerTest, ADialogThatIsCancelledChangesNothing)
{
    opener->openRecording(bar);
    log.clear();
    chooseFile([](QFileDialog& dialog) { dialog.reject(); });
    EXPECT_FALSE(log.contains("source about to change, mode 3"));
    EXPECT_TRUE(state.filePlaying || log.contains("end")) << "what plays goes on";
    EXPECT_TRUE(player->hasRecording());
    EXPECT_EQ(config.input_raw_file_path, folder);
}

TEST_F(RecordingOpenerTest, AFileChosenInTheDialogIsOpened)
{
    chooseFile([](QFileDialog& dialog) {
        auto* const field = dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        ASSERT_NE(field, nullptr);
        field->setText(QStringLiteral("bar.raw"));
        QTest::keyClick(field, Qt::Key_Return);
    });
    EXPECT_EQ(state.playMode, ModeDvsRecording);
    EXPECT_EQ(player->endTime(), 299'000u);
    EXPECT_TRUE(log.contains("opened"));
}

TEST_F(RecordingOpenerTest, ARunningCameraIsStoppedAndClosedBeforeTheFileIsTouched)
{
    cameras->offer("S1", "Halvora");
    ASSERT_TRUE(session->openCameraBySerial(QStringLiteral("S1")));
    ASSERT_TRUE(play.isChecked());
    log.clear();
    opener->openRecording(folder + QStringLiteral("/a.scripted"));
    const Lines lines = log.lines();
    ASSERT_GE(lines.size(), 9u);
    EXPECT_EQ(Lines(lines.begin(), lines.begin() + 9),
              (Lines{"source about to change, mode 1", "S1 releaseStream 0", "S1 stop", "S1 closed",
                     "create reader", "load", "live UI 0", "title 0", "press play, mode 3"}));
    EXPECT_TRUE(play.isChecked());
}

TEST_F(RecordingOpenerTest, APausedCameraIsClosedToo)
{
    cameras->offer("S1", "Halvora");
    ASSERT_TRUE(session->openCameraBySerial(QStringLiteral("S1")));
    QTest::mouseClick(&play, Qt::LeftButton);
    log.clear();
    opener->openRecording(folder + QStringLiteral("/a.scripted"));
    EXPECT_EQ(log.at("S1 closed"), 1);
    EXPECT_EQ(log.at("create reader"), 2);
}

TEST_F(RecordingOpenerTest, ACameraOpenedAfterwardsStopsThePlayback)
{
    opener->openRecording(bar);
    cameras->offer("S1", "Halvora");
    log.clear();
    ASSERT_TRUE(session->openCameraBySerial(QStringLiteral("S1")));
    EXPECT_EQ(log.lines().front(), "source about to change, mode 3");
    EXPECT_EQ(state.playMode, ModeDvsCamera);
    EXPECT_TRUE(state.filePlaying);
    EXPECT_TRUE(play.isChecked());
    // What the player posted before it was stopped presses nothing any more.
    for (int i = 0; i < 10; ++i)
        QApplication::processEvents();
    EXPECT_FALSE(log.contains("end"));
    EXPECT_TRUE(play.isChecked());
}

TEST_F(RecordingOpenerTest, AnotherRecordingReplacesTheOneThatPlays)
{
    opener->openRecording(folder + QStringLiteral("/a.scripted"));
    ASSERT_TRUE(state.filePlaying);
    log.clear();
    opener->openRecording(bar);
    EXPECT_EQ(log.lines().front(), "source about to change, mode 3");
    EXPECT_EQ(player->endTime(), 299'000u);
    EXPECT_TRUE(state.filePlaying);
    EXPECT_TRUE(play.isChecked());
}

TEST_F(RecordingOpenerTest, AfterAFileThatIsNoRecordingTheOldOneIsClosed)
{
    opener->openRecording(bar);
    const CapturedMessages messages;
    opener->openRecording(folder + QStringLiteral("/missing.raw"));
    EXPECT_FALSE(play.isChecked());
    EXPECT_FALSE(state.filePlaying);
    QTest::mouseClick(&play, Qt::LeftButton);
    EXPECT_TRUE(messages.debug().contains(QStringLiteral("Please load file first.")));
    EXPECT_FALSE(play.isChecked());
}

TEST_F(RecordingOpenerTest, ALoadRunsOffTheGuiThreadBehindTheSpinner)
{
    std::binary_semaphore spinnerSeen(0);
    std::atomic<QThread*> loader{nullptr};
    scripted->onLoad = [&] {
        loader = QThread::currentThread();
        return spinnerSeen.try_acquire_for(std::chrono::seconds(30));
    };
    ScriptedPerson person([&](QWidget& modal) {
        if (!qobject_cast<WaitingWin*>(&modal))
            return false;
        EXPECT_EQ(state.playMode, ModeNone) << "nothing has changed yet";
        spinnerSeen.release();
        return true;
    });
    opener->openRecording(folder + QStringLiteral("/a.scripted"));
    EXPECT_TRUE(person.isDone());
    EXPECT_NE(loader.load(), nullptr);
    EXPECT_NE(loader.load(), QApplication::instance()->thread());
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    EXPECT_EQ(player->endTime(), 100'000u);
}

TEST_F(RecordingOpenerTest, ARecordingThatCannotBeLoadedIsAnEmptyOne)
{
    scripted->onLoad = [] { return false; };
    opener->openRecording(folder + QStringLiteral("/a.scripted"));
    EXPECT_EQ(state.playMode, ModeDvsRecording);
    EXPECT_EQ(player->endTime(), 0u);
    ASSERT_TRUE(wait([this] { return log.contains("end"); }));
    EXPECT_FALSE(play.isChecked());
    EXPECT_EQ(pictures, 0);
    EXPECT_EQ(label, QStringLiteral("00:00:000000/00:00:000000"));
}

TEST_F(RecordingOpenerTest, ARecordingWithoutAnEventIsAnEmptyOne)
{
    const QString path = folder + QStringLiteral("/quiet.raw");
    ASSERT_TRUE(evt::writeFile(path, "% format EVT3;height=720;width=1280\n% end\n",
                               evt::words3({evt::high3(0), evt::low3(1), evt::high3(0), evt::low3(900)})));
    const CapturedMessages messages;
    opener->openRecording(path);
    QTest::mouseClick(&play, Qt::LeftButton);
    for (int i = 0; i < 10; ++i)
        QApplication::processEvents();
    player->nextClicked();
    player->stopClicked();
    EXPECT_EQ(player->endTime(), 0u);
    EXPECT_EQ(pictures, 0);
}

TEST_F(RecordingOpenerTest, ANameInAnyLanguageIsOpened)
{
    const QString path = folder + QStringLiteral("/录像 ä.raw");
    ASSERT_TRUE(QFile::copy(bar, path));
    opener->openRecording(path);
    EXPECT_EQ(player->endTime(), 299'000u);
    QFile::remove(path);
}

/// With an engine for fusion recordings that loads what it is told.
class RecordingOpenerFusionTest : public RecordingOpenerTest
{
protected:
    void SetUp() override
    {
        RecordingOpenerTest::SetUp();
        opener->setFusionLoader([this](const std::string& path) {
            loader = QThread::currentThread();
            if (onLoad)
                onLoad();
            log.add("load fusion " + path + ", mode " + std::to_string(state.playMode));
            return loads;
        });
    }
    QString copyOfBar(const QString& name) const
    {
        const QString copy = folder + QLatin1Char('/') + name;
        QFile::remove(copy);
        EXPECT_TRUE(QFile::copy(bar, copy));
        return copy;
    }
    void put(const QString& name) const
    {
        QFile file(folder + QLatin1Char('/') + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    void TearDown() override { QDir(folder).removeRecursively(); }

    bool loads = true;
    QThread* loader = nullptr;
    std::function<void()> onLoad; ///< called on the loading thread
};

TEST_F(RecordingOpenerFusionTest, AVideoOfTheSameNameMakesItAFusionRecordingThatPlaysAtOnce)
{
    const QString path = copyOfBar(QStringLiteral("fusion.raw"));
    put(QStringLiteral("fusion.mp4"));
    const CapturedMessages messages;
    opener->openRecording(path);
    EXPECT_EQ(log.lines(),
              (Lines{"source about to change, mode 0", "load fusion " + path.toStdString() + ", mode 4",
                     "press play, mode 4", "live UI 0", "opened"}));
    EXPECT_EQ(messages.debug().count(QStringLiteral("Load fusion file.")), 1);
    EXPECT_NE(loader, nullptr);
    EXPECT_NE(loader, QApplication::instance()->thread());
    EXPECT_EQ(config.input_raw_file_path, folder);
    EXPECT_FALSE(player->hasRecording());
}

TEST_F(RecordingOpenerFusionTest, TheLoadRunsBehindTheSpinner)
{
    std::binary_semaphore spinnerSeen(0);
    onLoad = [&] { EXPECT_TRUE(spinnerSeen.try_acquire_for(std::chrono::seconds(30))); };
    ScriptedPerson person([&](QWidget& modal) {
        if (!qobject_cast<WaitingWin*>(&modal))
            return false;
        EXPECT_FALSE(log.contains("opened"));
        spinnerSeen.release();
        return true;
    });
    const QString path = copyOfBar(QStringLiteral("fusion.raw"));
    put(QStringLiteral("fusion.mp4"));
    opener->openRecording(path);
    EXPECT_TRUE(person.isDone());
    EXPECT_TRUE(log.contains("opened"));
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST_F(RecordingOpenerFusionTest, OnlyTheLastSuffixIsReplacedInTheVideosName)
{
    const QString path = copyOfBar(QStringLiteral("clip.part1.raw"));
    put(QStringLiteral("clip.mp4"));
    opener->openRecording(path);
    EXPECT_EQ(state.playMode, ModeDvsRecording) << "clip.mp4 is another's";
    put(QStringLiteral("clip.part1.mp4"));
    opener->openRecording(path);
    EXPECT_EQ(state.playMode, ModeFusionRecording);
}

TEST_F(RecordingOpenerFusionTest, AFailedLoadNamesTheFileInAnErrorAndPlaysNothing)
{
    loads = false;
    const QString path = copyOfBar(QStringLiteral("broken.raw"));
    put(QStringLiteral("broken.mp4"));
    opener->openRecording(path);
    EXPECT_EQ(log.lines(),
              (Lines{"source about to change, mode 0", "load fusion " + path.toStdString() + ", mode 4",
                     "toast 2 Load fusion file failed: broken.raw", "opened"}));
    EXPECT_EQ(state.playMode, ModeFusionRecording);
    EXPECT_FALSE(state.filePlaying);
    EXPECT_FALSE(play.isChecked());
}

TEST_F(RecordingOpenerFusionTest, WithoutAnEngineEveryLoadFails)
{
    opener->setFusionLoader(nullptr);
    const QString path = copyOfBar(QStringLiteral("none.raw"));
    put(QStringLiteral("none.mp4"));
    opener->openRecording(path);
    EXPECT_TRUE(log.contains("toast 2 Load fusion file failed: none.raw"));
    EXPECT_FALSE(log.contains("press play, mode 4"));
}

TEST_F(RecordingOpenerFusionTest, AnExportedVideoBesideItsRecordingMakesNoFusionRecording)
{
    const QString path = copyOfBar(QStringLiteral("shown.raw"));
    put(QStringLiteral("shown.mp4"));
    scripted->exportedVideo = (folder + QStringLiteral("/shown.mp4")).toStdString();
    const CapturedMessages messages;
    opener->openRecording(path);
    EXPECT_EQ(state.playMode, ModeDvsRecording);
    EXPECT_EQ(player->endTime(), 299'000u);
    EXPECT_FALSE(messages.debug().contains(QStringLiteral("Load fusion file.")));
    EXPECT_EQ(messages.debug().filter(QStringLiteral("shown.mp4")).size(), 1) << "the log says why";
}

TEST_F(RecordingOpenerFusionTest, ADvsRecordingOpenedBeforeStaysBehindAFusionRecording)
{
    opener->openRecording(bar);
    ASSERT_TRUE(state.filePlaying);
    for (const bool works : {true, false}) {
        loads = works;
        log.clear();
        const QString path = copyOfBar(QStringLiteral("second.raw"));
        put(QStringLiteral("second.mp4"));
        opener->openRecording(path);
        EXPECT_EQ(state.playMode, ModeFusionRecording);
        EXPECT_FALSE(state.filePlaying) << "what played was stopped first";
        EXPECT_TRUE(player->hasRecording());
        EXPECT_EQ(player->endTime(), 299'000u);
    }
}
