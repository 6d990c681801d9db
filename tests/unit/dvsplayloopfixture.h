#pragma once

#include "playback/dvsplayloop.h"
#include "tests/support/fakeclock.h"
#include "tests/support/scriptedreader.h"
#include "tests/support/scriptedview.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <optional>

/// A play loop over a scripted recording, with a window that only notes and a clock that waits for the test.
class DvsPlayLoopTest : public testing::Test
{
protected:
    using Lines = ScriptedLog::Lines;

    DvsPlayLoopTest() { state.playMode = ModeDvsRecording; }
    ~DvsPlayLoopTest() override { loop.reset(); }

    /// A recording from `first` to `last`, the position at its start and the range all of it; microseconds.
    void open(std::uint64_t first, std::uint64_t last)
    {
        reader = std::make_shared<ScriptedReader>(first, last);
        position.fileReader = reader;
        position.fileCurTs = first;
        view.start = first;
        view.end = last;
        loop.emplace(state, timing, position, view, clock);
    }

    /// Plays so many ticks, the first of the clock, and stops while the loop waits for the next.
    void play(std::size_t ticks)
    {
        loop->start();
        for (std::size_t tick = 1; tick <= ticks; ++tick) {
            ASSERT_TRUE(clock.awaitWaits(tick));
            if (tick < ticks)
                clock.grant(1);
        }
        loop->stop();
    }

    ScriptedView view;
    FakeClock clock;
    SourceState state;
    DisplayTiming timing;
    PlayPosition position;
    std::shared_ptr<ScriptedReader> reader;
    std::optional<DvsPlayLoop> loop;
};
