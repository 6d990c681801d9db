#include "camera/simulation/random.h"
#include "camera/simulation/streetpictures.h"

#include <algorithm>
#include <array>

namespace korvane::simulation::street {

namespace {

constexpr int storeyHeight = 62;

/// Paints one house after the other along the street.
class HousePainter
{
public:
    explicit HousePainter(std::uint64_t seed)
        : canvas(houseTurn, houseRow + 2 * margin, Canvas::Edge::Wraps), random(seed),
          plaster(seed + 1, 64, 6, 0.65F), rough(seed + 2, 4, 3, 0.8F)
    {
    }

    Canvas paint()
    {
        int x = 0;
        while (x < houseTurn) {
            int width = 170 + random.below(210);
            // The last house ends where the first begins.
            if (houseTurn - x - width < 170)
                width = houseTurn - x;
            const bool gap = width < 300 && random.chance(0.18);
            house(x, gap ? width - 70 : width);
            if (gap)
                fence(x + width - 70, 70);
            x += width;
        }
        return std::move(canvas);
    }

private:
    // Rows of the canvas, which begins `margin` above the image.
    static constexpr int foot = houseRow + margin;

    void house(int x, int width)
    {
        const int storeys = 3 + random.below(4);
        const int roof = foot - storeys * storeyHeight - 24 - random.below(20);
        const auto wall = static_cast<float>(random.uniform(0.12, 0.62));
        const float trim = wall > 0.35F ? wall * 0.45F : wall * 2.1F;
        canvas.fillRect(x, roof, width, foot + margin - roof, wall);
        canvas.grain(x, roof, width, foot - roof, plaster, 0.07F);
        if (random.chance(0.45))
            bricks(x, roof, width, foot - roof, wall);
        canvas.grain(x, roof, width, foot - roof, rough, 0.035F);
        canvas.fillRect(x, roof, width, 5, trim);
        canvas.fillRect(x, roof + 9, width, 2, trim);
        // The neighbours' shadow joint.
        canvas.fillRect(x + width - 2, roof, 2, foot - roof, wall * 0.4F);
        roofline(x, width, roof, wall);

        const int windowWidth = 22 + random.below(16);
        const int pitch = windowWidth + 16 + random.below(20);
        const int windowHeight = 34 + random.below(10);
        const bool balconies = random.chance(0.3);
        for (int storey = 1; storey < storeys; ++storey) {
            const int top = foot - (storey + 1) * storeyHeight + 12;
            if (random.chance(0.5))
                canvas.fillRect(x, foot - storey * storeyHeight - 6, width, 3, trim);
            const int count = std::max(1, (width - 12) / pitch);
            const int left = x + (width - count * pitch + pitch - windowWidth) / 2;
            for (int i = 0; i < count; ++i) {
                window(left + i * pitch, top, windowWidth, windowHeight, wall);
                if (balconies && storey > 1)
                    balcony(left + i * pitch - 5, top + windowHeight - 12, windowWidth + 10, trim);
            }
        }
        shop(x, width, wall);
    }

    void bricks(int x, int y, int width, int height, float wall)
    {
        for (int row = 0; row < height / 7; ++row) {
            canvas.fillRect(x, y + row * 7, width, 1, wall * 0.72F);
            for (int column = (row % 2) * 8; column < width; column += 16)
                canvas.fillRect(x + column, y + row * 7, 1, 7, wall * 0.72F);
        }
    }

    void roofline(int x, int width, int roof, float wall)
    {
        if (random.chance(0.5)) {
            const std::array<Point, 4> gable{Point{x + 6.0, roof + 0.0}, Point{x + width * 0.25, roof - 34.0},
                                             Point{x + width * 0.75, roof - 34.0},
                                             Point{x + width - 6.0, roof + 0.0}};
            canvas.fillPolygon(gable, wall * 0.35F);
        }
        const int chimneys = 1 + random.below(3);
        for (int i = 0; i < chimneys; ++i) {
            const int left = x + 15 + random.below(std::max(1, width - 50));
            const int height = 26 + random.below(34);
            canvas.fillRect(left, roof - height, 13, height, wall * 0.6F);
            canvas.fillRect(left - 2, roof - height, 17, 4, wall * 0.3F);
        }
        if (random.chance(0.5)) {
            const double mast = x + 20.0 + random.below(std::max(1, width - 40));
            canvas.strokeLine({mast, roof + 0.0}, {mast, roof - 60.0}, 2.0, 0.04F);
            for (int i = 0; i < 4; ++i)
                canvas.strokeLine({mast - 12 + i * 2, roof - 58.0 + i * 8},
                                  {mast + 12 - i * 2, roof - 58.0 + i * 8}, 1.4, 0.04F);
        }
    }

    void window(int x, int y, int width, int height, float wall)
    {
        const float frame = wall > 0.4F ? 0.16F : 0.75F;
        canvas.fillRect(x - 3, y - 3, width + 6, height + 6, frame);
        const bool lit = random.chance(0.12);
        const auto glass = static_cast<float>(lit ? random.uniform(0.5, 0.8) : random.uniform(0.03, 0.09));
        canvas.fillRect(x, y, width, height, glass);
        if (!lit) {
            // The sky in the upper pane.
            const std::array<Point, 3> glare{Point{x + width * 0.2, y + 0.0}, Point{x + width + 0.0, y + 0.0},
                                             Point{x + width + 0.0, y + height * 0.55}};
            canvas.fillPolygon(glare, glass * static_cast<float>(random.uniform(1.3, 3.0)));
        }
        if (random.chance(0.4)) {
            const int drawn = height * (2 + random.below(5)) / 10;
            canvas.fillRect(x, y, width, drawn, 0.42F);
            for (int line = 3; line < drawn; line += 4)
                canvas.fillRect(x, y + line, width, 1, 0.27F);
        }
        canvas.fillRect(x + width / 2 - 1, y, 2, height, frame);
        canvas.fillRect(x, y + height / 3, width, 2, frame);
        canvas.fillRect(x - 5, y + height + 3, width + 10, 4, frame);
        canvas.fillRect(x - 5, y + height + 7, width + 10, 2, wall * 0.35F);
    }

    void balcony(int x, int y, int width, float trim)
    {
        canvas.fillRect(x, y, width, 2, trim);
        canvas.fillRect(x - 1, y + 16, width + 2, 4, trim);
        for (int bar = 0; bar < width; bar += 5)
            canvas.fillRect(x + bar, y, 1, 16, trim);
    }

    void shop(int x, int width, float wall)
    {
        const int top = foot - storeyHeight + 4;
        const int door = x + 10 + random.below(std::max(1, width - 60));
        canvas.fillRect(x, top - 4, width, 4, wall * 0.4F);
        for (int left = x + 10; left + 44 < x + width; left += 54) {
            canvas.fillRect(left, top + 14, 44, 38, 0.7F);
            canvas.fillRect(left + 2, top + 16, 40, 34, 0.05F);
            for (int i = 0; i < 6; ++i) {
                // Goods behind the pane.
                const auto shade = static_cast<float>(random.uniform(0.05, 0.6));
                canvas.fillRect(left + 4 + i * 6, top + 32 + random.below(10), 4, 14, shade);
            }
        }
        canvas.fillRect(door - 2, top + 8, 30, 56, wall * 0.3F);
        canvas.fillRect(door + 2, top + 12, 22, 50, static_cast<float>(random.uniform(0.06, 0.5)));
        canvas.fillRect(door + 19, top + 36, 3, 3, 0.9F);
        if (random.chance(0.6))
            awning(x + 6, top + 8, std::min(width - 12, 130));
        else
            sign(x + 12, top, std::min(width - 24, 150));
    }

    void awning(int x, int y, int width)
    {
        for (int stripe = 0; stripe < width; stripe += 12)
            canvas.fillRect(x + stripe, y, std::min(12, width - stripe), 16,
                            stripe / 12 % 2 == 0 ? 0.85F : 0.1F);
    }

    void sign(int x, int y, int width)
    {
        const bool dark = random.chance(0.5);
        canvas.fillRect(x, y, width, 13, dark ? 0.05F : 0.85F);
        for (int letter = x + 6; letter < x + width - 10; letter += 10) {
            // Strokes that look like letters from across the street.
            const float ink = dark ? 0.8F : 0.06F;
            if (random.chance(0.8))
                canvas.fillRect(letter, y + 3, 2, 8, ink);
            if (random.chance(0.5))
                canvas.fillRect(letter + 5, y + 3, 2, 8, ink);
            canvas.fillRect(letter, y + 3 + 3 * random.below(3), 7, 2, ink);
        }
    }

    void fence(int x, int width)
    {
        for (int bar = 0; bar < width; bar += 8)
            canvas.fillRect(x + bar, foot - 40, 3, 40 + margin, 0.08F);
        canvas.fillRect(x, foot - 34, width, 3, 0.08F);
        canvas.fillRect(x, foot - 10, width, 3, 0.08F);
    }

    Canvas canvas;
    Random random;
    NoiseTile plaster;
    NoiseTile rough;
};

} // namespace

Canvas paintHouses(std::uint64_t seed)
{
    return HousePainter(seed).paint();
}

} // namespace korvane::simulation::street
