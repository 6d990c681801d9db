#include "camera/livesession.h"

#include "app/config.h"
#include "camera/cameraslist.h"
#include "display/eventframebuffer.h"
#include "display/fusionsink.h"
#include "display/runguarded.h"
#include "display/workerthread.h"
#include "widgets/waitingwin.h"

#include <QDateTime>
#include <QDebug>

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

/// What ends most recordings: the recorder's own reasons and the system's two usual ones.
constexpr const char* usualReasons[] = {
    QT_TRANSLATE_NOOP("LiveSession", "the file has no name"),
    QT_TRANSLATE_NOOP("LiveSession", "the folder cannot be made"),
    QT_TRANSLATE_NOOP("LiveSession", "the file has been removed"),
    QT_TRANSLATE_NOOP("LiveSession", "the file has been truncated"),
    QT_TRANSLATE_NOOP("LiveSession", "the camera's clock has leapt by more than thirty days"),
    QT_TRANSLATE_NOOP("LiveSession", "no frame could be recorded for five minutes"),
    QT_TRANSLATE_NOOP("LiveSession", "there is not enough memory"),
    QT_TRANSLATE_NOOP("LiveSession", "No space left on device"),
    QT_TRANSLATE_NOOP("LiveSession", "Permission denied"),
    QT_TRANSLATE_NOOP("LiveSession", "this machine's FFmpeg has no encoder for H.264 or MPEG-4"),
};

} // namespace

LiveSession::LiveSession(SourceState& sharedState, DisplayTiming& displayTiming, EventFrameBuffer& frames,
                         Config& settings, QWidget* mainWindow, QWidget* spinnerAnchor)
    : state(sharedState), timing(displayTiming), config(settings), window(mainWindow),
      imageArea(spinnerAnchor),
      loop(sharedState, displayTiming,
           {
               [&frames](const korvane::Event2D* begin, const korvane::Event2D* end) {
                   frames.addEvents(begin, end);
               },
               [this] { emit triggerEventsToShow(); },
               [this](std::uint64_t session) {
                   QMetaObject::invokeMethod(
                       this, [this, session] { onConnectionLost(session); }, Qt::QueuedConnection);
               },
           })
{
    // Ten times a second: the seconds shown change in time, and a recorder that failed is noticed soon.
    recordingTimer.setInterval(100);
    connect(&recordingTimer, &QTimer::timeout, this, &LiveSession::watchRecorder);
    fusionTimer.setInterval(100);
    connect(&fusionTimer, &QTimer::timeout, this, &LiveSession::watchFusionCamera);
}

LiveSession::~LiveSession()
{
    release();
}

int LiveSession::kindOf(const std::string& product)
{
    if (product == "QRT4" || product == "Halvora")
        return ModeDvsCamera;
    return product == "Pellix" ? ModeFusionCamera : ModeNone;
}

void LiveSession::slotOpenCamera()
{
    qDebug().noquote() << "Search cameras ...";
    const auto descriptions = cameraManager.getCameraDescs();
    qDebug().noquote() << "Search end ... find:" << descriptions.size();
    CamerasList list(descriptions, window);
    std::uint32_t index = 0;
    if (list.exec() == QDialog::Rejected || !list.selectedIndex(index) || index >= descriptions.size())
        return;
    open(descriptions[index]);
}

bool LiveSession::openCameraBySerial(const QString& serial)
{
    const auto descriptions = cameraManager.getCameraDescs();
    const std::string wanted = serial.toLocal8Bit().toStdString();
    const auto found
        = std::find_if(descriptions.begin(), descriptions.end(),
                       [&wanted](const auto& description) { return description.serial == wanted; });
    if (found == descriptions.end()) {
        qWarning().noquote().nospace() << "There is no camera with the serial number " << serial << ".";
        return false;
    }
    open(*found);
    return true;
}

void LiveSession::open(const korvane::CameraDescription& description)
{
    const std::string serial = description.serial;
    qDebug().noquote() << "Select camera:" << QString::fromLocal8Bit(serial.c_str())
                       << "product:" << QString::fromLocal8Bit(description.product.c_str());
    emit sourceAboutToChange();
    // Whoever listens: a camera that is open never stays beside the next one.
    release();
    const int kind = kindOf(description.product);
    state.playMode = kind;

    WaitingWin spinner(imageArea);
    WorkerThread worker([this, kind, serial] { openJob(kind, serial); });
    connect(&worker, &WorkerThread::taskCompleted, &spinner, &WaitingWin::jobDone, Qt::QueuedConnection);
    worker.start();
    spinner.exec();
    worker.wait();

    if (kind == ModeDvsCamera)
        emit viewerTypeSelected(korvane::STREAM_DVS);
    else if (kind == ModeFusionCamera)
        emit viewerTypeSelected(korvane::STREAM_FUSION);
    emit toolsChanged();
}

void LiveSession::openJob(int kind, const std::string& serial)
{
    bool opened = false;
    // A driver is to give nothing instead; what it throws is a camera that did not open all the same.
    runGuarded("The camera driver failed:", [&] { opened = openKind(kind, serial); });
    if (opened)
        return;
    emit signalShowLeftBottomTips(
        tr("Open camera: ") + QString::fromLocal8Bit(serial.c_str()) + tr("failed."), Error, QString());
}

bool LiveSession::openKind(int kind, const std::string& serial)
{
    // The camera is handed to the GUI thread ahead of everything that makes use of it there.
    if (kind == ModeDvsCamera) {
        auto camera = cameraManager.openCamera(serial);
        if (!camera)
            return false;
        QMetaObject::invokeMethod(
            this, [this, camera] { dvsCamera = camera; }, Qt::QueuedConnection);
    } else if (kind == ModeFusionCamera) {
        qDebug().noquote() << "Open fusion camera.";
        auto camera = cameraManager.openFusionCamera(serial);
        if (!camera)
            return false;
        if (fusionSink) {
            camera->addApsFrameCallback(
                [sink = fusionSink](const korvane::ApsFrame& frame) { sink->onApsFrame(frame); });
            camera->addEventsStreamHandleCallback(
                [sink = fusionSink](const korvane::Event2D* begin, const korvane::Event2D* end) {
                    sink->onEvents(begin, end);
                });
        }
        if (const auto trigger = camera->getTool(korvane::ToolType::TriggerIn))
            trigger->setBoolParameter("enable", true);
        if (fusionSink)
            fusionSink->setFusionCamera(camera);
        QMetaObject::invokeMethod(
            this, [this, camera] { fusionCamera = camera; }, Qt::QueuedConnection);
    }
    QMetaObject::invokeMethod(
        this,
        [this, serial] {
            emit setShowCameraLiveUI(true);
            emit resetShowCameraFormTitle(true);
            emit toShowCameraSerial(QString::fromLocal8Bit(serial.c_str()));
            emit playRequested();
        },
        Qt::QueuedConnection);
    return true;
}

void LiveSession::playClicked()
{
    switch (state.playMode) {
    case ModeDvsCamera:
        toggleDvs();
        break;
    case ModeFusionCamera:
        toggleFusion();
        break;
    default:
        break;
    }
    emit runningChanged();
}

void LiveSession::toggleDvs()
{
    if (!dvsCamera || !dvsCamera->isConnected()) {
        logNoCamera();
    } else if (state.filePlaying) {
        stopStream();
    } else {
        loop.stop();
        if (dvsCamera->start() != 0) {
            qDebug().noquote() << "Please check the camera connection.";
            return;
        }
        dvsCamera->setBatchTime(timing.accumulationTime);
        loop.start(dvsCamera);
    }
}

void LiveSession::toggleFusion()
{
    if (!fusionCamera || !fusionCamera->isConnected()) {
        logNoCamera();
    } else if (state.filePlaying) {
        stopStream();
    } else {
        state.filePlaying = true;
        ++state.playSession;
        fusionCamera->start(korvane::STREAM_FUSION);
        fusionTimer.start();
        qDebug().noquote() << "Fusion camera start";
    }
}

void LiveSession::stopStream()
{
    if (state.playMode == ModeFusionCamera && fusionCamera) {
        fusionTimer.stop();
        fusionCamera->stop(korvane::STREAM_FUSION);
        state.filePlaying = false;
        emit runningChanged();
        qDebug().noquote() << "Fusion camera stop.";
    } else if (dvsCamera) {
        loop.stop();
        dvsCamera->releaseStream(streamHandle);
        emit runningChanged();
        dvsCamera->stop();
        qDebug().noquote() << "stop camera.";
    }
    ++state.playSession;
}

void LiveSession::release()
{
    stopRecording(true);
    const int mode = state.playMode;
    if ((mode == ModeDvsCamera || mode == ModeFusionCamera) && state.filePlaying)
        stopStream();
    if (mode == ModeDvsCamera || mode == ModeFusionCamera)
        loop.stop();
    if (fusionSink)
        fusionSink->setFusionCamera(nullptr);
    const bool had = dvsCamera || fusionCamera;
    dvsCamera.reset();
    fusionCamera.reset();
    if (had)
        emit toolsChanged();
    emit runningChanged();
}

void LiveSession::onConnectionLost(std::uint64_t session)
{
    if (session != state.playSession)
        return;
    stopRecording(true);
    loop.stop();
    if (dvsCamera) {
        dvsCamera->releaseStream(streamHandle);
        dvsCamera->stop();
    }
    ++state.playSession;
    emit runningChanged();
}

void LiveSession::watchFusionCamera()
{
    if (!fusionCamera || fusionCamera->isConnected())
        return;
    qDebug().noquote() << "Camera connection lost.";
    stopRecording(true);
    fusionTimer.stop();
    fusionCamera->stop(korvane::STREAM_FUSION);
    state.filePlaying = false;
    ++state.playSession;
    emit runningChanged();
}

std::shared_ptr<korvane::CameraTool> LiveSession::tool(korvane::ToolType type) const
{
    if (dvsCamera)
        return dvsCamera->getTool(type);
    return fusionCamera ? fusionCamera->getTool(type) : nullptr;
}

bool LiveSession::cameraConnected() const
{
    if (state.playMode == ModeDvsCamera)
        return dvsCamera && dvsCamera->isConnected();
    return state.playMode == ModeFusionCamera && fusionCamera && fusionCamera->isConnected();
}

korvane::RecorderState LiveSession::recorderState() const
{
    if (dvsCamera)
        return dvsCamera->recorderState();
    return fusionCamera ? fusionCamera->recorderState() : korvane::RecorderState();
}

void LiveSession::recordClicked()
{
    if (!cameraConnected()) {
        logNoCamera();
        stopRecording(true);
        emit recordingChanged(false);
    } else if (recording) {
        stopRecording(true);
    } else {
        startRecording();
    }
}

void LiveSession::startRecording()
{
    qDebug().noquote() << "start recording...";
    recording = true;
    const QString name = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd_HHmmss"));
    const QString path = config.output_raw_file_path + QLatin1Char('/') + name + QStringLiteral(".raw");
    const std::string local = path.toLocal8Bit().toStdString();
    if (dvsCamera)
        dvsCamera->startRecording(local);
    else if (fusionCamera)
        fusionCamera->startRecording(local, korvane::STREAM_FUSION);
    recordingClock.start();
    recordingTimer.start();
    shownSeconds = -1;
    partialFaultTold = false;
    emit recordingChanged(true);
    watchRecorder();
}

void LiveSession::stopRecording(bool tellEnd)
{
    if (!recording)
        return;
    qDebug().noquote() << "stop recording";
    recording = false;
    recordingTimer.stop();
    emit recordingTimeChanged(QString());
    emit recordingChanged(false);
    korvane::RecorderState fault = recorderState();
    if (dvsCamera)
        dvsCamera->stopRecording();
    else if (fusionCamera)
        fusionCamera->stopRecording(korvane::STREAM_FUSION);
    // Some faults show only when the file is completed.
    const korvane::RecorderState after = recorderState();
    bool inPart = fault.writing && !fault.error.empty();
    if (fault.error.empty() || (inPart && !after.error.empty() && after.path != fault.path)) {
        fault = after;
        inPart = false;
    }
    if (tellEnd)
        emit signalShowLeftBottomTips(tr("Save file success!"), Success, config.output_raw_file_path);
    // Behind the other one: toasts lie on top of each other, and the fault is to be seen.
    if (!fault.error.empty() && !inPart)
        tellFault(fault, tr("Recording stopped: "));
    else if (inPart)
        tellFaultInPart(fault);
}

void LiveSession::tellFaultInPart(const korvane::RecorderState& recorder)
{
    if (!std::exchange(partialFaultTold, true))
        tellFault(recorder, tr("Frames are not recorded: "));
}

void LiveSession::tellFault(const korvane::RecorderState& recorder, const QString& what)
{
    const QString reason = QString::fromLocal8Bit(recorder.error.c_str());
    const QString path = QString::fromLocal8Bit(recorder.path.c_str());
    const bool usual = std::find(std::begin(usualReasons), std::end(usualReasons), recorder.error)
        != std::end(usualReasons);
    const QString told = usual ? tr(recorder.error.c_str()) : reason;
    // Only shown: the recorder has logged it.
    emit signalShowLeftBottomTips(what + told + QLatin1Char('\n') + path, Error, QString());
}

void LiveSession::watchRecorder()
{
    const korvane::RecorderState recorder = recorderState();
    if (!recorder.error.empty() && !recorder.writing) {
        stopRecording(false);
        return;
    }
    if (!recorder.error.empty())
        tellFaultInPart(recorder);
    // While the view stands still nobody else notices that the camera is gone.
    if (!cameraConnected()) {
        stopRecording(true);
        return;
    }
    const qint64 seconds = recordingClock.elapsed() / 1000;
    if (std::exchange(shownSeconds, seconds) == seconds)
        return;
    emit recordingTimeChanged(QStringLiteral("%1:%2")
                                  .arg(seconds / 60, 2, 10, QLatin1Char('0'))
                                  .arg(seconds % 60, 2, 10, QLatin1Char('0')));
}

void LiveSession::setAccumulationTime(std::uint64_t microseconds)
{
    timing.accumulationTime = microseconds;
    if (dvsCamera)
        dvsCamera->setBatchTime(microseconds);
    qDebug().noquote() << "set dvs time interval:" << microseconds;
}

void LiveSession::logNoCamera() const
{
    qDebug().noquote() << "Please connect camera first.";
}
