#include "mainwindow/mainwidget.h"

#include "ui_mainwidget.h"

#include "app/config.h"
#include "app/languageswitch.h"
#include "camera/livesession.h"
#include "display/showimageform.h"
#include "mainwindow/decorations.h"
#include "mainwindow/menuactions.h"
#include "mainwindow/sidebars.h"
#include "mainwindow/windowground.h"
#include "mainwindow/windowkeys.h"
#include "mainwindow/windowmenus.h"
#include "playback/dvsplayer.h"
#include "playback/fusionplayer.h"
#include "playback/kvfusioncameradataprocessor.h"
#include "playback/rangesaver.h"
#include "playback/recordingopener.h"
#include "widgets/kvthreehandleslider.h"
#include "widgets/nativeposition.h"
#include "widgets/timestamptotext.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>
#include <QStyle>

#include <QWKWidgets/widgetwindowagent.h>

#include <string>
#include <utility>

MainWidget::MainWidget(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::Widget>()),
      config(Config::getInstance(QStringLiteral("config.ini"))), toasts(*this)
{
    ui->setupUi(this);
    setUpFrame();
    new WindowGround(this);
    new WindowKeys(this);
    new NativePosition(this);
    fusionProcessor = std::make_unique<KvFusionCameraDataProcessor>();
    timeSlider = new KvThreeHandleSlider(nullptr, 1, 1);
    timeSlider->setObjectName(QStringLiteral("time_slider"));
    timeSlider->setEnabled(false);
    timeSlider->setCenterValue(0);
    ui->layout_time_slider->addWidget(timeSlider);
    imageView = new ShowImageForm(ui->widget_show_image);
    ui->layout_show_image->addWidget(imageView);
    setUpDecorations();
    menus = new WindowMenus(this,
                            {ui->pb_menu_file, ui->pb_menu_device, ui->pb_menu_setting, ui->pb_menu_help});
    createCollaborators();
    connectSignals();
    if (const QScreen* const screen = QGuiApplication::primaryScreen())
        resize(size().boundedTo(screen->availableSize()).expandedTo(minimumSize()));
}

MainWidget::~MainWidget()
{
    // The recording ends before the stream, the threads before what they read from.
    releaseSources();
    // What they still tell while they end concerns nobody any more.
    recordingOpener->disconnect(this);
    dvsPlayer->disconnect(this);
    fusionPlayer->disconnect(this);
    fusionProcessor->disconnect(this);
    liveSession->disconnect(this);
    dvsPlayer.reset();
    // The tools, then the engine, then the session with the cameras' manager.
    sideBars.reset();
    liveSession->setFusionSink(nullptr);
    fusionProcessor.reset();
    liveSession.reset();
}

void MainWidget::setUpFrame()
{
    auto* const agent = new QWK::WidgetWindowAgent(this);
    agent->setup(this);
    agent->setTitleBar(ui->widget_title_space);
    agent->setSystemButton(QWK::WindowAgentBase::WindowIcon, ui->pb_logo_button);
    agent->setSystemButton(QWK::WindowAgentBase::Minimize, ui->pb_win_min);
    agent->setSystemButton(QWK::WindowAgentBase::Maximize, ui->pb_win_max);
    agent->setSystemButton(QWK::WindowAgentBase::Close, ui->pb_win_close);
}

void MainWidget::setUpDecorations()
{
    ui->splitter->setContentsMargins(10, 10, 10, 10);
    ui->splitter->setStretchFactor(0, 1);
    ui->splitter->setStretchFactor(1, 10);
    addPaneShadow(ui->frame_setting);
    addPaneShadow(ui->frame_main);
    addToolTip(ui->pb_play, tr("Play/Stop"));
    addToolTip(ui->pb_record, tr("Start/Stop recording"));
    addToolTip(ui->pb_prv, tr("Previous frame"));
    addToolTip(ui->pb_next, tr("Next frame"));
    addToolTip(ui->pb_stop, tr("Reset the playback progress to the beginning"));
    addToolTip(ui->pb_loop, tr("Select to automatically replay at the end of the playback"));
}

void MainWidget::createCollaborators()
{
    liveSession = std::make_unique<LiveSession>(sourceState, displayTiming, eventFrameBuffer, *config, this,
                                                ui->widget_show_image);
    dvsPlayer = std::make_unique<DvsPlayer>(sourceState, displayTiming, eventFrameBuffer, *timeSlider);
    recordingOpener
        = std::make_unique<RecordingOpener>(sourceState, *dvsPlayer, *config, this, ui->widget_show_image);
    rangeSaver = std::make_unique<RangeSaver>(sourceState, *dvsPlayer, *config, this, ui->widget_show_image);
    fusionPlayer = std::make_unique<FusionPlayer>(sourceState, *timeSlider);
    liveSession->setFusionSink(fusionProcessor.get());
    sideBars = std::make_unique<SideBars>(SideBars::Pane{ui->frame_setting, ui->widget_side_bar,
                                                         ui->layout_sidebar_setting, ui->pb_fold_setting,
                                                         ui->pb_fold_dvs_setting, ui->pb_fold_aps_setting},
                                          *liveSession, displayTiming);
}

void MainWidget::connectSignals()
{
    connect(this, &MainWidget::resetShowCameraFormTitle, this, &MainWidget::setShowTitleInfo);
    connect(this, &MainWidget::toShowCameraSerial, this, &MainWidget::showCameraSerial);
    connect(this, &MainWidget::toShowCameraTimestamp, this, &MainWidget::showTimeStamp);
    connect(this, &MainWidget::setShowCameraLiveUI, this, &MainWidget::showCameraPlayingUI);
    connect(this, &MainWidget::signalShowLeftBottomTips, this, &MainWidget::slotShowLeftBottomTips);
    connect(this, &MainWidget::triggerEventsToShow, this, qOverload<>(&MainWidget::getEventsToShow));
    connect(this, &MainWidget::triggerShowPixmap, this, qOverload<QPixmap*>(&MainWidget::getEventsToShow));
    connect(timeSlider, &KvThreeHandleSlider::centerValueTrackClick, this,
            &MainWidget::onSliderTimeTrackClick);
    connect(timeSlider, &KvThreeHandleSlider::centerValueMove, this, &MainWidget::onSliderTimeMove);

    connectMenus();
    connectSession();
    connectPlayback();
    connectFusion();
}

void MainWidget::connectMenus()
{
    connect(menus, &WindowMenus::triggered, this, &MainWidget::openActionSlot);
    connect(menus, &WindowMenus::openCameraRequested, this, &MainWidget::slotOpenCamera);
    connect(menus, &WindowMenus::openRecordingRequested, this, &MainWidget::slotOpenRecording);
    connect(menus, &WindowMenus::saveAsRequested, this, &MainWidget::slotSaveAs);
    connect(menus, &WindowMenus::cutRequested, this, &MainWidget::slotCutRecording);
    connect(menus, &WindowMenus::quitRequested, this, &QWidget::close);
    connect(menus, &WindowMenus::aboutRequested, this, [] { MenuActions::askAboutUs(); });
    connect(menus, &WindowMenus::generalSettingRequested, this,
            [] { MenuActions::changeGeneralSettings(nullptr); });
    connect(menus, &WindowMenus::languageRequested, this, [this] { LanguageSwitch(*config).ask(); });
    connect(menus, &WindowMenus::startEndPointToggled, this, &MainWidget::slotStartEndPointEditable);
}

void MainWidget::connectSession()
{
    LiveSession* const session = liveSession.get();
    connect(session, &LiveSession::sourceAboutToChange, this, &MainWidget::releaseSources);
    connect(session, &LiveSession::setShowCameraLiveUI, this, &MainWidget::setShowCameraLiveUI);
    connect(session, &LiveSession::resetShowCameraFormTitle, this, &MainWidget::resetShowCameraFormTitle);
    connect(session, &LiveSession::toShowCameraSerial, this, &MainWidget::toShowCameraSerial);
    connect(session, &LiveSession::signalShowLeftBottomTips, this, &MainWidget::signalShowLeftBottomTips);
    connect(session, &LiveSession::triggerEventsToShow, this, &MainWidget::triggerEventsToShow);
    connect(session, &LiveSession::playRequested, ui->pb_play, &QPushButton::click);
    connect(session, &LiveSession::runningChanged, this, &MainWidget::showRunning);
    connect(session, &LiveSession::recordingChanged, ui->pb_record, &QPushButton::setChecked);
    connect(session, &LiveSession::recordingTimeChanged, ui->lb_recoding_time, &QLabel::setText);
    connect(session, &LiveSession::viewerTypeSelected, this, &MainWidget::setViewerType);
    connect(session, &LiveSession::toolsChanged, sideBars.get(), &SideBars::cameraChanged);
    connect(session, &LiveSession::toolsChanged, this, &MainWidget::closeFusionRecording);
}

void MainWidget::connectPlayback()
{
    DvsPlayer* const player = dvsPlayer.get();
    connect(player, &DvsPlayer::timeTextChanged, ui->label_time, &QLabel::setText);
    connect(player, &DvsPlayer::triggerEventsToShow, this, &MainWidget::triggerEventsToShow);
    connect(player, &DvsPlayer::triggerShowPixmap, this, &MainWidget::triggerShowPixmap);
    connect(player, &DvsPlayer::runningChanged, this, &MainWidget::showRunning);
    connect(player, &DvsPlayer::pauseRequested, this, [this] { emit ui->pb_play->clicked(false); });
    connect(ui->pb_loop, &QPushButton::toggled, player, &DvsPlayer::setLooping);

    RangeSaver* const saver = rangeSaver.get();
    connect(saver, &RangeSaver::stopRequested, ui->pb_play, &QPushButton::click);
    connect(saver, &RangeSaver::signalShowLeftBottomTips, this, &MainWidget::signalShowLeftBottomTips);

    RecordingOpener* const opener = recordingOpener.get();
    connect(opener, &RecordingOpener::sourceAboutToChange, this, &MainWidget::releaseSources);
    connect(opener, &RecordingOpener::setShowCameraLiveUI, this, &MainWidget::setShowCameraLiveUI);
    connect(opener, &RecordingOpener::resetShowCameraFormTitle, this, &MainWidget::resetShowCameraFormTitle);
    connect(opener, &RecordingOpener::playRequested, ui->pb_play, &QPushButton::click);
    opener->setFusionLoader([engine = fusionProcessor.get()](const std::string& path) {
        return engine->slotReadFusionFile(path);
    });
    connect(opener, &RecordingOpener::signalShowLeftBottomTips, this, &MainWidget::signalShowLeftBottomTips);
    connect(opener, &RecordingOpener::recordingOpened, sideBars.get(), &SideBars::recordingOpened);
    connect(opener, &RecordingOpener::recordingOpened, this, &MainWidget::closeFusionRecording);
}

void MainWidget::connectFusion()
{
    using Engine = KvFusionCameraDataProcessor;
    Engine* const engine = fusionProcessor.get();
    connect(this, &MainWidget::signalSetViewerShowType, engine, &Engine::slotSetViewerType);
    connect(this, &MainWidget::signalFusionFilePlayControl, engine, &Engine::slotFusionFilePlayControl);
    connect(engine, &Engine::signalStartTimeStamp, this, &MainWidget::slotSetSliderStartTime);
    connect(engine, &Engine::signalEndTimeStamp, this, &MainWidget::slotSetSliderEndTime);
    connect(engine, &Engine::signalPlayProgress, this, &MainWidget::slotShowFilePlayProgress);
    connect(engine, &Engine::signalTimeStamp, this, &MainWidget::showTimeStamp);
    connect(engine, &Engine::signalFusionImage, &fusionImages, &ImageRelay::put, Qt::DirectConnection);
    connect(&fusionImages, &ImageRelay::imageReady, imageView, &ShowImageForm::slotShowImage);
    connect(engine, &Engine::signalFusionPixMap, imageView, &ShowImageForm::showPixMap);

    FusionPlayer* const player = fusionPlayer.get();
    connect(engine, &Engine::signalPalyFileFinished, player, &FusionPlayer::fileFinished,
            Qt::DirectConnection);
    connect(player, &FusionPlayer::fusionFilePlayControl, this, &MainWidget::signalFusionFilePlayControl);
    connect(player, &FusionPlayer::timeTextChanged, ui->label_time, &QLabel::setText);
    connect(player, &FusionPlayer::runningChanged, this, &MainWidget::showRunning);
    connect(player, &FusionPlayer::scaleChanged, this,
            [this](const TimelineScale& scale) { dvsPlayer->setTimelineScale(scale); });
}

void MainWidget::openRecording(const QString& path)
{
    recordingOpener->openRecording(path);
}

void MainWidget::openCamera(const QString& serial)
{
    if (!liveSession->openCameraBySerial(serial))
        slotShowLeftBottomTips(tr("Camera not found: ") + serial, Error);
}

void MainWidget::releaseSources()
{
    dvsPlayer->release();
    fusionPlayer->release();
    liveSession->release();
    fusionImages.clear();
}

void MainWidget::closeFusionRecording()
{
    // One that another source has replaced cannot be played any more; its frames are hundreds of megabytes.
    if (sourceState.playMode != ModeFusionRecording)
        fusionProcessor->closeRecording();
}

void MainWidget::showRunning()
{
    ui->pb_play->setChecked(sourceState.filePlaying);
}

void MainWidget::on_pb_play_clicked()
{
    if (sourceState.playMode == ModeDvsRecording)
        dvsPlayer->playClicked();
    else if (sourceState.playMode == ModeFusionRecording)
        fusionPlayer->playClicked();
    else
        liveSession->playClicked();
}

void MainWidget::on_pb_record_clicked()
{
    liveSession->recordClicked();
}

void MainWidget::on_pb_prv_clicked()
{
    dvsPlayer->previousClicked();
}

void MainWidget::on_pb_next_clicked()
{
    dvsPlayer->nextClicked();
}

void MainWidget::on_pb_stop_clicked()
{
    dvsPlayer->stopClicked();
}

void MainWidget::on_pb_loop_clicked()
{
    // Only the button's checked state matters: the player reads it at the end of the range.
}

void MainWidget::onSliderTimeTrackClick(int value)
{
    dvsPlayer->onSliderTimeTrackClick(value);
}

void MainWidget::onSliderTimeMove(int value)
{
    dvsPlayer->onSliderTimeMove(value);
}

void MainWidget::openActionSlot(QAction* action)
{
    menus->openAction(action);
}

void MainWidget::slotOpenRecording()
{
    recordingOpener->slotOpenRecording();
}

void MainWidget::slotSaveAs()
{
    rangeSaver->slotSaveAs();
}

void MainWidget::slotCutRecording()
{
    rangeSaver->slotCutRecording();
}

void MainWidget::slotOpenCamera()
{
    liveSession->slotOpenCamera();
}

void MainWidget::showCameraPlayingUI(bool en)
{
    for (QPushButton* const button : {ui->pb_loop, ui->pb_next, ui->pb_prv, ui->pb_stop})
        button->setEnabled(!en);
    timeSlider->setEnabled(!en);
    timeSlider->setCenterValue(en ? 0 : timeSlider->effectiveLowerValue());
    if (en)
        ui->label_time->setText(QStringLiteral("--/--"));
}

void MainWidget::setShowTitleInfo(bool)
{
    ui->label_show_camera_info->setText(QString());
    ui->label_show_timestamp_info->setText(QString());
}

void MainWidget::showCameraSerial(QString str)
{
    ui->label_show_camera_info->setText(str);
}

void MainWidget::showTimeStamp(uint64_t timestamp_us)
{
    ui->label_show_timestamp_info->setText(timestampToText(timestamp_us));
}

void MainWidget::getEventsToShow()
{
    if (!eventFrameBuffer.hasNewEvents())
        return;
    QPixmap pixmap;
    eventFrameBuffer.takeFrame(pixmap);
    imageView->showPixMap(std::move(pixmap));
    if (sourceState.playMode == ModeDvsCamera)
        emit toShowCameraTimestamp(liveSession->lastTimestamp());
}

void MainWidget::getEventsToShow(QPixmap* img)
{
    imageView->showPixMap(*img);
}

void MainWidget::slotSetSliderStartTime(uint64_t start_ts)
{
    fusionPlayer->setStartTime(start_ts);
}

void MainWidget::slotSetSliderEndTime(uint64_t ts)
{
    fusionPlayer->setEndTime(ts);
}

void MainWidget::slotShowFilePlayProgress(uint64_t cur_ts, uint64_t total_ts)
{
    fusionPlayer->showProgress(cur_ts, total_ts);
}

void MainWidget::slotShowLeftBottomTips(QString tips, KvMessageType type, QString file_path)
{
    toasts.show(tips, type, file_path);
}

void MainWidget::on_pb_viewer_type_clicked()
{
    const int next = viewerTypeIndex + 1 > korvane::STREAM_FUSION ? korvane::STREAM_DVS : viewerTypeIndex + 1;
    setViewerType(static_cast<korvane::STREAM_TYPE>(next));
}

void MainWidget::setViewerType(korvane::STREAM_TYPE type)
{
    static constexpr const char* names[] = {"DVS", "APS", "Fusion"};
    viewerTypeIndex = type;
    const QString sheet = QStringLiteral(R"(
#pb_viewer_type { border: none; background-color: transparent; image: url(":/img/assets/btn_playbar_%1.svg"); }
#pb_viewer_type:checked, #pb_viewer_type:hover, #pb_viewer_type:pressed { image: url(":/img/assets/btn_playbar_%1_hover.svg"); }
#pb_viewer_type:disabled { image: url(":/img/assets/btn_playbar_%1_disable.svg"); })");
    ui->pb_viewer_type->setStyleSheet(sheet.arg(QLatin1String(names[type])));
    emit signalSetViewerShowType(type);
}

void MainWidget::on_pb_fold_setting_clicked(bool checked)
{
    sideBars->foldCamera(checked);
}

void MainWidget::on_pb_fold_dvs_setting_clicked(bool checked)
{
    sideBars->foldDvs(checked);
}

void MainWidget::on_pb_fold_aps_setting_clicked(bool checked)
{
    sideBars->foldAps(checked);
}

void MainWidget::on_pb_fold_general_setting_clicked()
{
    MenuActions::changeGeneralSettings(this);
    ui->pb_fold_general_setting->setChecked(false);
}

void MainWidget::on_pb_viewer_setting_clicked(bool checked)
{
    if (!checked)
        return;
    menus->runViewerSettingMenu(ui->pb_viewer_setting);
    ui->pb_viewer_setting->setChecked(false);
}

void MainWidget::slotStartEndPointEditable(bool en)
{
    timeSlider->setHandleMode(en ? 3 : 1);
    timeSlider->update();
}

void MainWidget::on_pb_win_min_clicked()
{
    showMinimized();
}

void MainWidget::on_pb_win_close_clicked()
{
    close();
}

void MainWidget::on_pb_win_max_clicked()
{
    const bool maximize = !windowState().testFlag(Qt::WindowMaximized);
    if (maximize)
        showMaximized();
    else
        showNormal();
    ui->widget_title_bar->setStyleSheet(
        styleSheetFrom(maximize ? QStringLiteral(":/windowbar/titlebar_maximized.css")
                                : QStringLiteral(":/windowbar/titlebar_normal.css")));
}

void MainWidget::maximizedChanged(bool max)
{
    ui->pb_win_max->setProperty("type", max ? QStringLiteral("restore") : QStringLiteral("maxsize"));
}

void MainWidget::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Space && !event->isAutoRepeat())
        on_pb_play_clicked();
    if (event->key() == Qt::Key_Left)
        on_pb_prv_clicked();
    if (event->key() == Qt::Key_Right)
        on_pb_next_clicked();
}

void MainWidget::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        ui->retranslateUi(this);
}

void MainWidget::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    // The origin of the available area is left out on purpose. A window that fills the screen has its place
    // already: moved, it would no longer cover it.
    const QScreen* const screen = QGuiApplication::primaryScreen();
    if (screen && !isMaximized() && !isFullScreen()) {
        const QSize available = screen->availableSize();
        move(available.width() / 2 - width() / 2, available.height() / 2 - height() / 2);
    }
}
