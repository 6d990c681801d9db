#include "tests/e2e/program.h"

#include <QElapsedTimer>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

TEST(ShippedProgram, ShowsItsWindowAfterTheTwoSecondsOfTheSplash)
{
    QElapsedTimer sinceStart;
    sinceStart.start();
    // The camera of the command line is opened once the window is there.
    Program program(QString(), {u"--camera"_s, u"HAL-000001"_s});
    ASSERT_TRUE(program.waitForLine(u"KorvaneInsight Version: 1.0.3"_s)) << program.text();
    EXPECT_EQ(program.text().find("Select camera:"), std::string::npos) << program.text();
    ASSERT_TRUE(program.waitForText(u"Select camera: HAL-000001"_s)) << program.text();
    EXPECT_GE(sinceStart.elapsed(), 2000);
    EXPECT_TRUE(program.isRunning());
}

TEST(ShippedProgram, ShowsItsWindowAtOnceWithoutTheSplash)
{
    Program program(QString(), {u"--no-splash"_s, u"--camera"_s, u"HAL-000001"_s});
    ASSERT_TRUE(program.waitForText(u"Select camera: HAL-000001"_s)) << program.text();
    EXPECT_EQ(program.text().find("KorvaneInsight Version:"), std::string::npos) << program.text();
    EXPECT_TRUE(program.isRunning());
}

TEST(ShippedProgram, TellsItsNameVersionAndUsage)
{
    Program version(QString(), {u"--version"_s});
    EXPECT_TRUE(version.waitForLine(u"KorvaneInsight 1.0.3"_s)) << version.text();
    Program help(QString(), {u"--help"_s});
    EXPECT_TRUE(help.waitForText(u"--no-splash"_s)) << help.text();
    Program unknown(QString(), {u"--no-such"_s});
    EXPECT_TRUE(unknown.waitForText(u"no-such"_s)) << unknown.text();
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return !version.isRunning() && !help.isRunning() && !unknown.isRunning(); }));
}
