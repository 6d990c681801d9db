#include "mainwindow/mainwidget.h"
#include "playback/kvfusioncameradataprocessor.h"

#include <QMetaMethod>
#include <QSignalSpy>
#include <gtest/gtest.h>

namespace {

/// The signals or slots that a class declares, in their order, without the ones that only leave out defaults.
QStringList declared(const QMetaObject& type, QMetaMethod::MethodType kind)
{
    QStringList signatures;
    for (int i = type.methodOffset(); i < type.methodCount(); ++i) {
        const QMetaMethod method = type.method(i);
        if (method.methodType() == kind && !(method.attributes() & QMetaMethod::Cloned))
            signatures << QString::fromLatin1(method.methodSignature());
    }
    return signatures;
}

QStringList list(std::initializer_list<const char*> signatures)
{
    QStringList texts;
    for (const char* const signature : signatures)
        texts << QString::fromLatin1(QMetaObject::normalizedSignature(signature));
    return texts;
}

} // namespace

TEST(MainWindowInterface, TheWindowDeclaresItsSignalsInOrder)
{
    EXPECT_EQ(declared(MainWidget::staticMetaObject, QMetaMethod::Signal),
              list({
                  "triggerEventsToShow()",
                  "triggerShowPixmap(QPixmap*)",
                  "resetShowCameraFormTitle(bool)",
                  "toShowCameraSerial(QString)",
                  "toShowCameraTimestamp(uint64_t)",
                  "setShowCameraLiveUI(bool)",
                  "signalSetViewerShowType(korvane::STREAM_TYPE)",
                  "signalFusionFilePlayControl(bool)",
                  "signalShowLeftBottomTips(QString,KvMessageType,QString)",
              }));
}

TEST(MainWindowInterface, TheWindowDeclaresItsSlotsInOrder)
{
    EXPECT_EQ(declared(MainWidget::staticMetaObject, QMetaMethod::Slot),
              list({
                  "showCameraPlayingUI(bool)",
                  "on_pb_record_clicked()",
                  "on_pb_prv_clicked()",
                  "on_pb_play_clicked()",
                  "on_pb_stop_clicked()",
                  "on_pb_win_min_clicked()",
                  "on_pb_win_close_clicked()",
                  "openActionSlot(QAction*)",
                  "slotOpenRecording()",
                  "slotSaveAs()",
                  "slotCutRecording()",
                  "slotOpenCamera()",
                  "on_pb_loop_clicked()",
                  "on_pb_next_clicked()",
                  "onSliderTimeTrackClick(int)",
                  "onSliderTimeMove(int)",
                  "setShowTitleInfo(bool)",
                  "showCameraSerial(QString)",
                  "showTimeStamp(uint64_t)",
                  "on_pb_win_max_clicked()",
                  "maximizedChanged(bool)",
                  "on_pb_fold_setting_clicked(bool)",
                  "on_pb_viewer_setting_clicked(bool)",
                  "slotStartEndPointEditable(bool)",
                  "on_pb_fold_general_setting_clicked()",
                  "on_pb_fold_dvs_setting_clicked(bool)",
                  "on_pb_fold_aps_setting_clicked(bool)",
                  "on_pb_viewer_type_clicked()",
                  "slotShowLeftBottomTips(QString,KvMessageType,QString)",
                  "getEventsToShow()",
                  "getEventsToShow(QPixmap*)",
                  "slotSetSliderStartTime(uint64_t)",
                  "slotSetSliderEndTime(uint64_t)",
                  "slotShowFilePlayProgress(uint64_t,uint64_t)",
              }));
}

TEST(MainWindowInterface, OnlyTheSlotsThatOthersCallArePublic)
{
    QStringList open;
    const QMetaObject& type = MainWidget::staticMetaObject;
    for (int i = type.methodOffset(); i < type.methodCount(); ++i) {
        const QMetaMethod method = type.method(i);
        if (method.methodType() == QMetaMethod::Slot && method.access() == QMetaMethod::Public
            && !(method.attributes() & QMetaMethod::Cloned))
            open << QString::fromLatin1(method.name());
    }
    EXPECT_EQ(open,
              list({"slotShowLeftBottomTips", "getEventsToShow", "getEventsToShow", "slotSetSliderStartTime",
                    "slotSetSliderEndTime", "slotShowFilePlayProgress"}));
}

TEST(MainWindowInterface, TheViewerTypeTravelsOverAConnectionMadeByName)
{
    KvFusionCameraDataProcessor engine;
    MainWidget window;
    // Queued, it needs the argument's type by name as well.
    ASSERT_TRUE(QObject::connect(&window, SIGNAL(signalSetViewerShowType(korvane::STREAM_TYPE)), &engine,
                                 SLOT(slotSetViewerType(korvane::STREAM_TYPE)), Qt::QueuedConnection));
    EXPECT_TRUE(QMetaType::fromName("korvane::STREAM_TYPE").isValid());
    EXPECT_TRUE(QMetaType::fromName("uint64_t").isValid());
    // The view of the events alone is drawn over white at once, whatever camera there is.
    QSignalSpy images(&engine, &KvFusionCameraDataProcessor::signalFusionImage);
    emit window.signalSetViewerShowType(korvane::STREAM_DVS);
    engine.onApsFrame(korvane::ApsFrame());
    EXPECT_EQ(images.count(), 0) << "the fusion view without a camera";
    QCoreApplication::processEvents();
    engine.onApsFrame(korvane::ApsFrame());
    EXPECT_EQ(images.count(), 1) << "the view of the events";
}
