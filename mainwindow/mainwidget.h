#pragma once

#include "camera/driver/streamtype.h"
#include "display/displaytiming.h"
#include "display/eventframebuffer.h"
#include "display/imagerelay.h"
#include "display/sourcestate.h"
#include "mainwindow/toasts.h"
#include "widgets/kvmessagetype.h"

#include <QWidget>

#include <cstdint>
#include <memory>

class Config;
class DvsPlayer;
class FusionPlayer;
class KvFusionCameraDataProcessor;
class KvThreeHandleSlider;
class LiveSession;
class QAction;
class RangeSaver;
class RecordingOpener;
class ShowImageForm;
class SideBars;
class WindowMenus;

namespace Ui {
class Widget;
}

/// The application's one window: its layout, and the wiring between the parts that do the work. GUI thread;
/// other threads reach it through its signals.
class MainWidget : public QWidget
{
    Q_OBJECT

public:
    explicit MainWidget(QWidget* parent = nullptr);
    /// Stops whatever runs, then releases it.
    ~MainWidget() override;

    /// Opens a recording, or a camera by its serial number, as if the user had picked it.
    void openRecording(const QString& path);
    void openCamera(const QString& serial);

signals:
    void triggerEventsToShow();
    void triggerShowPixmap(QPixmap* img);
    void resetShowCameraFormTitle(bool show);
    void toShowCameraSerial(QString serial);
    void toShowCameraTimestamp(uint64_t timestamp_us);
    void setShowCameraLiveUI(bool live);
    void signalSetViewerShowType(korvane::STREAM_TYPE type);
    void signalFusionFilePlayControl(bool play);
    void signalShowLeftBottomTips(QString tips, KvMessageType type = Success, QString file_path = QString());

private slots:
    void showCameraPlayingUI(bool en);
    void on_pb_record_clicked();
    void on_pb_prv_clicked();
    void on_pb_play_clicked();
    void on_pb_stop_clicked();
    void on_pb_win_min_clicked();
    void on_pb_win_close_clicked();
    void openActionSlot(QAction* action);
    void slotOpenRecording();
    void slotSaveAs();
    void slotCutRecording();
    void slotOpenCamera();
    void on_pb_loop_clicked();
    void on_pb_next_clicked();
    void onSliderTimeTrackClick(int value);
    void onSliderTimeMove(int value);
    void setShowTitleInfo(bool show);
    void showCameraSerial(QString str);
    void showTimeStamp(uint64_t timestamp_us);
    void on_pb_win_max_clicked();
    void maximizedChanged(bool max);
    void on_pb_fold_setting_clicked(bool checked);
    void on_pb_viewer_setting_clicked(bool checked);
    void slotStartEndPointEditable(bool en);
    void on_pb_fold_general_setting_clicked();
    void on_pb_fold_dvs_setting_clicked(bool checked);
    void on_pb_fold_aps_setting_clicked(bool checked);
    void on_pb_viewer_type_clicked();

public slots:
    void slotShowLeftBottomTips(QString tips, KvMessageType type = Success, QString file_path = QString());
    void getEventsToShow();
    void getEventsToShow(QPixmap* img);
    void slotSetSliderStartTime(uint64_t start_ts);
    void slotSetSliderEndTime(uint64_t ts);
    void slotShowFilePlayProgress(uint64_t cur_ts, uint64_t total_ts);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void setUpFrame();
    void setUpDecorations();
    void createCollaborators();
    void connectSignals();
    void connectMenus();
    void connectSession();
    void connectPlayback();
    void connectFusion();
    void releaseSources();
    void closeFusionRecording();
    void showRunning();
    void setViewerType(korvane::STREAM_TYPE type);

    std::unique_ptr<Ui::Widget> ui;
    Config* config; ///< the process's
    SourceState sourceState;
    DisplayTiming displayTiming;
    EventFrameBuffer eventFrameBuffer;
    Toasts toasts;
    int viewerTypeIndex = korvane::STREAM_FUSION;

    KvThreeHandleSlider* timeSlider; ///< this window's
    ShowImageForm* imageView; ///< this window's
    WindowMenus* menus; ///< this window's
    ImageRelay fusionImages;
    std::unique_ptr<FusionPlayer> fusionPlayer;
    // Last: their threads end before anything they use.
    std::unique_ptr<KvFusionCameraDataProcessor> fusionProcessor;
    std::unique_ptr<LiveSession> liveSession;
    std::unique_ptr<DvsPlayer> dvsPlayer;
    std::unique_ptr<RecordingOpener> recordingOpener;
    std::unique_ptr<RangeSaver> rangeSaver;
    std::unique_ptr<SideBars> sideBars;
};
