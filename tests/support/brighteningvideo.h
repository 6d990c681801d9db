#pragma once

#include "camera/recording/apsvideowriter.h"

#include <QFile>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <thread>
#include <utility>
#include <vector>

/// The intensity frames of a fusion recording made by hand: small ones, each brighter than the one before by
/// 4, one for each 33333 us. They are noise, which makes a file of some length; frame 0 has values of 0
/// to 63.
inline bool writeBrighteningVideo(const QString& path, int frames)
{
    constexpr int width = 480;
    constexpr int height = 270;
    auto file = std::make_unique<QFile>(path);
    if (!file->open(QIODevice::ReadWrite | QIODevice::Truncate | QIODevice::Unbuffered))
        return false;
    QString error;
    const auto writer
        = korvane::recording::ApsVideoWriter::create(std::move(file), width, height, path, error);
    if (!writer)
        return false;
    writer->begin(0);
    std::mt19937 random(1);
    std::vector<std::uint8_t> pixels(std::size_t(width) * height * 3);
    for (int k = 0; k < frames; ++k) {
        for (std::uint8_t& value : pixels)
            value = static_cast<std::uint8_t>(4 * k + static_cast<int>(random() % 64));
        writer->push({pixels.data(), width, height, static_cast<std::uint64_t>(k) * 33333});
        // Pushed faster than it is encoded, some would be dropped.
        while (writer->counts().pictures <= static_cast<std::uint64_t>(k) && !writer->failed())
            std::this_thread::yield();
    }
    return writer->finish(static_cast<std::uint64_t>(frames - 1) * 33333);
}

/// Mean of such a frame.
inline int brightnessOf(int frame)
{
    return 4 * frame + 32;
}
