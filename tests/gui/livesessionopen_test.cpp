#include "tests/gui/livesessionfixture.h"
#include "widgets/waitingwin.h"

#include <atomic>
#include <functional>
#include <semaphore>
#include <stdexcept>

using LiveSessionOpenTest = LiveSessionTest;

TEST_F(LiveSessionOpenTest, TheProductNameExactlyTellsTheKind)
{
    EXPECT_EQ(LiveSession::kindOf("QRT4"), ModeDvsCamera);
    EXPECT_EQ(LiveSession::kindOf("Halvora"), ModeDvsCamera);
    EXPECT_EQ(LiveSession::kindOf("Pellix"), ModeFusionCamera);
    for (const char* product :
         {"", "QRT4 ", " QRT4", "qrt4", "QRT", "QRT44", "halvora", "Halvora2", "PELLIX"})
        EXPECT_EQ(LiveSession::kindOf(product), ModeNone) << product;
}

TEST_F(LiveSessionOpenTest, APickedCameraIsOpenedShownAndStarted)
{
    backend->offer("S0", "Pellix");
    backend->offer("S1", "QRT4");
    const CapturedMessages messages;
    pick(1);
    EXPECT_EQ(log.lines(),
              (Lines{"source about to change, mode 0", "open S1", "live UI 1", "title 1", "serial S1",
                     "press play", "S1 start", "S1 setBatchTime 33333", "viewer 0", "tools"}));
    EXPECT_EQ(state.playMode, ModeDvsCamera);
    EXPECT_TRUE(state.filePlaying);
    EXPECT_TRUE(play.isChecked());
    EXPECT_TRUE(session->hasDvsCamera());
    const QStringList lines = messages.debug();
    const auto search = lines.indexOf(QStringLiteral("Search cameras ..."));
    EXPECT_GE(search, 0);
    EXPECT_GT(lines.indexOf(QStringLiteral("Search end ... find: 2")), search);
    EXPECT_TRUE(lines.contains(QStringLiteral("Select camera: S1 product: QRT4")));
}

TEST_F(LiveSessionOpenTest, TheListOffersTheSerialsAndPreselectsTheFirst)
{
    backend->offer("S1", "Halvora");
    backend->offer("S2", "Halvora");
    QStringList rows;
    ScriptedPerson person([&rows](QWidget& modal) {
        const auto* const list = modal.findChild<QListWidget*>(QStringLiteral("listWidget_cameras"));
        if (!list)
            return false;
        for (int row = 0; row < list->count(); ++row)
            rows << list->item(row)->text();
        QTest::mouseClick(modal.findChild<QPushButton*>(QStringLiteral("pb_open")), Qt::LeftButton);
        return true;
    });
    session->slotOpenCamera();
    EXPECT_EQ(rows, (QStringList{QStringLiteral("S1"), QStringLiteral("S2")}));
    EXPECT_TRUE(log.contains("open S1"));
    EXPECT_FALSE(log.contains("open S2"));
}

TEST_F(LiveSessionOpenTest, AListThatIsClosedOpensNothing)
{
    backend->offer("S1", "Halvora");
    pick(0, "pb_close");
    pick(0, "pb_win_close");
    EXPECT_EQ(log.lines(), Lines());
    EXPECT_EQ(state.playMode, ModeNone);
    EXPECT_FALSE(play.isChecked());
}

TEST_F(LiveSessionOpenTest, WithoutASelectionNothingIsOpened)
{
    const CapturedMessages messages;
    pick(-1);
    backend->offer("S1", "Halvora");
    pick(-1);
    EXPECT_EQ(log.lines(), Lines());
    EXPECT_EQ(state.playMode, ModeNone);
    EXPECT_TRUE(messages.debug().contains(QStringLiteral("Search end ... find: 0")));
    EXPECT_FALSE(messages.debug().join(QString()).contains(QStringLiteral("Select camera")));
}

TEST_F(LiveSessionOpenTest, ClosingTheListLeavesTheRunningCameraAlone)
{
    openCamera("S1");
    pick(0, "pb_close");
    EXPECT_EQ(log.lines(), Lines());
    EXPECT_TRUE(state.filePlaying);
    EXPECT_TRUE(play.isChecked());
}

TEST_F(LiveSessionOpenTest, ACameraIsOpenedOffTheGuiThreadBehindTheSpinner)
{
    backend->offer("S1", "Halvora");
    std::binary_semaphore spinnerSeen(0);
    std::atomic<QThread*> opener{nullptr};
    backend->onOpen = [&](ScriptedCamera&) {
        opener = QThread::currentThread();
        return spinnerSeen.try_acquire_for(std::chrono::seconds(30));
    };
    ScriptedPerson person([&](QWidget& modal) {
        if (!qobject_cast<WaitingWin*>(&modal))
            return false;
        spinnerSeen.release();
        return true;
    });
    EXPECT_TRUE(session->openCameraBySerial(QStringLiteral("S1")));
    EXPECT_TRUE(person.isDone());
    EXPECT_NE(opener.load(), nullptr);
    EXPECT_NE(opener.load(), QApplication::instance()->thread());
    EXPECT_TRUE(play.isChecked());
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST_F(LiveSessionOpenTest, AFailedOpenShowsItsToastAndLeavesTheWindowAsItWas)
{
    backend->offer("S1", "Halvora");
    backend->onOpen = [](ScriptedCamera&) { return false; };
    pick(0);
    EXPECT_EQ(log.lines(),
              (Lines{"source about to change, mode 0", "open S1", "S1 closed",
                     "toast 2 [Open camera: S1failed.] []", "viewer 0", "tools"}));
    EXPECT_EQ(state.playMode, ModeDvsCamera);
    EXPECT_FALSE(session->hasDvsCamera());
    EXPECT_FALSE(play.isChecked());

    const CapturedMessages messages;
    click(play);
    click(record);
    EXPECT_EQ(messages.debug().count(QStringLiteral("Please connect camera first.")), 2);
    EXPECT_FALSE(play.isChecked());
    EXPECT_FALSE(record.isChecked());
}

TEST_F(LiveSessionOpenTest, ADriverThatThrowsIsACameraThatDidNotOpen)
{
    backend->offer("S1", "Halvora");
    const std::function<bool(ScriptedCamera&)> faults[]
        = {[](ScriptedCamera&) -> bool { throw std::runtime_error("no bandwidth left"); },
           [](ScriptedCamera&) -> bool { throw 7; }};
    for (const auto& fault : faults) {
        backend->onOpen = fault;
        log.clear();
        const CapturedMessages messages;
        pick(0);
        EXPECT_EQ(log.count("toast 2 [Open camera: S1failed.] []"), 1);
        EXPECT_EQ(log.count("press play"), 0);
        EXPECT_EQ(messages.of(QtCriticalMsg).filter(QStringLiteral("The camera driver failed")).size(), 1);
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr) << "the spinner has gone";
        EXPECT_FALSE(play.isChecked());
        EXPECT_FALSE(session->hasDvsCamera());
    }
    backend->onOpen = nullptr;
    pick(0);
    EXPECT_TRUE(play.isChecked());
}

TEST_F(LiveSessionOpenTest, AnUnknownProductOpensNothingButSwitchesTheWindowOver)
{
    backend->offer("S1", "QRT4 ");
    pick(0);
    EXPECT_EQ(log.lines(),
              (Lines{"source about to change, mode 0", "live UI 1", "title 1", "serial S1", "press play",
                     "tools"}));
    EXPECT_EQ(state.playMode, ModeNone);
    EXPECT_FALSE(state.filePlaying);
    EXPECT_FALSE(play.isChecked());
}

TEST_F(LiveSessionOpenTest, AnotherCameraReplacesTheRunningOneWhichIsLetGoFirst)
{
    openCamera("S1");
    backend->offer("S2", "QRT4");
    pick(1);
    EXPECT_EQ(log.lines(),
              (Lines{"source about to change, mode 1", "S1 releaseStream 0", "S1 stop", "S1 closed", "tools",
                     "open S2", "live UI 1", "title 1", "serial S2", "press play", "S2 start",
                     "S2 setBatchTime 33333", "viewer 0", "tools"}));
    EXPECT_TRUE(play.isChecked());
}

TEST_F(LiveSessionOpenTest, AnotherCameraReplacesAPausedOneToo)
{
    openCamera("S1");
    click(play);
    log.clear();
    backend->offer("S2", "Halvora");
    pick(1);
    EXPECT_EQ(log.at("source about to change, mode 1"), 0);
    EXPECT_EQ(log.count("S1 stop"), 0) << "it is stopped already";
    EXPECT_GE(log.at("S1 closed"), 0);
    EXPECT_LT(log.at("S1 closed"), log.at("open S2"));
    EXPECT_TRUE(play.isChecked());
}

TEST_F(LiveSessionOpenTest, TheSameCameraCanBeOpenedAgain)
{
    openCamera("S1");
    pick(0);
    EXPECT_LT(log.at("S1 closed"), log.at("open S1"));
    EXPECT_TRUE(play.isChecked());
    EXPECT_TRUE(state.filePlaying);
}

TEST_F(LiveSessionOpenTest, AFailedOpenLetsTheOldCameraGoAllTheSame)
{
    openCamera("S1");
    backend->offer("S2", "Halvora");
    backend->onOpen = [](ScriptedCamera&) { return false; };
    pick(1);
    EXPECT_TRUE(log.contains("S1 closed"));
    EXPECT_FALSE(state.filePlaying);
    EXPECT_FALSE(play.isChecked());
    EXPECT_FALSE(session->hasDvsCamera());
}

TEST_F(LiveSessionOpenTest, ASerialIsOpenedWithoutAsking)
{
    backend->offer("S1", "Halvora");
    backend->offer("S2", "Halvora");
    EXPECT_TRUE(session->openCameraBySerial(QStringLiteral("S2")));
    EXPECT_TRUE(log.contains("open S2"));
    EXPECT_TRUE(play.isChecked());
    log.clear();

    const CapturedMessages messages;
    EXPECT_FALSE(session->openCameraBySerial(QStringLiteral("S3")));
    EXPECT_EQ(log.lines(), Lines()) << "what runs goes on";
    EXPECT_TRUE(play.isChecked());
    EXPECT_EQ(messages.warnings().count(QStringLiteral("There is no camera with the serial number S3.")), 1);
}

TEST_F(LiveSessionOpenTest, ATextInLocalEncodingIsShownAsItIs)
{
    const QString serial = QStringLiteral("相机-ä1");
    const std::string local = serial.toLocal8Bit().toStdString();
    backend->offer(local, "Halvora");
    pick(0);
    EXPECT_TRUE(log.contains("open " + local));
    EXPECT_TRUE(log.contains("serial " + serial.toStdString()));
}
