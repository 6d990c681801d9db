#include "mainwindow/sidebars.h"

#include "settings/settingitembox.h"
#include "settings/sidebarapssettingui.h"
#include "settings/sidebarcamerasettingui.h"
#include "settings/sidebardvssettingui.h"
#include "tests/gui/livesessionfixture.h"
#include "tests/gui/mainwindowfixture.h"
#include "tests/support/scriptedfusioncamera.h"
#include "tests/support/scriptedtool.h"

#include <QBoxLayout>
#include <QLabel>
#include <QSplitter>
#include <gtest/gtest.h>

#include <optional>

using namespace Qt::Literals::StringLiterals;

namespace {

/// A tool without parameters that says when it is asked for its table.
class EmptyTool : public korvane::CameraTool
{
public:
    EmptyTool(std::string toolName, ScriptedLog& callLog) : name(std::move(toolName)), log(callLog) {}

    void getAllParameterInfo(std::map<std::string, korvane::BasicParameterInfo>&) override
    {
        log.add("table of " + name);
    }
    bool getEnumParameterInfo(std::string, korvane::EnumParameterInfo&) override { return false; }
    bool getBoolParameterInfo(std::string, korvane::BoolParameterInfo&) override { return false; }
    bool getFloatParameterInfo(std::string, korvane::FloatParameterInfo&) override { return false; }
    bool getIntParameterInfo(std::string, korvane::IntParameterInfo&) override { return false; }
    bool getBoolParameter(std::string, bool&) override { return false; }
    bool getIntParameter(std::string, int&) override { return false; }
    bool setEnumParameter(std::string, const std::string&) override { return false; }
    bool setBoolParameter(std::string, const bool&) override { return false; }
    bool setFloatParameter(std::string, const float&) override { return false; }
    bool setIntParameter(std::string, const int&) override { return false; }

private:
    const std::string name;
    ScriptedLog& log;
};

constexpr std::pair<korvane::ToolType, const char*> dvsTools[] = {
    {korvane::ToolType::Biases, "0"},           {korvane::ToolType::TriggerIn, "1"},
    {korvane::ToolType::AntiFlicker, "3"},      {korvane::ToolType::EventRateControl, "5"},
    {korvane::ToolType::EventTrailFilter, "4"}, {korvane::ToolType::Roi, "6"},
};

/// Offers one scripted fusion camera, F1, once told to.
class FusionBackend : public korvane::Backend
{
public:
    explicit FusionBackend(ScriptedLog& callLog)
        : log(callLog), apsTool(std::make_shared<EmptyTool>("7", callLog))
    {
    }

    void offer() { offered = true; }
    /// What the cameras opened from then on tell about their intensity sensor.
    void setApsTool(std::shared_ptr<korvane::CameraTool> tool) { apsTool = std::move(tool); }
    std::string name() const override { return "scripted fusion"; }
    std::vector<korvane::CameraDescription> cameraDescriptions() override
    {
        korvane::CameraDescription description;
        description.serial = "F1";
        description.product = "Pellix";
        return offered ? std::vector{description} : std::vector<korvane::CameraDescription>();
    }
    std::shared_ptr<korvane::FusionCamera> openFusionCamera(const std::string& serial) override
    {
        if (!offered || serial != "F1")
            return nullptr;
        auto camera = std::make_shared<ScriptedFusionCamera>(serial, log);
        for (const auto& [type, name] : dvsTools)
            camera->addTool(type, std::make_shared<EmptyTool>(name, log));
        camera->addTool(korvane::ToolType::Aps, apsTool);
        return camera;
    }

private:
    ScriptedLog& log;
    std::shared_ptr<korvane::CameraTool> apsTool;
    bool offered = false;
};

/// The pane as the window has it, and a session with scripted cameras.
class SideBarsTest : public LiveSessionTest
{
protected:
    void SetUp() override
    {
        LiveSessionTest::SetUp();
        for (QPushButton* const button : {&cameraButton, &dvsButton, &apsButton})
            button->setCheckable(true);
        cameraButton.setChecked(true);
        strip.setFixedWidth(40);
        layout.addWidget(&strip);
        layout.addLayout(panels);
        bars.emplace(SideBars::Pane{&frame, &strip, panels, &cameraButton, &dvsButton, &apsButton}, *session,
                     timing);
        QObject::connect(session.get(), &LiveSession::toolsChanged, &*bars, &SideBars::cameraChanged);
        backend->onOpen = [this](ScriptedCamera& camera) {
            for (const auto& [type, name] : dvsTools)
                camera.addTool(type, std::make_shared<EmptyTool>(name, log));
            return true;
        };
    }
    SideBarsTest() { korvane::registerBackend(fusionBackend); }
    ~SideBarsTest() override
    {
        bars.reset();
        korvane::unregisterBackend(fusionBackend);
    }
    SidebarCameraSettingUI& cameraPanel() { return *frame.findChild<SidebarCameraSettingUI*>(); }
    Lines tables()
    {
        Lines asked;
        for (const std::string& line : log.lines()) {
            if (line.starts_with("table of "))
                asked.push_back(line);
        }
        return asked;
    }

    std::shared_ptr<FusionBackend> fusionBackend = std::make_shared<FusionBackend>(log);
    FusionBackend& fusion = *fusionBackend;
    QFrame frame;
    QHBoxLayout layout{&frame};
    QWidget strip;
    QVBoxLayout* panels = new QVBoxLayout; ///< layout's
    QPushButton cameraButton;
    QPushButton dvsButton;
    QPushButton apsButton;
    std::optional<SideBars> bars;
};

/// The same in the window.
class FoldingTest : public MainWindowTest
{
protected:
    bool shown(const char* panel) const
    {
        for (const QWidget* const one : find("frame_setting").findChildren<QWidget*>()) {
            if (one->metaObject()->className() == QByteArray(panel))
                return one->isVisible();
        }
        throw std::runtime_error(panel);
    }
    /// Fails unless exactly one panel is shown and one button checked, or none of both.
    void expectOnly(const char* panel, const char* checked)
    {
        for (const char* const one : {"SidebarCameraSettingUI", "SidebarDvsSettingUI", "SidebarApsSettingUI"})
            EXPECT_EQ(shown(one), panel == QByteArray(one)) << one;
        for (const char* const one : {"pb_fold_setting", "pb_fold_dvs_setting", "pb_fold_aps_setting"})
            EXPECT_EQ(button(one).isChecked(), checked == QByteArray(one)) << one;
        EXPECT_FALSE(button("pb_fold_general_setting").isChecked());
    }
};

constexpr const char* cameraPanelName = "SidebarCameraSettingUI";
constexpr const char* dvsPanelName = "SidebarDvsSettingUI";
constexpr const char* apsPanelName = "SidebarApsSettingUI";

} // namespace

TEST_F(FoldingTest, ThePanelsStandInTheirOrderAndTheCameraPanelIsShown)
{
    const auto* const panels = window->findChild<QVBoxLayout*>(u"layout_sidebar_setting"_s);
    ASSERT_NE(panels, nullptr);
    ASSERT_EQ(panels->count(), 3);
    const char* const order[] = {cameraPanelName, apsPanelName, dvsPanelName};
    for (int i = 0; i < 3; ++i)
        EXPECT_STREQ(panels->itemAt(i)->widget()->metaObject()->className(), order[i]);
    expectOnly(cameraPanelName, "pb_fold_setting");
    EXPECT_EQ(find("frame_setting").maximumWidth(), 500);
    EXPECT_GE(find("frame_setting").width(), 300);
}

TEST_F(FoldingTest, CheckingAButtonPutsItsPanelInPlaceOfTheOthers)
{
    const std::pair<const char*, const char*> pairs[]
        = {{"pb_fold_dvs_setting", dvsPanelName}, {"pb_fold_aps_setting", apsPanelName},
           {"pb_fold_setting", cameraPanelName},  {"pb_fold_aps_setting", apsPanelName},
           {"pb_fold_dvs_setting", dvsPanelName}, {"pb_fold_setting", cameraPanelName}};
    for (const auto& [name, panel] : pairs) {
        click(name);
        expectOnly(panel, name);
        EXPECT_EQ(find("frame_setting").maximumWidth(), 500) << name;
    }
    // Without a camera the panel of the intensity sensor has nothing below its heading.
    const auto* const aps = window->findChild<SidebarApsSettingUI*>();
    ASSERT_NE(aps, nullptr);
    EXPECT_EQ(aps->findChild<QLabel*>(u"lb_setting_ui"_s)->text(), u"APS Setting"_s);
    EXPECT_TRUE(aps->findChildren<SettingItemBox*>().isEmpty());
}

TEST_F(FoldingTest, UncheckingTheButtonLeavesOnlyTheStrip)
{
    for (const char* const name : {"pb_fold_setting", "pb_fold_dvs_setting", "pb_fold_aps_setting"}) {
        if (!button(name).isChecked())
            click(name);
        click(name);
        expectOnly("none", "none");
        EXPECT_EQ(find("frame_setting").maximumWidth(), 40) << name;
        EXPECT_TRUE(QTest::qWaitFor([this] { return find("frame_setting").width() == 40; })) << name;
        EXPECT_TRUE(find("widget_side_bar").isVisible());
        click(name);
        EXPECT_TRUE(QTest::qWaitFor([this] { return find("frame_setting").width() >= 300; })) << name;
    }
}

TEST_F(FoldingTest, ThePictureFollowsThePanesAndTheSplitter)
{
    QWidget& image = find("widget_show_image");
    const int before = image.width();
    click("pb_fold_setting");
    EXPECT_TRUE(QTest::qWaitFor([&] { return image.width() > before + 200; }));
    click("pb_fold_setting");
    EXPECT_TRUE(QTest::qWaitFor([&] { return image.width() == before; }));
    find<QSplitter>("splitter").setSizes({500, 700});
    EXPECT_TRUE(QTest::qWaitFor([&] { return find("frame_setting").width() == 500; }));
    EXPECT_LT(image.width(), before);
    // A pane that was folded comes back as wide as it was.
    click("pb_fold_setting");
    EXPECT_TRUE(QTest::qWaitFor([this] { return find("frame_setting").width() == 40; }));
    click("pb_fold_dvs_setting");
    EXPECT_TRUE(QTest::qWaitFor([this] { return find("frame_setting").width() == 500; }));
}

TEST_F(SideBarsTest, AnOpenedCameraFillsTheSectionsInTheirOrder)
{
    backend->offer("S1", "Halvora");
    ASSERT_TRUE(session->openCameraBySerial(u"S1"_s));
    EXPECT_EQ(tables(),
              Lines({"table of 0", "table of 1", "table of 3", "table of 5", "table of 4", "table of 6"}));
}

TEST_F(SideBarsTest, AFusionCameraFillsTheApsPanelAfterTheOthers)
{
    fusion.offer();
    ASSERT_TRUE(session->openCameraBySerial(u"F1"_s));
    EXPECT_EQ(tables(),
              Lines({"table of 0", "table of 1", "table of 3", "table of 5", "table of 4", "table of 6",
                     "table of 7"}));
    // A DVS-only camera leaves that panel alone.
    log.clear();
    const CapturedMessages messages;
    backend->offer("S1", "Halvora");
    ASSERT_TRUE(session->openCameraBySerial(u"S1"_s));
    EXPECT_EQ(tables(),
              Lines({"table of 0", "table of 1", "table of 3", "table of 5", "table of 4", "table of 6"}));
    EXPECT_FALSE(messages.debug().contains(u"camera aps infos is null ."_s));
}

TEST_F(SideBarsTest, ACameraThatCannotBeOpenedLeavesNoSections)
{
    backend->offer("S1", "Halvora");
    backend->onOpen = [](ScriptedCamera&) { return false; };
    const CapturedMessages messages;
    ASSERT_TRUE(session->openCameraBySerial(u"S1"_s));
    EXPECT_EQ(messages.debug().count(u"camera device is null ."_s), 5);
    EXPECT_EQ(messages.debug().count(u"Camera tool is null ."_s), 1);
}

TEST_F(SideBarsTest, ThePanelsLetGoOfTheToolsWhenTheyEnd)
{
    std::weak_ptr<korvane::CameraTool> tool;
    backend->onOpen = [&](ScriptedCamera& camera) {
        auto made = std::make_shared<EmptyTool>("0", log);
        tool = made;
        camera.addTool(korvane::ToolType::Biases, made);
        return true;
    };
    backend->offer("S1", "Halvora");
    ASSERT_TRUE(session->openCameraBySerial(u"S1"_s));
    session->release();
    bars.reset();
    EXPECT_TRUE(tool.expired());
}

TEST_F(SideBarsTest, ARecordingEmptiesThePanels)
{
    openCamera();
    auto* const frameRate = frame.findChild<QWidget*>(u"widget_combobox_frame_rate"_s);
    ASSERT_NE(frameRate, nullptr);
    frameRate->setEnabled(false);
    const CapturedMessages messages;
    bars->recordingOpened();
    EXPECT_TRUE(frameRate->isEnabled()) << "a recording is played at any rate";
    EXPECT_EQ(
        messages.debug(),
        QStringList({u"camera device is null ."_s, u"Camera tool is null ."_s, u"camera device is null ."_s,
                     u"camera device is null ."_s, u"camera device is null ."_s, u"camera device is null ."_s,
                     u"camera device is null ."_s}));
}

TEST_F(SideBarsTest, ARecordingEmptiesTheApsPanelAndFreesTheFrameRateUntilTheNextCamera)
{
    const auto tool = std::make_shared<ScriptedTool>();
    tool->addInteger("exposure", 1, 100, 10, "ms");
    fusion.setApsTool(tool);
    fusion.offer();
    const auto* const aps = frame.findChild<SidebarApsSettingUI*>();
    const auto* const frameRate = frame.findChild<QWidget*>(u"widget_combobox_frame_rate"_s);
    ASSERT_NE(aps, nullptr);
    ASSERT_NE(frameRate, nullptr);
    const auto sections = [aps] { return aps->findChildren<SettingItemBox*>().size(); };
    EXPECT_EQ(sections(), 0);
    EXPECT_TRUE(frameRate->isEnabled());
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(session->openCameraBySerial(u"F1"_s));
        EXPECT_EQ(sections(), 1) << round;
        EXPECT_FALSE(frameRate->isEnabled()) << "a camera sets its own pace, " << round;
        bars->recordingOpened();
        EXPECT_EQ(sections(), 0) << round;
        EXPECT_TRUE(frameRate->isEnabled()) << "a recording is played at any rate, " << round;
    }
}

TEST_F(SideBarsTest, AnAccumulationTimeReachesTheTimingAndTheOpenCamera)
{
    emit cameraPanel().signalCumulativeTimeChanged(10'000);
    EXPECT_EQ(timing.accumulationTime, 10'000U);
    openCamera();
    const CapturedMessages messages;
    emit cameraPanel().signalCumulativeTimeChanged(100'000);
    EXPECT_EQ(timing.accumulationTime, 100'000U);
    EXPECT_EQ(log.lines(), Lines({"S1 setBatchTime 100000"}));
    EXPECT_EQ(messages.debug(), QStringList({u"set dvs time interval: 100000"_s}));
}

TEST_F(SideBarsTest, AFrameRateReachesTheTiming)
{
    emit cameraPanel().signalFpsChanged(150);
    EXPECT_EQ(timing.frameRate, 150);
    EXPECT_EQ(timing.frameStep, 6666U);
    emit cameraPanel().signalFpsChanged(30'000);
    EXPECT_EQ(timing.frameRate, 30'000);
    EXPECT_EQ(timing.frameStep, 33U);
}

TEST_F(SideBarsTest, AFrameRateOfZeroIsHeldAtTheLastOneAndLogged)
{
    emit cameraPanel().signalFpsChanged(60);
    const CapturedMessages messages;
    for (const uint32_t impossible : {0U, 40'000U}) {
        emit cameraPanel().signalFpsChanged(impossible);
        EXPECT_EQ(timing.frameRate, 60);
        EXPECT_EQ(timing.frameStep, 16'666U);
    }
    EXPECT_EQ(messages.debug(),
              QStringList({u"Frame rate 0 is not possible, it stays at 60"_s,
                           u"Frame rate 40000 is not possible, it stays at 60"_s}));
}
