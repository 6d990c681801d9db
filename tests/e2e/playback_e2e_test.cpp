#include "tests/e2e/windowstory.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QTimer>

namespace {

constexpr QRgb onColour = qRgb(191, 188, 180);

class PlaybackStory : public WindowStory
{
protected:
    PlaybackStory() : WindowStory(600) {}

    int paintedPixels() const
    {
        const QImage image = picture();
        int count = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                count += image.pixel(x, y) == onColour ? 1 : 0;
        }
        return count;
    }

    /// The last column that events are painted in, -1 without any.
    int lastPaintedColumn() const
    {
        const QImage image = picture();
        for (int x = image.width() - 1; x >= 0; --x) {
            if (image.pixel(x, 0) == onColour)
                return x;
        }
        return -1;
    }

    void click(QWidget* widget, QPoint at = QPoint()) const
    {
        QTest::mouseClick(widget, Qt::LeftButton, Qt::NoModifier, at);
    }
};

} // namespace

TEST_F(PlaybackStory, OpenedFromTheMenuItPlaysToItsEndAndStopsAtItsStart)
{
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QTimer chooser;
    QObject::connect(&chooser, &QTimer::timeout, &chooser, [this] {
        auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(path);
        QTest::keyClick(dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit")), Qt::Key_Return);
    });
    chooser.start(20);
    QMenu* const fileMenu = button("pb_menu_file")->menu();
    ASSERT_NE(fileMenu, nullptr);
    fileMenu->actions().constFirst()->trigger();
    chooser.stop();

    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked(); }));
    EXPECT_EQ(timeline()->maximum(), 599000u);
    EXPECT_TRUE(timeline()->isEnabled());
    ASSERT_TRUE(wait([this] { return paintedPixels() > 0; }));
    ASSERT_TRUE(wait([this] { return timeline()->centerValue() > 100000; }));
    EXPECT_TRUE(timeText().endsWith(QStringLiteral("/00:00:599000"))) << timeText().toStdString();

    ASSERT_TRUE(wait([this] { return !button("pb_play")->isChecked(); }));
    EXPECT_EQ(timeText(), QStringLiteral("00:00:000000/00:00:599000"));
    EXPECT_EQ(timeline()->centerValue(), 0);
    // The last picture stays.
    EXPECT_EQ(lastPaintedColumn(), 599);
}

TEST_F(PlaybackStory, PauseSeekStepAndStop)
{
    window->openRecording(path);
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && paintedPixels() > 0; }));
    click(button("pb_play"));
    EXPECT_FALSE(button("pb_play")->isChecked());

    // Half way along the track.
    click(timeline(), QPoint(timeline()->width() / 2, timeline()->height() / 2));
    const int sought = timeline()->centerValue();
    EXPECT_GT(sought, 250000);
    EXPECT_LT(sought, 350000);
    ASSERT_TRUE(wait([this, sought] { return lastPaintedColumn() == (sought + 33332) / 1000; }));

    click(button("pb_next"));
    EXPECT_EQ(timeline()->centerValue(), sought + 30303);
    click(button("pb_prv"));
    EXPECT_EQ(timeline()->centerValue(), sought);
    const int before = paintedPixels();
    click(button("pb_stop"));
    EXPECT_EQ(timeline()->centerValue(), 0);
    EXPECT_EQ(timeText(), QStringLiteral("00:00:000000/00:00:599000"));
    QCoreApplication::processEvents();
    EXPECT_EQ(paintedPixels(), before) << "stop does not clear the picture";
}

TEST_F(PlaybackStory, LoopedItGoesOn)
{
    window->openRecording(path);
    click(button("pb_loop"));
    EXPECT_TRUE(button("pb_loop")->isChecked());
    bool wasLate = false;
    ASSERT_TRUE(wait([this, &wasLate] {
        wasLate = wasLate || timeline()->centerValue() > 500000;
        return wasLate && timeline()->centerValue() < 200000;
    }));
    EXPECT_TRUE(button("pb_play")->isChecked());
    click(button("pb_loop"));
    ASSERT_TRUE(wait([this] { return !button("pb_play")->isChecked(); }));
}

TEST_F(PlaybackStory, KeysPlayAndStep)
{
    window->openRecording(path);
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked(); }));
    QTest::keyClick(window.get(), Qt::Key_Space);
    EXPECT_FALSE(button("pb_play")->isChecked());
    click(button("pb_stop"));
    QTest::keyClick(window.get(), Qt::Key_Right);
    EXPECT_EQ(timeline()->centerValue(), 30303);
    QTest::keyClick(window.get(), Qt::Key_Left);
    EXPECT_EQ(timeline()->centerValue(), 0);
}

TEST_F(PlaybackStory, AFileThatIsNoRecordingLeavesTheWindowUsable)
{
    const QString text = QDir::current().filePath(QStringLiteral("notes.raw"));
    ASSERT_TRUE(evt::writeFile(text, "These are notes.\n", {}));
    window->openRecording(text);
    EXPECT_FALSE(button("pb_play")->isChecked());
    window->openRecording(path);
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked(); }));
}

TEST_F(PlaybackStory, ClosingWhilePlayingEndsCleanly)
{
    window->openRecording(path);
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked(); }));
    window->close();
    window.reset();
    // The recording was let go: it can be renamed, and opened by the next window.
    const QString renamed = path + QStringLiteral(".raw");
    ASSERT_TRUE(QFile::rename(path, renamed));
    window = std::make_unique<MainWidget>();
    window->openRecording(renamed);
    EXPECT_TRUE(wait([this] { return button("pb_play")->isChecked(); }));
}
