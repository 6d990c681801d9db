#include "settings/settingbasewithlineedit.h"
#include "settings/settingbasewithslider.h"
#include "settings/sidebarapssettingui.h"
#include "settings/sidebardvssettingui.h"
#include "tests/gui/settingsfixture.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/scriptedtool.h"
#include "widgets/kvcombobox.h"
#include "widgets/kvcomboboxbase.h"
#include "widgets/kvlineeditbase.h"
#include "widgets/kvslider.h"

#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QWheelEvent>

using namespace Qt::Literals::StringLiterals;

namespace {

std::shared_ptr<ScriptedTool> toolOfEveryKind()
{
    auto tool = std::make_shared<ScriptedTool>();
    tool->addBoolean("enable", true);
    tool->addEnumeration("filter_mode", {"stop", "pass"});
    tool->addInteger("duty_cycle", 0, 100, 50, "%");
    tool->addInteger("event_rate_limit", 0, 100000, 50, "kEv/s");
    tool->addFloat("low_frequency", 50.0F, 500.0F, 100.0F, "Hz");
    return tool;
}

void fillAll(SidebarDvsSettingUI& panel, const std::shared_ptr<ScriptedTool>& tool)
{
    panel.setBiasesToolUI(tool);
    panel.setTriggerInToolUI(tool);
    panel.setAntiFlickerToolUI(tool);
    panel.setEventRateControlToolUI(tool);
    panel.setEventTrailFilterToolUI(tool);
    panel.setROIToolUI(tool);
}

void unfoldAll(const QWidget& panel)
{
    for (SettingItemBox* const box : panel.findChildren<SettingItemBox*>())
        box->setFold(false);
    SettingsWindow::settle();
}

QStringList titles(const QWidget& panel)
{
    QStringList texts;
    for (const SettingItemBox* box : fromTop<SettingItemBox>(panel))
        texts << child<QLabel>(*box, "lb_setting_box_title_text").text();
    return texts;
}

const QStringList allTitles{
    u"Biases"_s, u"Trigger In"_s, u"Anti Flicker"_s, u"Event Rate Control"_s, u"Event Trail Filter"_s,
    u"ROI"_s};

/// Turns the wheel down by a notch over a widget's middle, as the window system would.
void turnWheelOver(QWidget& widget)
{
    QWidget* const window = widget.window();
    const QPoint place = widget.mapTo(window, widget.rect().center());
    QWidget* const under = window->childAt(place);
    const QPointF local = under->mapFrom(window, place);
    QWheelEvent event(local, window->mapToGlobal(place), QPoint(), QPoint(0, -120), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    // Only an event from outside is passed on to the parents.
    QSpontaneKeyEvent::setSpontaneous(&event);
    qApp->notify(under, &event);
}

} // namespace

TEST(SettingSections, StandInTheOrderOfTheirFilling)
{
    SettingsWindow window;
    SidebarDvsSettingUI panel;
    window.put(panel);
    fillAll(panel, toolOfEveryKind());
    SettingsWindow::settle();
    EXPECT_EQ(titles(panel), allTitles);
    for (const SettingItemBox* box : panel.findChildren<SettingItemBox*>())
        EXPECT_TRUE(child<QPushButton>(*box, "pb_fold").isChecked());
}

TEST(SettingSections, ASecondCameraReplacesThemAndFoldsThem)
{
    SettingsWindow window;
    SidebarDvsSettingUI panel;
    window.put(panel);
    const auto first = toolOfEveryKind();
    const auto second = toolOfEveryKind();
    fillAll(panel, first);
    unfoldAll(panel);
    fillAll(panel, second);
    SettingsWindow::settle();
    EXPECT_EQ(titles(panel), allTitles);
    for (const SettingItemBox* box : panel.findChildren<SettingItemBox*>())
        EXPECT_TRUE(child(*box, "widget_container").isHidden());
    EXPECT_EQ(first.use_count(), 1) << "nothing holds the first camera's tool";
    unfoldAll(panel);
    QTest::mouseClick(&child(panel, "pb_add_item_value"), Qt::LeftButton);
    EXPECT_TRUE(first->takeCalls().empty());
    EXPECT_EQ(second->takeCalls().size(), 1U);
}

TEST(SettingSections, AMissingToolLeavesTheOthers)
{
    SettingsWindow window;
    SidebarDvsSettingUI panel;
    window.put(panel);
    const auto tool = toolOfEveryKind();
    fillAll(panel, tool);
    panel.setTriggerInToolUI(nullptr);
    panel.setEventTrailFilterToolUI(std::make_shared<ScriptedTool>());
    SettingsWindow::settle();
    EXPECT_EQ(titles(panel),
              (QStringList{u"Biases"_s, u"Anti Flicker"_s, u"Event Rate Control"_s, u"ROI"_s}));
    panel.clearAllToolUI();
    EXPECT_TRUE(titles(panel).isEmpty());
}

TEST(SettingSections, FillingAndClearingAThousandTimesLeavesNothingBehind)
{
    SettingsWindow window;
    SidebarDvsSettingUI dvs;
    SidebarApsSettingUI aps;
    window.put(dvs);
    window.put(aps);
    const auto rich = toolOfEveryKind();
    // One row each; only the biases show no switches.
    const auto small = std::make_shared<ScriptedTool>();
    small->addBoolean("enable", true);
    const auto smallBiases = std::make_shared<ScriptedTool>();
    smallBiases->addInteger("bias_fo", -10, 10, 0);
    const CapturedMessages quiet;
    // A section each turn, so that the sections share the thousand and the test stays quick.
    const auto turn = [&](int number, const std::shared_ptr<ScriptedTool>& tool) {
        switch (number % 7) {
        case 0:
            dvs.setBiasesToolUI(tool);
            break;
        case 1:
            dvs.setTriggerInToolUI(tool);
            break;
        case 2:
            dvs.setAntiFlickerToolUI(tool);
            break;
        case 3:
            dvs.setEventRateControlToolUI(tool);
            break;
        case 4:
            dvs.setEventTrailFilterToolUI(tool);
            break;
        case 5:
            dvs.setROIToolUI(tool);
            break;
        default:
            aps.setApsToolUI(tool);
            break;
        }
    };
    const auto clear = [&] {
        dvs.clearAllToolUI();
        aps.clearApsToolUI();
        SettingsWindow::settle();
    };
    const auto census = [&] {
        return QList<qsizetype>{dvs.findChildren<QObject*>().size(),
                                aps.findChildren<QObject*>().size(),
                                QApplication::allWidgets().size(),
                                rich.use_count(),
                                small.use_count(),
                                smallBiases.use_count()};
    };
    const auto fillWith = [&](const std::shared_ptr<ScriptedTool>& tool) {
        for (int number = 0; number < 7; ++number)
            turn(number, tool);
        SettingsWindow::settle();
    };
    fillWith(rich);
    const QList<qsizetype> filled = census();
    clear();
    const QList<qsizetype> cleared = census();
    for (int number = 0; number < 1001; ++number) {
        turn(number, number % 50 == 4 ? rich : number % 7 == 0 ? smallBiases : small);
        if (number % 14 == 13)
            clear();
    }
    fillWith(rich);
    EXPECT_EQ(census(), filled);
    clear();
    EXPECT_EQ(census(), cleared);
}

TEST(SettingSections, ClearingWhileAFieldIsEditedWritesNothing)
{
    SettingsWindow window;
    SidebarDvsSettingUI panel;
    window.put(panel);
    const auto tool = toolOfEveryKind();
    panel.setBiasesToolUI(tool);
    panel.setROIToolUI(tool);
    unfoldAll(panel);
    auto& field = *panel.findChildren<KvLineEditBase*>().first();
    field.setFocus();
    QTest::keyClicks(&field, u"x"_s);
    tool->takeCalls();
    panel.setBiasesToolUI(nullptr);
    SettingsWindow::settle();
    EXPECT_TRUE(tool->takeCalls().empty());
    EXPECT_EQ(QApplication::focusWidget(), nullptr);
    for (const SettingBaseWithLineEdit* item : panel.findChildren<SettingBaseWithLineEdit*>())
        EXPECT_TRUE(child(*item, "widget_with_slider").isHidden()) << "the focus went to no other row";
}

TEST(SettingSections, FoldingASectionInWhichAFieldIsEditedOpensNoSliderElsewhere)
{
    SettingsWindow window;
    SidebarDvsSettingUI panel;
    window.put(panel);
    const auto tool = toolOfEveryKind();
    panel.setBiasesToolUI(tool);
    panel.setROIToolUI(tool);
    unfoldAll(panel);
    panel.findChildren<KvLineEditBase*>().first()->setFocus();
    SettingItemBox& first = *fromTop<SettingItemBox>(panel).first();
    QTest::mouseClick(&child(first, "pb_fold"), Qt::LeftButton);
    EXPECT_TRUE(child(first, "widget_container").isHidden());
    for (const SettingBaseWithLineEdit* item : panel.findChildren<SettingBaseWithLineEdit*>())
        EXPECT_TRUE(child(*item, "widget_with_slider").isHidden());
}

TEST(SettingSections, TheWheelScrollsThePanelAndChangesNoValue)
{
    SettingsWindow window(320, 240);
    SidebarDvsSettingUI panel;
    window.put(panel);
    const auto tool = toolOfEveryKind();
    panel.setAntiFlickerToolUI(tool);
    panel.setEventRateControlToolUI(tool);
    unfoldAll(panel);
    QScrollBar& bar = *child<QScrollArea>(panel, "scroll_area_setting").verticalScrollBar();
    ASSERT_GT(bar.maximum(), 60);
    EXPECT_FALSE(bar.isVisible());

    auto& item = *fromTop<SettingBaseWithLineEdit>(panel).first();
    child(item, "le_kv_line_edit").setFocus();
    const std::vector<QWidget*> places{
        child<KvComboBox>(panel, "cb_item").comboBox(),
        child<KvComboBox>(panel, "cb_item").comboBox()->lineEdit(),
        &child(item, "horizontalSlider"),
        &child(item, "le_kv_line_edit"),
        &child(item, "pb_add_item_value"),
        &child(panel, "switchButton"),
        &child(item, "lb_set_item_name"),
    };
    for (QWidget* const place : places) {
        bar.setValue(0);
        child<QScrollArea>(panel, "scroll_area_setting").ensureWidgetVisible(place, 0, 0);
        const int before = bar.value();
        turnWheelOver(*place);
        EXPECT_GT(bar.value(), before) << place->objectName().toStdString();
    }
    EXPECT_TRUE(tool->takeCalls().empty());
    EXPECT_EQ(child<KvComboBox>(panel, "cb_item").currentIndex(), 0);
}

TEST(SettingSections, TheWheelPassesTheSliderRowBy)
{
    SettingsWindow window;
    SettingBaseWithSlider item("gain");
    window.put(item);
    auto& slider = child<KvSlider>(item, "slider_item_value");
    slider.setValue(50);
    turnWheelOver(slider);
    EXPECT_EQ(slider.value(), 50);
}

TEST(SettingSections, ItemsStayAlignedAndWholeAtAnyWidth)
{
    SettingsWindow window(300, 700);
    window.layout()->setContentsMargins(0, 0, 0, 0);
    SidebarDvsSettingUI panel;
    window.put(panel);
    fillAll(panel, toolOfEveryKind());
    unfoldAll(panel);
    const auto& area = child<QScrollArea>(panel, "scroll_area_setting");
    for (const int width : {300, 301, 340, 377, 420, 460, 500}) {
        window.resize(width, 700);
        SettingsWindow::settle();
        ASSERT_EQ(panel.width(), width);
        ASSERT_EQ(area.widget()->width(), area.viewport()->width())
            << "nothing is wider than the pane, " << width;
        for (const QLabel* label : panel.findChildren<QLabel*>()) {
            const QString name = label->objectName();
            const int left = label->mapTo(&panel, QPoint()).x();
            if (name == u"lb_set_item_name"_s || name == u"lb_item_name"_s) {
                EXPECT_EQ(left, 10) << width;
                EXPECT_GE(label->width(), label->fontMetrics().horizontalAdvance(label->text()))
                    << label->text().toStdString() << ' ' << width;
            } else if (name == u"lb_unit"_s) {
                EXPECT_GE(label->width(), label->fontMetrics().horizontalAdvance(label->text()))
                    << label->text().toStdString();
            }
        }
        for (const char* editor : {"widget", "switchButton", "cb_item"}) {
            for (const QWidget* found : area.widget()->findChildren<QWidget*>(QLatin1StringView(editor)))
                EXPECT_EQ(found->mapTo(&panel, QPoint(found->width(), 0)).x(), width - 10)
                    << editor << ' ' << width;
        }
    }
}

TEST(SettingSections, ASliderThatLosesTheFocusToAPressStaysUntilTheRelease)
{
    SettingsWindow window;
    window.setFocusPolicy(Qt::StrongFocus); // as the program's window has
    SidebarDvsSettingUI panel;
    window.put(panel);
    const auto tool = toolOfEveryKind();
    panel.setEventRateControlToolUI(tool);
    panel.setTriggerInToolUI(tool);
    unfoldAll(panel);
    child(panel, "le_kv_line_edit").setFocus();
    SettingsWindow::settle();
    QWidget& sliderRow = child(panel, "widget_with_slider");
    ASSERT_TRUE(sliderRow.isVisible());

    // Else the row pressed would move up from under the pointer, and the click would be lost.
    QWidget& button = child(*fromTop<SettingItemBox>(panel).last(), "switchButton");
    const QPoint place = button.mapTo(&window, button.rect().center());
    QTest::mousePress(window.windowHandle(), Qt::LeftButton, {}, place);
    EXPECT_FALSE(child(panel, "le_kv_line_edit").hasFocus());
    EXPECT_TRUE(sliderRow.isVisible());
    QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, place);
    EXPECT_EQ(tool->takeCalls(), std::vector<std::string>{"bool enable false"});
    ASSERT_TRUE(QTest::qWaitFor([&] { return sliderRow.isHidden(); }));
}

TEST(SettingSections, ASliderWhoseFieldIsPressedAgainStays)
{
    SettingsWindow window;
    window.setFocusPolicy(Qt::StrongFocus);
    SidebarDvsSettingUI panel;
    window.put(panel);
    panel.setEventRateControlToolUI(toolOfEveryKind());
    unfoldAll(panel);
    auto& field = child<KvLineEditBase>(panel, "le_kv_line_edit");
    field.setFocus();
    SettingsWindow::settle();
    const QPoint title = child(panel, "lb_setting_ui").mapTo(&window, QPoint(5, 5));
    QTest::mousePress(window.windowHandle(), Qt::LeftButton, {}, title);
    ASSERT_FALSE(field.hasFocus());
    field.setFocus();
    QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, title);
    SettingsWindow::settle();
    EXPECT_TRUE(child(panel, "widget_with_slider").isVisible());
}
