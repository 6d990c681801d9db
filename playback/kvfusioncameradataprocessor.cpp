#include "playback/kvfusioncameradataprocessor.h"

#include <QDebug>
#include <QMetaType>

#include <utility>

KvFusionCameraDataProcessor::KvFusionCameraDataProcessor(QObject* parent)
    : KvFusionCameraDataProcessor(steadyClock, parent)
{
}

KvFusionCameraDataProcessor::KvFusionCameraDataProcessor(PlaybackClock& clock, QObject* parent)
    : QObject(parent), composer(picture,
                                {
                                    [this](const QImage& image) { emit signalFusionImage(image); },
                                    [this](std::uint64_t time) { emit signalTimeStamp(time); },
                                }),
      playback(picture, *this, clock)
{
    // Queued signals and connections by name look the types up under these names.
    qRegisterMetaType<korvane::STREAM_TYPE>("korvane::STREAM_TYPE");
    qRegisterMetaType<std::uint64_t>("uint64_t");
}

KvFusionCameraDataProcessor::~KvFusionCameraDataProcessor() = default;

void KvFusionCameraDataProcessor::setFusionCamera(std::shared_ptr<korvane::FusionCamera> camera)
{
    composer.setFusionCamera(std::move(camera));
}

void KvFusionCameraDataProcessor::onEvents(const korvane::Event2D* begin, const korvane::Event2D* end)
{
    composer.onEvents(begin, end);
}

void KvFusionCameraDataProcessor::onApsFrame(const korvane::ApsFrame& frame)
{
    composer.onApsFrame(frame);
}

void KvFusionCameraDataProcessor::slotSetViewerType(korvane::STREAM_TYPE type)
{
    composer.setViewerType(type);
}

bool KvFusionCameraDataProcessor::slotReadFusionFile(std::string raw_file_path)
{
    loaded = false;
    const std::string base = raw_file_path.substr(0, raw_file_path.find_last_of('.'));
    if (!loadAps(base + ".mp4")) {
        qDebug().noquote() << "Load aps file failed.";
        return false;
    }
    if (!loadDvs(base + ".raw")) {
        qDebug().noquote() << "Load dvs file failed.";
        return false;
    }
    loaded = true;
    emit signalStartTimeStamp(recording.startTimestamp);
    emit signalEndTimeStamp(recording.endTimestamp);
    return true;
}

bool KvFusionCameraDataProcessor::loadAps(const std::string& path)
{
    recording.apsReader = korvane::ApsFileReader::createFileReader(path);
    if (!recording.apsReader || !recording.apsReader->loadFile())
        return false;
    recording.apsReader->getFrameIndex(frameIndex);
    return true;
}

bool KvFusionCameraDataProcessor::loadDvs(const std::string& path)
{
    recording.dvsReader = korvane::DvsFileReader::createFileReader(path);
    if (!recording.dvsReader || !recording.dvsReader->loadFile())
        return false;
    recording.dvsReader->getStartTimestamp(recording.startTimestamp);
    recording.dvsReader->getEndTimestamp(recording.endTimestamp);
    return true;
}

void KvFusionCameraDataProcessor::closeRecording()
{
    playback.stop();
    loaded = false;
    recording = {};
    frameIndex.clear();
}

void KvFusionCameraDataProcessor::slotSetStartTimeStamp(uint64_t)
{
    // Playback of fusion recordings is not confined to a range.
}

void KvFusionCameraDataProcessor::slotSetEndTimeStamp(uint64_t)
{
    // As above.
}

void KvFusionCameraDataProcessor::slotFusionFilePlayControl(bool play_ctrl)
{
    if (!play_ctrl) {
        playback.stop();
    } else if (loaded) {
        playback.start(recording);
    } else {
        qDebug().noquote() << "There is no fusion recording to play.";
        emit signalPalyFileFinished();
    }
}

void KvFusionCameraDataProcessor::slotSetReplayFlag(bool replay)
{
    playback.setReplay(replay);
}

void KvFusionCameraDataProcessor::showImage(const QImage& image)
{
    emit signalFusionImage(image);
}

void KvFusionCameraDataProcessor::showTimeStamp(std::uint64_t timestamp_us)
{
    emit signalTimeStamp(timestamp_us);
}

void KvFusionCameraDataProcessor::showProgress(std::uint64_t cur_ts, std::uint64_t total_ts)
{
    emit signalPlayProgress(cur_ts, total_ts);
}

void KvFusionCameraDataProcessor::fileFinished()
{
    emit signalPalyFileFinished();
}
