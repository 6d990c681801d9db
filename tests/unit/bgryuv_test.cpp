#include "display/kernels/bgryuv.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

namespace {

/// An image with padded rows, and the planes made of it with padding of their own.
struct Conversion
{
    Conversion(int w, int h)
        : width(w), height(h), stride(std::size_t(w) * 3 + 4), lumaStride(std::size_t(w) + 7),
          chromaStride(std::size_t(w) / 2 + 5), pixels(stride * std::size_t(h)),
          luma(lumaStride * std::size_t(h), 0xAB), cb(chromaStride * std::size_t(h) / 2, 0xAB), cr(cb)
    {
    }
    void run()
    {
        korvane::kernels::bgrToYuv({pixels.data(), stride, width, height},
                                   {luma.data(), cb.data(), cr.data(), lumaStride, chromaStride});
    }
    unsigned channel(int x, int y, std::size_t which) const
    {
        return pixels[std::size_t(y) * stride + std::size_t(x) * 3 + which];
    }
    void setPixel(int x, int y, unsigned blue, unsigned green, unsigned red)
    {
        std::uint8_t* const pixel = pixels.data() + std::size_t(y) * stride + std::size_t(x) * 3;
        pixel[0] = static_cast<std::uint8_t>(blue);
        pixel[1] = static_cast<std::uint8_t>(green);
        pixel[2] = static_cast<std::uint8_t>(red);
    }

    int width;
    int height;
    std::size_t stride;
    std::size_t lumaStride;
    std::size_t chromaStride;
    std::vector<std::uint8_t> pixels;
    std::vector<std::uint8_t> luma;
    std::vector<std::uint8_t> cb;
    std::vector<std::uint8_t> cr;
};

/// BT.709 in limited range, not rounded.
struct Exact
{
    double luma;
    double cb;
    double cr;
};

Exact exact(double blue, double green, double red)
{
    const double luma = 0.2126 * red + 0.7152 * green + 0.0722 * blue;
    return {16 + luma * 219 / 255, 128 + (blue - luma) / 1.8556 * 224 / 255,
            128 + (red - luma) / 1.5748 * 224 / 255};
}

/// The greatest distance of any value from the exact one.
double worstError(const Conversion& made)
{
    double worst = 0;
    const auto note
        = [&worst](double value, double right) { worst = std::max(worst, std::abs(value - right)); };
    for (int y = 0; y < made.height; ++y) {
        for (int x = 0; x < made.width; ++x)
            note(made.luma[std::size_t(y) * made.lumaStride + std::size_t(x)],
                 exact(made.channel(x, y, 0), made.channel(x, y, 1), made.channel(x, y, 2)).luma);
    }
    for (int y = 0; y < made.height; y += 2) {
        for (int x = 0; x < made.width; x += 2) {
            double mean[3];
            for (std::size_t which = 0; which < 3; ++which)
                mean[which] = (made.channel(x, y, which) + made.channel(x + 1, y, which)
                               + made.channel(x, y + 1, which) + made.channel(x + 1, y + 1, which))
                    / 4.0;
            const Exact right = exact(mean[0], mean[1], mean[2]);
            const std::size_t at = std::size_t(y / 2) * made.chromaStride + std::size_t(x / 2);
            note(made.cb[at], right.cb);
            note(made.cr[at], right.cr);
        }
    }
    return worst;
}

} // namespace

TEST(BgrToYuv, RandomImagesOfAllSizesComeOutRight)
{
    std::mt19937 random(5);
    const int sizes[][2] = {{2, 2}, {64, 36}, {510, 4}, {512, 4}, {514, 6}, {1026, 2}, {3840, 8}};
    for (const auto& [width, height] : sizes) {
        Conversion made(width, height);
        for (std::uint8_t& byte : made.pixels)
            byte = static_cast<std::uint8_t>(random());
        made.run();
        EXPECT_LE(worstError(made), 0.53) << width << " x " << height;
        // What lies beside the rows is nobody's.
        EXPECT_EQ(made.luma[std::size_t(width)], 0xAB);
        EXPECT_EQ(made.cb[std::size_t(width) / 2], 0xAB);
        EXPECT_EQ(made.cr[std::size_t(width) / 2], 0xAB);
    }
}

TEST(BgrToYuv, EveryCornerOfTheColoursComesOutRight)
{
    const unsigned steps[] = {0, 1, 2, 17, 64, 127, 128, 200, 253, 254, 255};
    for (const unsigned blue : steps) {
        Conversion made(22, 22);
        for (int y = 0; y < 22; ++y) {
            for (int x = 0; x < 22; ++x)
                made.setPixel(x, y, blue, steps[x / 2], steps[y / 2]);
        }
        made.run();
        EXPECT_LE(worstError(made), 0.53) << blue;
    }
}

TEST(BgrToYuv, GreysHaveNoColourAndReachBothEndsOfTheRange)
{
    for (unsigned grey = 0; grey < 256; ++grey) {
        Conversion made(2, 2);
        for (int i = 0; i < 4; ++i)
            made.setPixel(i % 2, i / 2, grey, grey, grey);
        made.run();
        EXPECT_EQ(made.cb[0], 128) << grey;
        EXPECT_EQ(made.cr[0], 128) << grey;
        EXPECT_NEAR(made.luma[0], 16 + grey * 219 / 255.0, 0.53) << grey;
    }
}

TEST(BgrToYuv, EqualsTheRuleInWholeNumbersByteForByte)
{
    // Pixel by pixel: whichever version the processor runs must give the same.
    Conversion made(1030, 4);
    std::mt19937 random(9);
    for (std::uint8_t& byte : made.pixels)
        byte = static_cast<std::uint8_t>(random());
    made.run();
    // 32768 times each channel's part; a channel of 256ths of a unit, cut to 128ths of a result.
    const auto part = [](unsigned value, unsigned factor) { return int(value * factor >> 16U); };
    for (int y = 0; y < made.height; ++y) {
        for (int x = 0; x < made.width; ++x) {
            const int sum = part(made.channel(x, y, 2) << 8U, 5983) + part(made.channel(x, y, 1) << 8U, 20127)
                + part(made.channel(x, y, 0) << 8U, 2032);
            ASSERT_EQ(made.luma[std::size_t(y) * made.lumaStride + std::size_t(x)], (2113 + sum) >> 7)
                << x << ", " << y;
        }
    }
    for (int y = 0; y < made.height; y += 2) {
        for (int x = 0; x < made.width; x += 2) {
            unsigned four[3];
            for (std::size_t which = 0; which < 3; ++which)
                four[which] = (made.channel(x, y, which) + made.channel(x + 1, y, which)
                               + made.channel(x, y + 1, which) + made.channel(x + 1, y + 1, which))
                    << 6U;
            const std::size_t at = std::size_t(y / 2) * made.chromaStride + std::size_t(x / 2);
            ASSERT_EQ(made.cb[at],
                      (16448 + part(four[0], 14392) - part(four[1], 11094) - part(four[2], 3298)) >> 7);
            ASSERT_EQ(made.cr[at],
                      (16448 + part(four[2], 14392) - part(four[1], 13073) - part(four[0], 1320)) >> 7);
        }
    }
}
