#pragma once

#include "widgets/kvmessagetype.h"

#include <QObject>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

class Config;
class DvsPlayer;
class QWidget;
class RangeDialog;
struct SourceState;

namespace korvane {
class DvsFileReader;
}

/// Saves a range of the open DVS-only recording: as a video, or cut out as a recording of its own. Asks for
/// the range, then works on a thread behind the spinner; the window stays open meanwhile. GUI thread, but
/// for the toast's signal.
class RangeSaver : public QObject
{
    Q_OBJECT

public:
    /// `mainWindow` is the parent of the dialogs and cannot be closed while a job runs, the spinner stands
    /// over `imageArea`. All of them outlive this.
    RangeSaver(SourceState& state, DvsPlayer& player, const Config& config, QWidget* mainWindow,
               QWidget* imageArea, QObject* parent = nullptr);

    void slotSaveAs();
    void slotCutRecording();
    /// Whether a job runs.
    bool busy() const { return jobRuns; }

signals:
    /// What runs has to stop now, as if the play button were clicked.
    void stopRequested();
    /// A toast; of a job's end, it is emitted on the job's thread.
    void signalShowLeftBottomTips(QString tips, KvMessageType type, QString file_path);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Job
    {
        std::shared_ptr<korvane::DvsFileReader> fileReader;
        std::uint64_t start = 0; ///< microseconds
        std::uint64_t end = 0; ///< microseconds
        std::string path; ///< UTF-8
        QString folder;
    };

    bool prepare();
    bool ask(RangeDialog& dialog, const QString& folder, const QString& suffix, Job& job) const;
    void runBehindSpinner(const std::function<void()>& work);
    void exportVideoJob(const Job& job);
    void cutRecordingJob(const Job& job);

    SourceState& state;
    DvsPlayer& player;
    const Config& config;
    QWidget* window;
    QWidget* imageArea;
    bool jobRuns = false;
};
