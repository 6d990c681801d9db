#include "widgets/kvcombobox.h"

#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

TEST(KvComboBox, ChoosingAnEntryReportsAFinishedEditAndNoTyping)
{
    KvComboBox combo;
    combo.addItems({u"33.33ms"_s, u"100ms"_s, u"10ms"_s});
    QSignalSpy typed(&combo, &KvComboBox::signalLineEditTextChanged);
    QSignalSpy finished(&combo, &KvComboBox::signalLineEditEditingFinished);
    combo.setCurrentIndex(1);
    EXPECT_EQ(combo.text(), u"100ms"_s);
    EXPECT_EQ(finished.count(), 1);
    EXPECT_EQ(typed.count(), 0);
}

TEST(KvComboBox, TypingReportsEveryChangeAndReturnFinishesIt)
{
    KvComboBox combo;
    combo.addItems({u"33.33ms"_s, u"100ms"_s, u"10ms"_s});
    combo.show();
    auto* field = combo.findChild<QLineEdit*>();
    ASSERT_NE(field, nullptr);
    field->clear();
    QSignalSpy typed(&combo, &KvComboBox::signalLineEditTextChanged);
    QSignalSpy finished(&combo, &KvComboBox::signalLineEditEditingFinished);
    QTest::keyClicks(field, u"10"_s);
    ASSERT_EQ(typed.count(), 2);
    EXPECT_EQ(typed.at(1).at(0).toString(), u"10"_s) << "not completed to an entry";
    EXPECT_EQ(finished.count(), 0);
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(finished.count(), 1);
    EXPECT_EQ(combo.text(), u"10"_s);
    EXPECT_EQ(combo.count(), 3);
}
