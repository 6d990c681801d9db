#pragma once

#include "camera/simulation/disclayer.h"
#include "camera/simulation/layeredscene.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace korvane::simulation {

/// A laboratory bench seen by a camera at rest: a patterned disc turns, a test chart swings, balls bounce
/// past. One thread at a time.
class TurntableScene : public LayeredScene
{
public:
    /// The same `seed` gives the same bench. Things move at such a speed that standard sensor parameters give
    /// about `eventsPerSecond`, 200 thousand to 20 million.
    TurntableScene(std::uint64_t seed, double eventsPerSecond);

protected:
    void moveLayers(double before, double after) override;

private:
    struct Ball
    {
        double size = 0; // pixels, edge of its picture
        double startColumn = 0;
        double velocity = 0; // columns per second
        double leap = 0; // height of a bounce, pixels
        double bounceSeconds = 0;
        double phase = 0; // of the bounce, 0 to 1
        std::shared_ptr<PictureLayer> layer;
    };
    static Point placeOf(const Ball& ball, double time);

    std::vector<Ball> balls;
    std::shared_ptr<PictureLayer> chart;
    std::shared_ptr<DiscLayer> disc;
    std::shared_ptr<PictureLayer> bench;
};

} // namespace korvane::simulation
