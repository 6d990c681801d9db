#pragma once

#include "display/sourcestate.h"
#include "widgets/kvmessagetype.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <string>
#include <utility>

class Config;
class DvsPlayer;
class QWidget;

namespace korvane {
class DvsFileReader;
}

/// Opens recordings: asks for a file, loads it on a worker behind the spinner and hands it to its player. GUI
/// thread.
class RecordingOpener : public QObject
{
    Q_OBJECT

public:
    /// Loads the fusion recording of an event file (path in the local 8-bit encoding) into its player, which
    /// does not play meanwhile; false, with a log line, when it cannot. Called on a worker.
    using FusionLoader = std::function<bool(const std::string& path)>;

    /// `window` is the parent of the file dialog, the spinner stands over `imageArea`. The references outlive
    /// this.
    RecordingOpener(SourceState& state, DvsPlayer& player, Config& config, QWidget* window,
                    QWidget* imageArea);

    /// Until one is set, no fusion recording can be loaded.
    void setFusionLoader(FusionLoader load) { loadFusion = std::move(load); }

    /// Asks the user for a recording and opens it.
    void slotOpenRecording();
    /// Opens a recording without asking.
    void openRecording(const QString& path);

signals:
    /// Another source is about to take over: whatever runs has to stop and let go now.
    void sourceAboutToChange();
    void setShowCameraLiveUI(bool live);
    void resetShowCameraFormTitle(bool show);
    /// Press the play button: what was opened starts.
    void playRequested();
    /// A recording is open now, or could not be loaded: there are no camera settings any more.
    void recordingOpened();
    void signalShowLeftBottomTips(QString tips, KvMessageType type, QString file_path);

private:
    void openFusionRecording(const QString& path);
    void openDvsRecording(const QString& path);
    void runBehindSpinner(std::function<void()> job);
    bool loadFusionRecording(const std::string& path);
    void loadDvsRecording(const std::shared_ptr<korvane::DvsFileReader>& reader);

    SourceState& state;
    DvsPlayer& player;
    Config& config;
    QWidget* window;
    QWidget* imageArea;
    FusionLoader loadFusion;
};
