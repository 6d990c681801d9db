#include "camera/simulation/filterchain.h"
#include "camera/simulation/streamtools.h"
#include "tests/support/recordprinters.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <optional>
#include <span>
#include <thread>
#include <vector>

namespace {

using namespace korvane;
using namespace korvane::simulation;

/// Keeps events whose column is a multiple of a number.
class MultipleFilter
{
public:
    struct Settings
    {
        bool enabled = false;
        int divisor = 1;
    };

    void configure(const Settings& settings) { divisor = static_cast<unsigned>(settings.divisor); }
    std::size_t filter(Event2D* events, std::size_t count)
    {
        std::size_t kept = 0;
        for (std::size_t i = 0; i < count; ++i) {
            if (events[i].x % divisor == 0)
                events[kept++] = events[i];
        }
        return kept;
    }

private:
    unsigned divisor = 1;
};

std::vector<ToolParameter> table()
{
    return {{"enable", "", ToolParameter::Switch{}, ""},
            {"divisor", "", ToolParameter::Integer{1, 100, 2}, ""}};
}

std::optional<MultipleFilter::Settings> settingsOf(const ToolValues& values)
{
    if (values.integer("divisor") == 13)
        return std::nullopt;
    return MultipleFilter::Settings{values.isOn("enable"), values.integer("divisor")};
}

std::vector<Event2D> rowOf(std::uint16_t length)
{
    std::vector<Event2D> events;
    for (std::uint16_t x = 0; x < length; ++x)
        events.emplace_back(x, 3, x % 2, 100 + x);
    return events;
}

std::vector<unsigned> columns(std::span<const Event2D> events)
{
    std::vector<unsigned> result;
    for (const Event2D& event : events)
        result.push_back(event.x);
    return result;
}

class StreamToolsTest : public testing::Test
{
protected:
    StreamToolsTest()
    {
        tools.addFilter(ToolType::Biases, MultipleFilter(), table(), settingsOf);
        tools.addFilter(ToolType::Aps, MultipleFilter(), table(), settingsOf);
    }
    CameraTool& first() { return *tools.all().at(ToolType::Biases); }
    CameraTool& second() { return *tools.all().at(ToolType::Aps); }
    std::span<const Event2D> run(std::span<const Event2D> batch)
    {
        return tools.process({batch, {}, 1000}).events;
    }

    StreamTools tools{recording::Geometry{1280, 720}};
    std::vector<Event2D> events = rowOf(13);
};

} // namespace

TEST_F(StreamToolsTest, PassThroughUntouchedWhatNoFilterIsOnFor)
{
    const EventTriggerIn trigger(0, 1, 500);
    const StreamStep step = tools.process({events, {&trigger, 1}, 1000});
    EXPECT_EQ(step.events.data(), events.data());
    EXPECT_EQ(step.events.size(), events.size());
    EXPECT_EQ(step.triggers.data(), &trigger);
    EXPECT_EQ(step.triggers.size(), 1U);
    EXPECT_EQ(step.until, 1000U);
}

TEST_F(StreamToolsTest, KeepTheOrderAndLeaveTheStepItselfAlone)
{
    const std::vector<Event2D> before = events;
    ASSERT_TRUE(first().setBoolParameter("enable", true));
    ASSERT_TRUE(first().setIntParameter("divisor", 3));
    EXPECT_EQ(columns(run(events)), (std::vector<unsigned>{0, 3, 6, 9, 12}));
    EXPECT_EQ(events, before);
}

TEST_F(StreamToolsTest, ApplyEachFilterToWhatTheOneBeforeLeft)
{
    ASSERT_TRUE(first().setBoolParameter("enable", true));
    ASSERT_TRUE(second().setBoolParameter("enable", true));
    ASSERT_TRUE(second().setIntParameter("divisor", 3));
    EXPECT_EQ(columns(run(events)), (std::vector<unsigned>{0, 6, 12}));
    ASSERT_TRUE(first().setBoolParameter("enable", false));
    EXPECT_EQ(columns(run(events)), (std::vector<unsigned>{0, 3, 6, 9, 12}));
    ASSERT_TRUE(second().setBoolParameter("enable", false));
    EXPECT_EQ(run(events).data(), events.data());
}

TEST_F(StreamToolsTest, TakeOverWhatWasSetWithTheNextBatch)
{
    ASSERT_TRUE(first().setBoolParameter("enable", true));
    EXPECT_EQ(run(events).size(), 7U);
    ASSERT_TRUE(first().setIntParameter("divisor", 6));
    EXPECT_EQ(run(events).size(), 3U);
    EXPECT_FALSE(first().setIntParameter("divisor", 13));
    EXPECT_EQ(run(events).size(), 3U);
}

TEST_F(StreamToolsTest, FilterEmptyBatches)
{
    ASSERT_TRUE(first().setBoolParameter("enable", true));
    EXPECT_TRUE(run({}).empty());
}

TEST(StreamTools, MayEndBeforeTheirTools)
{
    auto tools = std::make_unique<StreamTools>(recording::Geometry{1280, 720});
    tools->addFilter(ToolType::Biases, MultipleFilter(), table(), settingsOf);
    const std::shared_ptr<CameraTool> kept = tools->all().at(ToolType::Biases);
    tools.reset();
    EXPECT_TRUE(kept->setBoolParameter("enable", true));
    EXPECT_FALSE(kept->setIntParameter("divisor", 13));
}

TEST_F(StreamToolsTest, AreSetWhileTheStreamRuns)
{
    std::atomic<bool> done{false};
    std::thread setter([this, &done] {
        EXPECT_TRUE(first().setBoolParameter("enable", true));
        for (int i = 1; i <= 12; ++i)
            EXPECT_TRUE(first().setIntParameter("divisor", i));
        done = true;
    });
    while (!done)
        EXPECT_LE(run(events).size(), events.size());
    setter.join();
    EXPECT_EQ(columns(run(events)), (std::vector<unsigned>{0, 12}));
}
