#include "camera/simulation/canvas.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace korvane::simulation {

Canvas::Canvas(int widthPx, int heightPx, Edge leftAndRight)
    : columns(widthPx), rows(heightPx), edge(leftAndRight),
      lightValues(static_cast<std::size_t>(widthPx) * static_cast<std::size_t>(heightPx)),
      opacityValues(lightValues.size())
{
}

std::uint16_t Canvas::toLight(float shade)
{
    return static_cast<std::uint16_t>(std::lround(std::clamp(shade, 0.0F, 1.0F) * 4095.0F));
}

Canvas::Column Canvas::column(int x) const
{
    if (edge == Edge::Wraps)
        x = (x % columns + columns) % columns;
    return {x >= 0 && x < columns, static_cast<std::size_t>(std::max(x, 0))};
}

void Canvas::set(int x, int y, float shade)
{
    mix(x, y, shade, 1.0F);
}

void Canvas::mix(int x, int y, float shade, float share)
{
    const Column at = column(x);
    if (!at.inside || y < 0 || y >= rows || share <= 0.0F)
        return;
    const std::size_t i = static_cast<std::size_t>(y) * static_cast<std::size_t>(columns) + at.index;
    const auto old = static_cast<float>(lightValues[i]);
    const auto target = static_cast<float>(toLight(shade));
    const auto oldOpacity = static_cast<float>(opacityValues[i]);
    // On bare canvas the colour is the new one however little of the pixel it covers.
    const float weight = oldOpacity == 0.0F ? 1.0F : share;
    lightValues[i] = static_cast<std::uint16_t>(std::lround(old + (target - old) * weight));
    opacityValues[i] = static_cast<std::uint8_t>(std::lround(oldOpacity + (255.0F - oldOpacity) * share));
}

void Canvas::fillRect(int x, int y, int width, int height, float shade)
{
    const std::uint16_t value = toLight(shade);
    const int bottom = std::min(y + height, rows);
    if (edge == Edge::Ends) {
        const int right = std::min(x + width, columns);
        x = std::max(x, 0);
        width = right - x;
    }
    width = std::min(width, columns);
    for (int row = std::max(y, 0); row < bottom && width > 0; ++row) {
        const std::size_t start = static_cast<std::size_t>(row) * static_cast<std::size_t>(columns);
        const std::size_t first = column(x).index;
        const std::size_t whole = static_cast<std::size_t>(width);
        const std::size_t part = std::min(whole, static_cast<std::size_t>(columns) - first);
        std::fill_n(lightValues.begin() + static_cast<std::ptrdiff_t>(start + first), part, value);
        std::fill_n(opacityValues.begin() + static_cast<std::ptrdiff_t>(start + first), part,
                    std::uint8_t{255});
        std::fill_n(lightValues.begin() + static_cast<std::ptrdiff_t>(start), whole - part, value);
        std::fill_n(opacityValues.begin() + static_cast<std::ptrdiff_t>(start), whole - part,
                    std::uint8_t{255});
    }
}

void Canvas::fillPolygon(std::span<const Point> corners, float shade)
{
    if (corners.size() < 3)
        return;
    const auto [top, bottom] = std::minmax_element(corners.begin(), corners.end(),
                                                   [](const Point& a, const Point& b) { return a.y < b.y; });
    const auto [left, right] = std::minmax_element(corners.begin(), corners.end(),
                                                   [](const Point& a, const Point& b) { return a.x < b.x; });
    const int firstColumn = static_cast<int>(std::floor(left->x));
    const int width = static_cast<int>(std::ceil(right->x)) - firstColumn + 1;
    const int firstRow = std::max(0, static_cast<int>(std::floor(top->y)));
    const int endRow = std::min(rows, static_cast<int>(std::ceil(bottom->y)));
    constexpr int subRows = 4;
    std::vector<float> covered(static_cast<std::size_t>(width));
    std::vector<double> crossings;
    for (int row = firstRow; row < endRow; ++row) {
        std::fill(covered.begin(), covered.end(), 0.0F);
        for (int sub = 0; sub < subRows; ++sub) {
            const double y = row + (sub + 0.5) / subRows;
            crossings.clear();
            for (std::size_t i = 0; i < corners.size(); ++i) {
                const Point& a = corners[i];
                const Point& b = corners[(i + 1) % corners.size()];
                if ((a.y <= y) != (b.y <= y))
                    crossings.push_back(a.x + (b.x - a.x) * (y - a.y) / (b.y - a.y));
            }
            std::sort(crossings.begin(), crossings.end());
            for (std::size_t i = 0; i + 1 < crossings.size(); i += 2) {
                const double from = crossings[i] - firstColumn;
                const double to = crossings[i + 1] - firstColumn;
                const auto end = std::min(covered.size(), static_cast<std::size_t>(std::ceil(to)));
                for (auto x = static_cast<std::size_t>(from); x < end; ++x) {
                    const double overlap
                        = std::min(to, static_cast<double>(x + 1)) - std::max(from, static_cast<double>(x));
                    covered[x] += static_cast<float>(std::max(overlap, 0.0)) / subRows;
                }
            }
        }
        for (int i = 0; i < width; ++i)
            mix(firstColumn + i, row, shade, std::min(covered[static_cast<std::size_t>(i)], 1.0F));
    }
}

void Canvas::fillEllipse(Point centre, double radiusX, double radiusY, float shade)
{
    const int corners = std::clamp(static_cast<int>(std::max(radiusX, radiusY) * 2.0), 8, 96);
    std::array<Point, 96> outline;
    for (int i = 0; i < corners; ++i) {
        const double angle = 2.0 * std::numbers::pi * i / corners;
        outline[static_cast<std::size_t>(i)]
            = {centre.x + radiusX * std::cos(angle), centre.y + radiusY * std::sin(angle)};
    }
    fillPolygon(std::span(outline).first(static_cast<std::size_t>(corners)), shade);
}

void Canvas::strokeLine(Point from, Point to, double thickness, float shade)
{
    const double length = std::hypot(to.x - from.x, to.y - from.y);
    if (length <= 0.0)
        return;
    const double nx = -(to.y - from.y) / length * thickness / 2.0;
    const double ny = (to.x - from.x) / length * thickness / 2.0;
    const std::array<Point, 4> corners{Point{from.x + nx, from.y + ny}, Point{to.x + nx, to.y + ny},
                                       Point{to.x - nx, to.y - ny}, Point{from.x - nx, from.y - ny}};
    fillPolygon(corners, shade);
}

void Canvas::grain(int x, int y, int width, int height, const NoiseTile& noise, float strength, float scale)
{
    for (int row = std::max(y, 0); row < std::min(y + height, rows); ++row) {
        const int noiseRow = static_cast<int>(static_cast<float>(row) * scale);
        for (int i = 0; i < width; ++i) {
            const Column at = column(x + i);
            if (!at.inside)
                continue;
            std::uint16_t& value
                = lightValues[static_cast<std::size_t>(row) * static_cast<std::size_t>(columns) + at.index];
            const float factor = 1.0F
                + strength * noise.at(static_cast<int>(static_cast<float>(at.index) * scale), noiseRow);
            value = static_cast<std::uint16_t>(std::clamp(static_cast<float>(value) * factor, 0.0F, 4095.0F));
        }
    }
}

} // namespace korvane::simulation
