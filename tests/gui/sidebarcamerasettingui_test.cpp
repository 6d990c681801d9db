#include "settings/sidebarcamerasettingui.h"

#include "settings/settingdisplayitem.h"
#include "settings/settingitembox.h"
#include "tests/gui/settingsfixture.h"
#include "widgets/kvcombobox.h"

#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>

using namespace Qt::Literals::StringLiterals;

TEST(SidebarCameraSettingUI, HasAFoldedDisplaySectionFromTheBeginning)
{
    const SidebarCameraSettingUI panel;
    EXPECT_EQ(child<QLabel>(panel, "lb_setting_ui").text(), u"Camera Setting"_s);
    ASSERT_EQ(panel.findChildren<SettingItemBox*>().size(), 1);
    EXPECT_EQ(child<QLabel>(panel, "lb_setting_box_title_text").text(), u"Display"_s);
    EXPECT_TRUE(child<QPushButton>(panel, "pb_fold").isChecked());
    EXPECT_TRUE(child(panel, "widget_container").isHidden());
}

TEST(SidebarCameraSettingUI, PassesOnWhatTheItemSends)
{
    SidebarCameraSettingUI panel;
    std::vector<uint64_t> times;
    std::vector<uint32_t> rates;
    QObject::connect(&panel, &SidebarCameraSettingUI::signalCumulativeTimeChanged,
                     [&](uint64_t microseconds) { times.push_back(microseconds); });
    QObject::connect(&panel, &SidebarCameraSettingUI::signalFpsChanged,
                     [&](uint32_t framesPerSecond) { rates.push_back(framesPerSecond); });
    child<KvComboBox>(panel, "widget_combobox_accumulation_time").setCurrentIndex(1);
    child<KvComboBox>(panel, "widget_combobox_frame_rate").setCurrentIndex(2);
    EXPECT_EQ(times, std::vector<uint64_t>{100000});
    EXPECT_EQ(rates, std::vector<uint32_t>{150});
}

TEST(SidebarCameraSettingUI, SwitchesTheSpeedOffAndOn)
{
    SidebarCameraSettingUI panel;
    panel.setSlowRateEnabled(false);
    EXPECT_FALSE(child(panel, "widget_combobox_frame_rate").isEnabled());
    panel.setSlowRateEnabled(true);
    EXPECT_TRUE(child(panel, "widget_combobox_frame_rate").isEnabled());
}

TEST(SidebarCameraSettingUI, BuildingTheSectionAgainReplacesIt)
{
    SidebarCameraSettingUI panel;
    const QPointer<SettingItemBox> before = panel.findChild<SettingItemBox*>();
    panel.setDisplayUI();
    EXPECT_TRUE(before.isNull());
    EXPECT_EQ(panel.findChildren<SettingDisplayItem*>().size(), 1);
    panel.setSlowRateEnabled(false);
    EXPECT_FALSE(child(panel, "widget_combobox_frame_rate").isEnabled());
}
