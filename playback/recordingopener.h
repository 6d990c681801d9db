#pragma once

#include "display/sourcestate.h"

#include <QObject>
#include <QString>

#include <memory>

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
    /// `window` is the parent of the file dialog, the spinner stands over `imageArea`. The references outlive
    /// this.
    RecordingOpener(SourceState& state, DvsPlayer& player, Config& config, QWidget* window,
                    QWidget* imageArea);

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
    /// A recording is open now: there are no camera settings any more.
    void recordingOpened();

private:
    void loadDvsRecording(const std::shared_ptr<korvane::DvsFileReader>& reader);

    SourceState& state;
    DvsPlayer& player;
    Config& config;
    QWidget* window;
    QWidget* imageArea;
};
