#include "playback/recordingopener.h"

#include "app/config.h"
#include "camera/driver/dvsfilereader.h"
#include "display/workerthread.h"
#include "playback/dvsplayer.h"
#include "widgets/waitingwin.h"

#include <QDebug>
#include <QFileDialog>
#include <QFileInfo>

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

    player.setRecording(nullptr);
    std::shared_ptr<korvane::DvsFileReader> reader
        = korvane::DvsFileReader::createFileReader(path.toLocal8Bit().toStdString());
    if (!reader) {
        qDebug().noquote() << "not raw file.";
        return;
    }
    WaitingWin spinner(imageArea);
    WorkerThread worker([this, reader] { loadDvsRecording(reader); });
    connect(&worker, &WorkerThread::taskCompleted, &spinner, &WaitingWin::jobDone, Qt::QueuedConnection);
    worker.start();
    spinner.exec();
    worker.wait();
    emit recordingOpened();
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
