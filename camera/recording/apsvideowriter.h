#pragma once

#include "camera/driver/apsframe.h"
#include "camera/recording/videopicturequeue.h"
#include "camera/recording/videowriter.h"

#include <QIODevice>
#include <QString>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace korvane::recording {

/// Writes the intensity frames beside a recording as an `.mp4` in fragments, on a thread of its own: exactly
/// one picture for every 33333 us from the recording's first event on, so that playback finds each beside its
/// events. A slot that got no frame repeats the picture before it; what comes while the encoder is behind is
/// dropped, for nobody may wait here, and its slot repeats, too. Frames are pushed by one thread; the rest is
/// said below.
class ApsVideoWriter
{
public:
    static constexpr std::uint64_t slot = 33333; ///< microseconds
    /// Pictures that wait for the encoder at most, of 12 MB each: a quarter of a second in which others have
    /// the processor costs nothing. Memory is taken as they are needed.
    static constexpr std::size_t picturesAhead = 8;
    /// Slots that the oldest of them may be behind a new one: with the fragment in work, and the picture in
    /// the encoder, a process that is killed loses less than a second even where few frames come.
    static constexpr std::uint64_t slotsAhead = 12;

    /// Slots that a frame may leap over, or that events may go on behind the last frame: five minutes. The
    /// times of a broken clock could ask for repeats that take hours and fill the disk.
    static constexpr std::uint64_t mostRepeated = 300'000'000 / slot;

    /// What became of the slots and frames.
    struct Counts
    {
        std::uint64_t pictures = 0; ///< slots written
        std::uint64_t repeats = 0; ///< among them, those that repeat another
        std::uint64_t dropped = 0; ///< frames that came while the encoder was behind
    };

    /// Who makes the video, see VideoFormat.
    struct Encoders
    {
        std::vector<std::string> preferred{"libx264"};
        bool others = true;
    };

    /// Starts a video of frames of this size, pixels, both even, on an open and empty device, readable and
    /// writable, unbuffered. `name` stands in log lines. Nothing, with the reason in `error`, when it cannot
    /// be started.
    static std::unique_ptr<ApsVideoWriter> create(std::unique_ptr<QIODevice> device, int width, int height,
                                                  const QString& name, QString& error,
                                                  const Encoders& encoders);
    static std::unique_ptr<ApsVideoWriter> create(std::unique_ptr<QIODevice> device, int width, int height,
                                                  const QString& name, QString& error)
    {
        return create(std::move(device), width, height, name, error, Encoders());
    }
    /// Finishes where the last frame left off.
    ~ApsVideoWriter();
    ApsVideoWriter(const ApsVideoWriter&) = delete;
    ApsVideoWriter& operator=(const ApsVideoWriter&) = delete;

    /// Sets the time of the recording's first event, microseconds on the clock of the frames. Frames before
    /// it, or before this is known, are left out. Any thread, once.
    void begin(std::uint64_t firstEvent);
    /// Takes a frame, of the size of create(), in time order; one that leaps by more than mostRepeated ends
    /// the video. Its pixels become a video's here, since they
    /// are the caller's: that costs no more than copying them.
    void push(const ApsFrame& frame);
    /// Fills the slots up to that of the recording's last event, mostRepeated of them at most, completes the
    /// file and ends the thread. False when an error came between. After the last push.
    bool finish(std::uint64_t lastEvent);

    bool failed() const { return failure.load(); }
    /// Why writing ended; empty without an error. Any thread.
    QString error() const;
    /// Any thread.
    Counts counts() const;

private:
    using Picture = VideoPictureQueue::Picture;
    struct Drawn
    {
        Picture picture;
        std::uint64_t slot = 0;
    };

    ApsVideoWriter(std::unique_ptr<QIODevice> target, const QString& fileName);

    Picture takeSpare(std::uint64_t at);
    bool convert(const ApsFrame& frame, VideoPicture& picture) const;
    void end(std::uint64_t lastSlot);
    void run();
    void store(Drawn drawn);
    void fillUp(std::uint64_t count);
    bool put(VideoPicture& picture, bool repeat);
    void fail(const QString& why);

    const QString name;
    std::unique_ptr<QIODevice> device;
    int width = 0;
    int height = 0;

    // The pushing thread's.
    std::uint64_t pushedSlots = 0; ///< slots up to the one pushed last

    // The writing thread's.
    std::unique_ptr<VideoWriter> writer;
    Picture last; ///< the picture of the slot written last
    std::uint64_t nextSlot = 0;

    static constexpr std::uint64_t unknown = ~std::uint64_t(0);
    std::atomic<std::uint64_t> firstTime{unknown}; ///< microseconds
    std::atomic<bool> failure{false};

    mutable std::mutex mutex;
    std::condition_variable changed;
    std::deque<Drawn> queue; ///< under mutex
    std::vector<Picture> spare; ///< under mutex
    Counts counted; ///< under mutex
    bool ending = false; ///< under mutex
    std::uint64_t slotsWanted = 0; ///< under mutex: with `ending`, how many the whole video has
    QString reason; ///< under mutex
    std::thread thread;
};

} // namespace korvane::recording
