#include "app/startarguments.h"

#include <QDir>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

TEST(StartArguments, WithoutAnyThereIsOnlyTheSplash)
{
    const StartArguments arguments = parseStartArguments({u"korvaneinsight"_s});
    EXPECT_TRUE(arguments.splash);
    EXPECT_EQ(arguments.cameraSerial, QString());
    EXPECT_EQ(arguments.recording, QString());
}

TEST(StartArguments, NameACameraAndLeaveTheSplashOut)
{
    const StartArguments arguments
        = parseStartArguments({u"korvaneinsight"_s, u"--camera"_s, u"HAL-000001"_s, u"--no-splash"_s});
    EXPECT_FALSE(arguments.splash);
    EXPECT_EQ(arguments.cameraSerial, u"HAL-000001"_s);
}

TEST(StartArguments, ARecordingIsTakenFromTheWorkingDirectory)
{
    const StartArguments arguments = parseStartArguments({u"korvaneinsight"_s, u"some/录像 1.raw"_s});
    EXPECT_EQ(arguments.recording, QDir::current().filePath(u"some/录像 1.raw"_s));
    EXPECT_TRUE(arguments.splash);
}
