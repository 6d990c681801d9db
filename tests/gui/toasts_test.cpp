#include "mainwindow/toasts.h"

#include "tests/gui/mainwindowfixture.h"
#include "widgets/kvfilepathreminderform.h"
#include "widgets/waitingwin.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QWindow>

#include <thread>

using namespace Qt::Literals::StringLiterals;

namespace {

class ToastsTest : public MainWindowTest
{
};

QList<KvFilePathReminderForm*> toasts()
{
    QList<KvFilePathReminderForm*> found;
    for (QWidget* const widget : QApplication::topLevelWidgets()) {
        if (auto* const toast = qobject_cast<KvFilePathReminderForm*>(widget))
            found << toast;
    }
    return found;
}

} // namespace

TEST_F(ToastsTest, AToastStandsAtTheBottomLeftCornerAndGoesWithTheWindow)
{
    emit window->signalShowLeftBottomTips(u"Saved."_s, Warning, QString());
    ASSERT_EQ(toasts().size(), 1);
    const KvFilePathReminderForm* const toast = toasts().constFirst();
    const QPointer<const KvFilePathReminderForm> watch = toast;
    EXPECT_TRUE(toast->isVisible());
    EXPECT_EQ(toast->geometry().bottomLeft(), window->geometry().bottomLeft());
    EXPECT_EQ(toast->parent(), nullptr);
    EXPECT_EQ(toast->findChild<QLabel*>(u"lb_show_tips"_s)->text(), u"Saved."_s);
    window.reset();
    EXPECT_TRUE(watch.isNull());
}

TEST_F(ToastsTest, SeveralToastsStandAtTheSameCornerAndEachGoesInItsOwnTime)
{
    QElapsedTimer sinceFirst;
    sinceFirst.start();
    emit window->signalShowLeftBottomTips(u"First."_s, Success, QString());
    ASSERT_EQ(toasts().size(), 1);
    const KvFilePathReminderForm* const firstToast = toasts().constFirst();
    const QPointer<const KvFilePathReminderForm> first = firstToast;
    ASSERT_TRUE(QTest::qWaitFor([&] { return sinceFirst.elapsed() >= 600; }));
    QElapsedTimer sinceSecond;
    sinceSecond.start();
    emit window->signalShowLeftBottomTips(u"Second."_s, Error, QString());
    const QList<KvFilePathReminderForm*> both = toasts();
    ASSERT_EQ(both.size(), 2);
    const QPointer<const KvFilePathReminderForm> second = both[0] == firstToast ? both[1] : both[0];
    for (const KvFilePathReminderForm* const toast : both) {
        EXPECT_TRUE(toast->isVisible());
        EXPECT_EQ(toast->geometry().bottomLeft(), window->geometry().bottomLeft());
    }

    ASSERT_TRUE(QTest::qWaitFor([&] { return first.isNull(); }, 6000));
    EXPECT_GE(sinceFirst.elapsed(), 2800);
    EXPECT_TRUE(sinceSecond.elapsed() >= 2800 || !second.isNull()) << "it has its own three seconds";
    EXPECT_TRUE(QTest::qWaitFor([&] { return second.isNull(); }, 6000));
    EXPECT_GE(sinceSecond.elapsed(), 2800);
}

TEST_F(ToastsTest, AToastBesideASpinnerBelongsToTheWindow)
{
    WaitingWin spinner(window.get());
    spinner.show();
    spinner.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&spinner));
    emit window->signalShowLeftBottomTips(u"Saved."_s, Success, QString());
    ASSERT_EQ(toasts().size(), 1);
    const KvFilePathReminderForm* const toast = toasts().constFirst();
    EXPECT_EQ(toast->windowHandle()->transientParent(), window->windowHandle());
    spinner.hide();
    EXPECT_TRUE(toast->isVisible()) << "the spinner has taken it along";
}

TEST_F(ToastsTest, AToastOfAnotherThreadIsMadeOnTheGuiThread)
{
    std::thread other([this] { emit window->signalShowLeftBottomTips(u"From afar."_s, Error, QString()); });
    other.join();
    EXPECT_EQ(toasts().size(), 0) << "made by the other thread";
    ASSERT_TRUE(QTest::qWaitFor([] { return toasts().size() == 1; }));
    EXPECT_EQ(toasts().constFirst()->thread(), QCoreApplication::instance()->thread());
    EXPECT_EQ(toasts().constFirst()->findChild<QLabel*>(u"lb_title"_s)->text(), u"Error"_s);
}

TEST_F(ToastsTest, ACameraThatIsNotThereIsToldInAToast)
{
    window->openCamera(u"NOT-THERE"_s);
    ASSERT_EQ(toasts().size(), 1);
    EXPECT_TRUE(
        toasts().constFirst()->findChild<QLabel*>(u"lb_show_tips"_s)->text().contains(u"NOT-THERE"_s));
}
