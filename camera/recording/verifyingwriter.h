#pragma once

#include "camera/driver/event2d.h"
#include "camera/driver/eventtriggerin.h"
#include "camera/recording/evtdecoder.h"
#include "camera/recording/newfile.h"

#include <QFile>
#include <QString>

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <span>
#include <thread>
#include <vector>

namespace korvane::recording {

/// Writes an EVT 3.0 recording block by block, reads each block back from the file, decodes it and compares
/// it with what it stands for; all that on a thread of its own, while the next block is made. One thread
/// uses it.
class VerifyingWriter
{
public:
    /// Words and what decoding them has to give.
    struct Block
    {
        std::vector<Event2D> events;
        std::vector<EventTriggerIn> triggers;
        std::vector<std::uint8_t> bytes;
    };

    /// `file` is open and empty, `path` its name; it outlives this object.
    VerifyingWriter(NewFile& file, const QString& path, const std::vector<std::uint8_t>& header,
                    Geometry geometry);
    /// Gives up what is not written yet.
    ~VerifyingWriter();
    VerifyingWriter(const VerifyingWriter&) = delete;
    VerifyingWriter& operator=(const VerifyingWriter&) = delete;

    /// An empty block to fill, with the room that one had before. Waits while as many are on their way as may
    /// be.
    Block emptyBlock();
    /// Hands a filled block on; false when an earlier one failed.
    bool put(Block block);
    /// Waits for what is on its way; false with `errorString` when not all of it stands in the file as it
    /// should.
    bool finish();
    const QString& errorString() const { return error; } ///< after finish()

private:
    void run();
    bool begin();
    bool take(Block& block);
    bool check(const Block& block);
    bool decodesTo(const Block& block);
    void fail(const QString& reason);

    NewFile& file;
    QFile copy; ///< the same file, for reading
    const std::vector<std::uint8_t> header;
    const Geometry geometry;

    // Of the writing thread.
    const EvtDecoder decoder;
    EvtState state;
    std::vector<std::uint8_t> readBack;
    std::vector<Event2D> decoded;
    std::vector<EventTriggerIn> decodedTriggers;
    std::uint64_t shift = 0; ///< from the copy's times to the source's
    bool shiftKnown = false;

    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Block> waiting; ///< under mutex
    std::vector<Block> spare; ///< under mutex
    unsigned blocks = 0; ///< under mutex: made so far
    bool closing = false; ///< under mutex
    bool failed = false; ///< under mutex
    QString error; ///< under mutex
    std::thread thread;
};

} // namespace korvane::recording
