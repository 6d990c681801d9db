#include "settings/settingbasewithlineedit.h"
#include "settings/settingitembox.h"
#include "settings/sidebardvssettingui.h"
#include "tests/e2e/recordingstory.h"
#include "tests/e2e/watchedcameras.h"
#include "tests/support/capturedmessages.h"
#include "widgets/kvslider.h"

#include <QLineEdit>
#include <QScrollArea>

// What a user sees when the cable of a camera is pulled, whatever the camera is doing then. Each story runs
// with a camera of events alone and with a fusion camera.

using namespace Qt::Literals::StringLiterals;

namespace {

/// The simulated cameras, of which one may be pulled in the moment it is opened.
class PullableCameras : public WatchedCameras
{
public:
    std::shared_ptr<korvane::DvsCamera> openCamera(const std::string& serial) override
    {
        return afterOpening(serial, WatchedCameras::openCamera(serial));
    }
    std::shared_ptr<korvane::FusionCamera> openFusionCamera(const std::string& serial) override
    {
        return afterOpening(serial, WatchedCameras::openFusionCamera(serial));
    }

    bool pullOnceOpen = false;

private:
    template <typename Camera>
    std::shared_ptr<Camera> afterOpening(const std::string& serial, std::shared_ptr<Camera> camera)
    {
        if (pullOnceOpen)
            pull(serial);
        return camera;
    }
};

struct Kind
{
    const char* product;
    const char* serial;
    const char* otherSerial;
};

class PulledCameraStory : public RecordingStory, public testing::WithParamInterface<Kind>
{
protected:
    PulledCameraStory() { cameras = pullable; }

    int rowOf(const std::string& serial) const
    {
        int row = 0;
        for (const auto& camera : cameras->cameraDescriptions()) {
            if (camera.serial == serial)
                return row;
            ++row;
        }
        return -1;
    }
    void pull() const { cameras->pull(GetParam().serial); }
    void openIt(const std::string& which = GetParam().serial)
    {
        openFromTheList(rowOf(which));
        EXPECT_EQ(text("label_show_camera_info"), QString::fromStdString(which));
    }
    void openAndSee()
    {
        openIt();
        ASSERT_TRUE(wait([this] {
            return button("pb_play")->isChecked() && !text("label_show_timestamp_info").isEmpty();
        }));
    }
    bool playIsUp() const { return !button("pb_play")->isChecked(); }
    bool recordIsUp() const { return !button("pb_record")->isChecked(); }
    static int toldLost(const CapturedMessages& messages)
    {
        return static_cast<int>(messages.debug().count(u"Camera connection lost."_s));
    }
    /// No button goes down, nothing is recorded, nothing waits.
    void expectNothingCanBeDoneWithIt()
    {
        const CapturedMessages messages;
        const auto before = files();
        click("pb_play");
        EXPECT_TRUE(playIsUp());
        click("pb_record");
        EXPECT_TRUE(recordIsUp());
        EXPECT_EQ(messages.debug(),
                  (QStringList{u"Please connect camera first."_s, u"Please connect camera first."_s}));
        EXPECT_EQ(files(), before);
        EXPECT_EQ(text("lb_recoding_time"), QString());
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    }
    /// Plugged in again it is listed, opened, seen and recorded as ever.
    void expectItWorksOncePluggedInAgain()
    {
        EXPECT_EQ(rowOf(GetParam().serial), -1) << "it is not listed any more";
        cameras->plug(GetParam().serial);
        folder.removeRecursively();
        openAndSee();
        const QString shown = text("label_show_timestamp_info");
        ASSERT_TRUE(wait([this, shown] { return text("label_show_timestamp_info") > shown; }));
    }
    void expectOneWholeRecording()
    {
        ASSERT_EQ(files().size(), 1);
        const auto kept = eventsOfRecording(folder.filePath(files().constFirst()));
        EXPECT_GE(kept.size(), 1000u);
        EXPECT_TRUE(pullable->delivered->holdInOneRow(kept));
    }
    void startRecordingIt()
    {
        pullable->delivered->clear();
        click("pb_record");
        ASSERT_FALSE(recordIsUp());
        ASSERT_TRUE(wait([this] {
            return !files().isEmpty() && QFileInfo(folder.filePath(files().constFirst())).size() > 20'000;
        }));
    }

    std::shared_ptr<PullableCameras> pullable = std::make_shared<PullableCameras>();
};

} // namespace

TEST_P(PulledCameraStory, ListedAndPulledBeforeOpenIsPressedItIsToldInAToast)
{
    ScriptedPerson person([this](QWidget& modal) {
        auto* const list = modal.findChild<QListWidget*>(u"listWidget_cameras"_s);
        if (!list)
            return false;
        list->setCurrentRow(rowOf(GetParam().serial));
        pull();
        QTest::mouseClick(modal.findChild<QPushButton*>(u"pb_open"_s), Qt::LeftButton);
        return true;
    });
    button("pb_menu_device")->menu()->actions().constFirst()->trigger();
    ASSERT_TRUE(person.isDone());
    const QString told = u"Open camera: "_s + QString::fromLatin1(GetParam().serial) + u"failed."_s;
    EXPECT_TRUE(wait([&told] { return toasts() == QStringList{told}; })) << toasts().join(u'|').toStdString();
    EXPECT_EQ(text("label_show_camera_info"), QString());
    expectNothingCanBeDoneWithIt();
    expectItWorksOncePluggedInAgain();
}

TEST_P(PulledCameraStory, WhileItIsOpenedTheSpinnerGoesAndTheButtonStaysUp)
{
    pullable->pullOnceOpen = true;
    openIt();
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    EXPECT_TRUE(wait([this] { return playIsUp(); }));
    expectNothingCanBeDoneWithIt();
    pullable->pullOnceOpen = false;
    expectItWorksOncePluggedInAgain();
}

TEST_P(PulledCameraStory, WhileItRunsTheViewEndsAndKeepsItsPicture)
{
    openAndSee();
    ASSERT_TRUE(wait([this] { return !window->findChild<ShowImageForm*>()->shownPixmap().isNull(); }));
    {
        const CapturedMessages messages;
        pull();
        ASSERT_TRUE(wait([this] { return playIsUp(); }));
        EXPECT_EQ(toldLost(messages), 1);
    }
    EXPECT_FALSE(window->findChild<ShowImageForm*>()->shownPixmap().isNull());
    EXPECT_EQ(toasts(), QStringList());
    expectNothingCanBeDoneWithIt();
    expectItWorksOncePluggedInAgain();
}

TEST_P(PulledCameraStory, WhileItIsPausedTheNextPressFindsNone)
{
    openAndSee();
    click("pb_play");
    ASSERT_TRUE(playIsUp());
    pull();
    expectNothingCanBeDoneWithIt();
    EXPECT_EQ(toasts(), QStringList());
    expectItWorksOncePluggedInAgain();
}

TEST_P(PulledCameraStory, WhileItRunsAndRecordsBothButtonsComeUpAndTheFileIsWhole)
{
    openAndSee();
    startRecordingIt();
    const CapturedMessages messages;
    pull();
    ASSERT_TRUE(wait([this] { return playIsUp() && recordIsUp(); }));
    EXPECT_EQ(toldLost(messages), 1);
    EXPECT_EQ(text("lb_recoding_time"), QString());
    EXPECT_EQ(toasts(), QStringList{u"Save file success!"_s});
    expectOneWholeRecording();
}

TEST_P(PulledCameraStory, PausedWithRecordPressedTheButtonComesUpAndNoFileIsLeft)
{
    openAndSee();
    click("pb_play");
    click("pb_record");
    ASSERT_FALSE(recordIsUp());
    pull();
    ASSERT_TRUE(wait([this] { return recordIsUp(); }));
    EXPECT_EQ(text("lb_recoding_time"), QString());
    EXPECT_EQ(folder.entryList(QDir::Files), QStringList()) << "nothing came that could be recorded";
    expectNothingCanBeDoneWithIt();
    expectItWorksOncePluggedInAgain();
}

TEST_P(PulledCameraStory, PausedInTheMidstOfARecordingItIsWholeUpToThePause)
{
    openAndSee();
    startRecordingIt();
    click("pb_play");
    ASSERT_TRUE(playIsUp());
    EXPECT_FALSE(recordIsUp());
    pull();
    ASSERT_TRUE(wait([this] { return recordIsUp(); }));
    EXPECT_EQ(toasts(), QStringList{u"Save file success!"_s});
    expectOneWholeRecording();
    EXPECT_TRUE(pullable->delivered->endWith(eventsOfRecording(folder.filePath(files().constFirst()))));
}

TEST_P(PulledCameraStory, InTheMomentOfAStopBothButtonsComeUpAndTheFileIsWhole)
{
    for (const char* pressed : {"pb_play", "pb_record"}) {
        folder.removeRecursively();
        openAndSee();
        startRecordingIt();
        pull();
        click(pressed);
        ASSERT_TRUE(wait([this] { return playIsUp() && recordIsUp(); })) << pressed;
        EXPECT_EQ(text("lb_recoding_time"), QString());
        expectOneWholeRecording();
        expectNothingCanBeDoneWithIt();
        cameras->plug(GetParam().serial);
    }
}

TEST_P(PulledCameraStory, WhileAnotherIsChosenAndOpenedTheOtherRuns)
{
    openAndSee();
    startRecordingIt();
    ScriptedPerson person([this](QWidget& modal) {
        auto* const list = modal.findChild<QListWidget*>(u"listWidget_cameras"_s);
        if (!list)
            return false;
        list->setCurrentRow(rowOf(GetParam().otherSerial));
        pull();
        QTest::mouseClick(modal.findChild<QPushButton*>(u"pb_open"_s), Qt::LeftButton);
        return true;
    });
    button("pb_menu_device")->menu()->actions().constFirst()->trigger();
    ASSERT_TRUE(person.isDone());
    EXPECT_EQ(text("label_show_camera_info"), QString::fromLatin1(GetParam().otherSerial));
    EXPECT_TRUE(recordIsUp());
    EXPECT_FALSE(playIsUp());
    const QString shown = text("label_show_timestamp_info");
    ASSERT_TRUE(wait([this, shown] { return text("label_show_timestamp_info") != shown; }));
    EXPECT_FALSE(playIsUp()) << "the loss was the first one's";
    ASSERT_EQ(files().size(), 1);
    EXPECT_GE(eventsOfRecording(folder.filePath(files().constFirst())).size(), 1000u);
}

TEST_P(PulledCameraStory, WhileTheWindowClosesItsRecordingIsWhole)
{
    openAndSee();
    startRecordingIt();
    pull();
    click("pb_win_close");
    window.reset();
    expectOneWholeRecording();
}

TEST_P(PulledCameraStory, WhileABiasIsDraggedAndARegionTypedThePanelStaysAndNothingWaits)
{
    openAndSee();
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    click("pb_fold_dvs_setting");
    auto* const panel = window->findChild<SidebarDvsSettingUI*>();
    ASSERT_TRUE(panel->isVisible());
    const auto firstFieldOf = [panel](const QString& title) -> QLineEdit* {
        for (auto* const box : panel->findChildren<SettingItemBox*>()) {
            if (box->findChild<QLabel*>(u"lb_setting_box_title_text"_s)->text() != title)
                continue;
            QTest::mouseClick(box->findChild<QPushButton*>(u"pb_fold"_s), Qt::LeftButton);
            auto* const row = box->findChild<SettingBaseWithLineEdit*>();
            auto* const edit = row->findChild<QLineEdit*>(u"le_kv_line_edit"_s);
            panel->findChild<QScrollArea*>(u"scroll_area_setting"_s)->ensureWidgetVisible(edit);
            QCoreApplication::processEvents();
            return edit;
        }
        return nullptr;
    };
    QLineEdit* const bias = firstFieldOf(u"Biases"_s);
    ASSERT_NE(bias, nullptr);
    QTest::mouseClick(bias, Qt::LeftButton);
    KvSlider* slider = nullptr;
    ASSERT_TRUE(wait([panel, &slider] {
        for (auto* const one : panel->findChildren<KvSlider*>())
            slider = one->isVisible() ? one : slider;
        return slider != nullptr;
    }));
    const QPoint middle = slider->rect().center();
    QTest::mousePress(slider, Qt::LeftButton, {}, middle);
    QTest::mouseMove(slider, middle + QPoint(10, 0));
    pull();
    ASSERT_TRUE(wait([this] { return playIsUp(); })) << "the view ends under the mouse";
    QTest::mouseMove(slider, middle + QPoint(25, 0));
    QTest::mouseRelease(slider, Qt::LeftButton, {}, middle + QPoint(25, 0));
    EXPECT_FALSE(bias->text().isEmpty());
    QLineEdit* const region = firstFieldOf(u"ROI"_s);
    ASSERT_NE(region, nullptr);
    QTest::mouseClick(region, Qt::LeftButton);
    QTest::keySequence(region, QKeySequence::SelectAll);
    QTest::keyClicks(region, u"100"_s);
    QTest::keyClick(region, Qt::Key_Return);
    EXPECT_EQ(region->text(), u"100"_s);
    expectNothingCanBeDoneWithIt();
    // The next camera fills the panel anew.
    expectItWorksOncePluggedInAgain();
    EXPECT_EQ(panel->findChildren<SettingItemBox*>().size(), 6);
}

namespace {

/// A camera that opens and does not start.
class RefusingCameraStory : public PulledCameraStory
{
protected:
    RefusingCameraStory()
    {
        auto all = korvane::simulation::standardCameras();
        for (auto& one : all)
            one.failStart = true;
        cameras = std::make_shared<korvane::simulation::SimulatedBackend>(all);
    }
};

} // namespace

TEST_P(RefusingCameraStory, OpenedAndNotStartedItIsLostAsQuietly)
{
    const CapturedMessages messages;
    openIt();
    ASSERT_TRUE(
        wait([&messages] { return messages.debug().contains(u"Please check the camera connection."_s); }));
    EXPECT_TRUE(playIsUp());
    pull();
    click("pb_play");
    EXPECT_TRUE(playIsUp());
    click("pb_record");
    EXPECT_TRUE(recordIsUp());
    EXPECT_EQ(messages.debug().count(u"Please connect camera first."_s), 2);
    EXPECT_EQ(toasts(), QStringList());
    EXPECT_EQ(files(), QStringList());
}

INSTANTIATE_TEST_SUITE_P(Cameras, PulledCameraStory,
                         testing::Values(Kind{"QRT4", "QRT-000001", "PEL-000001"},
                                         Kind{"Pellix", "PEL-000001", "QRT-000001"}),
                         [](const auto& kind) { return std::string(kind.param.product); });

INSTANTIATE_TEST_SUITE_P(Cameras, RefusingCameraStory,
                         testing::Values(Kind{"QRT4", "QRT-000001", "PEL-000001"}),
                         [](const auto& kind) { return std::string(kind.param.product); });
