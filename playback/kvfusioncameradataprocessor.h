#pragma once

#include "camera/driver/streamtype.h"
#include "display/fusionsink.h"
#include "playback/fusioncomposer.h"
#include "playback/fusionplayloop.h"

#include <QImage>
#include <QObject>
#include <QPixmap>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// The engine of fusion cameras and fusion recordings: composes the pictures of a live camera, and plays
/// recordings (an event file and a video of intensity frames of the same name) on a thread of its own. Slots
/// belong to the GUI thread, but for slotReadFusionFile, which a worker runs while nothing plays;
/// FusionSink's handlers to the driver's threads. Signals come from the thread that made their news.
class KvFusionCameraDataProcessor : public QObject, public FusionSink, private FusionPlaybackOutput
{
    Q_OBJECT

public:
    explicit KvFusionCameraDataProcessor(QObject* parent = nullptr);
    KvFusionCameraDataProcessor(PlaybackClock& clock, QObject* parent);
    /// Stops and joins.
    ~KvFusionCameraDataProcessor() override;

    void setFusionCamera(std::shared_ptr<korvane::FusionCamera> camera) override;
    void onEvents(const korvane::Event2D* begin, const korvane::Event2D* end) override;
    void onApsFrame(const korvane::ApsFrame& frame) override;

    /// Lets the recording's files go, with the frames decoded ahead; what plays is stopped. GUI thread, while
    /// nothing is loaded.
    void closeRecording();

signals:
    void signalFusionImage(QImage image);
    /// Declared for receivers of pixmaps; never emitted, for pixmaps are made on the GUI thread.
    void signalFusionPixMap(QPixmap pixmap);
    void triggerFusionImage();
    /// Microseconds.
    void signalTimeStamp(uint64_t timestamp_us);
    void signalStartTimeStamp(uint64_t timestamp_us);
    void signalEndTimeStamp(uint64_t timestamp_us);
    void signalPlayProgress(uint64_t cur_ts, uint64_t total_ts);
    void signalPalyFileFinished();

public slots:
    void slotSetViewerType(korvane::STREAM_TYPE type);
    /// Opens the recording whose base name is `raw_file_path` up to its last "."; false, with a log line,
    /// when one of its files cannot be loaded. Nothing plays meanwhile.
    bool slotReadFusionFile(std::string raw_file_path);
    /// Playback is not confined to a range.
    void slotSetStartTimeStamp(uint64_t timestamp_us);
    void slotSetEndTimeStamp(uint64_t timestamp_us);
    /// Starts playback where it stopped, or stops it. Without a loaded recording it only tells that playback
    /// has finished.
    void slotFusionFilePlayControl(bool play_ctrl);
    void slotSetReplayFlag(bool replay);

private:
    void showImage(const QImage& image) override;
    void showTimeStamp(std::uint64_t timestamp_us) override;
    void showProgress(std::uint64_t cur_ts, std::uint64_t total_ts) override;
    void fileFinished() override;

    bool loadAps(const std::string& path);
    bool loadDvs(const std::string& path);

    FusionPicture picture;
    FusionComposer composer;
    FusionRecording recording;
    std::vector<std::uint64_t>
        frameIndex; ///< times of the intensity frames, microseconds from the first event
    bool loaded = false;
    SteadyPlaybackClock steadyClock;
    FusionPlayLoop playback; ///< last: its thread ends before anything it uses
};
