#include "tests/unit/dvsplayloopfixture.h"

#include <random>
#include <string>
#include <utility>

using DvsPlayLoopSeekTest = DvsPlayLoopTest;

TEST_F(DvsPlayLoopSeekTest, ASeekBetweenTwoTicksIsReadFromAtTheNext)
{
    open(0, 10'000'000);
    loop->start();
    ASSERT_TRUE(clock.awaitWaits(1));
    position.seek(700'000);
    clock.grant(1);
    ASSERT_TRUE(clock.awaitWaits(2));
    loop->stop();
    EXPECT_EQ(reader->log.lines(), (Lines{"at 0 33333", "at 700000 33333"}));
    EXPECT_EQ(position.fileCurTs, 730303u);
}

TEST_F(DvsPlayLoopSeekTest, WhatATickPostsCarriesTheNumberOfTheLastSeek)
{
    open(0, 10'000'000);
    position.seek(1000);
    const std::string first = std::to_string(position.seeks);
    loop->start();
    ASSERT_TRUE(clock.awaitWaits(1));
    position.seek(5000);
    const std::string second = std::to_string(position.seeks);
    EXPECT_NE(first, second);
    clock.grant(1);
    ASSERT_TRUE(clock.awaitWaits(2));
    loop->stop();
    EXPECT_TRUE(view.log.contains("position 31303 " + first));
    EXPECT_TRUE(view.log.contains("position 35303 " + second));
}

TEST_F(DvsPlayLoopSeekTest, ASeekDuringTheReadWinsAndTheTickShowsNothing)
{
    open(0, 10'000'000);
    bool sought = false;
    reader->onRead = [this, &sought](std::uint64_t, std::uint64_t) {
        if (!std::exchange(sought, true))
            position.seek(700'000);
        return std::nullopt;
    };
    loop->start();
    ASSERT_TRUE(clock.awaitWaits(1));
    EXPECT_EQ(position.fileCurTs, 700'000u);
    EXPECT_EQ(view.log.lines(), Lines());
    clock.grant(1);
    ASSERT_TRUE(clock.awaitWaits(2));
    loop->stop();
    EXPECT_EQ(reader->log.lines(), (Lines{"at 0 33333", "at 700000 33333"}));
    EXPECT_EQ(position.fileCurTs, 730'303u);
}

TEST_F(DvsPlayLoopSeekTest, ASeekDuringTheReadToWhereItReadsReadsThereAgain)
{
    open(0, 10'000'000);
    position.fileCurTs = 50'000;
    bool sought = false;
    reader->onRead = [this, &sought](std::uint64_t, std::uint64_t) {
        if (!std::exchange(sought, true))
            position.seek(50'000);
        return std::nullopt;
    };
    play(2);
    EXPECT_EQ(reader->log.lines(), (Lines{"at 50000 33333", "at 50000 33333"}));
    EXPECT_EQ(position.fileCurTs, 80'303u);
}

TEST_F(DvsPlayLoopSeekTest, ASeekDuringTheLastReadKeepsItPlaying)
{
    open(0, 20'000);
    bool sought = false;
    reader->onRead = [this, &sought](std::uint64_t, std::uint64_t) {
        if (!std::exchange(sought, true))
            position.seek(3000);
        return std::nullopt;
    };
    loop->start();
    ASSERT_TRUE(clock.awaitWaits(1));
    EXPECT_EQ(reader->log.lines(), (Lines{"at 0 20001"})) << "the reader is not moved to the start";
    EXPECT_EQ(view.log.lines(), Lines());
    EXPECT_EQ(position.fileCurTs, 3000u);
    clock.grant(1);
    ASSERT_TRUE(view.log.waitForCount("end 1", 1));
    EXPECT_EQ(reader->log.lines(), (Lines{"at 0 20001", "at 3000 17001", "seek 0"}));
}

TEST_F(DvsPlayLoopSeekTest, ASeekAfterTheLastPictureKeepsItPlaying)
{
    open(0, 20'000);
    bool sought = false;
    view.onRangeStart = [this, &sought] {
        if (!std::exchange(sought, true))
            position.seek(3000);
    };
    loop->start();
    ASSERT_TRUE(clock.awaitWaits(1));
    EXPECT_EQ(position.fileCurTs, 3000u);
    EXPECT_FALSE(reader->log.contains("seek 0"));
    EXPECT_EQ(view.log.lines(), (Lines{"events 21", "position 20000 0", "picture"}));
    clock.grant(1);
    ASSERT_TRUE(view.log.waitForCount("end 1", 1));
}

TEST_F(DvsPlayLoopSeekTest, ASeekToTheEndAfterTheLastPictureShowsTheEndAgain)
{
    open(0, 20'000);
    bool sought = false;
    view.onRangeStart = [this, &sought] {
        if (!std::exchange(sought, true))
            position.seek(20'000);
    };
    loop->start();
    ASSERT_TRUE(clock.awaitWaits(1));
    EXPECT_EQ(position.fileCurTs, 20'000u);
    clock.grant(1);
    ASSERT_TRUE(view.log.waitForCount("end 1", 1));
    EXPECT_EQ(reader->log.lines(), (Lines{"at 0 20001", "at 20000 1", "seek 0"}));
}

// For the thread sanitizer: the user does everything at once, and the last seek of all is where it goes on.
TEST_F(DvsPlayLoopSeekTest, NeverForgetsTheLastSeekHoweverOftenTheUserSeeks)
{
    constexpr int seeks = 2000;
    open(0, 1'000'000);
    view.looping = true;
    std::mt19937 random(11);
    loop->start();
    for (int i = 0; i < seeks; ++i) {
        clock.grant(1);
        position.seek(random() % 1'000'001);
        view.start = random() % 500'000;
        view.end = 500'000 + random() % 500'001;
        timing.setFrameRate(1 + static_cast<int>(random() % 100));
        if (i % 100 == 0) {
            loop->stop();
            loop->start();
        }
    }
    loop->stop();
    for (const std::string& line : view.log.lines())
        EXPECT_NE(line.substr(0, 3), "end");
    view.start = 0;
    view.end = 1'000'000;
    timing.setFrameRate(33);
    position.seek(123'456);
    reader->log.clear();
    loop->start();
    ASSERT_TRUE(reader->log.waitForCount("at 123456 33333", 1));
    loop->stop();
    EXPECT_EQ(reader->log.lines().front(), "at 123456 33333");
}
