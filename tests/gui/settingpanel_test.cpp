#include "settings/settingpanel.h"

#include "tests/gui/settingsfixture.h"

#include <QImage>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>

using namespace Qt::Literals::StringLiterals;

namespace {

class Panel : public SettingPanel
{
public:
    Panel() : SettingPanel(u"Some Setting"_s, nullptr) {}

    using SettingPanel::insertBox;
    using SettingPanel::removeBox;

    QLayout& content() const { return *child<QScrollArea>(*this, "scroll_area_setting").widget()->layout(); }
};

std::unique_ptr<SettingItemBox> boxWith(const QString& title)
{
    auto box = std::make_unique<SettingItemBox>();
    box->setTitle(title);
    box->addItem(new QPushButton(title));
    return box;
}

} // namespace

TEST(SettingPanel, HasAHeadingAboveAStackThatScrollsWithTheWheelOnly)
{
    const Panel panel;
    EXPECT_EQ(child<QLabel>(panel, "lb_setting_ui").text(), u"Some Setting"_s);
    EXPECT_EQ(panel.objectName(), u"SettingUI"_s);
    EXPECT_EQ(panel.minimumWidth(), 300);
    EXPECT_EQ(panel.sizePolicy(), QSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding));
    EXPECT_TRUE(panel.testAttribute(Qt::WA_OpaquePaintEvent));
    const auto& area = child<QScrollArea>(panel, "scroll_area_setting");
    EXPECT_TRUE(area.widgetResizable());
    EXPECT_EQ(area.horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    EXPECT_EQ(area.verticalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    EXPECT_EQ(panel.content().count(), 1);
    EXPECT_NE(panel.content().itemAt(0)->spacerItem(), nullptr);
}

TEST(SettingPanel, StacksBoxesAtTheTopInTheOrderTheyCome)
{
    SettingsWindow window;
    Panel panel;
    window.put(panel);
    const auto first = boxWith(u"first"_s);
    const auto second = boxWith(u"second"_s);
    const auto third = boxWith(u"third"_s);
    for (const auto* box : {&first, &second, &third})
        panel.insertBox(box->get());
    SettingsWindow::settle();
    ASSERT_EQ(panel.content().count(), 4);
    EXPECT_EQ(panel.content().itemAt(0)->widget(), first.get());
    EXPECT_EQ(panel.content().itemAt(1)->widget(), second.get());
    EXPECT_EQ(panel.content().itemAt(2)->widget(), third.get());
    EXPECT_NE(panel.content().itemAt(3)->spacerItem(), nullptr);
    EXPECT_EQ(first->pos(), QPoint(0, 0));
    EXPECT_EQ(third->height(), 30);
    EXPECT_LT(third->geometry().bottom(), 120);
}

TEST(SettingPanel, WithoutBoxesOnlyTheStretchRemains)
{
    Panel panel;
    auto box = boxWith(u"box"_s);
    panel.insertBox(box.get());
    panel.removeBox(box);
    EXPECT_EQ(box, nullptr);
    panel.removeBox(box);
    EXPECT_EQ(panel.content().count(), 1);
    EXPECT_NE(panel.content().itemAt(0)->spacerItem(), nullptr);
    EXPECT_TRUE(panel.findChildren<SettingItemBox*>().isEmpty());
}

TEST(SettingPanel, ALostStretchIsPutBack)
{
    Panel panel;
    delete panel.content().takeAt(0);
    auto box = boxWith(u"box"_s);
    panel.insertBox(box.get());
    EXPECT_EQ(panel.content().count(), 2);
    EXPECT_NE(panel.content().itemAt(1)->spacerItem(), nullptr);
}

TEST(SettingPanel, FoldingTakesEffectWithoutTheEventLoop)
{
    SettingsWindow window;
    Panel panel;
    window.put(panel);
    const auto first = boxWith(u"first"_s);
    const auto second = boxWith(u"second"_s);
    panel.insertBox(first.get());
    panel.insertBox(second.get());
    SettingsWindow::settle();
    const int folded = second->y();
    first->setFold(false);
    EXPECT_EQ(first->height(), first->sizeHint().height());
    EXPECT_GT(second->y(), folded);
    first->setFold(true);
    EXPECT_EQ(second->y(), folded);
}

TEST(SettingPanel, PaintsEveryPixelOfItself)
{
    SettingsWindow window(320, 200);
    Panel panel;
    window.put(panel);
    QImage image(panel.size(), QImage::Format_RGB32);
    image.fill(Qt::magenta);
    panel.render(&image, {}, {}, QWidget::DrawChildren);
    const QRgb pane = qRgb(0xFC, 0xFC, 0xFC);
    EXPECT_EQ(image.pixel(0, 0), pane);
    EXPECT_EQ(image.pixel(image.width() - 1, image.height() - 1), pane);
    EXPECT_EQ(image.pixel(160, 150), pane);
}
