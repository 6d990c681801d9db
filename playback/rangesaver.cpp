#include "playback/rangesaver.h"

#include "app/config.h"
#include "camera/driver/dvsfilereader.h"
#include "display/runguarded.h"
#include "display/sourcestate.h"
#include "playback/dvsplayer.h"
#include "playback/kvcutrawfile.h"
#include "playback/kvexportvideoui.h"
#include "widgets/waitingwin.h"

#include <QDateTime>
#include <QDebug>
#include <QEvent>

#include <mutex>
#include <thread>

namespace {

constexpr const char* endedEarly = "Saving a range has ended early:";

/// What `operation` answers; false, with the reason logged, when it throws.
template <typename Operation>
bool succeeds(const Operation& operation)
{
    bool answer = false;
    runGuarded(endedEarly, [&] { answer = operation(); });
    return answer;
}

void logSuccess(std::uint64_t start, std::uint64_t end)
{
    qDebug().nospace() << "extract event data start:" << start << " end: " << end << " success.";
}

} // namespace

RangeSaver::RangeSaver(SourceState& sourceState, DvsPlayer& dvsPlayer, const Config& settings,
                       QWidget* mainWindow, QWidget* spinnerAnchor, QObject* parent)
    : QObject(parent), state(sourceState), player(dvsPlayer), config(settings), window(mainWindow),
      imageArea(spinnerAnchor)
{
    window->installEventFilter(this);
}

void RangeSaver::slotSaveAs()
{
    if (!prepare())
        return;
    KvExportVideoUI dialog(window);
    Job job;
    if (ask(dialog, config.video_save_path, QStringLiteral(".mp4"), job))
        runBehindSpinner([this, &job] { exportVideoJob(job); });
}

void RangeSaver::slotCutRecording()
{
    if (!prepare())
        return;
    KvCutRawFile dialog(window);
    Job job;
    if (ask(dialog, config.output_raw_file_path, QStringLiteral(".raw"), job))
        runBehindSpinner([this, &job] { cutRecordingJob(job); });
}

bool RangeSaver::prepare()
{
    if (jobRuns)
        return false;
    if (!player.hasRecording()) {
        emit signalShowLeftBottomTips(tr("Please open a raw file first."), Warning, QString());
        return false;
    }
    if (state.filePlaying)
        emit stopRequested();
    return true;
}

bool RangeSaver::ask(RangeDialog& dialog, const QString& folder, const QString& suffix, Job& job) const
{
    dialog.setStartTime(player.rangeStart());
    dialog.setEndTime(player.rangeEnd());
    dialog.setSavePath(folder);
    dialog.setFileName(QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd_HHmmss")) + suffix);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    job = {player.fileReader(), dialog.startTime(), dialog.endTime(),
           dialog.fullPath().toUtf8().toStdString(), dialog.savePath()};
    return true;
}

void RangeSaver::runBehindSpinner(const std::function<void()>& work)
{
    WaitingWin spinner(imageArea);
    jobRuns = true;
    player.setLent(true);
    std::thread thread([&work, &spinner] {
        runGuarded(endedEarly, work);
        QMetaObject::invokeMethod(&spinner, &WaitingWin::jobDone, Qt::QueuedConnection);
    });
    spinner.exec();
    thread.join();
    player.setLent(false);
    jobRuns = false;
}

void RangeSaver::exportVideoJob(const Job& job)
{
    qDebug().noquote().nospace() << "start export video: " << QString::fromStdString(job.path);
    const std::lock_guard lock(player.readerMutex());
    if (succeeds([&] { return job.fileReader->exportVideo(job.start, job.end, job.path); }))
        logSuccess(job.start, job.end);
    // Also after a failure, which only the log tells.
    emit signalShowLeftBottomTips(tr("Export video success!"), Success, job.folder);
}

void RangeSaver::cutRecordingJob(const Job& job)
{
    // Unlike the export, nothing is logged before the reader is free, and a failure shows nothing at all.
    const std::lock_guard lock(player.readerMutex());
    qDebug().noquote().nospace() << "qt output file name : " << QString::fromStdString(job.path);
    if (!succeeds([&] { return job.fileReader->cutFile(job.start, job.end, job.path); }))
        return;
    logSuccess(job.start, job.end);
    emit signalShowLeftBottomTips(tr("Export raw file success!"), Success, job.folder);
}

bool RangeSaver::eventFilter(QObject* watched, QEvent* event)
{
    if (jobRuns && watched == window && event->type() == QEvent::Close) {
        event->ignore();
        return true;
    }
    return QObject::eventFilter(watched, event);
}
