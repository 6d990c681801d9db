#include "settings/sidebardvssettingui.h"

#include "settings/settingbasewithcombobox.h"
#include "settings/settingbasewithlineedit.h"
#include "settings/settingbasewithswitchbutton.h"
#include "tests/gui/settingsfixture.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/scriptedtool.h"
#include "widgets/kvcombobox.h"
#include "widgets/kvcomboboxbase.h"
#include "widgets/kvlineeditbase.h"
#include "widgets/kvtooltip.h"

#include <QAbstractItemView>
#include <QLabel>
#include <QLineEdit>
#include <QMetaMethod>
#include <QPushButton>
#include <QSlider>

#include <climits>

using namespace Qt::Literals::StringLiterals;

namespace {

using Calls = std::vector<std::string>;
using Tool = std::shared_ptr<ScriptedTool>;
using Fill = void (SidebarDvsSettingUI::*)(std::shared_ptr<korvane::CameraTool>);

struct SidebarDvsSettingUITest : testing::Test
{
    SidebarDvsSettingUITest() { window.put(panel); }

    /// Fills one section and opens it.
    void fill(Fill operation)
    {
        (panel.*operation)(tool);
        EXPECT_EQ(tool->takeCalls(), Calls()) << "filling writes nothing";
        SettingItemBox* const box = panel.findChild<SettingItemBox*>();
        ASSERT_NE(box, nullptr);
        box->setFold(false);
        SettingsWindow::settle();
    }
    /// The names of the rows, from top to bottom.
    QStringList rows() const
    {
        QStringList names;
        for (const QLabel* label : fromTop<QLabel>(panel)) {
            if (label->objectName() == u"lb_set_item_name"_s || label->objectName() == u"lb_item_name"_s)
                names << label->text();
        }
        return names;
    }
    QStringList titles() const
    {
        QStringList texts;
        for (const QLabel* label : fromTop<QLabel>(panel)) {
            if (label->objectName() == u"lb_setting_box_title_text"_s)
                texts << label->text();
        }
        return texts;
    }
    template <typename Item>
    Item& row(int index)
    {
        return *fromTop<Item>(panel).at(index);
    }
    KvLineEditBase& field(int index)
    {
        return child<KvLineEditBase>(row<SettingBaseWithLineEdit>(index), "le_kv_line_edit");
    }
    void press(const QWidget& item, const char* button)
    {
        QTest::mouseClick(&child(item, button), Qt::LeftButton);
    }
    QColor border(int index)
    {
        const QImage image = field(index).grab().toImage();
        return image.pixelColor(image.width() / 2, 0);
    }
    /// One parameter of every kind.
    void addOneOfEach()
    {
        tool->addInteger("period", 1, 50, 7, "ms");
        tool->addFloat("frequency", 0.5F, 2.9F, 1.7F, "Hz");
        tool->addBoolean("enable", true);
        tool->addEnumeration("mode", {"stop", "pass"});
        tool->addBare("strange", 3);
        tool->addBare("stranger", 7);
    }

    const Tool tool = std::make_shared<ScriptedTool>();
    SettingsWindow window{320, 900};
    SidebarDvsSettingUI panel;
};

const QColor grey(0xAC, 0xAC, 0xAC);
const QColor red(0xFF, 0x60, 0x58);

} // namespace

TEST_F(SidebarDvsSettingUITest, IsEmptyUnderItsHeadingAtFirst)
{
    EXPECT_EQ(child<QLabel>(panel, "lb_setting_ui").text(), u"DVS Setting"_s);
    EXPECT_TRUE(panel.findChildren<SettingItemBox*>().isEmpty());
}

TEST_F(SidebarDvsSettingUITest, BiasesShowIntegersThatStartAtZeroAndWriteThem)
{
    tool->addInteger("bias_diff_on", -85, 140, 33, "%");
    tool->addInteger("bias_diff_off", -35, 190, 12);
    tool->addBoolean("enable", true);
    fill(&SidebarDvsSettingUI::setBiasesToolUI);
    EXPECT_EQ(titles(), QStringList{u"Biases"_s});
    EXPECT_EQ(rows(), (QStringList{u"Bias Diff Off"_s, u"Bias Diff On"_s}));
    EXPECT_EQ(field(0).text(), u"0"_s);
    EXPECT_EQ(field(1).text(), u"0"_s);
    const auto& on = row<SettingBaseWithLineEdit>(1);
    EXPECT_EQ(child<QSlider>(on, "horizontalSlider").minimum(), -85);
    EXPECT_EQ(child<QSlider>(on, "horizontalSlider").maximum(), 140);
    EXPECT_EQ(child<QLabel>(on, "lb_unit").text(), u"(%)"_s);
    EXPECT_EQ(on.findChild<KvToolTip*>()->text(), u"What bias_diff_on does."_s);
    press(on, "pb_add_item_value");
    press(on, "pb_sub_item_value");
    EXPECT_EQ(tool->takeCalls(), (Calls{"int bias_diff_on 1", "int bias_diff_on 0"}));
}

TEST_F(SidebarDvsSettingUITest, ABiasThatCannotBeZeroIsLeftEmptyAtItsLowerEnd)
{
    tool->addInteger("bias_fo", 5, 10, 7);
    fill(&SidebarDvsSettingUI::setBiasesToolUI);
    EXPECT_EQ(field(0).text(), QString());
    EXPECT_EQ(child<QSlider>(panel, "horizontalSlider").value(), 5);
}

TEST_F(SidebarDvsSettingUITest, TriggerInShowsSwitchesAsReported)
{
    addOneOfEach();
    tool->addBoolean("main", false);
    fill(&SidebarDvsSettingUI::setTriggerInToolUI);
    EXPECT_EQ(titles(), QStringList{u"Trigger In"_s});
    EXPECT_EQ(rows(), (QStringList{u"Enable"_s, u"Main"_s}));
    EXPECT_TRUE(child<QPushButton>(row<SettingBaseWithSwitchButton>(0), "switchButton").isChecked());
    EXPECT_FALSE(child<QPushButton>(row<SettingBaseWithSwitchButton>(1), "switchButton").isChecked());
    press(row<SettingBaseWithSwitchButton>(1), "switchButton");
    press(row<SettingBaseWithSwitchButton>(0), "switchButton");
    EXPECT_EQ(tool->takeCalls(), (Calls{"bool main true", "bool enable false"}));
}

TEST_F(SidebarDvsSettingUITest, AntiFlickerPutsSwitchesOnTopAndCombosSecond)
{
    addOneOfEach();
    tool->addBoolean("zoom", true);
    tool->addEnumeration("shape", {"round", "square"});
    fill(&SidebarDvsSettingUI::setAntiFlickerToolUI);
    EXPECT_EQ(titles(), QStringList{u"Anti Flicker"_s});
    // Met as enable, frequency, mode, period, shape, zoom.
    EXPECT_EQ(rows(),
              (QStringList{u"Zoom"_s, u"Enable"_s, u"Shape"_s, u"Mode"_s, u"Frequency"_s, u"Period"_s}));
    for (const int index : {0, 1})
        EXPECT_FALSE(child<QPushButton>(row<SettingBaseWithSwitchButton>(index), "switchButton").isChecked());
}

TEST_F(SidebarDvsSettingUITest, AntiFlickerCombosAloneStartTheBox)
{
    tool->addEnumeration("mode", {"stop", "pass"});
    tool->addEnumeration("shape", {"round"});
    fill(&SidebarDvsSettingUI::setAntiFlickerToolUI);
    EXPECT_EQ(rows(), (QStringList{u"Mode"_s, u"Shape"_s}));
}

TEST_F(SidebarDvsSettingUITest, AntiFlickerWritesEveryKind)
{
    addOneOfEach();
    fill(&SidebarDvsSettingUI::setAntiFlickerToolUI);
    ASSERT_EQ(rows(), (QStringList{u"Enable"_s, u"Mode"_s, u"Frequency"_s, u"Period"_s}));
    press(panel, "switchButton");
    press(row<SettingBaseWithLineEdit>(0), "pb_add_item_value");
    press(row<SettingBaseWithLineEdit>(1), "pb_sub_item_value");
    auto& combo = *child<KvComboBox>(panel, "cb_item").comboBox();
    QTest::mouseClick(combo.lineEdit(), Qt::LeftButton);
    QTest::keyClick(combo.view(), Qt::Key_Down);
    QTest::keyClick(combo.view(), Qt::Key_Return);
    EXPECT_EQ(tool->takeCalls(),
              (Calls{"bool enable true", "float frequency 2.000000", "int period 6", "enum mode pass"}));
}

TEST_F(SidebarDvsSettingUITest, FloatsAreShownAndWrittenAsWholeNumbers)
{
    tool->addFloat("a", 0.5F, 2.9F, 1.7F);
    tool->addFloat("b", 50.0F, 500.0F, 100.0F, "Hz");
    tool->addFloat("c", -2.9F, -0.5F, -1.7F);
    tool->addFloat("d", -1e30F, 1e30F, 3.0F);
    fill(&SidebarDvsSettingUI::setAntiFlickerToolUI);
    const auto shown = [this](int index) {
        const auto& slider = child<QSlider>(row<SettingBaseWithLineEdit>(index), "horizontalSlider");
        EXPECT_EQ(field(index).text(), QString::number(slider.value())) << index;
        return QList<int>{slider.minimum(), slider.value(), slider.maximum()};
    };
    EXPECT_EQ(shown(0), (QList<int>{0, 1, 2}));
    EXPECT_EQ(shown(1), (QList<int>{50, 100, 500}));
    EXPECT_EQ(shown(2), (QList<int>{-2, -1, 0}));
    EXPECT_EQ(shown(3), (QList<int>{INT_MIN, 3, INT_MAX}));
    EXPECT_EQ(child<QLabel>(row<SettingBaseWithLineEdit>(1), "lb_unit").text(), u"(Hz)"_s);
    auto& slider = child<QSlider>(row<SettingBaseWithLineEdit>(1), "horizontalSlider");
    slider.setValue(120);
    EXPECT_EQ(tool->takeCalls(), Calls{"float b 120.000000"});
}

TEST_F(SidebarDvsSettingUITest, EventRateControlShowsIntegersAndSwitchesThatAreOff)
{
    addOneOfEach();
    fill(&SidebarDvsSettingUI::setEventRateControlToolUI);
    EXPECT_EQ(titles(), QStringList{u"Event Rate Control"_s});
    EXPECT_EQ(rows(), (QStringList{u"Enable"_s, u"Period"_s}));
    EXPECT_FALSE(child<QPushButton>(panel, "switchButton").isChecked());
    EXPECT_EQ(field(0).text(), u"7"_s);
    press(panel, "switchButton");
    press(panel, "pb_add_item_value");
    EXPECT_EQ(tool->takeCalls(), (Calls{"bool enable true", "int period 8"}));
}

TEST_F(SidebarDvsSettingUITest, EventTrailFilterShowsThreeKindsInTheirOrder)
{
    addOneOfEach();
    fill(&SidebarDvsSettingUI::setEventTrailFilterToolUI);
    EXPECT_EQ(titles(), QStringList{u"Event Trail Filter"_s});
    EXPECT_EQ(rows(), (QStringList{u"Enable"_s, u"Mode"_s, u"Period"_s}));
    EXPECT_FALSE(child<QPushButton>(panel, "switchButton").isChecked());
    press(panel, "switchButton");
    press(panel, "pb_add_item_value");
    child<KvComboBox>(panel, "cb_item").setCurrentIndex(1);
    EXPECT_EQ(tool->takeCalls(), (Calls{"bool enable true", "int period 8", "enum mode pass"}));
}

TEST_F(SidebarDvsSettingUITest, RoiShowsWhatTheToolHasNow)
{
    tool->addInteger("x", 0, 1279, 1, "px");
    tool->addInteger("y", 0, 719, 2, "px");
    tool->addBoolean("enable", false);
    tool->addBoolean("inside", true);
    tool->addEnumeration("mode", {"a"});
    tool->currentIntegers["x"] = 320;
    tool->currentBooleans["enable"] = true;
    fill(&SidebarDvsSettingUI::setROIToolUI);
    EXPECT_EQ(titles(), QStringList{u"ROI"_s});
    EXPECT_EQ(rows(), (QStringList{u"Enable"_s, u"Inside"_s, u"X"_s, u"Y"_s}));
    EXPECT_EQ(field(0).text(), u"320"_s);
    EXPECT_EQ(field(1).text(), u"0"_s) << "the tool cannot read it";
    EXPECT_TRUE(child<QPushButton>(row<SettingBaseWithSwitchButton>(0), "switchButton").isChecked());
    EXPECT_FALSE(child<QPushButton>(row<SettingBaseWithSwitchButton>(1), "switchButton").isChecked());
    press(row<SettingBaseWithSwitchButton>(1), "switchButton");
    EXPECT_EQ(tool->takeCalls(), Calls{"bool inside true"});
}

TEST_F(SidebarDvsSettingUITest, ARefusedCoordinateTurnsAllRedUntilOneIsAccepted)
{
    tool->addInteger("height", 0, 719, 0);
    tool->addInteger("width", 0, 1279, 0);
    tool->addInteger("x", 0, 1279, 0);
    fill(&SidebarDvsSettingUI::setROIToolUI);
    tool->accepts = false;
    press(row<SettingBaseWithLineEdit>(1), "pb_add_item_value");
    EXPECT_EQ(tool->takeCalls(), Calls{"int width 1"}) << "written once, by the callback only";
    for (const int index : {0, 1, 2})
        EXPECT_EQ(border(index), red) << index;
    tool->accepts = true;
    press(row<SettingBaseWithLineEdit>(2), "pb_add_item_value");
    EXPECT_EQ(tool->takeCalls(), Calls{"int x 1"});
    for (const int index : {0, 1, 2})
        EXPECT_EQ(border(index), grey) << index;
    // Typed, and with the focus in the field.
    tool->accepts = false;
    field(0).setFocus();
    QTest::keyClicks(&field(0), u"5"_s);
    for (const int index : {0, 1, 2})
        EXPECT_EQ(border(index), red) << index;
}

TEST_F(SidebarDvsSettingUITest, RoiItemsOfAnEarlierCameraAreForgotten)
{
    tool->addInteger("x", 0, 1279, 0);
    fill(&SidebarDvsSettingUI::setROIToolUI);
    fill(&SidebarDvsSettingUI::setROIToolUI);
    press(panel, "pb_add_item_value");
    EXPECT_EQ(tool->takeCalls(), Calls{"int x 1"});
    EXPECT_EQ(border(0), grey);
}

TEST_F(SidebarDvsSettingUITest, ParametersTheToolTellsNothingAboutAreLeftOut)
{
    for (const auto& [name, kind] : std::map<std::string, int>{{"a", 0}, {"b", 1}, {"c", 2}, {"d", 4}})
        tool->addBare(name, kind);
    tool->addBoolean("d2", true);
    tool->addInteger("e", 0, 1, 0);
    const QStringList both{u"D2"_s, u"E"_s};
    const std::pair<Fill, QStringList> sections[] = {{&SidebarDvsSettingUI::setBiasesToolUI, {u"E"_s}},
                                                     {&SidebarDvsSettingUI::setTriggerInToolUI, {u"D2"_s}},
                                                     {&SidebarDvsSettingUI::setAntiFlickerToolUI, both},
                                                     {&SidebarDvsSettingUI::setEventRateControlToolUI, both},
                                                     {&SidebarDvsSettingUI::setEventTrailFilterToolUI, both},
                                                     {&SidebarDvsSettingUI::setROIToolUI, both}};
    for (const auto& [operation, told] : sections) {
        fill(operation);
        EXPECT_EQ(rows(), told) << titles().join(u' ').toStdString();
        panel.clearAllToolUI();
    }
}

TEST_F(SidebarDvsSettingUITest, MissingToolsAreLoggedSectionBySection)
{
    const CapturedMessages messages;
    panel.clearAllToolUI();
    EXPECT_EQ(messages.debug(),
              (QStringList{u"Camera tool is null ."_s, u"camera device is null ."_s,
                           u"camera device is null ."_s, u"camera device is null ."_s,
                           u"camera device is null ."_s, u"camera device is null ."_s}));
}

TEST_F(SidebarDvsSettingUITest, EmptyToolsLeaveNoSectionAndAreLogged)
{
    const auto empty = std::make_shared<ScriptedTool>();
    addOneOfEach();
    const auto logOf = [&](Fill operation) {
        (panel.*operation)(tool);
        EXPECT_EQ(panel.findChildren<SettingItemBox*>().size(), 1);
        const CapturedMessages messages;
        (panel.*operation)(empty);
        EXPECT_TRUE(panel.findChildren<SettingItemBox*>().isEmpty());
        return messages.debug();
    };
    EXPECT_EQ(logOf(&SidebarDvsSettingUI::setBiasesToolUI), QStringList{u"camera biases is null ."_s});
    EXPECT_EQ(logOf(&SidebarDvsSettingUI::setTriggerInToolUI), QStringList{u"camera trigger is null ."_s});
    EXPECT_EQ(logOf(&SidebarDvsSettingUI::setAntiFlickerToolUI), QStringList{u"camera trigger is null ."_s});
    EXPECT_EQ(logOf(&SidebarDvsSettingUI::setEventRateControlToolUI),
              QStringList{u"camera trigger is null ."_s});
    EXPECT_EQ(logOf(&SidebarDvsSettingUI::setEventTrailFilterToolUI),
              QStringList{u"camera trigger is null ."_s});
    EXPECT_EQ(logOf(&SidebarDvsSettingUI::setROIToolUI), QStringList{u"camera roi is null ."_s});
}

TEST_F(SidebarDvsSettingUITest, ToolsStayHeldAfterClearingUntilTheNextFillOrTheEnd)
{
    addOneOfEach();
    auto shortLived = std::make_unique<SidebarDvsSettingUI>();
    shortLived->setBiasesToolUI(tool);
    shortLived->clearAllToolUI();
    EXPECT_EQ(tool.use_count(), 2);
    shortLived->setBiasesToolUI(std::make_shared<ScriptedTool>());
    EXPECT_EQ(tool.use_count(), 1);
    shortLived->setTriggerInToolUI(tool);
    shortLived.reset();
    EXPECT_EQ(tool.use_count(), 1);
}

TEST_F(SidebarDvsSettingUITest, TheSlotsAreDeclaredInTheirOrder)
{
    const QMetaObject& meta = SidebarDvsSettingUI::staticMetaObject;
    QStringList methods;
    for (int index = meta.methodOffset(); index < meta.methodCount(); ++index)
        methods << QString::fromLatin1(meta.method(index).methodSignature());
    EXPECT_EQ(methods,
              (QStringList{u"signalCumulativeTimeChanged(uint64_t)"_s, u"signalFpsChanged(uint32_t)"_s,
                           u"onBiasSliderValueChanged(std::string,int)"_s,
                           u"onTriggerInSliderValueChanged(std::string,bool)"_s,
                           u"onAntiFlickerSliderValueChanged(std::string,int)"_s,
                           u"onAntiFlickerSliderValueChanged(std::string,bool)"_s,
                           u"onAntiFlickerSliderFloatValueChanged(std::string,int)"_s,
                           u"onAntiFlickerSliderEnumValueChanged(std::string,std::string)"_s,
                           u"onEventRateControlSliderValueChanged(std::string,int)"_s,
                           u"onEventRateControlSliderValueChanged(std::string,bool)"_s,
                           u"onEventTrailFilterSliderValueChanged(std::string,int)"_s,
                           u"onEventTrailFilterSliderValueChanged(std::string,bool)"_s,
                           u"onEventTrailFilterSliderValueChanged(std::string,std::string)"_s,
                           u"onROISliderValueChanged(std::string,int)"_s,
                           u"onROISliderValueChanged(std::string,bool)"_s,
                           u"onROISliderValueChanged(std::string,std::string)"_s,
                           u"slotCumulativeTimeChanged(uint64_t)"_s, u"slotFpsChanged(uint32_t)"_s}));
}

TEST_F(SidebarDvsSettingUITest, TheUnconnectedSlotsWorkToo)
{
    tool->addInteger("x", 0, 10, 0);
    panel.setROIToolUI(tool);
    uint64_t time = 0;
    uint32_t rate = 0;
    QObject::connect(&panel, &SidebarDvsSettingUI::signalCumulativeTimeChanged,
                     [&](uint64_t us) { time = us; });
    QObject::connect(&panel, &SidebarDvsSettingUI::signalFpsChanged, [&](uint32_t fps) { rate = fps; });
    QMetaObject::invokeMethod(&panel, "onROISliderValueChanged", Q_ARG(std::string, "x"), Q_ARG(int, 4));
    QMetaObject::invokeMethod(&panel, "onROISliderValueChanged", Q_ARG(std::string, "mode"),
                              Q_ARG(std::string, "inside"));
    QMetaObject::invokeMethod(&panel, "slotCumulativeTimeChanged", Q_ARG(uint64_t, 33330));
    QMetaObject::invokeMethod(&panel, "slotFpsChanged", Q_ARG(uint32_t, 60));
    EXPECT_EQ(tool->takeCalls(), (Calls{"int x 4", "enum mode inside"}));
    EXPECT_EQ(time, 33330U);
    EXPECT_EQ(rate, 60U);
}
