#include "camera/simulation/streetscene.h"

#include "camera/simulation/random.h"
#include "camera/simulation/sensorparameters.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace korvane::simulation {

using namespace street;

namespace {

// Of the viewer, in pixels at the foot of the houses and seconds of scene time.
constexpr double viewerSpeed = 72.0;
// Clear of the segments' borders, before sky, roofs and leaves.
constexpr Point lampPlace{160.0, 72.0};
constexpr double lampRadius = 15.0;
// Measured.
constexpr double lampEventsPerSecond = 0.13e6;
// The skyline is about four times as far as the houses.
constexpr double farScale = 0.25;

double sway(double seconds)
{
    constexpr double turn = 2.0 * std::numbers::pi;
    return 2.2 * std::sin(turn * 0.71 * seconds) + 0.8 * std::sin(turn * 1.93 * seconds + 1.0);
}

std::shared_ptr<PictureLayer> layerOf(const Canvas& canvas, int phases = 1)
{
    return std::make_shared<PictureLayer>(std::make_shared<const LayerImage>(canvas), phases);
}

/// Measured: nearly all crossings become events, at high speed somewhat fewer because pixels miss some of
/// what passes; the sensor's noise comes on top.
double speedFor(double eventsPerSecond, double crossingsPerSecond)
{
    const double millions = (std::clamp(eventsPerSecond, 0.4e6, 60e6) - lampEventsPerSecond) * 1e-6;
    return (millions - 0.1) / (0.93 * crossingsPerSecond * 1e-6 - 0.05 * millions);
}

} // namespace

StreetScene::StreetScene(std::uint64_t seed, double eventsPerSecond)
    : LayeredScene(imageWidth, imageHeight),
      lamp(std::make_shared<LampLayer>(lampPlace, lampRadius, imageWidth))
{
    Random random(seed);
    addBehind(lamp);
    addCar({300, 0.62F, 0.05F, false, false}, 648, 128, random.uniform(0, 1500));
    addCar({200, 0.10F, 0.35F, false, true}, 556, -46, random.uniform(0, 1500));
    addCar({250, 0.72F, 0.06F, true, true}, 560, -70, random.uniform(0, 1500));
    trees = layerOf(paintTrees(random.next()));
    const std::vector<std::vector<float>> shades = paintGround(random.next());
    ground = std::make_shared<PictureLayer>(std::make_shared<const LayerImage>(shades, groundTurn));
    houses = layerOf(paintHouses(random.next()));
    skyline = layerOf(paintSkyline(random.next()));
    addBehind(trees);
    addBehind(ground);
    addBehind(houses);
    addBehind(skyline);
    const int threshold = static_cast<int>(SensorParameters().onThreshold * logUnits);
    setSpeed(speedFor(eventsPerSecond, crossingsPerSecond(threshold, houseTurn / viewerSpeed)));
    lit = true;
}

/// `roadSpeed` in pixels at the foot of the houses per second, to the right.
void StreetScene::addCar(const CarLook& look, double standRow, double roadSpeed, double startColumn)
{
    Car car;
    car.plan = planCar(look);
    car.standRow = standRow;
    car.startColumn = startColumn;
    const double scale = groundScale(standRow);
    car.roadVelocity = roadSpeed * scale;
    car.velocity = (roadSpeed - viewerSpeed) * scale;
    const Canvas wheel = paintWheel(car.plan.wheelRadius);
    car.wheelSize = wheel.width();
    car.frontWheel = layerOf(wheel, wheelPhases);
    car.rearWheel = layerOf(wheel, wheelPhases);
    car.body = layerOf(paintCar(look));
    addBehind(car.frontWheel);
    addBehind(car.rearWheel);
    addBehind(car.body);
    cars.push_back(car);
}

void StreetScene::moveLayers(double before, double after)
{
    // The mains keep their frequency however fast the street passes.
    if (lit)
        lamp->glow(before / speed(), after / speed());
    const auto backdrop = [before, after](double scale, double row) {
        PictureLayer::Motion motion;
        motion.scrollBefore = before * viewerSpeed * scale;
        motion.scrollAfter = after * viewerSpeed * scale;
        motion.anchor = imageWidth / 2.0;
        motion.topBefore = row + sway(before);
        motion.topAfter = row + sway(after);
        return motion;
    };
    trees->move(backdrop(groundScale(treeRow), -margin));
    ground->move(backdrop(1.0, houseRow - 2));
    houses->move(backdrop(1.0, -margin));
    skyline->move(backdrop(farScale, -margin));
    for (const Car& car : cars)
        moveCar(car, before, after);
}

void StreetScene::moveCar(const Car& car, double before, double after)
{
    // Out of sight a car turns round to come again from where it came.
    const double lap = imageWidth + car.plan.width + 260;
    const double raw = car.startColumn + car.velocity * before;
    const double left = raw - std::floor(raw / lap) * lap - car.plan.width - 130;
    const double travel = car.velocity * (after - before);

    const auto put = [&](PictureLayer& layer, double column, double row) {
        PictureLayer::Motion motion;
        motion.scrollBefore = -(left + column);
        motion.scrollAfter = motion.scrollBefore - travel;
        motion.topBefore = car.standRow - car.plan.wheelRow + row + sway(before);
        motion.topAfter = motion.topBefore - sway(before) + sway(after);
        const double turnsPerSecond
            = car.roadVelocity / (2.0 * std::numbers::pi * car.plan.wheelRadius) * wheelSpokes;
        motion.phaseBefore = turnsPerSecond * before;
        motion.phaseAfter = turnsPerSecond * after;
        layer.move(motion);
    };
    put(*car.body, 0, 0);
    put(*car.frontWheel, car.plan.frontWheel - car.wheelSize / 2.0, car.plan.hubRow - car.wheelSize / 2.0);
    put(*car.rearWheel, car.plan.rearWheel - car.wheelSize / 2.0, car.plan.hubRow - car.wheelSize / 2.0);
}

} // namespace korvane::simulation
