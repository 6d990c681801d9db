#include "camera/simulation/turntablescene.h"

#include "camera/simulation/random.h"
#include "camera/simulation/sensorparameters.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace korvane::simulation {

namespace {

constexpr int imageWidth = 1280;
constexpr int imageHeight = 720;
constexpr double fullTurn = 2.0 * std::numbers::pi;
constexpr Point discCentre{360.0, 384.0};
constexpr int discRadius = 280;
constexpr double turnsPerSecond = 0.085;
constexpr int angles = 1024; // columns of the unrolled disc
constexpr int chartWidth = 300;
constexpr int chartHeight = 230;
constexpr double floorRow = 690.0;

/// The disc unrolled: columns are angles, rows are rings from the centre.
Canvas paintDisc(std::uint64_t seed)
{
    Canvas canvas(angles, discRadius, Canvas::Edge::Wraps);
    canvas.fillRect(0, 0, angles, discRadius, 0.34F);
    // Hub: one half dark, so that a turn can be counted.
    canvas.fillRect(0, 0, angles / 2, 40, 0.07F);
    // A spiral of three arms.
    for (int ring = 52; ring < 124; ++ring) {
        for (int arm = 0; arm < 3; ++arm)
            canvas.fillRect(arm * angles / 3 + ring * 4, ring, angles / 6, 1, 0.09F);
    }
    // Dots of growing size.
    constexpr int dots = 9;
    for (int dot = 0; dot < dots; ++dot) {
        const double size = 8.0 + 2.1 * dot;
        const double ring = 163.0;
        canvas.fillEllipse({(dot + 0.5) * angles / dots, ring}, size * angles / (fullTurn * ring), size,
                           dot % 3 == 2 ? 0.85F : 0.06F);
    }
    // A scale, and a rim of sectors with a gap at the start.
    for (int tick = 0; tick < 32; ++tick)
        canvas.fillRect(tick * angles / 32, 200, 6, tick % 4 == 0 ? 16 : 9, 0.06F);
    for (int sector = 0; sector < 7; ++sector)
        canvas.fillRect(sector * angles / 8, 226, angles / 16, 42, 0.08F);
    canvas.grain(0, 0, angles, discRadius, NoiseTile(seed, 32, 5, 0.7F), 0.02F);
    return canvas;
}

Canvas paintChart(std::uint64_t seed)
{
    Random random(seed);
    constexpr float paper = 0.6F;
    constexpr float ink = 0.1F;
    Canvas canvas(chartWidth, chartHeight, Canvas::Edge::Ends);
    // Tilted, so that no edge lies along the pixels.
    const double tilt = 0.09;
    const auto quad = [&](double x, double y, double width, double height, float shade) {
        const auto turned = [&](double px, double py) {
            const double dx = px - chartWidth / 2.0;
            const double dy = py - chartHeight / 2.0;
            return Point{chartWidth / 2.0 + dx * std::cos(tilt) - dy * std::sin(tilt),
                         chartHeight / 2.0 + dx * std::sin(tilt) + dy * std::cos(tilt)};
        };
        const std::array<Point, 4> corners{turned(x, y), turned(x + width, y), turned(x + width, y + height),
                                           turned(x, y + height)};
        canvas.fillPolygon(corners, shade);
    };
    quad(22, 22, 256, 186, paper);
    // Bars that get finer and finer, upright and lying.
    double x = 34;
    for (int group = 0; group < 4; ++group) {
        const double width = 9.0 - 2.0 * group;
        for (int bar = 0; bar < 3; ++bar, x += 2 * width)
            quad(x, 34, width, 56, ink);
        x += 8;
    }
    double y = 104;
    for (int group = 0; group < 3; ++group) {
        const double height = 7.0 - 2.0 * group;
        for (int bar = 0; bar < 3; ++bar, y += 2 * height)
            quad(34, y, 70, height, ink);
        y += 6;
    }
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 6; ++column) {
            if ((row + column) % 2 == 0)
                quad(122 + column * 16, 112 + row * 16, 16, 16, ink);
        }
    }
    for (int mark = 0; mark < 9; ++mark) {
        quad(122 + mark * 12, 184, 8, 3, ink);
        quad(122 + mark * 12 + random.below(6), 184, 3, 14, ink);
    }
    canvas.fillEllipse({250, 158}, 18, 18, ink);
    canvas.fillEllipse({250, 158}, 10, 10, paper);
    return canvas;
}

Canvas paintBall(double radius, float shade)
{
    const int size = 2 * static_cast<int>(std::ceil(radius)) + 8;
    Canvas canvas(size, size, Canvas::Edge::Ends);
    const Point centre{size / 2.0, size / 2.0};
    canvas.fillEllipse(centre, radius, radius, shade * 0.3F);
    canvas.fillEllipse({centre.x - radius * 0.08, centre.y - radius * 0.1}, radius * 0.86, radius * 0.84,
                       shade);
    canvas.fillEllipse({centre.x - radius * 0.35, centre.y - radius * 0.38}, radius * 0.2, radius * 0.16,
                       1.0F);
    return canvas;
}

Canvas paintBench(std::uint64_t seed)
{
    Canvas canvas(imageWidth, imageHeight, Canvas::Edge::Wraps);
    canvas.fillRect(0, 0, imageWidth, imageHeight, 0.2F);
    canvas.fillRect(0, static_cast<int>(floorRow), imageWidth, imageHeight, 0.4F);
    canvas.grain(0, 0, imageWidth, imageHeight, NoiseTile(seed, 128, 6, 0.7F), 0.06F);
    return canvas;
}

std::shared_ptr<PictureLayer> layerOf(const Canvas& canvas)
{
    return std::make_shared<PictureLayer>(std::make_shared<const LayerImage>(canvas));
}

Point chartPlace(double time)
{
    return {850.0 + 88.0 * std::sin(fullTurn * 0.061 * time),
            205.0 + 90.0 * std::sin(fullTurn * 0.087 * time + 0.6)};
}

/// Measured: nearly all crossings become events, at high speed somewhat fewer because pixels miss some of
/// what passes; the sensor's noise comes on top.
double speedFor(double eventsPerSecond, double crossingsPerSecond)
{
    const double millions = std::clamp(eventsPerSecond, 0.2e6, 20e6) * 1e-6;
    return (millions - 0.1) / (0.93 * crossingsPerSecond * 1e-6 - 0.05 * millions);
}

} // namespace

TurntableScene::TurntableScene(std::uint64_t seed, double eventsPerSecond)
    : LayeredScene(imageWidth, imageHeight)
{
    Random random(seed);
    constexpr std::array<double, 3> radii{46, 30, 20};
    constexpr std::array<float, 3> shades{0.75F, 0.95F, 0.6F};
    for (std::size_t i = 0; i < radii.size(); ++i) {
        Ball ball;
        const Canvas picture = paintBall(radii[i], shades[i]);
        ball.size = picture.width();
        ball.startColumn = random.uniform(0.0, 2.0 * imageWidth);
        ball.velocity = random.uniform(70.0, 110.0) * (i % 2 == 0 ? 1.0 : -1.0);
        ball.leap = random.uniform(300.0, 520.0);
        // A slow-motion fall: 340 pixels per second squared.
        ball.bounceSeconds = 2.0 * std::sqrt(2.0 * ball.leap / 340.0);
        ball.phase = random.uniform();
        ball.layer = layerOf(picture);
        addBehind(ball.layer);
        balls.push_back(ball);
    }
    chart = layerOf(paintChart(random.next()));
    disc = std::make_shared<DiscLayer>(paintDisc(random.next()), discCentre, imageWidth);
    bench = layerOf(paintBench(random.next()));
    addBehind(chart);
    addBehind(disc);
    addBehind(bench);
    const int threshold = static_cast<int>(SensorParameters().onThreshold * logUnits);
    setSpeed(speedFor(eventsPerSecond, crossingsPerSecond(threshold, 60.0)));
}

/// Left upper corner of a ball's picture.
Point TurntableScene::placeOf(const Ball& ball, double time)
{
    // To the wall and back: a distance along a lap of twice the width.
    const double width = imageWidth - ball.size;
    const double raw = ball.startColumn + ball.velocity * time;
    const double along = raw - std::floor(raw / (2.0 * width)) * 2.0 * width;
    const double x = along < width ? along : 2.0 * width - along;
    const double bounces = time / ball.bounceSeconds + ball.phase;
    const double swing = 2.0 * (bounces - std::floor(bounces)) - 1.0;
    return {x, floorRow - ball.size - ball.leap * (1.0 - swing * swing)};
}

void TurntableScene::moveLayers(double before, double after)
{
    const auto move = [](PictureLayer& layer, Point from, Point to) {
        PictureLayer::Motion motion;
        motion.scrollBefore = -from.x;
        motion.scrollAfter = -to.x;
        motion.topBefore = from.y;
        motion.topAfter = to.y;
        layer.move(motion);
    };
    for (const Ball& ball : balls)
        move(*ball.layer, placeOf(ball, before), placeOf(ball, after));
    move(*chart, chartPlace(before), chartPlace(after));
    disc->turn(turnsPerSecond * before, turnsPerSecond * after);
}

} // namespace korvane::simulation
