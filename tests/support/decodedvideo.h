#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

/// A picture of a decoded video, rows without gaps.
struct DecodedPicture
{
    std::int64_t time = 0; ///< microseconds; exact, or the decoding fails
    bool key = false;
    std::vector<std::uint8_t> luma;
    std::vector<std::uint8_t> cb;
    std::vector<std::uint8_t> cr;
};

/// What FFmpeg's libraries make of a video file.
struct DecodedVideo
{
    QString error; ///< empty when the whole file was decoded
    std::string codec;
    std::string pixelFormat;
    std::string range;
    std::string matrix;
    std::string primaries;
    std::string transfer;
    int width = 0;
    int height = 0;
    int timeBaseDenominator = 0; ///< of a numerator of 1
    std::int64_t duration = 0; ///< of the stream, microseconds
    std::map<std::string, std::string> metadata;
    std::size_t count = 0;
    std::vector<std::int64_t> times; ///< of all pictures
    std::vector<DecodedPicture> pictures; ///< all, unless a visitor took them
};

/// Decodes a file. With a visitor, which gets each picture in turn, none is kept.
DecodedVideo decodeVideo(const QString& path, const std::function<void(const DecodedPicture&)>& visitor = {});

/// The names of an `.mp4`'s outermost boxes, in order.
std::vector<std::string> boxesOf(const QString& path);

/// Peak signal to noise ratio of 8-bit samples, dB; 99 for equal ones.
double psnr(const std::vector<std::uint8_t>& a, const std::vector<std::uint8_t>& b);
