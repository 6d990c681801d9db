#include "playback/recordingopener.h"

#include "app/config.h"
#include "camera/driver/backend.h"
#include "camera/driver/dvsfilereader.h"
#include "display/workerthread.h"
#include "playback/dvsplayer.h"
#include "widgets/waitingwin.h"

#include <QDebug>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>

#include <utility>

RecordingOpener::RecordingOpener(SourceState& sharedState, DvsPlayer& dvsPlayer, Config& settings,
                                 QWidget* mainWindow, QWidget* spinnerAnchor)
    : state(sharedState), player(dvsPlayer), config(settings), window(mainWindow), imageArea(spinnerAnchor)
{
}

void RecordingOpener::slotOpenRecording()
{
    const QString path = QFileDialog::getOpenFileName(window, tr("Select a raw file"),
                                                      config.input_raw_file_path, tr("RAW files (*.raw)"));
    if (!path.isEmpty())
        openRecording(path);
}

void RecordingOpener::openRecording(const QString& path)
{
    config.input_raw_file_path = QFileInfo(path).path();
    emit sourceAboutToChange();

    const QFileInfo file(path);
    const QString companion = QStringLiteral("%1/%2.mp4").arg(file.path(), file.completeBaseName());
    if (!QFile::exists(companion)) {
        openDvsRecording(path);
    } else if (korvane::isExportedVideo(companion.toLocal8Bit().toStdString())) {
        qDebug().noquote() << "The video beside the recording was exported from it:" << companion;
        openDvsRecording(path);
    } else {
        openFusionRecording(path);
    }
}

void RecordingOpener::openFusionRecording(const QString& path)
{
    qDebug().noquote() << "Load fusion file.";
    const std::string localPath = path.toLocal8Bit().toStdString();
    // A DVS-only recording that was open before stays: it can still be exported and cut.
    bool loaded = false;
    runBehindSpinner([this, &loaded, &localPath] { loaded = loadFusionRecording(localPath); });
    if (loaded) {
        emit playRequested();
        emit setShowCameraLiveUI(false);
    } else {
        emit signalShowLeftBottomTips(tr("Load fusion file failed: ") + QFileInfo(path).fileName(), Error,
                                      QString());
    }
    emit recordingOpened();
}

bool RecordingOpener::loadFusionRecording(const std::string& path)
{
    state.playMode = ModeFusionRecording;
    return loadFusion && loadFusion(path);
}

void RecordingOpener::openDvsRecording(const QString& path)
{
    player.setRecording(nullptr);
    std::shared_ptr<korvane::DvsFileReader> reader
        = korvane::DvsFileReader::createFileReader(path.toLocal8Bit().toStdString());
    if (!reader) {
        qDebug().noquote() << "not raw file.";
        return;
    }
    runBehindSpinner([this, reader] { loadDvsRecording(reader); });
    emit recordingOpened();
}

void RecordingOpener::runBehindSpinner(std::function<void()> job)
{
    WaitingWin spinner(imageArea);
    WorkerThread worker(std::move(job));
    connect(&worker, &WorkerThread::taskCompleted, &spinner, &WaitingWin::jobDone, Qt::QueuedConnection);
    worker.start();
    spinner.exec();
    worker.wait();
}

void RecordingOpener::loadDvsRecording(const std::shared_ptr<korvane::DvsFileReader>& reader)
{
    // A recording that cannot be loaded is opened all the same: it is empty, and the log says why.
    reader->loadFile();
    QMetaObject::invokeMethod(
        this,
        [this, reader] {
            state.playMode = ModeDvsRecording;
            emit setShowCameraLiveUI(false);
            emit resetShowCameraFormTitle(false);
            player.setRecording(reader);
            emit playRequested();
        },
        Qt::QueuedConnection);
}
