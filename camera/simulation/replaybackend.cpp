#include "camera/simulation/replaybackend.h"

#include "camera/recording/apsvideoreader.h"
#include "camera/recording/rawfilereader.h"
#include "camera/recording/videomark.h"
#include "camera/simulation/replayframes.h"
#include "camera/simulation/replaystream.h"
#include "camera/simulation/streameddvscamera.h"
#include "camera/simulation/streamedfusioncamera.h"

#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <exception>
#include <utility>

namespace korvane::simulation {

namespace {

constexpr qsizetype serialLength = 10; // characters
// Files up to this size are searched for an event before they are offered, which takes a moment; of larger
// ones the start alone is looked at, for the list is not to wait for a disk.
constexpr qint64 searchedSize = qint64{4} * 1024 * 1024; // bytes

/// How a recording appears in the camera list: with nothing but events in it, as a DVS-only camera.
constexpr const char* product = "Halvora";
constexpr const char* fusionProduct = "Pellix";

std::string local(const QString& text)
{
    return text.toLocal8Bit().toStdString();
}

/// The recording, or the video with its intensity frames; nothing, with a log line, when the file is none.
template <typename Reader>
std::unique_ptr<Reader> openFile(const QString& path)
{
    QString error;
    auto reader = Reader::open(local(path), error);
    if (!reader)
        qWarning().noquote().nospace() << path << ": cannot be replayed: " << error;
    return reader;
}

QString companionOf(const QString& path)
{
    const QFileInfo file(path);
    return file.path() + QLatin1Char('/') + file.completeBaseName() + QStringLiteral(".mp4");
}

std::shared_ptr<StreamedDvsCamera> makeDvsCamera(const QString& path, const CameraDescription& description)
{
    auto reader = openFile<recording::RawFileReader>(path);
    if (!reader || !reader->loadFile())
        return nullptr;
    return std::make_shared<StreamedDvsCamera>(description.serial,
                                               std::make_unique<ReplayStream>(std::move(reader), path));
}

std::shared_ptr<StreamedFusionCamera> makeFusionCamera(const QString& path,
                                                       const CameraDescription& description)
{
    auto reader = openFile<recording::RawFileReader>(path);
    auto video = openFile<recording::ApsVideoReader>(companionOf(path));
    if (!reader || !reader->loadFile() || !video || !video->loadFile())
        return nullptr;
    std::vector<std::uint64_t> times;
    video->getFrameIndex(times);
    if (times.empty())
        return nullptr;
    // Every round begins with a frame's slot: frames and events stay together.
    constexpr std::uint64_t period = StreamedFusionCamera::framePeriod;
    auto stream = std::make_unique<ReplayStream>(std::move(reader), path,
                                                 ReplayStream::Round{times.back() + period, period});
    auto frames = std::make_unique<ReplayFrames>(std::move(video), stream->roundTime(), stream->lead());
    return StreamedFusionCamera::make(description, std::move(stream), std::move(frames));
}

QFileInfoList filesAt(const QString& root)
{
    const QFileInfo named(root);
    if (named.isDir())
        return QDir(root).entryInfoList({QStringLiteral("*.raw")}, QDir::Files, QDir::Name);
    return named.exists() ? QFileInfoList{named} : QFileInfoList{};
}

/// The first characters of a name; a character of two code units is not cut in two.
QString beginning(const QString& name, qsizetype characters)
{
    QString cut = name.left(characters);
    if (!cut.isEmpty() && cut.back().isHighSurrogate())
        cut.chop(1);
    return cut;
}

} // namespace

ReplayBackend::ReplayBackend(const QString& path, std::set<std::string> taken)
    : root(QFileInfo(path).absoluteFilePath()), serials(std::move(taken))
{
}

std::vector<CameraDescription> ReplayBackend::cameraDescriptions()
{
    const std::lock_guard lock(mutex);
    look();
    std::vector<CameraDescription> found;
    for (const Slot& slot : sockets) {
        if (slot.offered && slot.socket.isPlugged())
            found.push_back(describe(slot));
    }
    return found;
}

CameraDescription ReplayBackend::describe(const Slot& slot) const
{
    return {slot.serial, slot.fusion ? fusionProduct : product, name()};
}

ReplayBackend::Slot* ReplayBackend::find(const std::string& serial, bool fusion)
{
    Slot* slot = slotOf(serial);
    if (slot == nullptr) {
        look();
        slot = slotOf(serial);
    }
    return slot != nullptr && slot->fusion == fusion ? slot : nullptr;
}

template <typename Camera>
std::shared_ptr<Camera> ReplayBackend::open(const std::string& serial, bool fusion,
                                            std::shared_ptr<Camera> (*make)(const QString&,
                                                                            const CameraDescription&))
{
    Slot* slot = nullptr;
    CameraDescription description;
    {
        const std::lock_guard lock(mutex);
        slot = find(serial, fusion);
        if (slot == nullptr)
            return nullptr;
        description = describe(*slot);
    }
    try {
        // Loading scans the file, during which the list of cameras is to be had.
        return slot->socket.open<Camera>(
            [slot, make, &description] { return make(slot->path, description); });
    } catch (const std::exception& error) {
        qWarning().noquote().nospace() << slot->path << ": cannot be replayed: " << error.what();
        return nullptr;
    }
}

std::shared_ptr<DvsCamera> ReplayBackend::openCamera(const std::string& serial)
{
    return open<StreamedDvsCamera>(serial, false, &makeDvsCamera);
}

std::shared_ptr<FusionCamera> ReplayBackend::openFusionCamera(const std::string& serial)
{
    return open<StreamedFusionCamera>(serial, true, &makeFusionCamera);
}

ReplayBackend::Stamp ReplayBackend::stampOf(const QFileInfo& file)
{
    return {file.size(), file.lastModified().toMSecsSinceEpoch()};
}

void ReplayBackend::look()
{
    for (Slot& slot : sockets)
        slot.offered = false;
    const QFileInfoList files = filesAt(root);
    for (const QFileInfo& file : files) {
        const QString path = file.absoluteFilePath();
        if (!isUsable(path, stampOf(file)))
            continue;
        Slot& slot = slotFor(path);
        slot.offered = true;
        slot.fusion = hasFrames(path);
    }
    if (files.isEmpty() && !std::exchange(lackTold, true))
        qWarning().noquote().nospace() << root << ": cannot be replayed: "
                                       << (QFileInfo::exists(root) ? "the folder holds no .raw file"
                                                                   : "there is no such file or folder");
}

/// A file is judged, and its fault told, once, and again when it has changed.
bool ReplayBackend::judged(const QString& path, const Stamp& stamp, const std::function<bool()>& judge)
{
    const auto known = judgements.find(path);
    if (known != judgements.end() && known->second.stamp == stamp)
        return known->second.usable;
    const bool usable = judge();
    judgements[path] = {stamp, usable};
    return usable;
}

bool ReplayBackend::isUsable(const QString& path, const Stamp& stamp)
{
    return judged(path, stamp, [&path, &stamp] {
        const auto reader = openFile<recording::RawFileReader>(path);
        return reader && (stamp.size > searchedSize || reader->loadFile());
    });
}

/// Whether a recording has intensity frames beside it. Some that cannot be read make it a camera of events
/// alone.
bool ReplayBackend::hasFrames(const QString& recordingPath)
{
    const QString path = companionOf(recordingPath);
    const QFileInfo file(path);
    if (!file.exists()) {
        judgements.erase(path);
        return false;
    }
    return judged(path, stampOf(file), [&path] {
        if (!recording::isMarkedVideo(path))
            return openFile<recording::ApsVideoReader>(path) != nullptr;
        qInfo().noquote().nospace() << path
                                    << ": was exported from the recording beside it; it is not replayed";
        return false;
    });
}

ReplayBackend::Slot& ReplayBackend::slotFor(const QString& path)
{
    const auto known = std::find_if(sockets.begin(), sockets.end(),
                                    [&path](const Slot& slot) { return slot.path == path; });
    if (known != sockets.end())
        return *known;
    Slot& slot = sockets.emplace_back();
    slot.path = path;
    slot.serial = newSerial(path);
    return slot;
}

ReplayBackend::Slot* ReplayBackend::slotOf(const std::string& serial)
{
    const auto found = std::find_if(sockets.begin(), sockets.end(),
                                    [&serial](const Slot& slot) { return slot.serial == serial; });
    return found == sockets.end() ? nullptr : &*found;
}

std::string ReplayBackend::newSerial(const QString& path)
{
    const QString fileName = QFileInfo(path).completeBaseName();
    std::string serial = local(beginning(fileName, serialLength));
    for (int count = 2; serials.contains(serial); ++count) {
        const QString suffix = QLatin1Char('~') + QString::number(count);
        serial = local(beginning(fileName, serialLength - suffix.size()) + suffix);
    }
    serials.insert(serial);
    return serial;
}

void ReplayBackend::pull(const std::string& serial)
{
    const std::lock_guard lock(mutex);
    if (Slot* const slot = slotOf(serial))
        slot->socket.pull();
}

void ReplayBackend::plug(const std::string& serial)
{
    const std::lock_guard lock(mutex);
    if (Slot* const slot = slotOf(serial))
        slot->socket.plug();
}

} // namespace korvane::simulation
