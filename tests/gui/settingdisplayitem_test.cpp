#include "settings/settingdisplayitem.h"

#include "tests/gui/settingsfixture.h"
#include "tests/support/capturedmessages.h"
#include "widgets/kvcombobox.h"
#include "widgets/kvcomboboxbase.h"

#include <QAbstractItemView>
#include <QLabel>
#include <QLineEdit>

#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace {

struct SettingDisplayItemTest : testing::Test
{
    SettingDisplayItemTest()
    {
        QObject::connect(&item, &SettingDisplayItem::signalCumulativeTimeChanged,
                         [this](uint64_t microseconds) { times.push_back(microseconds); });
        QObject::connect(&item, &SettingDisplayItem::signalFpsChanged,
                         [this](uint32_t framesPerSecond) { rates.push_back(framesPerSecond); });
        window.put(item);
    }

    static void retype(KvComboBox& combo, const QString& text)
    {
        QLineEdit* const field = combo.comboBox()->lineEdit();
        combo.comboBox()->setFocus();
        field->selectAll();
        QTest::keyClick(field, Qt::Key_Backspace);
        QTest::keyClicks(field, text);
    }
    static void pressReturn(KvComboBox& combo)
    {
        QTest::keyClick(combo.comboBox()->lineEdit(), Qt::Key_Return);
    }
    void leave() { window.setFocus(); }
    /// Picks an entry with mouse and keyboard.
    static void pick(KvComboBox& combo, int index)
    {
        combo.comboBox()->showPopup();
        QAbstractItemView* const list = combo.comboBox()->view();
        list->setCurrentIndex(combo.comboBox()->model()->index(index, 0));
        QTest::keyClick(list, Qt::Key_Return);
    }
    /// The declarations in force, of the combo box and of the frame around its field.
    static QString colours(const KvComboBox& combo)
    {
        const auto border = [](const QString& sheet) {
            const qsizetype from = sheet.indexOf(u"border"_s);
            return sheet.mid(from, sheet.indexOf(u';', from) - from + 1);
        };
        return border(combo.comboBox()->styleSheet()) + u' '
            + border(child(combo, "comboBoxWidget").styleSheet());
    }
    static bool looksInvalid(const KvComboBox& combo)
    {
        return colours(combo) == u"border: 1px solid #FF6058; border: 2px solid #FFDAD8;"_s;
    }
    static bool looksValid(const KvComboBox& combo)
    {
        return colours(combo) == u"border: 1px solid #004B6A; border: 2px solid #D7E7EE;"_s;
    }

    SettingsWindow window;
    SettingDisplayItem item;
    KvComboBox& time = child<KvComboBox>(item, "widget_combobox_accumulation_time");
    KvComboBox& speed = child<KvComboBox>(item, "widget_combobox_frame_rate");
    std::vector<uint64_t> times;
    std::vector<uint32_t> rates;
};

using Times = std::vector<uint64_t>;
using Rates = std::vector<uint32_t>;

QStringList entries(const KvComboBox& combo)
{
    QStringList texts;
    for (int index = 0; index < combo.count(); ++index)
        texts << combo.itemText(index);
    return texts;
}

} // namespace

TEST_F(SettingDisplayItemTest, StartsWithItsPresetsAndSendsNothing)
{
    EXPECT_EQ(entries(time), (QStringList{u"33.33ms"_s, u"100ms"_s, u"10ms"_s, u"1ms"_s}));
    EXPECT_EQ(entries(speed), (QStringList{u"1"_s, u"2"_s, u"5"_s, u"10"_s, u"100"_s, u"1000"_s}));
    EXPECT_EQ(time.text(), u"33.33ms"_s);
    EXPECT_EQ(speed.text(), u"1"_s);
    EXPECT_EQ(child<QLabel>(item, "label_2").text(), u"Accumulation time"_s);
    EXPECT_EQ(child<QLabel>(item, "label").text(), u"Slow Rate"_s);
    EXPECT_TRUE(item.hasMouseTracking());
    EXPECT_EQ(item.minimumHeight(), 150);
    EXPECT_EQ(item.maximumHeight(), 500);
    EXPECT_TRUE(times.empty());
    EXPECT_TRUE(rates.empty());
}

TEST_F(SettingDisplayItemTest, ATypedTimeIsCompletedAndSentOnce)
{
    retype(time, u"50"_s);
    EXPECT_TRUE(looksValid(time)) << colours(time).toStdString();
    EXPECT_TRUE(times.empty());
    pressReturn(time);
    EXPECT_EQ(time.text(), u"50ms"_s);
    EXPECT_EQ(time.cursorPosition(), 2);
    EXPECT_EQ(times, Times{50000});
    EXPECT_TRUE(colours(time).startsWith(u"border: 1px solid #A7A7A7;"_s));
    leave();
    EXPECT_EQ(times, Times{50000});
}

TEST_F(SettingDisplayItemTest, LeavingTheFieldSendsATypedTime)
{
    retype(time, u"250us"_s);
    leave();
    EXPECT_EQ(times, Times{250});
    EXPECT_EQ(time.text(), u"250us"_s);
}

TEST_F(SettingDisplayItemTest, TimesUpToASecondAreSent)
{
    for (const auto& [text, microseconds] :
         std::initializer_list<std::pair<QString, uint64_t>>{{u"1000ms"_s, 1000000},
                                                             {u"1000000us"_s, 1000000},
                                                             {u"10MS"_s, 10000},
                                                             {u"0.5ms"_s, 500},
                                                             {u"1.9us"_s, 1}}) {
        times.clear();
        retype(time, text);
        pressReturn(time);
        EXPECT_EQ(times, Times{microseconds}) << text.toStdString();
        EXPECT_EQ(time.text(), text);
    }
}

TEST_F(SettingDisplayItemTest, OtherTimesAreMarkedAndNotSent)
{
    for (const QString& text : {u"2000ms"_s, u"1000001us"_s, u"0ms"_s, u"abc"_s, u"-5"_s, u""_s}) {
        retype(time, text);
        EXPECT_TRUE(looksInvalid(time)) << text.toStdString() << ": " << colours(time).toStdString();
        pressReturn(time);
        leave();
        EXPECT_TRUE(looksInvalid(time)) << text.toStdString() << ": " << colours(time).toStdString();
        EXPECT_EQ(time.text(), text) << "the unit is completed inside the check only";
    }
    EXPECT_TRUE(times.empty());
    retype(time, u"5"_s);
    EXPECT_TRUE(looksValid(time));
}

TEST_F(SettingDisplayItemTest, AMarkStaysWhileTheItemIsFoldedAwayOrDisabled)
{
    retype(time, u"abc"_s);
    item.hide();
    item.show();
    EXPECT_TRUE(looksInvalid(time)) << colours(time).toStdString();
    time.setEnabled(false);
    time.setEnabled(true);
    EXPECT_TRUE(looksInvalid(time)) << colours(time).toStdString();
}

TEST_F(SettingDisplayItemTest, AMarkedTimeIsDrawnRed)
{
    retype(time, u"abc"_s);
    const QImage image = time.grab().toImage();
    EXPECT_EQ(image.pixelColor(image.width() / 2, 0), QColor(0xFF, 0xDA, 0xD8));
    EXPECT_EQ(image.pixelColor(image.width() / 2, 2), QColor(0xFF, 0x60, 0x58));
}

TEST_F(SettingDisplayItemTest, APickedTimeIsSentAtOnceAndOnce)
{
    pick(time, 1);
    EXPECT_EQ(times, Times{100000});
    leave();
    EXPECT_EQ(times, Times{100000});
    pick(time, 0);
    EXPECT_EQ(times, (Times{100000, 33330}));
    pick(time, 2);
    pick(time, 3);
    EXPECT_EQ(times, (Times{100000, 33330, 10000, 1000}));
}

TEST_F(SettingDisplayItemTest, PickingEndsTheMarkOfAWrongTime)
{
    retype(time, u"abc"_s);
    pick(time, 1);
    EXPECT_FALSE(looksInvalid(time));
    EXPECT_EQ(times, Times{100000});
}

TEST_F(SettingDisplayItemTest, PresetSpeedsGiveTheirFrameRates)
{
    for (const int index : {1, 2, 3, 4, 5, 0})
        pick(speed, index);
    EXPECT_EQ(rates, (Rates{60, 150, 300, 3000, 30000, 30}));
}

TEST_F(SettingDisplayItemTest, ATypedSpeedIsSentOnceAndLogged)
{
    retype(speed, u"2.55"_s);
    EXPECT_TRUE(looksValid(speed)) << colours(speed).toStdString();
    {
        const CapturedMessages messages;
        pressReturn(speed);
        EXPECT_EQ(messages.debug(), (QStringList{u"play speed: 2.55"_s, u"frame rate change: 76"_s}));
    }
    leave();
    EXPECT_EQ(rates, Rates{76});
    EXPECT_EQ(speed.text(), u"2.55"_s);
    EXPECT_TRUE(colours(speed).startsWith(u"border: 1px solid #A7A7A7;"_s));
}

TEST_F(SettingDisplayItemTest, SpeedsBelowAFramePerSecondGiveZero)
{
    retype(speed, u"0.003"_s);
    EXPECT_TRUE(looksValid(speed));
    pressReturn(speed);
    retype(speed, u"0.01"_s);
    pressReturn(speed);
    EXPECT_EQ(rates, (Rates{0, 0}));
}

TEST_F(SettingDisplayItemTest, OtherSpeedsAreMarkedAndNotSent)
{
    for (const QString& text :
         {u"1000.5"_s, u"0.0029"_s, u"0"_s, u"-1"_s, u"abc"_s, u"nan"_s, u"inf"_s, u""_s}) {
        retype(speed, text);
        EXPECT_TRUE(looksInvalid(speed)) << text.toStdString() << ": " << colours(speed).toStdString();
        pressReturn(speed);
        leave();
        EXPECT_TRUE(looksInvalid(speed)) << text.toStdString();
    }
    EXPECT_TRUE(rates.empty());
    retype(speed, u"1000"_s);
    EXPECT_TRUE(looksValid(speed));
}

TEST_F(SettingDisplayItemTest, OnlyTheSpeedIsSwitchedOff)
{
    item.setSlowRateEnabled(false);
    EXPECT_FALSE(speed.isEnabled());
    EXPECT_TRUE(time.isEnabled());
    item.setSlowRateEnabled(true);
    EXPECT_TRUE(speed.isEnabled());
}
