#include "tests/e2e/windowstory.h"
#include "widgets/timestamptotext.h"

#include <QElapsedTimer>

#include <algorithm>
#include <random>

using namespace Qt::Literals::StringLiterals;

namespace {

/// A person without patience: presses whatever stands on the play bar and the timeline.
class RandomClicks : public WindowStory
{
protected:
    int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(generator); }
    int somewhere() { return below(timeline()->width()); }

    void act()
    {
        switch (below(16)) {
        case 0:
            return window->openRecording(below(2) == 0 ? path : other);
        case 1:
        case 2:
        case 3:
            return click("pb_play");
        case 4:
        case 5:
            return click("pb_next");
        case 6:
        case 7:
            return click("pb_prv");
        case 8:
            return click("pb_stop");
        case 9:
            return click("pb_loop");
        case 10:
            return pick("menu_viewer_setting", u"Toggle Start/End Point"_s);
        case 11:
        case 12:
            return QTest::mouseClick(timeline(), Qt::LeftButton, {},
                                     QPoint(somewhere(), timeline()->height() / 2));
        case 13:
            return drag(3, somewhere());
        case 14:
            return drag(timeline()->width() - 3, somewhere());
        default:
            return drag(somewhere(), somewhere());
        }
    }
    void processFor(int milliseconds)
    {
        QElapsedTimer timer;
        timer.start();
        do
            QCoreApplication::processEvents(QEventLoop::AllEvents, milliseconds);
        while (timer.elapsed() < milliseconds);
    }
    /// What the label and the timeline say, on a window where nothing runs.
    void expectAgreement(const std::string& when)
    {
        EXPECT_FALSE(button("pb_play")->isChecked()) << when;
        EXPECT_EQ(labelled(), timeline()->centerValue()) << when;
        EXPECT_GE(timeline()->centerValue(), timeline()->effectiveLowerValue()) << when;
        EXPECT_LE(timeline()->centerValue(), timeline()->effectiveUpperValue()) << when;
    }
    /// A position outside the points, where a step leads, or a round of the loop while a point is moved, is
    /// named by the label; the handle stands at the nearer point.
    void expectHandleAtLabelOrPoint(const std::string& when)
    {
        EXPECT_EQ(
            timeline()->centerValue(),
            std::clamp(labelled(), timeline()->effectiveLowerValue(), timeline()->effectiveUpperValue()))
            << when;
    }
    /// The position that the label names, microseconds; its end is the timeline's.
    int labelled() const
    {
        const QString text = timeText();
        EXPECT_EQ(text.section(u'/', 1), timestampToText(timeline()->maximum()));
        const QStringList parts = text.section(u'/', 0, 0).split(u':');
        return (parts.value(0).toInt() * 60 + parts.value(1).toInt()) * 1'000'000 + parts.value(2).toInt();
    }
    void pause()
    {
        if (button("pb_play")->isChecked())
            click("pb_play");
        processFor(0);
    }

    std::mt19937 generator{20240131};
    QString other;
};

TEST_F(RandomClicks, LeavePlayerButtonLabelAndTimelineInAgreement)
{
    other = QDir::current().filePath(u"other.raw"_s);
    ASSERT_TRUE(writeMovingBar(other, 200));
    window->openRecording(path);
    bool given = false;
    const int seconds = qEnvironmentVariableIntValue("KORVANE_STRESS_SECONDS", &given);
    QElapsedTimer timer;
    timer.start();
    int clicks = 0;
    while (timer.elapsed() < (given ? seconds : KORVANE_STRESS_DEFAULT) * 1000 && !HasFailure()) {
        for (int i = 0; i < 20; ++i, ++clicks) {
            act();
            if (below(3) == 0)
                processFor(below(40));
        }
        pause();
        expectHandleAtLabelOrPoint("paused after " + std::to_string(clicks) + " clicks");
        // A click has put the position where the label and the handle both show it; nothing moves it now.
        click(below(2) == 0 ? "pb_stop" : "pb_prv");
        expectAgreement("after " + std::to_string(clicks) + " clicks");
        const QString still = timeText();
        processFor(50);
        EXPECT_EQ(timeText(), still) << "nothing plays on";
    }
    EXPECT_GE(clicks, 20);

    // It still plays: from its start, to where it can be seen to move.
    if (button("pb_loop")->isChecked())
        click("pb_loop");
    window->openRecording(path);
    ASSERT_TRUE(
        wait([this] { return button("pb_play")->isChecked() && timeline()->centerValue() > 100'000; }));
    pause();
    expectAgreement("at the end");
}

} // namespace
