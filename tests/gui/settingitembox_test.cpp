#include "settings/settingitembox.h"

#include <QImage>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace {

struct SettingItemBoxTest : testing::Test
{
    SettingItemBoxTest()
    {
        layout.addWidget(&box);
        layout.addStretch(1);
        window.resize(300, 400);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
        leaveTitle();
    }

    template <typename Widget = QWidget>
    Widget* child(const char* name) const
    {
        return box.findChild<Widget*>(QLatin1StringView(name));
    }
    QWidget* title() const { return child("widget_setting_box_title"); }
    QWidget* content() const { return child("widget_container"); }
    QColor titlePixel(int x) const { return title()->grab().toImage().pixelColor(x, 15); }
    /// The title is darker under the pointer.
    void leaveTitle()
    {
        QTest::mouseMove(&window, QPoint(150, 390));
        ASSERT_TRUE(QTest::qWaitFor([this] { return !title()->underMouse(); }));
    }
    void pressFold()
    {
        QTest::mouseClick(child("pb_fold"), Qt::LeftButton);
        leaveTitle();
    }

    QWidget window;
    QVBoxLayout layout{&window};
    SettingItemBox box;
};

} // namespace

TEST_F(SettingItemBoxTest, ANewBoxIsFolded)
{
    EXPECT_TRUE(content()->isHidden());
    EXPECT_TRUE(child<QPushButton>("pb_fold")->isChecked());
    EXPECT_TRUE(box.hasMouseTracking());
    EXPECT_TRUE(box.testAttribute(Qt::WA_TranslucentBackground));
    EXPECT_EQ(title()->styleSheet(),
              u"#widget_setting_box_title { background: #F4F5F7; color: #004B6A; border-left: 0px solid "
              u"#004B6A; }\n"
              "#widget_setting_box_title:hover { background: #E1E9ED; }"_s);
    EXPECT_EQ(titlePixel(0), QColor(0xF4, 0xF5, 0xF7));
    EXPECT_EQ(titlePixel(150), QColor(0xF4, 0xF5, 0xF7));
}

TEST_F(SettingItemBoxTest, AClickUnfoldsAndMarksTheTitleAndTheNextFoldsAgain)
{
    box.addItem(new QLabel(u"item"_s));
    pressFold();
    EXPECT_TRUE(content()->isVisible());
    EXPECT_TRUE(title()->styleSheet().contains(u"border-left: 2px solid #004B6A;"_s));
    EXPECT_EQ(titlePixel(0), QColor(0x00, 0x4B, 0x6A));
    EXPECT_EQ(titlePixel(1), QColor(0x00, 0x4B, 0x6A));
    EXPECT_EQ(titlePixel(2), QColor(0xE1, 0xE9, 0xED));
    EXPECT_EQ(titlePixel(150), QColor(0xE1, 0xE9, 0xED));

    pressFold();
    EXPECT_TRUE(content()->isHidden());
    EXPECT_TRUE(title()->styleSheet().contains(u"border-left: 0px solid #004B6A;"_s));
    EXPECT_EQ(titlePixel(0), QColor(0xF4, 0xF5, 0xF7));
    EXPECT_EQ(titlePixel(150), QColor(0xF4, 0xF5, 0xF7));
}

TEST_F(SettingItemBoxTest, TheContentOfAnUnfoldedBoxIsWhite)
{
    auto* const item = new QWidget;
    item->setMinimumHeight(60);
    box.addItem(item);
    box.setFold(false);
    ASSERT_TRUE(QTest::qWaitFor([&] { return item->isVisible() && item->height() >= 60; }));
    const QImage image = window.grab().toImage();
    EXPECT_EQ(image.pixelColor(item->mapTo(&window, item->rect().center())), QColor(Qt::white));
    EXPECT_NE(image.pixelColor(window.rect().center().x(), window.height() - 1), QColor(Qt::white))
        << "it is the box that is white";
}

TEST_F(SettingItemBoxTest, SetFoldMovesTheButtonWithTheState)
{
    box.setFold(false);
    EXPECT_FALSE(child<QPushButton>("pb_fold")->isChecked());
    EXPECT_FALSE(content()->isHidden());
    box.setFold(true);
    EXPECT_TRUE(child<QPushButton>("pb_fold")->isChecked());
    EXPECT_TRUE(content()->isHidden());
}

TEST_F(SettingItemBoxTest, ATitleWithoutDeclarationsGetsThemAfterASpace)
{
    title()->setStyleSheet(u"color: #004B6A;"_s);
    box.setFold(false);
    EXPECT_EQ(title()->styleSheet(),
              u"color: #004B6A; border-left: 2px solid #004B6A; background: #E1E9ED;"_s);
    box.setFold(true);
    EXPECT_EQ(title()->styleSheet(),
              u"color: #004B6A; border-left: 0px solid #004B6A; background: #F4F5F7;"_s);
}

TEST_F(SettingItemBoxTest, ItemsAreStackedAndInsertedWhereAsked)
{
    auto* const first = new QLabel(u"first"_s);
    auto* const second = new QLabel(u"second"_s);
    auto* const top = new QLabel(u"top"_s);
    auto* const last = new QLabel(u"last"_s);
    box.addItem(first);
    box.addItem(second);
    box.insertItem(top, 0);
    box.insertItem(last, 99);
    auto* const stack = box.findChild<QVBoxLayout*>(u"verticalLayout"_s);
    ASSERT_EQ(stack->count(), 4);
    EXPECT_EQ(stack->itemAt(0)->widget(), top);
    EXPECT_EQ(stack->itemAt(1)->widget(), first);
    EXPECT_EQ(stack->itemAt(2)->widget(), second);
    EXPECT_EQ(stack->itemAt(3)->widget(), last);
    EXPECT_EQ(last->parentWidget(), content());
}

TEST_F(SettingItemBoxTest, TheTitleIsShown)
{
    EXPECT_EQ(child<QLabel>("lb_setting_box_title_text")->text(), u"Title"_s);
    box.setTitle(u"Biases"_s);
    EXPECT_EQ(child<QLabel>("lb_setting_box_title_text")->text(), u"Biases"_s);
}
