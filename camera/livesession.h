#pragma once

#include "camera/driver/dvscameramanager.h"
#include "camera/driver/streamtype.h"
#include "camera/dvsreadingloop.h"
#include "display/displaytiming.h"
#include "display/sourcestate.h"
#include "widgets/kvmessagetype.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

#include <cstdint>
#include <memory>

class Config;
class EventFrameBuffer;
class FusionSink;
class QWidget;

/// The live view of a camera and its recording: finds and opens a camera, starts and stops it, records it.
/// The play bar's buttons are the window's: it hands their clicks on and shows what the signals tell. GUI
/// thread; the open job runs on a worker and reaches this object through posted calls only.
class LiveSession : public QObject
{
    Q_OBJECT

public:
    /// `window` is the parent of dialogs, the spinner stands over `imageArea`. The references outlive the
    /// session.
    LiveSession(SourceState& state, DisplayTiming& timing, EventFrameBuffer& frames, Config& config,
                QWidget* window, QWidget* imageArea);
    /// Ends the recording, the stream and the reading thread, then releases the cameras, then the manager.
    ~LiveSession() override;

    /// The kind of a camera by its product name: ModeDvsCamera, ModeFusionCamera or ModeNone.
    static int kindOf(const std::string& product);

    /// Lists the cameras and lets the user open one.
    void slotOpenCamera();
    /// Opens the camera with this serial number without asking, as if it had been picked. False, with a log
    /// line, when it is not there.
    bool openCameraBySerial(const QString& serial);

    /// The play button in the modes 0, 1 and 2. Afterwards SourceState::filePlaying says what the button
    /// shows.
    void playClicked();
    /// The record button, in all modes.
    void recordClicked();
    /// Ends recording and live view and lets go of the camera, before another source takes its place.
    void release();

    /// Stores what one batch is to cover, in microseconds, and tells an open camera.
    void setAccumulationTime(std::uint64_t microseconds);
    /// Where an open fusion camera's output goes; null for nowhere.
    void setFusionSink(FusionSink* sink) { fusionSink = sink; }

    bool isRecording() const { return recording; }
    /// Whether a DVS-only camera is open.
    bool hasDvsCamera() const { return dvsCamera != nullptr; }
    bool hasFusionCamera() const { return fusionCamera != nullptr; }
    /// A settings tool of the open camera; empty when none is open or it has no such tool.
    std::shared_ptr<korvane::CameraTool> tool(korvane::ToolType type) const;
    /// Time of the last event shown, microseconds.
    std::uint64_t lastTimestamp() const { return loop.lastTimestamp(); }

signals:
    /// Another source is about to take over: whatever runs has to stop and let go now.
    void sourceAboutToChange();
    void setShowCameraLiveUI(bool live);
    void resetShowCameraFormTitle(bool show);
    void toShowCameraSerial(QString serial);
    void signalShowLeftBottomTips(QString tips, KvMessageType type, QString file_path);
    /// New events were painted. Emitted on the reading thread.
    void triggerEventsToShow();
    /// Press the play button: what was opened starts.
    void playRequested();
    /// The play button has to follow SourceState::filePlaying.
    void runningChanged();
    void recordingChanged(bool recording);
    /// mm:ss while recording, once a second; empty when it is over.
    void recordingTimeChanged(QString text);
    /// A camera was opened; its kind tells the view.
    void viewerTypeSelected(korvane::STREAM_TYPE type);
    /// The camera's settings can be filled in, or have to be cleared when both are empty.
    void toolsChanged();

private:
    void open(const korvane::CameraDescription& description);
    void openJob(int kind, const std::string& serial);
    /// False when the camera cannot be opened.
    bool openKind(int kind, const std::string& serial);
    void toggleDvs();
    void toggleFusion();
    void stopStream();
    void startRecording();
    /// A fault of the recorder is told in any case, the end of the recording if asked for.
    void stopRecording(bool tellEnd);
    void tellFault(const korvane::RecorderState& recorder, const QString& what);
    /// The events are recorded on: told once a recording.
    void tellFaultInPart(const korvane::RecorderState& recorder);
    bool cameraConnected() const;
    korvane::RecorderState recorderState() const;
    void watchRecorder();
    void watchFusionCamera();
    void onConnectionLost(std::uint64_t session);
    void logNoCamera() const;

    SourceState& state;
    DisplayTiming& timing;
    Config& config;
    QWidget* window;
    QWidget* imageArea;
    FusionSink* fusionSink = nullptr;

    korvane::DvsCameraManager cameraManager;
    std::shared_ptr<korvane::DvsCamera> dvsCamera;
    std::shared_ptr<korvane::FusionCamera> fusionCamera;
    int streamHandle = 0; ///< no driver hands one out; it is passed back at stop all the same
    bool recording = false;
    bool partialFaultTold = false; ///< of this recording
    QElapsedTimer recordingClock;
    QTimer recordingTimer{this};
    QTimer fusionTimer{this}; ///< runs while a fusion camera streams: no loop of ours would notice its end
    qint64 shownSeconds = -1; ///< of the recording's time, told last
    DvsReadingLoop loop; ///< last: its thread ends before anything it uses
};
