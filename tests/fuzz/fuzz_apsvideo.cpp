#include "camera/recording/apsvideoreader.h"
#include "camera/recording/videoinput.h"
#include "tests/fuzz/memoryfile.h"
#include "tests/fuzz/require.h"

#include <QString>
#include <QtGlobal>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

using namespace korvane;
using namespace korvane::recording;

namespace {

// Pictures are made 3840 x 2160 whatever their size, which takes its time.
constexpr int mostPictures = 3;

void tryContainer(VideoInput& input)
{
    const auto& times = input.times();
    require(!times.empty(), "a container that is prepared has pictures");
    require(std::is_sorted(times.begin(), times.end()), "times of pictures count up");
    std::size_t picture = 0;
    for (int i = 0; i < mostPictures && input.next(picture); ++i)
        require(picture < times.size(), "a decoded picture is one of those listed");
    for (const std::size_t wanted : {times.size() - 1, times.size() / 2, std::size_t(0)}) {
        input.seek(wanted);
        if (input.next(picture))
            require(picture < times.size(), "a picture behind a seek is one of those listed");
    }
}

void tryReader(const std::string& path)
{
    QString error;
    const auto reader = ApsVideoReader::open(path, error);
    require((reader != nullptr) == error.isEmpty(), "there is a reader or a reason");
    if (!reader || !reader->loadFile())
        return;
    std::vector<std::uint64_t> times;
    reader->getFrameIndex(times);
    ApsFrame frame;
    for (int i = 0; i < mostPictures && reader->getNextFrame(frame); ++i) {
        require(frame.pixels && frame.width == 3840 && frame.height == 2160, "frames have one size");
        require(frame.timestamp == times[static_cast<std::size_t>(i)],
                "frames come in the order of the index");
    }
    reader->seekFrame(times.back(), frame);
    reader->seekFrame(~std::uint64_t(0), frame);
}

} // namespace

// Input: a whole .mp4 file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const auto previous
        = qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    static_cast<void>(previous);
    const MemoryFile file;
    file.write(data, size);
    {
        VideoInput input(QString::fromStdString(file.path()));
        QString error;
        if (!input.open(error)) {
            require(!error.isEmpty(), "a container that is refused has a reason");
            return 0;
        }
        input.comment();
        if (!input.hasVideo())
            return 0;
        if (!input.prepare(error)) {
            require(!error.isEmpty(), "a container that cannot be prepared has a reason");
            return 0;
        }
        tryContainer(input);
    }
    tryReader(file.path());
    return 0;
}
