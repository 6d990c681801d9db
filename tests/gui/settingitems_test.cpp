#include "settings/fittedlabel.h"
#include "settings/settingbasewithcombobox.h"
#include "settings/settingbasewithlineedit.h"
#include "settings/settingbasewithslider.h"
#include "settings/settingbasewithswitchbutton.h"
#include "tests/gui/settingsfixture.h"
#include "widgets/kvcombobox.h"
#include "widgets/kvcomboboxbase.h"
#include "widgets/kvlineeditbase.h"
#include "widgets/kvslider.h"
#include "widgets/kvtooltip.h"

#include <QAbstractItemView>
#include <QPushButton>
#include <QScreen>

#include <climits>
#include <utility>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace {

using Reports = std::vector<std::pair<std::string, int>>;

struct LineEditItem : testing::Test
{
    LineEditItem() { window.put(item); }

    void fill(int minimum, int maximum, int value)
    {
        item.setRange(minimum, maximum);
        item.setValue(value);
        QObject::connect(
            &item, &SettingBaseWithLineEdit::signalItemValueChanged,
            [this](const std::string& name, int reported) { reports.emplace_back(name, reported); });
    }
    void retype(const QString& text)
    {
        field.setFocus();
        field.selectAll();
        QTest::keyClicks(&field, text);
    }
    void press(const char* button) { QTest::mouseClick(&child(item, button), Qt::LeftButton); }
    QColor borderPixel()
    {
        const QImage image = field.grab().toImage();
        return image.pixelColor(image.width() / 2, 0);
    }

    SettingsWindow window;
    SettingBaseWithLineEdit item{"exposure_time"};
    KvLineEditBase& field = child<KvLineEditBase>(item, "le_kv_line_edit");
    KvSlider& slider = child<KvSlider>(item, "horizontalSlider");
    QWidget& sliderRow = child(item, "widget_with_slider");
    Reports reports;
};

const QColor valid(0x00, 0x4B, 0x6A);
const QColor refused(0xFF, 0x60, 0x58);
const QColor accepted(0xAC, 0xAC, 0xAC);

} // namespace

TEST_F(LineEditItem, ShowsTheNameReadablyAndReportsItAsItWas)
{
    fill(0, 100, 50);
    EXPECT_EQ(child<QLabel>(item, "lb_set_item_name").text(), u"Exposure Time"_s);
    retype(u"7"_s);
    EXPECT_EQ(reports, (Reports{{"exposure_time", 7}}));
}

TEST(LineEditItemName, ComesBackInLowerCase)
{
    SettingBaseWithLineEdit item("ROI_x0");
    EXPECT_EQ(child<QLabel>(item, "lb_set_item_name").text(), u"ROI X0"_s);
    std::string reported;
    QObject::connect(&item, &SettingBaseWithLineEdit::signalItemValueChanged,
                     [&](const std::string& name, int) { reported = name; });
    item.setRange(0, 10);
    item.setValue(1);
    EXPECT_EQ(reported, "roi_x0");
}

TEST_F(LineEditItem, PlusAndMinusStepAndStopAtTheEnds)
{
    fill(0, 100, 99);
    press("pb_add_item_value");
    press("pb_add_item_value");
    EXPECT_EQ(field.text(), u"100"_s);
    press("pb_sub_item_value");
    EXPECT_EQ(reports, (Reports{{"exposure_time", 100}, {"exposure_time", 99}}));
    item.setValue(0);
    reports.clear();
    press("pb_sub_item_value");
    EXPECT_EQ(field.text(), u"0"_s);
    EXPECT_TRUE(reports.empty());
}

TEST_F(LineEditItem, PlusAndMinusStopAtTheLimitsOfInt)
{
    fill(INT_MIN, INT_MAX, INT_MAX);
    press("pb_add_item_value");
    EXPECT_EQ(slider.value(), INT_MAX);
    item.setValue(INT_MIN);
    press("pb_sub_item_value");
    EXPECT_EQ(slider.value(), INT_MIN);
}

TEST_F(LineEditItem, PlusAndMinusDoNothingWithoutANumber)
{
    fill(0, 100, 50);
    retype(u"x"_s);
    press("pb_add_item_value");
    press("pb_sub_item_value");
    EXPECT_EQ(field.text(), u"x"_s);
    EXPECT_TRUE(reports.empty());
}

TEST_F(LineEditItem, PlusAndMinusLeaveTheFocusInTheFieldAndMarkItValid)
{
    fill(0, 100, 50);
    field.setFocus();
    item.setLineEditBorderState(false);
    press("pb_add_item_value");
    EXPECT_TRUE(field.hasFocus());
    EXPECT_EQ(borderPixel(), valid);
    EXPECT_TRUE(sliderRow.isVisible());
}

TEST_F(LineEditItem, TypingAppliesEveryNumberOnTheWay)
{
    fill(0, 100, 50);
    retype(u"12"_s);
    EXPECT_EQ(reports, (Reports{{"exposure_time", 1}, {"exposure_time", 12}}));
    EXPECT_EQ(borderPixel(), valid);
}

TEST_F(LineEditItem, TypingBeyondTheRangeStopsAtItsEnd)
{
    fill(0, 100, 100);
    retype(u"150"_s);
    EXPECT_EQ(slider.value(), 100);
    EXPECT_EQ(field.text(), u"100"_s);
    EXPECT_EQ(reports, (Reports{{"exposure_time", 1}, {"exposure_time", 15}, {"exposure_time", 100}}));
}

TEST_F(LineEditItem, ANumberBeyondAnEndAlreadyReachedGoesBackWhenTypingEnds)
{
    fill(0, 100, 100);
    field.setFocus();
    field.end(false);
    QTest::keyClicks(&field, u"0"_s);
    QTest::keyClick(&field, Qt::Key_Return);
    EXPECT_EQ(field.text(), u"100"_s);
    EXPECT_TRUE(reports.empty());
}

TEST_F(LineEditItem, TextThatIsNoIntegerTurnsRedAndSendsNothing)
{
    fill(-10, 100, 50);
    for (const QString& text : {u"-"_s, u"abc"_s, u"1.5"_s, u"9999999999"_s}) {
        item.setValue(50);
        reports.clear();
        field.setFocus();
        field.setText(text);
        EXPECT_EQ(borderPixel(), refused) << text.toStdString();
        QTest::keyClick(&field, Qt::Key_Return);
        EXPECT_EQ(borderPixel(), refused) << text.toStdString();
        EXPECT_TRUE(reports.empty()) << text.toStdString();
        EXPECT_EQ(slider.value(), 50) << text.toStdString();
    }
    retype(u"5"_s);
    EXPECT_EQ(borderPixel(), valid);
    field.selectAll();
    QTest::keyClick(&field, Qt::Key_Backspace);
    EXPECT_EQ(borderPixel(), refused);
    window.setFocus();
    EXPECT_EQ(borderPixel(), refused) << "leaving the field does not hide the fault";
    EXPECT_EQ(reports, (Reports{{"exposure_time", 5}}));
}

TEST_F(LineEditItem, ASetValueOutsideTheRangeChangesNothing)
{
    fill(0, 100, 50);
    item.setValue(101);
    item.setValue(-1);
    EXPECT_EQ(field.text(), u"50"_s);
    EXPECT_EQ(slider.value(), 50);
    EXPECT_TRUE(reports.empty());
}

TEST_F(LineEditItem, WithoutAValueTheFieldIsEmptyAndTheSliderAtItsLowerEnd)
{
    fill(5, 10, 0);
    EXPECT_EQ(field.text(), QString());
    EXPECT_EQ(slider.value(), 5);

    SettingBaseWithLineEdit below("x");
    below.setRange(-10, -5);
    below.setValue(0);
    EXPECT_EQ(child<QLineEdit>(below, "le_kv_line_edit").text(), QString());
    EXPECT_EQ(child<QSlider>(below, "horizontalSlider").value(), -10);
}

TEST_F(LineEditItem, ANarrowerRangeTakesTheShownValueWithIt)
{
    fill(0, 100, 50);
    item.setRange(0, 20);
    EXPECT_EQ(field.text(), u"20"_s);
    EXPECT_EQ(reports, (Reports{{"exposure_time", 20}}));
}

TEST_F(LineEditItem, DraggingTheSliderReportsAndThenCallsTheCallback)
{
    fill(0, 100, 0);
    std::vector<std::string> order;
    QObject::connect(&item, &SettingBaseWithLineEdit::signalItemValueChanged,
                     [&](const std::string& name, int) { order.push_back("signal " + name); });
    item.setValueChangedCallback([&](const std::string&, int) {
        order.emplace_back("replaced");
        return true;
    });
    item.setValueChangedCallback([&](const std::string& key, int value) {
        order.push_back("callback " + key + ' ' + std::to_string(value));
        return false;
    });
    field.setFocus();
    ASSERT_TRUE(sliderRow.isVisible());
    QTest::mouseClick(&slider, Qt::LeftButton, {}, slider.rect().center());
    EXPECT_TRUE(field.hasFocus()) << "the slider stays while it is used";
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_NEAR(reports[0].second, 50, 2);
    EXPECT_EQ(field.text(), QString::number(reports[0].second));
    EXPECT_EQ(order,
              (std::vector<std::string>{"signal exposure_time",
                                        "callback exposure_time " + std::to_string(slider.value())}));
}

TEST_F(LineEditItem, TheSliderShowsWhileTheFieldHasTheFocus)
{
    EXPECT_TRUE(sliderRow.isHidden());
    field.setFocus();
    EXPECT_TRUE(sliderRow.isVisible());
    EXPECT_TRUE(field.hasFocus());
    EXPECT_EQ(slider.focusProxy(), &field);
    window.setFocus();
    EXPECT_TRUE(sliderRow.isHidden());
}

TEST_F(LineEditItem, TheTabKeyPassesTheSliderBy)
{
    SettingBaseWithLineEdit next("next");
    window.put(next);
    field.setFocus();
    QTest::keyClick(&field, Qt::Key_Tab);
    EXPECT_TRUE(child(next, "le_kv_line_edit").hasFocus());
    QTest::keyClick(&child(next, "le_kv_line_edit"), Qt::Key_Backtab);
    EXPECT_TRUE(field.hasFocus());
}

TEST_F(LineEditItem, TheBorderTellsWhatTheCameraSaid)
{
    item.setLineEditBorderState(true);
    EXPECT_EQ(borderPixel(), accepted);
    item.setLineEditBorderState(false);
    EXPECT_EQ(borderPixel(), refused);
    EXPECT_TRUE(field.styleSheet().contains(u"border: 1px solid #FF6058;"_s));
}

TEST_F(LineEditItem, ARefusalWhileTypingHasTheLastWord)
{
    fill(0, 100, 50);
    item.setValueChangedCallback([this](const std::string&, int value) {
        item.setLineEditBorderState(value != 7);
        return value != 7;
    });
    retype(u"7"_s);
    EXPECT_EQ(borderPixel(), refused);
    press("pb_add_item_value");
    EXPECT_EQ(borderPixel(), accepted);
    press("pb_sub_item_value");
    EXPECT_EQ(borderPixel(), refused);
}

TEST_F(LineEditItem, ARefusalIsSeenAfterTheFocusHasGone)
{
    SettingBaseWithLineEdit next("next");
    window.put(next);
    fill(0, 100, 50);
    item.setValueChangedCallback([this](const std::string&, int value) {
        item.setLineEditBorderState(value != 7);
        return value != 7;
    });
    retype(u"7"_s);
    child(next, "le_kv_line_edit").setFocus();
    EXPECT_EQ(borderPixel(), refused);
    // Passing through changes nothing.
    field.setFocus();
    EXPECT_EQ(borderPixel(), valid);
    child(next, "le_kv_line_edit").setFocus();
    EXPECT_EQ(borderPixel(), refused);
    retype(u"8"_s);
    child(next, "le_kv_line_edit").setFocus();
    EXPECT_EQ(borderPixel(), accepted);
}

TEST_F(LineEditItem, TheUnitStandsInParentheses)
{
    auto& unit = child<QLabel>(item, "lb_unit");
    item.setUnit("");
    EXPECT_EQ(unit.text(), QString());
    item.setUnit(" ");
    EXPECT_EQ(unit.text(), QString());
    item.setUnit("us");
    EXPECT_EQ(unit.text(), u"(us)"_s);
    EXPECT_EQ(unit.size(), QSize(50, 18));
}

TEST_F(LineEditItem, TheToolTipShowsTheDescription)
{
    item.setItemToolTip(u"Old."_s);
    item.setItemToolTip(u"How long the picture is exposed."_s);
    const auto tips = item.findChildren<KvToolTip*>();
    ASSERT_EQ(tips.size(), 1);
    EXPECT_EQ(tips[0]->text(), u"How long the picture is exposed."_s);
    item.setItemToolTip(QString());
    EXPECT_TRUE(item.findChildren<KvToolTip*>().isEmpty()) << "no empty bubble";
}

TEST_F(LineEditItem, ItsPartsHaveTheirPlaces)
{
    field.setFocus();
    EXPECT_EQ(child(item, "widget").size(), QSize(110, 30));
    EXPECT_EQ(child(item, "pb_sub_item_value").size(), QSize(15, 15));
    EXPECT_EQ(child(item, "pb_add_item_value").size(), QSize(15, 15));
    EXPECT_EQ(field.height(), 24);
    EXPECT_EQ(child(item, "lb_set_item_name").height(), 18);
    EXPECT_LE(sliderRow.height(), 30);
    EXPECT_EQ(child(item, "widget").grab().toImage().pixelColor(3, 3), QColor(0xF7, 0xF7, 0xF7));
    EXPECT_EQ(slider.mapTo(&item, slider.rect().center()).x(), item.rect().center().x());
}

TEST(ItemToolTip, StandsLeftAboveItsItem)
{
    SettingsWindow window;
    SettingBaseWithLineEdit number("exposure_time");
    SettingBaseWithSwitchButton toggle("enable");
    SettingBaseWithComboBox choice("mode");
    window.move(window.screen()->geometry().center());
    const std::vector<QWidget*> items{&number, &toggle, &choice};
    for (QWidget* const item : items)
        window.put(*item);
    number.setItemToolTip(u"How long the picture is exposed."_s);
    toggle.setItemToolTip(u"Switches it on."_s);
    choice.setItemToolTip(u"What happens to the trail."_s);
    for (QWidget* const item : items) {
        const QPointF inside(1, 1);
        QEnterEvent entering(inside, item->mapTo(&window, inside), item->mapToGlobal(inside));
        QApplication::sendEvent(item, &entering);
    }
    for (QWidget* const item : items) {
        const auto* const tip = item->findChild<KvToolTip*>();
        ASSERT_NE(tip, nullptr);
        EXPECT_TRUE(QTest::qWaitFor([tip] { return tip->isVisible(); })) << item->metaObject()->className();
        EXPECT_EQ(tip->pos(), item->mapToGlobal(QPoint(0, 0)) - QPoint(tip->width(), tip->height()))
            << item->metaObject()->className();
    }
}

TEST(SwitchItem, AClickReportsTheNewState)
{
    SettingsWindow window;
    SettingBaseWithSwitchButton item("auto_exposure");
    window.put(item);
    std::vector<std::pair<std::string, bool>> reports;
    QObject::connect(&item, &SettingBaseWithSwitchButton::signalItemValueChanged,
                     [&](const std::string& name, bool value) { reports.emplace_back(name, value); });
    auto& button = child<QPushButton>(item, "switchButton");
    EXPECT_EQ(child<QLabel>(item, "lb_item_name").text(), u"Auto Exposure"_s);
    EXPECT_FALSE(button.isChecked());
    EXPECT_EQ(button.size(), QSize(36, 20));
    QTest::mouseClick(&button, Qt::LeftButton);
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_EQ(reports,
              (std::vector<std::pair<std::string, bool>>{{"auto_exposure", true}, {"auto_exposure", false}}));
}

TEST(SwitchItem, SettingTheStateReportsNothing)
{
    SettingBaseWithSwitchButton item("enable");
    bool reported = false;
    QObject::connect(&item, &SettingBaseWithSwitchButton::signalItemValueChanged, [&] { reported = true; });
    item.setSwitchChecked(true);
    EXPECT_TRUE(child<QPushButton>(item, "switchButton").isChecked());
    EXPECT_FALSE(reported);
    item.setItemToolTip(u"Switches it on."_s);
    EXPECT_EQ(item.findChild<KvToolTip*>()->text(), u"Switches it on."_s);
}

TEST(SwitchItem, LooksDifferentWhenItIsOn)
{
    SettingBaseWithSwitchButton item("enable");
    auto& button = child<QPushButton>(item, "switchButton");
    const QImage whenOff = button.grab().toImage();
    item.setSwitchChecked(true);
    EXPECT_NE(button.grab().toImage(), whenOff);
    EXPECT_EQ(button.grab().toImage().pixelColor(18, 3), QColor(0x00, 0x4B, 0x6A));
}

TEST(ComboItem, ReportsWhatIsPickedFromItsList)
{
    SettingsWindow window;
    SettingBaseWithComboBox item("filter_type");
    item.addComboItem(u"keep"_s);
    item.addComboItem(u"cut"_s);
    item.addComboItem(u"Tür"_s);
    window.put(item);
    std::vector<std::pair<std::string, std::string>> reports;
    QObject::connect(
        &item, &SettingBaseWithComboBox::signalItemValueChanged,
        [&](const std::string& name, const std::string& value) { reports.emplace_back(name, value); });
    EXPECT_EQ(child<QLabel>(item, "lb_set_item_name").text(), u"Filter Type"_s);
    auto& combo = child<KvComboBox>(item, "cb_item");
    EXPECT_EQ(combo.height(), 30);
    EXPECT_EQ(combo.currentIndex(), 0);
    QTest::mouseClick(combo.comboBox()->lineEdit(), Qt::LeftButton);
    QAbstractItemView* const list = combo.comboBox()->view();
    ASSERT_TRUE(list->isVisible());
    QTest::keyClick(list, Qt::Key_Down);
    QTest::keyClick(list, Qt::Key_Return);
    EXPECT_EQ(reports, (std::vector<std::pair<std::string, std::string>>{{"filter_type", "cut"}}));
    combo.setCurrentIndex(2);
    EXPECT_EQ(reports.back().second, "T\xC3\xBCr");
}

TEST(ComboItem, TakesNoTypedText)
{
    SettingsWindow window;
    SettingBaseWithComboBox item("mode");
    item.addComboItem(u"keep"_s);
    item.addComboItem(u"cut"_s);
    window.put(item);
    int reports = 0;
    QObject::connect(&item, &SettingBaseWithComboBox::signalItemValueChanged, [&] { ++reports; });
    auto& combo = child<KvComboBox>(item, "cb_item");
    combo.comboBox()->setFocus();
    QTest::keyClicks(combo.comboBox(), u"xyz"_s);
    EXPECT_EQ(combo.text(), u"keep"_s);
    EXPECT_EQ(reports, 0);
}

TEST(ComboItem, TheFirstEntryBecomesCurrentAndIsReportedOnce)
{
    SettingBaseWithComboBox item("mode");
    int reports = 0;
    QObject::connect(&item, &SettingBaseWithComboBox::signalItemValueChanged, [&] { ++reports; });
    item.addComboItem(u"keep"_s);
    item.addComboItem(u"cut"_s);
    EXPECT_EQ(reports, 1);
    item.setItemToolTip(u"What happens to the trail."_s);
    EXPECT_EQ(item.findChild<KvToolTip*>()->text(), u"What happens to the trail."_s);
}

namespace {

struct SliderItem : testing::Test
{
    SliderItem()
    {
        item.setRange(-2, 100);
        window.put(item);
        QObject::connect(&item, &SettingBaseWithSlider::signalItemValueChanged,
                         [this](const std::string& name, int value) { reports.emplace_back(name, value); });
    }
    void press(const char* button) { QTest::mouseClick(&child(item, button), Qt::LeftButton); }
    void enter(const QString& text)
    {
        field.selectAll();
        QTest::keyClicks(&field, text);
        QTest::keyClick(&field, Qt::Key_Return);
    }

    SettingsWindow window;
    SettingBaseWithSlider item{"exposure_time"};
    QLineEdit& field = child<QLineEdit>(item, "le_set_item_value");
    KvSlider& slider = child<KvSlider>(item, "slider_item_value");
    Reports reports;
};

} // namespace

TEST_F(SliderItem, ReportsTheNameAsItIsShown)
{
    slider.setValue(30);
    EXPECT_EQ(field.text(), u"30"_s);
    EXPECT_EQ(reports, (Reports{{"Exposure Time", 30}}));
}

TEST_F(SliderItem, StepsFromItsValueAndStopsAtTheEnds)
{
    slider.setValue(99);
    press("pb_add_item_value");
    press("pb_add_item_value");
    EXPECT_EQ(slider.value(), 100);
    press("pb_sub_item_value");
    EXPECT_EQ(slider.value(), 99);
    slider.setValue(-1);
    press("pb_sub_item_value");
    press("pb_sub_item_value");
    EXPECT_EQ(slider.value(), -2);
    EXPECT_EQ(field.text(), u"-2"_s);
}

TEST_F(SliderItem, ReturnTakesTheNumberTyped)
{
    enter(u"42"_s);
    EXPECT_EQ(slider.value(), 42);
    enter(u"1000"_s);
    EXPECT_EQ(slider.value(), 100);
    enter(u"abc"_s);
    EXPECT_EQ(slider.value(), 0);
    EXPECT_EQ(reports, (Reports{{"Exposure Time", 42}, {"Exposure Time", 100}, {"Exposure Time", 0}}));
}

TEST(FittedLabel, MovesItsLettersTogetherBeforeItCutsAndKeepsItsText)
{
    FittedLabel label;
    label.setText(u"Start Threshold Of The Filter"_s);
    const int whole = label.sizeHint().width();
    EXPECT_EQ(label.minimumSizeHint().width(), 102);
    const auto inkRight = [&label](int width) {
        label.resize(width, 18);
        const QImage image = label.grab().toImage();
        const QRgb empty = image.pixel(0, 0);
        for (int x = image.width() - 1; x >= 0; --x) {
            for (int y = 0; y < image.height(); ++y) {
                if (image.pixel(x, y) != empty)
                    return x;
            }
        }
        return -1;
    };
    EXPECT_GT(inkRight(whole), whole - 8);
    const int squeezed = inkRight(whole * 85 / 100);
    EXPECT_LT(squeezed, whole * 85 / 100);
    EXPECT_GT(squeezed, whole * 75 / 100);
    EXPECT_GT(inkRight(60), 30);
    EXPECT_EQ(label.text(), u"Start Threshold Of The Filter"_s);
}
