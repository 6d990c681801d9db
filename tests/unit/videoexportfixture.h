#pragma once

#include "camera/recording/evt3encoder.h"
#include "camera/recording/rawfilereader.h"
#include "display/eventframebuffer.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/decodedvideo.h"
#include "tests/support/exportedvideo.h"
#include "tests/support/temporaryrecordings.h"

#include <QDir>
#include <QFileInfo>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

/// Recordings with known events, and what their videos have to show.
class VideoExportTest : public testing::Test
{
protected:
    static constexpr std::uint64_t period = 33333;
    using Geometry = korvane::recording::Geometry;
    using Events = std::vector<korvane::Event2D>;

    /// Makes and loads a recording of these events.
    void record(const Events& events, Geometry geometry)
    {
        evt::Bytes bytes;
        korvane::recording::Evt3Encoder(geometry).encode(events, {}, bytes);
        source = recordings.write(
            "source.raw", TemporaryRecordings::header(korvane::recording::EvtEncoding::Evt3, geometry),
            bytes);
        reader = TemporaryRecordings::load(source);
        ASSERT_TRUE(reader);
        reader->getStartTimestamp(start);
        reader->getEndTimestamp(end);
    }

    /// A bar that moves over noise, `pictures` periods long.
    static Events movingBar(Geometry geometry, unsigned pictures, unsigned noise)
    {
        std::mt19937 random(17);
        Events events;
        for (std::uint64_t time = 0; time < pictures * period; time += 500) {
            const auto bar = static_cast<std::uint16_t>(time / 2000 % geometry.width);
            for (unsigned y = 0; y < geometry.height; y += 3) {
                events.emplace_back(bar, static_cast<std::uint16_t>(y), std::uint8_t(y % 2), time);
            }
            for (unsigned i = 0; i < noise; ++i)
                events.emplace_back(static_cast<std::uint16_t>(random() % geometry.width),
                                    static_cast<std::uint16_t>(random() % geometry.height),
                                    static_cast<std::uint8_t>(random() % 2), time);
        }
        return events;
    }

    QString target(const char* name = "video.mp4") const
    {
        return QString::fromStdString(recordings.path(name));
    }
    bool exportTo(const char* name, std::uint64_t from, std::uint64_t to)
    {
        return reader->exportVideo(from, to, recordings.path(name));
    }

    /// Everything in the folder besides the source, folders included.
    QStringList others() const
    {
        QStringList names = QFileInfo(QString::fromStdString(source))
                                .dir()
                                .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
        names.removeAll(QStringLiteral("source.raw"));
        return names;
    }

    /// The video has the right pictures at the right times, each like the live view's of its events.
    void expectLikeTheView(const QString& path, std::uint64_t from, std::uint64_t to)
    {
        expectVideoLikeTheView(*reader, path, from, to,
                               sizeOf(reader->sensorGeometry().width, EventFrameBuffer::width),
                               sizeOf(reader->sensorGeometry().height, EventFrameBuffer::height));
    }

    static int sizeOf(int sensor, int most) { return std::min((sensor + 1) / 2 * 2, most); }

    TemporaryRecordings recordings;
    std::string source;
    std::unique_ptr<korvane::recording::RawFileReader> reader;
    std::uint64_t start = 0;
    std::uint64_t end = 0;
};
