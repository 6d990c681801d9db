#pragma once

#include "camera/simulation/noisetile.h"

#include <cstdint>
#include <span>
#include <vector>

namespace korvane::simulation {

struct Point
{
    double x = 0;
    double y = 0;
};

/// A picture that a scene is painted on before the sensor sees it: intensity from 0 (black) to 1 (white),
/// linear, and opacity. A canvas that wraps continues at its other side. One thread at a time.
class Canvas
{
public:
    enum class Edge { Ends, Wraps };

    Canvas(int widthPx, int heightPx, Edge leftAndRight);

    int width() const { return columns; }
    int height() const { return rows; }
    bool wraps() const { return edge == Edge::Wraps; }

    /// Paints whole pixels, opaque.
    void fillRect(int x, int y, int width, int height, float shade);
    /// Paints with smooth edges, opaque inside. Coordinates are of pixel corners.
    void fillPolygon(std::span<const Point> corners, float shade);
    void fillEllipse(Point centre, double radiusX, double radiusY, float shade);
    void strokeLine(Point from, Point to, double thickness, float shade);
    /// Multiplies what is painted by 1 + strength x noise, sampled every `scale` values.
    void grain(int x, int y, int width, int height, const NoiseTile& noise, float strength,
               float scale = 1.0F);
    /// Makes a pixel opaque with this shade.
    void set(int x, int y, float shade);

    /// Row by row; 0 to 4095.
    const std::vector<std::uint16_t>& light() const { return lightValues; }
    /// Row by row; 0 to 255.
    const std::vector<std::uint8_t>& opacity() const { return opacityValues; }

    static std::uint16_t toLight(float shade);

private:
    struct Column
    {
        bool inside = false;
        std::size_t index = 0;
    };
    Column column(int x) const;
    void mix(int x, int y, float shade, float share);

    int columns;
    int rows;
    Edge edge;
    std::vector<std::uint16_t> lightValues;
    std::vector<std::uint8_t> opacityValues;
};

} // namespace korvane::simulation
