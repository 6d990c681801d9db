#include "display/pacedwait.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

using namespace std::chrono_literals;

TEST(PacedWait, LastsAsLongAsAskedWhileRunning)
{
    PacedWait wait;
    const std::atomic<bool> running{true};
    const auto begin = std::chrono::steady_clock::now();
    wait.waitFor(20ms, running);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 20ms);
}

TEST(PacedWait, IsOverAtOnceWhenNothingRuns)
{
    PacedWait wait;
    const std::atomic<bool> running{false};
    const auto begin = std::chrono::steady_clock::now();
    wait.waitFor(1h, running);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 30s);
}

TEST(PacedWait, AWakeWhileRunningDoesNotShortenIt)
{
    PacedWait wait;
    const std::atomic<bool> running{true};
    std::atomic<bool> over{false};
    std::thread waker([&] {
        while (!over)
            wait.wake();
    });
    const auto begin = std::chrono::steady_clock::now();
    wait.waitFor(50ms, running);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 50ms);
    over = true;
    waker.join();
}

// Whether the waiter is about to wait, waits, or has not come yet: the wait of an hour ends.
TEST(PacedWait, AStopWakesItWheneverItComes)
{
    for (int round = 0; round < 500; ++round) {
        PacedWait wait;
        std::atomic<bool> running{true};
        std::atomic<bool> begun{false};
        std::thread waiter([&] {
            begun = true;
            wait.waitFor(1h, running);
        });
        while (!begun)
            std::this_thread::yield();
        for (int i = 0; i < round % 50; ++i)
            std::this_thread::yield();
        running = false;
        wait.wake();
        waiter.join();
    }
    SUCCEED() << "every join came back";
}
