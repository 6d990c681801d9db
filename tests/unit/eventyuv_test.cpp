#include "display/kernels/eventyuv.h"

#include "display/kernels/eventpainter.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <random>
#include <vector>

using namespace korvane::kernels;

namespace {

constexpr std::uint8_t untouched = 0xEE;

/// A picture with room behind its rows and its planes, to see what is written beyond them.
struct Picture
{
    Picture(unsigned width, unsigned height, std::size_t padding)
        : luma((width + padding) * height + 64, untouched),
          cb((width / 2 + padding) * (height / 2) + 64, untouched), cr(cb)
    {
        planes = {luma.data(), cb.data(), cr.data(), width + padding, width / 2 + padding};
    }

    std::vector<std::uint8_t> luma;
    std::vector<std::uint8_t> cb;
    std::vector<std::uint8_t> cr;
    YuvPlanes planes;
};

/// The same, pixel by pixel, in the plainest way.
void colourPlainly(const std::vector<std::uint8_t>& plane, unsigned width, unsigned height,
                   const YuvPalette& palette, Picture& out)
{
    const std::array<YuvColour, 3> colours{palette.background, palette.off, palette.on};
    for (unsigned y = 0; y < height; ++y) {
        for (unsigned x = 0; x < width; ++x)
            out.luma[y * out.planes.lumaStride + x] = colours[plane[y * width + x]].luma;
    }
    for (unsigned y = 0; y < height; y += 2) {
        for (unsigned x = 0; x < width; x += 2) {
            int cb = 0;
            int cr = 0;
            for (const unsigned at :
                 {y * width + x, y * width + x + 1, (y + 1) * width + x, (y + 1) * width + x + 1}) {
                cb += colours[plane[at]].cb;
                cr += colours[plane[at]].cr;
            }
            const std::size_t at = y / 2 * out.planes.chromaStride + x / 2;
            out.cb[at] = static_cast<std::uint8_t>((cb + 2) / 4);
            out.cr[at] = static_cast<std::uint8_t>((cr + 2) / 4);
        }
    }
}

std::vector<std::uint8_t> randomPlane(std::size_t size, std::mt19937& random)
{
    std::vector<std::uint8_t> plane(size);
    for (auto& value : plane)
        value = static_cast<std::uint8_t>(random() % 3);
    return plane;
}

} // namespace

TEST(YuvColour, FollowsBt709InLimitedRange)
{
    EXPECT_EQ(yuvColour(rgb32(0, 0, 0)), (YuvColour{16, 128, 128}));
    EXPECT_EQ(yuvColour(rgb32(255, 255, 255)), (YuvColour{235, 128, 128}));
    EXPECT_EQ(yuvColour(rgb32(255, 0, 0)), (YuvColour{63, 102, 240}));
    EXPECT_EQ(yuvColour(rgb32(0, 255, 0)), (YuvColour{173, 42, 26}));
    EXPECT_EQ(yuvColour(rgb32(0, 0, 255)), (YuvColour{32, 240, 118}));
}

TEST(YuvColour, TheDvsViewsColoursAreTheNearestVideoHas)
{
    const YuvPalette palette = yuvPalette(dvsPalette);
    EXPECT_EQ(palette.background, (YuvColour{112, 128, 128}));
    EXPECT_EQ(palette.off, (YuvColour{68, 123, 130}));
    EXPECT_EQ(palette.on, (YuvColour{178, 124, 130}));
}

TEST(ColourPlaneYuv, EqualsThePlainWayByteForByte)
{
    std::mt19937 random(99);
    const auto anyColour = [&random] {
        return YuvColour{static_cast<std::uint8_t>(random()), static_cast<std::uint8_t>(random()),
                         static_cast<std::uint8_t>(random())};
    };
    for (unsigned width = 2; width <= 300; width += 2) {
        for (const unsigned height : {2u, 6u}) {
            for (const std::size_t padding : {0u, 5u}) {
                const YuvPalette palette{anyColour(), anyColour(), anyColour()};
                const auto plane = randomPlane(std::size_t(width) * height, random);
                Picture expected(width, height, padding);
                colourPlainly(plane, width, height, palette, expected);
                Picture picture(width, height, padding);
                colourPlaneYuv(plane.data(), width, height, palette, picture.planes);
                ASSERT_EQ(picture.luma, expected.luma) << width << " x " << height;
                ASSERT_EQ(picture.cb, expected.cb) << width << " x " << height;
                ASSERT_EQ(picture.cr, expected.cr) << width << " x " << height;
            }
        }
    }
}

TEST(ColourPlaneYuv, TakesTheViewsWholePicture)
{
    std::mt19937 random(5);
    const auto plane = randomPlane(std::size_t(1280) * 720, random);
    Picture expected(1280, 720, 0);
    colourPlainly(plane, 1280, 720, yuvPalette(dvsPalette), expected);
    Picture picture(1280, 720, 0);
    colourPlaneYuv(plane.data(), 1280, 720, yuvPalette(dvsPalette), picture.planes);
    EXPECT_EQ(picture.luma, expected.luma);
    EXPECT_EQ(picture.cb, expected.cb);
    EXPECT_EQ(picture.cr, expected.cr);
}
