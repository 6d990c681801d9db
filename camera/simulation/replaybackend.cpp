#include "camera/simulation/replaybackend.h"

#include "camera/recording/rawfilereader.h"
#include "camera/simulation/replaystream.h"
#include "camera/simulation/streameddvscamera.h"

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

std::string local(const QString& text)
{
    return text.toLocal8Bit().toStdString();
}

std::unique_ptr<recording::RawFileReader> openRecording(const QString& path, const char* purpose)
{
    QString error;
    auto reader = recording::RawFileReader::open(local(path), error);
    if (!reader)
        qWarning().noquote().nospace() << path << ": cannot be " << purpose << ": " << error;
    return reader;
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
            found.push_back({slot.serial, product, name()});
    }
    return found;
}

std::shared_ptr<DvsCamera> ReplayBackend::openCamera(const std::string& serial)
{
    Slot* slot = nullptr;
    {
        const std::lock_guard lock(mutex);
        slot = slotOf(serial);
        if (slot == nullptr) {
            look();
            slot = slotOf(serial);
        }
    }
    if (slot == nullptr)
        return nullptr;
    try {
        // Loading scans the file, during which the list of cameras is to be had.
        return slot->socket.open<StreamedDvsCamera>([slot]() -> std::shared_ptr<StreamedDvsCamera> {
            auto reader = openRecording(slot->path, "replayed");
            if (!reader || !reader->loadFile())
                return nullptr;
            return std::make_shared<StreamedDvsCamera>(
                slot->serial, std::make_unique<ReplayStream>(std::move(reader), slot->path));
        });
    } catch (const std::exception& error) {
        qWarning().noquote().nospace() << slot->path << ": cannot be replayed: " << error.what();
        return nullptr;
    }
}

void ReplayBackend::look()
{
    for (Slot& slot : sockets)
        slot.offered = false;
    const QFileInfoList files = filesAt(root);
    for (const QFileInfo& file : files) {
        const QString path = file.absoluteFilePath();
        if (isUsable(path, {file.size(), file.lastModified().toMSecsSinceEpoch()}))
            slotFor(path).offered = true;
    }
    if (files.isEmpty() && !std::exchange(lackTold, true))
        qWarning().noquote().nospace() << root << ": cannot be replayed: "
                                       << (QFileInfo::exists(root) ? "the folder holds no .raw file"
                                                                   : "there is no such file or folder");
}

/// A file is judged, and its fault told, once, and again when it has changed.
bool ReplayBackend::isUsable(const QString& path, const Stamp& stamp)
{
    const auto known = judgements.find(path);
    if (known != judgements.end() && known->second.stamp == stamp)
        return known->second.usable;
    const auto reader = openRecording(path, "replayed");
    const bool usable = reader && (stamp.size > searchedSize || reader->loadFile());
    judgements[path] = {stamp, usable};
    return usable;
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
