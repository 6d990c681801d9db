#include "camera/recording/verifyingwriter.h"

#include "camera/recording/rawheader.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <string_view>
#include <utility>

namespace korvane::recording {

namespace {

/// Blocks in use at most: one being filled, one being checked, and some that even out their pace.
constexpr unsigned mostBlocks = 5;
/// Events decoded at a time; they stay in the processor's first caches until they are compared.
constexpr std::size_t pieceEvents = 4096;

/// Whether events are the same but for the time that lies between their clocks. Without a branch an event,
/// for every event of a recording passes here.
bool sameEvents(const Event2D* got, const Event2D* wanted, std::size_t count, std::uint64_t shift)
{
    std::uint64_t difference = 0;
    for (std::size_t i = 0; i < count; ++i) {
        std::uint64_t a[2];
        std::uint64_t b[2];
        std::memcpy(a, got + i, sizeof a);
        std::memcpy(b, wanted + i, sizeof b);
        // Behind the polarity there are bytes that mean nothing.
        difference |= ((a[0] ^ b[0]) & 0xFF'FFFF'FFFF) | ((a[1] + shift) ^ b[1]);
    }
    return difference == 0;
}

} // namespace

VerifyingWriter::VerifyingWriter(NewFile& target, const QString& path, const std::vector<std::uint8_t>& head,
                                 Geometry sensor)
    : file(target), copy(path), header(head), geometry(sensor), decoder(EvtEncoding::Evt3),
      decoded(pieceEvents)
{
    thread = std::thread([this] { run(); });
}

VerifyingWriter::~VerifyingWriter()
{
    {
        const std::lock_guard lock(mutex);
        failed = true;
    }
    finish();
}

VerifyingWriter::Block VerifyingWriter::emptyBlock()
{
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return !spare.empty() || blocks < mostBlocks || failed; });
    Block block;
    if (!spare.empty()) {
        block = std::move(spare.back());
        spare.pop_back();
    } else {
        ++blocks;
    }
    lock.unlock();
    block.events.clear();
    block.triggers.clear();
    block.bytes.clear();
    return block;
}

bool VerifyingWriter::put(Block block)
{
    {
        const std::lock_guard lock(mutex);
        if (failed)
            return false;
        waiting.push_back(std::move(block));
    }
    changed.notify_all();
    return true;
}

bool VerifyingWriter::finish()
{
    {
        const std::lock_guard lock(mutex);
        closing = true;
    }
    changed.notify_all();
    if (thread.joinable())
        thread.join();
    return !failed;
}

void VerifyingWriter::fail(const QString& reason)
{
    {
        const std::lock_guard lock(mutex);
        failed = true;
        error = reason;
    }
    changed.notify_all();
}

bool VerifyingWriter::take(Block& block)
{
    {
        std::unique_lock lock(mutex);
        if (block.bytes.capacity() > 0)
            spare.push_back(std::move(block));
        changed.notify_all();
        changed.wait(lock, [this] { return !waiting.empty() || closing || failed; });
        if (failed || waiting.empty())
            return false;
        block = std::move(waiting.front());
        waiting.pop_front();
    }
    return true;
}

bool VerifyingWriter::begin()
{
    if (!file.write(header)) {
        fail(file.errorString());
        return false;
    }
    if (!copy.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        fail(copy.errorString());
        return false;
    }
    const QByteArray text = copy.read(static_cast<qint64>(header.size()));
    const RawHeader read = parseRawHeader({text.constData(), static_cast<std::size_t>(text.size())});
    if (read.encoding == EvtEncoding::Evt3 && read.geometry == geometry && read.bodyOffset == header.size())
        return true;
    fail(QStringLiteral("the header that was written cannot be read back"));
    return false;
}

bool VerifyingWriter::check(const Block& block)
{
    if (!file.write(block.bytes)) {
        fail(file.errorString());
        return false;
    }
    readBack.resize(block.bytes.size());
    const auto size = static_cast<qint64>(readBack.size());
    if (copy.read(reinterpret_cast<char*>(readBack.data()), size) != size) {
        fail(QStringLiteral("what was written cannot be read back"));
        return false;
    }
    if (decodesTo(block))
        return true;
    fail(QStringLiteral("what was written differs from the recording"));
    return false;
}

bool VerifyingWriter::decodesTo(const Block& block)
{
    decodedTriggers.clear();
    EvtCounts counts;
    EvtPass pass;
    pass.next = readBack.data();
    pass.end = readBack.data() + readBack.size();
    pass.streamEnd = pass.end;
    pass.geometry = geometry;
    pass.triggers = &decodedTriggers;
    std::size_t compared = 0;
    while (pass.end - pass.next >= static_cast<std::ptrdiff_t>(wordSize(EvtEncoding::Evt3))) {
        pass.out = decoded.data();
        pass.outEnd = decoded.data() + decoded.size();
        decoder.decode(state, pass, counts);
        const auto count = static_cast<std::size_t>(pass.out - decoded.data());
        if (count > block.events.size() - compared)
            return false;
        if (count == 0)
            continue;
        if (!shiftKnown) {
            shift = block.events.front().timestamp - decoded.front().timestamp;
            shiftKnown = true;
        }
        if (!sameEvents(decoded.data(), block.events.data() + compared, count, shift))
            return false;
        compared += count;
    }
    if (!shiftKnown && !decodedTriggers.empty() && !block.triggers.empty())
        shift = block.triggers.front().timestamp - decodedTriggers.front().timestamp;
    // A clean stream of our own has nothing that a decoder has to put right.
    return compared == block.events.size() && counts == EvtCounts()
        && std::equal(decodedTriggers.begin(), decodedTriggers.end(), block.triggers.begin(),
                      block.triggers.end(), [this](const EventTriggerIn& got, const EventTriggerIn& wanted) {
                          return got.timestamp + shift == wanted.timestamp && got.id == wanted.id
                              && got.polarity == wanted.polarity;
                      });
}

void VerifyingWriter::run()
{
    try {
        Block block;
        bool good = begin();
        while (good && take(block))
            good = check(block);
        if (good && copy.read(1).size() != 0)
            fail(QStringLiteral("the file holds more than was written"));
    } catch (const std::exception& exception) {
        fail(QString::fromLocal8Bit(exception.what()));
    }
}

} // namespace korvane::recording
