// Linked without the program's images: the animation is missing, or one of the broken ones is put in its
// place.

#include "tests/support/capturedmessages.h"
#include "widgets/waitingwin.h"

#include <QFile>
#include <QImage>
#include <QResource>
#include <QTimer>
#include <gtest/gtest.h>

#include <string>

using namespace Qt::Literals::StringLiterals;

namespace {

/// The parameter names a broken animation, a file of resources; without a name there is none at all.
class WaitingWinWithoutGif : public testing::TestWithParam<const char*>
{
protected:
    void SetUp() override
    {
        ASSERT_FALSE(QFile::exists(u":/img/icon/waiting.gif"_s));
        ASSERT_TRUE(resources().isEmpty() || QResource::registerResource(resources()));
        ASSERT_EQ(QFile::exists(u":/img/icon/waiting.gif"_s), !resources().isEmpty());
    }
    ~WaitingWinWithoutGif() override
    {
        if (!resources().isEmpty())
            QResource::unregisterResource(resources());
    }
    static QString resources()
    {
        const QString name = QString::fromLatin1(GetParam());
        return name.isEmpty() ? name : QStringLiteral(BROKEN_GIFS) + u'/' + name + u".rcc"_s;
    }
};

} // namespace

TEST_P(WaitingWinWithoutGif, LogsItAndShowsAnEmptyTransparentWindow)
{
    const CapturedMessages log;
    WaitingWin spinner(nullptr);
    EXPECT_EQ(log.debug().count(u"GIF is not valid or not found"_s), 1);
    spinner.show();
    const QImage image = spinner.grab().toImage();
    ASSERT_EQ(image.size(), QSize(321, 276));
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            ASSERT_EQ(image.pixelColor(x, y).alpha(), 0) << x << "," << y;
}

TEST_P(WaitingWinWithoutGif, StillBlocksUntilTheJobIsDone)
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

INSTANTIATE_TEST_SUITE_P(Gif, WaitingWinWithoutGif, testing::Values("", "otherkind", "headonly"),
                         [](const auto& gif) {
                             return gif.index == 0 ? std::string("missing") : std::string(gif.param);
                         });
