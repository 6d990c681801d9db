#pragma once

#include "camera/simulation/lamplayer.h"
#include "camera/simulation/layeredscene.h"
#include "camera/simulation/streetpictures.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace korvane::simulation {

/// A street seen out of a car's side window: far skyline, houses, trees, pavement and road pass by at the
/// speeds that their distances give, the image sways a little, and other cars drive along. The window mirrors
/// a lamp that flickers at 100 Hz and stays where it is. One thread at a time.
class StreetScene : public LayeredScene
{
public:
    /// The same `seed` gives the same street. Things move at such a speed that standard sensor parameters
    /// give about `eventsPerSecond`, 400 thousand to 60 million.
    StreetScene(std::uint64_t seed, double eventsPerSecond);

protected:
    void moveLayers(double before, double after) override;

private:
    struct Car
    {
        street::CarPlan plan;
        double standRow = 0; // row of the image on which the wheels stand
        double startColumn = 0;
        double velocity = 0; // columns per second of scene time
        double roadVelocity = 0; // the same against the road, for the wheels
        std::shared_ptr<PictureLayer> body;
        std::shared_ptr<PictureLayer> frontWheel;
        std::shared_ptr<PictureLayer> rearWheel;
        int wheelSize = 0;
    };
    void addCar(const street::CarLook& look, double standRow, double roadSpeed, double startColumn);
    void moveCar(const Car& car, double before, double after);

    std::shared_ptr<LampLayer> lamp;
    bool lit = false;
    std::vector<Car> cars;
    std::shared_ptr<PictureLayer> trees;
    std::shared_ptr<PictureLayer> ground;
    std::shared_ptr<PictureLayer> houses;
    std::shared_ptr<PictureLayer> skyline;
};

} // namespace korvane::simulation
