#include "settings/sidebarapssettingui.h"

#include "settings/settingbasewithlineedit.h"
#include "settings/settingbasewithswitchbutton.h"
#include "tests/gui/settingsfixture.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/scriptedtool.h"
#include "widgets/kvtooltip.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>

using namespace Qt::Literals::StringLiterals;

namespace {

struct SidebarApsSettingUITest : testing::Test
{
    SidebarApsSettingUITest()
    {
        tool->addBoolean("auto_exposure", true);
        tool->addInteger("exposure_time", 10, 33000, 10000, "us");
        tool->addFloat("gamma", 0.5F, 2.9F, 1.7F);
        tool->addEnumeration("mode", {"a", "b"});
        window.put(panel);
    }

    const std::shared_ptr<ScriptedTool> tool = std::make_shared<ScriptedTool>();
    SettingsWindow window;
    SidebarApsSettingUI panel;
};

} // namespace

TEST_F(SidebarApsSettingUITest, ShowsSwitchesAndIntegersAsReported)
{
    panel.setApsToolUI(tool);
    EXPECT_EQ(child<QLabel>(panel, "lb_setting_ui").text(), u"APS Setting"_s);
    EXPECT_EQ(child<QLabel>(panel, "lb_setting_box_title_text").text(), u"APS"_s);
    EXPECT_TRUE(child<QPushButton>(panel, "pb_fold").isChecked());
    const auto& item = *panel.findChild<SettingBaseWithLineEdit*>();
    EXPECT_EQ(panel.findChildren<SettingBaseWithLineEdit*>().size(), 1);
    EXPECT_EQ(child<QLineEdit>(item, "le_kv_line_edit").text(), u"10000"_s);
    EXPECT_EQ(child<QSlider>(item, "horizontalSlider").maximum(), 33000);
    EXPECT_EQ(child<QLabel>(item, "lb_unit").text(), u"(us)"_s);
    EXPECT_EQ(item.findChild<KvToolTip*>()->text(), u"What exposure_time does."_s);
    const auto& onOff = *panel.findChild<SettingBaseWithSwitchButton*>();
    EXPECT_TRUE(child<QPushButton>(onOff, "switchButton").isChecked());
    EXPECT_EQ(onOff.findChild<KvToolTip*>()->text(), u"What auto_exposure does."_s);
    EXPECT_TRUE(tool->takeCalls().empty()) << "filling writes nothing";
}

TEST_F(SidebarApsSettingUITest, WritesWhatIsChanged)
{
    panel.setApsToolUI(tool);
    panel.findChild<SettingItemBox*>()->setFold(false);
    QTest::mouseClick(&child(panel, "switchButton"), Qt::LeftButton);
    QTest::mouseClick(&child(panel, "pb_add_item_value"), Qt::LeftButton);
    EXPECT_EQ(tool->takeCalls(),
              (std::vector<std::string>{"bool auto_exposure false", "int exposure_time 10001"}));
}

TEST_F(SidebarApsSettingUITest, WithoutAToolTheSectionGoesAndTheToolStays)
{
    panel.setApsToolUI(tool);
    const CapturedMessages messages;
    panel.clearApsToolUI();
    EXPECT_EQ(messages.debug(), QStringList{u"camera device is null ."_s});
    EXPECT_TRUE(panel.findChildren<SettingItemBox*>().isEmpty());
    EXPECT_EQ(tool.use_count(), 2);
}

TEST_F(SidebarApsSettingUITest, AnEmptyToolLeavesNoSection)
{
    panel.setApsToolUI(tool);
    const CapturedMessages messages;
    panel.setApsToolUI(std::make_shared<ScriptedTool>());
    EXPECT_EQ(messages.debug(), QStringList{u"camera aps infos is null ."_s});
    EXPECT_TRUE(panel.findChildren<SettingItemBox*>().isEmpty());
    EXPECT_EQ(tool.use_count(), 1);
}

TEST_F(SidebarApsSettingUITest, OtherKindsGiveAnEmptyBoxWithItsTitle)
{
    const auto other = std::make_shared<ScriptedTool>();
    other->addFloat("gamma", 0, 1, 0);
    other->addEnumeration("mode", {"a"});
    other->addBare("strange", 3);
    other->addBare("untold_integer", 0);
    other->addBare("untold_boolean", 2);
    panel.setApsToolUI(other);
    ASSERT_EQ(panel.findChildren<SettingItemBox*>().size(), 1);
    EXPECT_EQ(child<QLabel>(panel, "lb_setting_box_title_text").text(), u"APS"_s);
    EXPECT_EQ(child(panel, "widget_container").findChildren<QWidget*>().size(), 0);
}
