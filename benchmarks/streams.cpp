#include "benchmarks/streams.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace streams {

namespace {

/// A fixed rule that looks random (xorshift).
class Noise
{
public:
    std::uint32_t next()
    {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return state;
    }
    std::uint32_t below(std::uint32_t limit) { return next() % limit; }

private:
    std::uint32_t state = 2463534242u;
};

template <typename Word>
void put(Bytes& bytes, Word word)
{
    for (std::size_t i = 0; i < sizeof word; ++i)
        bytes.push_back(static_cast<std::uint8_t>(word >> (8 * i)));
}

/// Ten events of one row.
void appendBusyRow(Bytes& bytes, Noise& noise)
{
    const auto word = [&bytes](std::uint32_t type, std::uint32_t value) {
        put(bytes, static_cast<std::uint16_t>((type << 12) | value));
    };
    word(0x0, noise.below(720));
    const std::uint32_t polarity = noise.next() & 1;
    std::uint32_t x = noise.below(200);
    for (int single = 0; single < 6; ++single) {
        x += 1 + noise.below(40);
        word(0x2, (polarity << 11) | x);
    }
    // Two triples of vectors with two events each, behind one base.
    word(0x3, (polarity << 11) | (32 * (13 + noise.below(24))));
    for (int triple = 0; triple < 2; ++triple) {
        const std::uint32_t pixels = (1u << noise.below(32)) | (1u << noise.below(32));
        word(0x4, pixels & 0xFFF);
        word(0x4, (pixels >> 12) & 0xFFF);
        word(0x5, pixels >> 24);
    }
}

/// Goes on with the busy stream; `time` in microseconds, so many rows each.
void appendBusyEvt3(Bytes& bytes, std::size_t until, std::uint64_t& time, Noise& noise, unsigned rows)
{
    while (bytes.size() < until) {
        if (time % 16 == 0)
            put(bytes, static_cast<std::uint16_t>(0x8000u | ((time >> 12) & 0xFFF)));
        put(bytes, static_cast<std::uint16_t>(0x6000u | (time & 0xFFF)));
        for (unsigned row = 0; row < rows; ++row)
            appendBusyRow(bytes, noise);
        ++time;
    }
}

} // namespace

Bytes busyEvt3(std::size_t size)
{
    Bytes bytes;
    bytes.reserve(size + 256);
    Noise noise;
    std::uint64_t time = 0;
    appendBusyEvt3(bytes, size, time, noise, 1);
    return bytes;
}

Bytes sparseEvt3(std::size_t size)
{
    Bytes bytes;
    bytes.reserve(size + 64);
    Noise noise;
    for (std::uint64_t time = 0; bytes.size() < size; ++time) {
        if (time % 16 == 0)
            put(bytes, static_cast<std::uint16_t>(0x8000u | ((time >> 12) & 0xFFF)));
        put(bytes, static_cast<std::uint16_t>(0x6000u | (time & 0xFFF)));
        put(bytes, static_cast<std::uint16_t>(noise.below(720)));
        put(bytes, static_cast<std::uint16_t>(0x2000u | (noise.below(2) << 11) | noise.below(1280)));
    }
    return bytes;
}

Bytes evt2(std::size_t size)
{
    Bytes bytes;
    bytes.reserve(size + 64);
    Noise noise;
    for (std::uint64_t time = 0; bytes.size() < size; ++time) {
        if (time % 16 == 0)
            put(bytes, static_cast<std::uint32_t>(0x80000000u | (time >> 6)));
        for (int event = 0; event < 10; ++event) {
            put(bytes,
                static_cast<std::uint32_t>((noise.below(2) << 28) | ((time & 63) << 22)
                                           | (noise.below(1280) << 11) | noise.below(720)));
        }
    }
    return bytes;
}

Bytes evt21(std::size_t size)
{
    Bytes bytes;
    bytes.reserve(size + 64);
    Noise noise;
    for (std::uint64_t time = 0; bytes.size() < size; ++time) {
        if (time % 16 == 0)
            put(bytes, std::uint64_t(0x80000000u | (time >> 6)) << 32);
        for (int word = 0; word < 2; ++word) {
            const std::uint32_t upper = (noise.below(2) << 28) | static_cast<std::uint32_t>((time & 63) << 22)
                | (32 * noise.below(40) << 11) | noise.below(720);
            put(bytes, (std::uint64_t(upper) << 32) | (noise.next() & noise.next()));
        }
    }
    return bytes;
}

std::string dataFolder()
{
    const char* const folder = std::getenv("KORVANE_BENCH_DATA");
    return folder ? folder : "bench-data";
}

std::string busyRecording(std::size_t size, unsigned rows)
{
    namespace fs = std::filesystem;
    const fs::path folder = fs::absolute(dataFolder());
    std::error_code failed;
    fs::create_directories(folder, failed);
    const fs::path path
        = folder / ("busy_" + std::to_string(size) + (rows > 1 ? "_x" + std::to_string(rows) : "") + ".raw");
    if (fs::exists(path, failed) && fs::file_size(path, failed) >= size)
        return path.string();
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << "% evt 3.0\n% format EVT3;height=720;width=1280\n% geometry 1280x720\n% end\n";
    Noise noise;
    std::uint64_t time = 0;
    constexpr std::size_t piece = 16 * 1024 * 1024;
    Bytes bytes;
    for (std::size_t written = 0; written < size && out; written += bytes.size()) {
        bytes.clear();
        appendBusyEvt3(bytes, piece, time, noise, rows);
        out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    out.close();
    return out ? path.string() : std::string();
}

} // namespace streams
