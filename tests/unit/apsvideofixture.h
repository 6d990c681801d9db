#pragma once

#include "camera/recording/apsvideowriter.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/decodedvideo.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

/// Videos of small grey frames, each of a luma of its own.
class ApsVideoTest : public testing::Test
{
protected:
    static constexpr int width = 64;
    static constexpr int height = 36;
    static constexpr std::uint64_t slot = 33333;
    static constexpr std::uint64_t first = 5'000'000; ///< time of the recording's first event

    /// The grey of frame k, in every channel.
    static std::uint8_t greyOf(std::size_t k) { return static_cast<std::uint8_t>(20 + 11 * (k % 20)); }

    std::unique_ptr<QFile> newFile() const
    {
        auto file = std::make_unique<QFile>(path);
        EXPECT_TRUE(file->open(QIODevice::ReadWrite | QIODevice::Truncate | QIODevice::Unbuffered));
        return file;
    }

    std::unique_ptr<korvane::recording::ApsVideoWriter> newWriter(std::unique_ptr<QIODevice> device) const
    {
        QString error;
        auto writer
            = korvane::recording::ApsVideoWriter::create(std::move(device), width, height, path, error);
        EXPECT_TRUE(writer) << error.toStdString();
        return writer;
    }

    /// Pushes a frame of this grey, with noise of 0 to `noise` on it.
    void push(korvane::recording::ApsVideoWriter& writer, std::uint64_t time, std::uint8_t grey,
              unsigned noise = 0)
    {
        std::vector<std::uint8_t> pixels(std::size_t(width) * height * 3, grey);
        if (noise > 0) {
            for (auto& value : pixels)
                value = static_cast<std::uint8_t>(value + random() % noise);
        }
        writer.push({pixels.data(), width, height, time});
    }

    /// Waits until the writer has written so many pictures: pushing faster would drop some.
    static void waitFor(const korvane::recording::ApsVideoWriter& writer, std::uint64_t pictures)
    {
        while (writer.counts().pictures < pictures && !writer.failed())
            std::this_thread::yield();
    }

    /// A video of frame k in slot k.
    void writeVideo(std::size_t frames, unsigned noise = 0)
    {
        const auto writer = newWriter(newFile());
        ASSERT_TRUE(writer);
        writer->begin(first);
        for (std::size_t k = 0; k < frames; ++k) {
            push(*writer, first + k * slot, greyOf(k), noise);
            waitFor(*writer, k + 1);
        }
        ASSERT_TRUE(writer->finish(first + (frames - 1) * slot));
    }

    std::string localPath() const { return path.toLocal8Bit().toStdString(); }

    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("frames.mp4"));
    std::mt19937 random{3};
};
