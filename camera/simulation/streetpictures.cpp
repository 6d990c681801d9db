#include "camera/simulation/streetpictures.h"

#include "camera/simulation/random.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <initializer_list>
#include <numbers>

namespace korvane::simulation::street {

Canvas paintSkyline(std::uint64_t seed)
{
    Random random(seed);
    Canvas canvas(farTurn, houseRow + 2 * margin, Canvas::Edge::Wraps);
    const NoiseTile clouds(seed + 1, 128, 5, 0.5F);
    const int haze = horizonRow + margin;
    for (int row = 0; row < canvas.height(); ++row) {
        const float height = std::min(1.0F, static_cast<float>(row) / static_cast<float>(haze));
        const float clear = 0.55F + 0.3F * height;
        for (int x = 0; x < farTurn; ++x) {
            const float cloud = std::clamp(clouds.at(x / 2, row * 2) - 0.3F, 0.0F, 1.2F);
            canvas.set(x, row, std::min(clear * (1.0F + 0.45F * cloud), 1.0F));
        }
    }
    // Three ranges of far houses, the nearer the darker.
    for (int range = 0; range < 3; ++range) {
        const float shade = 0.42F - 0.11F * static_cast<float>(range);
        for (int x = 0; x < farTurn;) {
            const int width = std::min(24 + random.below(60), farTurn - x);
            const int top = 215 + range * 35 + random.below(75);
            canvas.fillRect(x, top, width, canvas.height() - top, shade);
            const float pane = shade * (random.chance(0.5) ? 0.6F : 1.5F);
            for (int row = top + 8; row < canvas.height(); row += 11) {
                for (int column = x + 4; column + 4 < x + width; column += 9)
                    canvas.fillRect(column, row, 4, 5, pane);
            }
            x += width + random.below(range == 2 ? 40 : 8);
        }
    }
    return canvas;
}

Canvas paintTrees(std::uint64_t seed)
{
    Random random(seed);
    Canvas canvas(houseTurn, treeRow + 2 * margin, Canvas::Edge::Wraps);
    const int foot = treeRow + margin;
    int x = 60;
    for (int i = 0; x < houseTurn - 100; ++i) {
        if (i % 3 == 2) {
            canvas.fillRect(x, foot - 250, 5, 250, 0.05F);
            canvas.fillRect(x - 3, foot - 40, 11, 40, 0.04F);
            canvas.strokeLine({x + 2.0, foot - 250.0}, {x + 44.0, foot - 262.0}, 4.0, 0.05F);
            canvas.fillEllipse({x + 52.0, foot - 259.0}, 15, 5, 0.9F);
        } else {
            const double crown = 46.0 + random.below(26);
            const double middle = foot - 150.0 - crown * 0.6;
            canvas.fillRect(x - 5, foot - 150, 11, 150, 0.05F);
            for (int branch = 0; branch < 5; ++branch)
                canvas.strokeLine(
                    {x + 0.0, foot - 110.0},
                    {x + random.uniform(-0.8, 0.8) * crown, middle + random.uniform(-0.5, 0.5) * crown}, 4.0,
                    0.05F);
            const int leaves = static_cast<int>(crown * 11);
            for (int leaf = 0; leaf < leaves; ++leaf) {
                const double angle = random.uniform(0.0, 2.0 * std::numbers::pi);
                const double out = std::sqrt(random.uniform()) * crown * random.uniform(0.75, 1.1);
                const Point at{x + out * std::cos(angle) * 1.1, middle + out * std::sin(angle)};
                // The sun stands above.
                const double light = 0.09 - 0.0007 * (at.y - middle);
                canvas.fillEllipse(at, random.uniform(2.5, 5.0), random.uniform(2.0, 4.0),
                                   static_cast<float>(light * random.uniform(0.4, 2.2)));
            }
        }
        x += 150 + random.below(160);
    }
    return canvas;
}

namespace {

/// The ground seen from above: distances along and across the street in pixels at the foot of the houses.
class Ground
{
public:
    explicit Ground(std::uint64_t seed)
        : coarse(seed, 128, 6, 0.7F), fine(seed + 1, 8, 3, 0.8F), random(seed + 2)
    {
        for (Patch& patch : patches)
            patch = {random.uniform(0.0, groundTurn), random.uniform(-0.2, 1.0), random.uniform(15, 70),
                     random.uniform(0.03, 0.12), static_cast<float>(random.uniform(0.5, 0.75))};
    }

    /// Shade at `along`, on the row with this scale.
    float shade(double along, double scale) const
    {
        // Depth runs from 0 at the houses towards 1 at the viewer's feet.
        const double depth = 1.0 - 1.0 / scale;
        const int noiseX = static_cast<int>(along);
        const int noiseY = static_cast<int>(depth * 1500.0);
        const float grain = coarse.at(noiseX, noiseY);
        const float dust = fine.at(static_cast<int>(along * 2.0), noiseY * 2);
        const double slab = along - std::floor(along / 32.0) * 32.0;
        if (depth < farKerb || depth > nearKerb) {
            const float joint = slab < 1.2 / scale + 0.6 || isBetween(depth, 0.1, 0.105) ? 0.55F : 1.0F;
            return 0.34F * joint * (1.0F + 0.08F * grain + 0.05F * dust);
        }
        if (depth < farKerb + 0.012 || depth > nearKerb - 0.012)
            return 0.62F * (slab < 1.5 ? 0.5F : 1.0F);
        float road = 0.12F * (1.0F + 0.09F * grain + 0.07F * dust);
        for (const Patch& patch : patches) {
            double dx = std::abs(along - patch.along);
            dx = std::min(dx, groundTurn - dx);
            const double dy = (depth - patch.depth) / patch.tall;
            if (dx < patch.wide && std::abs(dy) < 0.5
                && (dx / patch.wide) * (dx / patch.wide) + dy * dy * 4 < 1.0)
                road *= patch.shade;
        }
        const double dash = along - std::floor(along / 128.0) * 128.0;
        if (isBetween(depth, 0.49, 0.515) && dash < 56.0)
            return 0.8F * (1.0F + 0.04F * dust);
        if (isBetween(depth, farKerb + 0.05, farKerb + 0.062)
            || isBetween(depth, nearKerb - 0.05, nearKerb - 0.042))
            return 0.7F;
        return road;
    }

private:
    static constexpr double farKerb = 0.235;
    static constexpr double nearKerb = 0.668;
    struct Patch
    {
        double along = 0;
        double depth = 0;
        double wide = 0;
        double tall = 0;
        float shade = 1;
    };
    static bool isBetween(double value, double least, double most) { return value >= least && value < most; }

    NoiseTile coarse;
    NoiseTile fine;
    Random random;
    Patch patches[24];
};

} // namespace

std::vector<std::vector<float>> paintGround(std::uint64_t seed)
{
    const Ground ground(seed);
    std::vector<std::vector<float>> rows;
    for (int row = houseRow - 2; row < imageHeight + margin; ++row) {
        const double scale = std::max(1.0, groundScale(row));
        const auto length = static_cast<std::size_t>(std::lround(groundTurn * scale));
        const double step = static_cast<double>(groundTurn) / static_cast<double>(length);
        std::vector<float> sharp(length);
        for (std::size_t x = 0; x < length; ++x)
            sharp[x] = ground.shade(static_cast<double>(x) * step, scale);
        std::vector<float> soft(length);
        for (std::size_t x = 0; x < length; ++x)
            soft[x] = 0.25F * sharp[(x + length - 1) % length] + 0.5F * sharp[x]
                + 0.25F * sharp[(x + 1) % length];
        rows.push_back(std::move(soft));
    }
    return rows;
}

CarPlan planCar(const CarLook& look)
{
    const double length = look.length;
    CarPlan plan;
    plan.width = look.length + 8;
    plan.height = static_cast<int>(length * (look.van ? 0.46 : 0.36)) + 8;
    plan.wheelRadius = length * 0.072;
    const double front = look.facesLeft ? 0.19 : 0.81;
    plan.frontWheel = 4 + length * front;
    plan.rearWheel = 4 + length * (1.0 - front);
    plan.hubRow = plan.height - 6 - plan.wheelRadius;
    plan.wheelRow = plan.height - 6;
    return plan;
}

namespace {

/// Fills an outline, drawn facing right in shares of length and height, with a shade.
using FillShape = std::function<void(std::initializer_list<Point> shape, float shade)>;

void paintVan(const FillShape& fill, const CarLook& look)
{
    fill({{0.01, 0.86},
          {0.0, 0.12},
          {0.03, 0.03},
          {0.70, 0.03},
          {0.80, 0.10},
          {0.91, 0.44},
          {0.99, 0.52},
          {1.0, 0.86}},
         look.body);
    fill({{0.02, 0.62}, {0.99, 0.62}, {0.99, 0.67}, {0.02, 0.67}}, look.body * 0.45F);
    fill({{0.72, 0.44}, {0.72, 0.12}, {0.785, 0.13}, {0.88, 0.44}}, look.glass);
    fill({{0.10, 0.17}, {0.62, 0.17}, {0.62, 0.50}, {0.10, 0.50}}, look.body * 0.6F);
    fill({{0.14, 0.23}, {0.40, 0.23}, {0.40, 0.31}, {0.14, 0.31}}, 0.9F);
    fill({{0.14, 0.36}, {0.56, 0.36}, {0.56, 0.41}, {0.14, 0.41}}, 0.9F);
}

void paintSedan(const FillShape& fill, const CarLook& look)
{
    fill({{0.02, 0.80},
          {0.0, 0.60},
          {0.02, 0.46},
          {0.12, 0.40},
          {0.24, 0.08},
          {0.31, 0.02},
          {0.58, 0.02},
          {0.67, 0.08},
          {0.78, 0.40},
          {0.95, 0.49},
          {1.0, 0.62},
          {0.99, 0.82},
          {0.90, 0.87},
          {0.10, 0.87}},
         look.body);
    fill({{0.03, 0.66}, {0.98, 0.68}, {0.98, 0.87}, {0.08, 0.87}}, look.body * 0.62F);
    fill({{0.18, 0.40}, {0.275, 0.12}, {0.43, 0.10}, {0.43, 0.40}}, look.glass);
    fill({{0.46, 0.40}, {0.46, 0.10}, {0.575, 0.10}, {0.64, 0.15}, {0.73, 0.40}}, look.glass);
    fill({{0.52, 0.10}, {0.56, 0.10}, {0.63, 0.40}, {0.57, 0.40}}, look.glass * 4.0F);
}

} // namespace

Canvas paintCar(const CarLook& look)
{
    const CarPlan plan = planCar(look);
    Canvas canvas(plan.width, plan.height, Canvas::Edge::Ends);
    const double length = look.length;
    const double tall = plan.wheelRow - 4;
    // Outlines are drawn facing right, in shares of length and height.
    const auto place = [&](std::initializer_list<Point> shape) {
        std::vector<Point> points;
        for (const Point& p : shape)
            points.push_back({4 + length * (look.facesLeft ? 1.0 - p.x : p.x), 4 + tall * p.y});
        return points;
    };
    const auto fill
        = [&](std::initializer_list<Point> shape, float shade) { canvas.fillPolygon(place(shape), shade); };

    canvas.fillEllipse({4 + length / 2, plan.wheelRow - 0.5}, length * 0.48, 4.0, 0.02F);
    const float body = look.body;
    if (look.van)
        paintVan(fill, look);
    else
        paintSedan(fill, look);
    fill({{0.445, 0.42}, {0.455, 0.42}, {0.455, 0.84}, {0.445, 0.84}}, body * 0.35F);
    fill({{0.47, 0.50}, {0.52, 0.50}, {0.52, 0.53}, {0.47, 0.53}}, 0.9F);
    fill({{0.95, 0.54}, {0.995, 0.58}, {0.99, 0.66}, {0.95, 0.62}}, 0.95F);
    fill({{0.005, 0.52}, {0.035, 0.50}, {0.035, 0.62}, {0.005, 0.64}}, 0.08F);
    for (const double hub : {plan.frontWheel, plan.rearWheel}) {
        canvas.fillEllipse({hub, plan.hubRow}, plan.wheelRadius * 1.22, plan.wheelRadius * 1.22, 0.03F);
        canvas.fillEllipse({hub, plan.hubRow}, plan.wheelRadius, plan.wheelRadius, 0.045F);
    }
    return canvas;
}

Canvas paintWheel(double radius)
{
    const double rim = radius * 0.72;
    const int size = 2 * static_cast<int>(std::ceil(rim)) + 6;
    Canvas canvas(size, size * wheelPhases, Canvas::Edge::Ends);
    for (int phase = 0; phase < wheelPhases; ++phase) {
        const Point hub{size / 2.0, size * phase + size / 2.0};
        canvas.fillEllipse(hub, rim, rim, 0.06F);
        for (int spoke = 0; spoke < wheelSpokes; ++spoke) {
            const double angle
                = 2.0 * std::numbers::pi * (spoke + static_cast<double>(phase) / wheelPhases) / wheelSpokes;
            canvas.strokeLine(hub,
                              {hub.x + rim * 0.95 * std::cos(angle), hub.y + rim * 0.95 * std::sin(angle)},
                              rim * 0.3, 0.75F);
        }
        canvas.fillEllipse(hub, rim * 0.22, rim * 0.22, 0.75F);
    }
    return canvas;
}

} // namespace korvane::simulation::street
