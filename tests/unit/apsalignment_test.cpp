#include "display/kernels/apsalignment.h"

#include "tests/support/alignmentreference.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

using korvane::kernels::ApsAlignment;

namespace {

/// A source of random bytes with padded rows.
struct Source
{
    Source(int w, int h, std::size_t padding) : width(w), height(h), stride(std::size_t(w) * 3 + padding)
    {
        std::mt19937 random(7);
        pixels.resize(stride * std::size_t(h));
        for (std::uint8_t& byte : pixels)
            byte = static_cast<std::uint8_t>(random());
    }
    korvane::kernels::BgrView view() const { return {pixels.data(), stride, width, height}; }

    int width;
    int height;
    std::size_t stride;
    std::vector<std::uint8_t> pixels;
};

} // namespace

TEST(ApsAlignment, EqualsTheRuleByteForByteAtTheCamerasSizes)
{
    const Source source(3840, 2160, 0);
    std::vector<std::uint8_t> made(std::size_t{1280} * 3 * 720, 0xAB);
    ApsAlignment().align(source.view(), made.data(), std::size_t{1280} * 3);
    EXPECT_TRUE(made == alignedByRule(source.view(), 3840, 2160, 1280, 720, std::size_t{1280} * 3));
}

TEST(ApsAlignment, EqualsTheRuleAtOtherSizesAndStrides)
{
    const int sizes[][4]
        = {{64, 48, 32, 24}, {7, 5, 40, 30}, {200, 100, 3, 3}, {33, 17, 11, 9}, {1, 1, 5, 4}};
    for (const auto& [sourceWidth, sourceHeight, width, height] : sizes) {
        const Source source(sourceWidth, sourceHeight, 5);
        const std::size_t stride = std::size_t(width) * 3 + 2;
        std::vector<std::uint8_t> made(stride * std::size_t(height), 0xAB);
        ApsAlignment(sourceWidth, sourceHeight, width, height).align(source.view(), made.data(), stride);
        EXPECT_TRUE(made == alignedByRule(source.view(), sourceWidth, sourceHeight, width, height, stride))
            << sourceWidth << " x " << sourceHeight;
    }
}

TEST(ApsAlignment, NeverReadsOutsideASourceSmallerThanAnnounced)
{
    const Source source(100, 60, 0);
    std::vector<std::uint8_t> made(std::size_t{1280} * 3 * 720, 0xAB);
    ApsAlignment().align(source.view(), made.data(), std::size_t{1280} * 3);
    EXPECT_TRUE(made == alignedByRule(source.view(), 3840, 2160, 1280, 720, std::size_t{1280} * 3));
}

TEST(ApsAlignment, TheCentresFallTogetherAndTheBorderLiesOutside)
{
    const ApsAlignment alignment;
    EXPECT_EQ(alignment.sourceColumn(640), 1920);
    EXPECT_EQ(alignment.sourceRow(360), 1080);
    EXPECT_EQ(alignment.sourceColumn(641), 1923);
    EXPECT_LT(alignment.sourceColumn(0), 0);
    EXPECT_GE(alignment.sourceColumn(1279), 3840);
    EXPECT_LT(alignment.sourceRow(0), 0);
    EXPECT_GE(alignment.sourceRow(719), 2160);
}
