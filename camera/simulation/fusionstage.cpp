#include "camera/simulation/fusionstage.h"

#include "camera/simulation/random.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace korvane::simulation {

namespace {

constexpr double fullTurn = 2.0 * std::numbers::pi;
constexpr float ink = 0.02F;
constexpr float paper = 0.8F;

Point turned(Point point, double angle)
{
    return {point.x * std::cos(angle) - point.y * std::sin(angle),
            point.x * std::sin(angle) + point.y * std::cos(angle)};
}

/// A rectangle of a card that hangs at an angle; (x, y) is its upper left corner on the card.
void cardRect(const StagePainter& painter, double angle, double x, double y, double width, double height,
              float shade)
{
    painter.polygon({turned({x, y}, angle), turned({x + width, y}, angle),
                     turned({x + width, y + height}, angle), turned({x, y + height}, angle)},
                    shade);
}

void paintChecker(const StagePainter& painter)
{
    constexpr double angle = 0.21;
    constexpr double cell = 24.0;
    cardRect(painter, angle, -3.5 * cell, -2.5 * cell, 7 * cell, 5 * cell, paper);
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 6; ++column) {
            if ((row + column) % 2 == 0)
                cardRect(painter, angle, (column - 3) * cell, (row - 2) * cell, cell, cell, ink);
        }
    }
}

void paintStar(const StagePainter& painter)
{
    constexpr double radius = 72.0;
    constexpr int sectors = 14;
    painter.ellipse({0, 0}, radius + 8, radius + 8, paper);
    for (int sector = 0; sector < sectors; ++sector) {
        const double from = fullTurn * sector / sectors;
        const double to = from + fullTurn / sectors / 2;
        painter.polygon({{0, 0},
                         {radius * std::cos(from), radius * std::sin(from)},
                         {radius * std::cos(to), radius * std::sin(to)}},
                        ink);
    }
    painter.ellipse({0, 0}, 14, 14, 0.3F);
}

void paintBars(const StagePainter& painter)
{
    constexpr double angle = -0.13;
    cardRect(painter, angle, -86, -52, 172, 104, paper);
    double x = -76;
    for (int bar = 0; bar < 7; ++bar) {
        const double width = 14.0 - 1.4 * bar;
        cardRect(painter, angle, x, -40, width, 80, ink);
        x += 2 * width;
    }
}

void paintWheel(const StagePainter& painter)
{
    constexpr int teeth = 11;
    std::vector<Point> rim;
    for (int tooth = 0; tooth < teeth; ++tooth) {
        for (int corner = 0; corner < 4; ++corner) {
            const double angle = fullTurn * (tooth + corner * 0.25) / teeth;
            const double radius = corner == 1 || corner == 2 ? 62.0 : 50.0;
            rim.push_back({radius * std::cos(angle), radius * std::sin(angle)});
        }
    }
    painter.polygon(rim, 0.03F);
    painter.ellipse({0, 0}, 34, 34, 0.55F);
    painter.ellipse({0, 0}, 13, 13, 0.03F);
}

void paintRings(const StagePainter& painter)
{
    constexpr std::array<double, 4> radii{64, 46, 29, 13};
    for (std::size_t ring = 0; ring < radii.size(); ++ring)
        painter.ellipse({0, 0}, radii[ring], radii[ring], ring % 2 == 0 ? ink : paper);
}

void paintBall(const StagePainter& painter)
{
    painter.ellipse({0, 0}, 26, 26, 0.12F);
    painter.ellipse({-2, -3}, 22, 21, 0.75F);
    painter.ellipse({-9, -10}, 5, 4, 1.0F);
}

} // namespace

Point StagePainter::toCanvas(Point point) const
{
    return {canvas.width() / 2.0 + (mirrored ? -point.x : point.x) * scale,
            canvas.height() / 2.0 + point.y * scale};
}

void StagePainter::polygon(std::initializer_list<Point> corners, float shade) const
{
    polygon(std::vector<Point>(corners), shade);
}

void StagePainter::polygon(std::vector<Point> corners, float shade) const
{
    for (Point& corner : corners)
        corner = toCanvas(corner);
    canvas.fillPolygon(corners, shade);
}

void StagePainter::ellipse(Point centre, double radiusX, double radiusY, float shade) const
{
    canvas.fillEllipse(toCanvas(centre), radiusX * scale, radiusY * scale, shade);
}

Point StageActor::placeAt(double seconds) const
{
    return {middle.x + swing.x * std::sin(fullTurn * seconds / periods.x + phases.x),
            middle.y + swing.y * std::sin(fullTurn * seconds / periods.y + phases.y)};
}

Canvas StageActor::picture(double pixelsPerUnit, bool mirrored) const
{
    const auto pixels = [pixelsPerUnit](double half) {
        return 2 * static_cast<int>(std::ceil((half + 3.0) * pixelsPerUnit));
    };
    Canvas canvas(pixels(halfWidth), pixels(halfHeight), Canvas::Edge::Ends);
    paint(StagePainter(canvas, pixelsPerUnit, mirrored));
    return canvas;
}

FusionStage::FusionStage(std::uint64_t seed)
{
    Random random(seed);
    glow = {random.uniform(420.0, 860.0), random.uniform(120.0, 220.0)};
    const auto add = [this, &random](double halfWidth, double halfHeight, std::array<float, 3> tint,
                                     void (*paint)(const StagePainter&), Point middle, Point swing) {
        StageActor actor;
        actor.halfWidth = halfWidth;
        actor.halfHeight = halfHeight;
        actor.tint = tint;
        actor.paint = paint;
        actor.middle = middle;
        actor.swing = swing;
        // The fastest moment of a swing is at its middle: 30 to 50 units a second.
        actor.periods = {fullTurn * swing.x / random.uniform(30.0, 42.0),
                         fullTurn * swing.y / random.uniform(18.0, 28.0)};
        actor.phases = {random.uniform(0.0, fullTurn), random.uniform(0.0, fullTurn)};
        things.push_back(std::move(actor));
    };
    // Mirrored, no card stands where another one is: whoever overlooks that the event sensor sees the stage
    // mirrored finds hardly an event on an edge.
    add(28, 28, {0.55F, 0.75F, 1.0F}, paintBall, {640, 360}, {420, 230});
    add(28, 28, {1.0F, 0.8F, 0.5F}, paintBall, {560, 380}, {360, 210});
    add(98, 82, {0.92F, 0.98F, 1.0F}, paintChecker, {360, 152}, {150, 24});
    add(82, 82, {1.0F, 1.0F, 0.95F}, paintStar, {1010, 352}, {80, 26});
    add(66, 66, {0.85F, 0.9F, 1.0F}, paintRings, {790, 366}, {70, 34});
    add(64, 64, {0.6F, 0.85F, 1.0F}, paintWheel, {220, 574}, {70, 36});
    add(96, 66, {0.8F, 1.0F, 0.9F}, paintBars, {440, 580}, {90, 30});
}

float FusionStage::wallLight(double u, double v) const
{
    // Lit from above, with a glow where the lamp hangs: nowhere an edge.
    const double down = std::clamp(v / fusiongeometry::eventHeight, -0.2, 1.2);
    const double fall = 0.62 * std::exp(-2.9 * down * down);
    const double far = std::hypot((u - glow.x) / 420.0, (v - glow.y) / 260.0);
    return static_cast<float>(0.012 + fall * (0.45 + 0.75 * std::exp(-far * far)));
}

} // namespace korvane::simulation
