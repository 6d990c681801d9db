#pragma once

#include "camera/driver/dvsfilereader.h"
#include "display/eventframebuffer.h"
#include "tests/support/decodedvideo.h"
#include "tests/support/pictureluma.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

/// An exported video has one picture for each 33333 us from `from` to `to`, both included, at the right time,
/// and each is like the live view's of its events. `width` and `height` are the video's, pixels.
inline void expectVideoLikeTheView(korvane::DvsFileReader& reader, const QString& path, std::uint64_t from,
                                   std::uint64_t to, int width, int height)
{
    constexpr std::uint64_t period = 33333;
    EventFrameBuffer view;
    std::size_t k = 0;
    double worst = 99;
    const DecodedVideo video = decodeVideo(path, [&](const DecodedPicture& picture) {
        const std::uint64_t at = from + k * period;
        const auto window = reader.getEventsAt(at, std::min(period, to - at + 1));
        ASSERT_TRUE(window);
        view.addEvents(window->data(), window->data() + window->size());
        EXPECT_EQ(picture.time, static_cast<std::int64_t>(k * period));
        worst = std::min(worst, psnr(picture.luma, lumaOf(view.takeImage(), width, height)));
        ++k;
    });
    EXPECT_EQ(video.error, QString());
    EXPECT_EQ(video.width, width);
    EXPECT_EQ(video.height, height);
    EXPECT_EQ(video.count, (to - from) / period + 1);
    EXPECT_EQ(video.duration, static_cast<std::int64_t>(video.count * period));
    EXPECT_GE(worst, 35);
}
