// Linked without the program's images, so that the animation is missing.

#include "tests/gui/kvcapturedlog.h"
#include "widgets/waitingwin.h"

#include <QImage>
#include <QTimer>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

TEST(WaitingWinWithoutGif, LogsItAndShowsAnEmptyTransparentWindow)
{
    const KvCapturedLog log;
    WaitingWin spinner(nullptr);
    EXPECT_EQ(log.count("GIF is not valid or not found"_L1), 1);
    spinner.show();
    const QImage image = spinner.grab().toImage();
    ASSERT_EQ(image.size(), QSize(321, 276));
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            ASSERT_EQ(image.pixelColor(x, y).alpha(), 0) << x << "," << y;
}

TEST(WaitingWinWithoutGif, StillBlocksUntilTheJobIsDone)
{
    WaitingWin spinner(nullptr);
    bool blocked = false;
    QTimer::singleShot(20, &spinner, [&] {
        blocked = spinner.isVisible() && spinner.isModal();
        spinner.jobDone();
    });
    spinner.exec();
    EXPECT_TRUE(blocked);
}
