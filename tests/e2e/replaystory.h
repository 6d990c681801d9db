#pragma once

#include "camera/simulation/replaybackend.h"
#include "tests/e2e/livestoryfixture.h"
#include "tests/support/movingbar.h"

#include <QTemporaryDir>

#include <memory>

/// The window with a recording of a moving bar as a camera, ahead of the simulated ones.
class ReplayStory : public LiveStory
{
protected:
    explicit ReplayStory(const QString& name = QStringLiteral("moving_bar_of_events"),
                         unsigned milliseconds = 300)
        : bar(recorded.filePath(name + QStringLiteral(".raw"))), length(milliseconds)
    {
    }
    void SetUp() override
    {
        ASSERT_TRUE(writeMovingBar(bar, length));
        replay = std::make_shared<korvane::simulation::ReplayBackend>(recorded.path());
        korvane::registerBackend(replay);
        LiveStory::SetUp();
    }
    void TearDown() override
    {
        LiveStory::TearDown();
        korvane::unregisterBackend(replay);
    }

    QTemporaryDir recorded;
    const QString bar;
    const unsigned length;
    std::shared_ptr<korvane::simulation::ReplayBackend> replay;
};
