#include "mainwindow/windowkeys.h"

#include <QApplication>
#include <QComboBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QSlider>
#include <QSpinBox>
#include <QTest>
#include <QTextEdit>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace {

class KeyWindow : public QWidget
{
public:
    QList<int> keys;

protected:
    void keyPressEvent(QKeyEvent* event) override { keys << event->key(); }
};

class WindowKeysTest : public testing::Test
{
protected:
    void SetUp() override
    {
        new QHBoxLayout(&window);
        new WindowKeys(&window);
    }
    template <typename Widget>
    Widget& focused()
    {
        auto* const widget = new Widget;
        window.layout()->addWidget(widget);
        widget->show();
        show();
        widget->setFocus();
        EXPECT_EQ(QApplication::focusWidget(), widget);
        return *widget;
    }
    void show()
    {
        window.show();
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    void pressAll()
    {
        for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Left, Qt::Key_Right})
            QTest::keyClick(window.windowHandle(), key);
    }
    const QList<int> all{Qt::Key_Space, Qt::Key_Left, Qt::Key_Right};

    KeyWindow window;
};

} // namespace

TEST_F(WindowKeysTest, TheWindowItselfSeesEachKeyOnce)
{
    show();
    window.setFocus();
    pressAll();
    EXPECT_EQ(window.keys, all);
}

TEST_F(WindowKeysTest, AFocusedButtonSliderOrScrollAreaDoesNotSwallowThem)
{
    auto& button = focused<QPushButton>();
    button.setCheckable(true);
    pressAll();
    EXPECT_EQ(window.keys, all);
    EXPECT_FALSE(button.isChecked());

    window.keys.clear();
    auto& slider = focused<QSlider>();
    slider.setValue(50);
    pressAll();
    EXPECT_EQ(window.keys, all);
    EXPECT_EQ(slider.value(), 50);

    window.keys.clear();
    focused<QScrollArea>();
    pressAll();
    EXPECT_EQ(window.keys, all);
}

TEST_F(WindowKeysTest, AFieldBeingEditedKeepsThem)
{
    auto& field = focused<QLineEdit>();
    field.setText(u"ab"_s);
    QTest::keyClick(window.windowHandle(), Qt::Key_Space);
    EXPECT_EQ(field.text(), u"ab "_s);
    QTest::keyClick(window.windowHandle(), Qt::Key_Left);
    EXPECT_EQ(field.cursorPosition(), 2);
    QTest::keyClick(window.windowHandle(), Qt::Key_Right);
    EXPECT_EQ(field.cursorPosition(), 3);
    EXPECT_EQ(window.keys, QList<int>());
    for (QWidget* const editor :
         {static_cast<QWidget*>(&focused<QTextEdit>()), static_cast<QWidget*>(&focused<QPlainTextEdit>()),
          static_cast<QWidget*>(&focused<QSpinBox>())}) {
        editor->setFocus();
        pressAll();
        EXPECT_EQ(window.keys, QList<int>()) << editor->metaObject()->className();
    }
}

TEST_F(WindowKeysTest, WhatAFieldLeavesOverDoesNotStepEither)
{
    auto& field = focused<QLineEdit>();
    field.setReadOnly(true);
    pressAll();
    EXPECT_EQ(window.keys, QList<int>());
}

TEST_F(WindowKeysTest, AComboBoxKeepsThemEditableOrNot)
{
    auto& combo = focused<QComboBox>();
    combo.addItems({u"one"_s, u"two"_s});
    QTest::keyClick(window.windowHandle(), Qt::Key_Left);
    QTest::keyClick(window.windowHandle(), Qt::Key_Right);
    EXPECT_EQ(window.keys, QList<int>());
    combo.setEditable(true);
    combo.setFocus();
    combo.lineEdit()->setText(u"x"_s);
    QTest::keyClick(window.windowHandle(), Qt::Key_Space);
    EXPECT_EQ(combo.currentText(), u"x "_s);
    QTest::keyClick(window.windowHandle(), Qt::Key_Left);
    EXPECT_EQ(combo.lineEdit()->cursorPosition(), 1);
    EXPECT_EQ(window.keys, QList<int>());
}

TEST_F(WindowKeysTest, AListKeepsThem)
{
    auto& list = focused<QListWidget>();
    list.addItems({u"one"_s, u"two"_s});
    pressAll();
    EXPECT_EQ(window.keys, QList<int>());
}

TEST_F(WindowKeysTest, OtherKeysGoWhereTheFocusIs)
{
    auto& button = focused<QPushButton>();
    QTest::keyClick(window.windowHandle(), Qt::Key_A);
    EXPECT_EQ(window.keys, QList<int>({Qt::Key_A})) << "left over by the button, as always";
    int clicks = 0;
    QObject::connect(&button, &QPushButton::clicked, &window, [&clicks] { ++clicks; });
    button.setAutoDefault(true);
    QTest::keyClick(window.windowHandle(), Qt::Key_Select);
    EXPECT_EQ(clicks, 1);
}

TEST_F(WindowKeysTest, AnotherWindowKeepsItsKeys)
{
    show();
    QPushButton other;
    other.setCheckable(true);
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    other.setFocus();
    QTest::keyClick(other.windowHandle(), Qt::Key_Space);
    EXPECT_TRUE(other.isChecked());
    EXPECT_EQ(window.keys, QList<int>());
}

TEST_F(WindowKeysTest, ADisabledFieldIsNotBeingEdited)
{
    auto& field = focused<QLineEdit>();
    field.setEnabled(false);
    window.setFocus();
    pressAll();
    EXPECT_EQ(window.keys, all);
}
