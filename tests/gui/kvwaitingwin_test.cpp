#include "tests/support/capturedmessages.h"
#include "widgets/waitingwin.h"

#include <QLabel>
#include <QMovie>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace Qt::Literals::StringLiterals;

TEST(WaitingWin, ReturnsWhenTheJobIsDone)
{
    WaitingWin spinner(nullptr);
    bool seen = false;
    QTimer::singleShot(20, &spinner, [&] {
        seen = spinner.isVisible();
        spinner.jobDone();
    });
    spinner.exec();
    EXPECT_TRUE(seen);
    EXPECT_FALSE(spinner.isVisible());
}

TEST(WaitingWin, AJobThatEndedBeforeExecEndsItAtOnce)
{
    WaitingWin spinner(nullptr);
    spinner.jobDone();
    spinner.exec();
    EXPECT_FALSE(spinner.isVisible());
}

TEST(WaitingWin, AnEndThatWasPostedBeforeExecEndsIt)
{
    WaitingWin spinner(nullptr);
    std::thread job([&] { QMetaObject::invokeMethod(&spinner, &WaitingWin::jobDone, Qt::QueuedConnection); });
    job.join();
    spinner.exec();
    EXPECT_FALSE(spinner.isVisible());
}

TEST(WaitingWin, AJobOnAnotherThreadEndsIt)
{
    WaitingWin spinner(nullptr);
    std::atomic<bool> shown = false;
    QTimer::singleShot(0, &spinner, [&] { shown = spinner.isVisible(); });
    std::thread job([&] {
        while (!shown)
            std::this_thread::yield();
        QMetaObject::invokeMethod(&spinner, &WaitingWin::jobDone, Qt::QueuedConnection);
    });
    spinner.exec();
    job.join();
    EXPECT_TRUE(shown);
}

TEST(WaitingWin, AQuickJobLeavesItOpenUntilItHasHadItsTurnWithTheKeyboard)
{
    WaitingWin spinner(nullptr);
    bool turn = false;
    bool early = false;
    // As the window opens; the window system activates it afterwards.
    QTimer::singleShot(0, &spinner, [&] {
        QWidget other;
        other.show();
        other.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&other));
        ASSERT_FALSE(spinner.isActiveWindow());
        spinner.jobDone();
        QCoreApplication::processEvents();
        early = !spinner.isVisible();
        spinner.activateWindow();
        turn = QTest::qWaitFor([&] { return !spinner.isVisible(); });
    });
    spinner.exec();
    EXPECT_FALSE(early);
    EXPECT_TRUE(turn);
}

TEST(WaitingWin, AQuickJobEndsItAlsoWhereItNeverGetsTheKeyboard)
{
    WaitingWin spinner(nullptr);
    QWidget other;
    QTimer::singleShot(0, &spinner, [&] {
        other.show();
        other.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&other));
        spinner.jobDone();
    });
    spinner.exec();
    EXPECT_FALSE(spinner.isVisible());
}

TEST(WaitingWin, IgnoresEscapeAndCloseUntilTheJobEnded)
{
    WaitingWin spinner(nullptr);
    bool closed = true;
    bool stayed = false;
    QTimer::singleShot(0, &spinner, [&] {
        QTest::keyClick(&spinner, Qt::Key_Escape);
        spinner.reject();
        closed = spinner.close();
        stayed = spinner.isVisible();
        spinner.jobDone();
    });
    spinner.exec();
    EXPECT_FALSE(closed);
    EXPECT_TRUE(stayed);
}

TEST(WaitingWin, IsModalAndFramelessAndTranslucent)
{
    const WaitingWin spinner(nullptr);
    EXPECT_TRUE(spinner.isModal());
    EXPECT_EQ(spinner.windowFlags(), Qt::Window | Qt::FramelessWindowHint);
    EXPECT_TRUE(spinner.testAttribute(Qt::WA_TranslucentBackground));
    EXPECT_EQ(spinner.size(), QSize(321, 276));
    EXPECT_EQ(spinner.parentWidget(), nullptr);
}

TEST(WaitingWin, StandsInTheMiddleOfItsAnchor)
{
    QWidget window;
    window.setGeometry(60, 40, 700, 500);
    QWidget anchor(&window);
    anchor.setGeometry(30, 20, 600, 401);
    window.show();
    WaitingWin spinner(&anchor);
    spinner.show();
    EXPECT_EQ(spinner.pos(), QPoint(60 + 30 + (600 - 321) / 2, 40 + 20 + (401 - 276) / 2));
    EXPECT_EQ(spinner.windowHandle()->transientParent(), window.windowHandle());
    const auto* label = spinner.findChild<QLabel*>(u"label"_s);
    EXPECT_NEAR(label->geometry().center().x(), spinner.rect().center().x(), 1);
    EXPECT_NEAR(label->geometry().center().y(), spinner.rect().center().y(), 1);
}

TEST(WaitingWin, AnAnchorSmallerThanTheSpinnerIsCentredToo)
{
    QWidget anchor;
    anchor.setGeometry(300, 300, 100, 101);
    anchor.show();
    WaitingWin spinner(&anchor);
    spinner.show();
    EXPECT_EQ(spinner.pos(), QPoint(300 + (100 - 321) / 2, 300 + (101 - 276) / 2));
}

TEST(WaitingWin, OutlivesItsAnchor)
{
    auto anchor = std::make_unique<QWidget>();
    WaitingWin spinner(anchor.get());
    anchor.reset();
    spinner.show();
    EXPECT_TRUE(spinner.isVisible());
}

TEST(WaitingWin, RunsItsAnimation)
{
    const CapturedMessages log;
    WaitingWin spinner(nullptr);
    spinner.show();
    const auto* label = spinner.findChild<QLabel*>(u"label"_s);
    ASSERT_NE(label->movie(), nullptr);
    EXPECT_TRUE(label->movie()->isValid());
    EXPECT_EQ(label->movie()->state(), QMovie::Running);
    EXPECT_EQ(label->movie()->fileName(), u":/img/icon/waiting.gif"_s);
    EXPECT_TRUE(label->hasScaledContents());
    EXPECT_EQ(label->size(), QSize(150, 150));
    EXPECT_EQ(label->styleSheet(), u"background: transparent;"_s);
    EXPECT_EQ(spinner.styleSheet(), u"background: transparent;"_s);
    const int first = label->movie()->currentFrameNumber();
    EXPECT_TRUE(QTest::qWaitFor([&] { return label->movie()->currentFrameNumber() != first; }));
    EXPECT_EQ(log.debug().count(u"GIF is not valid or not found"_s), 0);
}
