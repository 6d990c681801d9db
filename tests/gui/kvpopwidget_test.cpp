#include "widgets/popwidget.h"

#include <QApplication>
#include <QImage>
#include <QLabel>
#include <QLayout>
#include <QTimer>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

TEST(PopWidget, AppendsWidgetsBelowOneAnother)
{
    PopWidget pop(nullptr);
    auto* first = new QLabel(u"first"_s);
    auto* second = new QLabel(u"second"_s);
    pop.addWidget(first);
    pop.addWidget(second);
    pop.show();
    EXPECT_EQ(first->window(), &pop) << "it owns them";
    EXPECT_LT(first->y(), second->y());
    const auto* column = pop.findChild<QLayout*>(u"verticalLayout"_s);
    ASSERT_NE(column, nullptr);
    EXPECT_EQ(column->indexOf(first), 0);
    EXPECT_EQ(column->indexOf(second), 1);
    EXPECT_EQ(first->x(), 6) << "left margin";
    EXPECT_EQ(pop.width() - first->width() - first->x(), 6) << "right margin";
}

TEST(PopWidget, PaintsARoundedBody)
{
    PopWidget pop(nullptr);
    EXPECT_EQ(pop.size(), QSize(400, 300));
    pop.resize(200, 30);
    const QImage image = pop.grab().toImage();
    EXPECT_EQ(image.pixelColor(100, 15), QColor(0xE8, 0xEF, 0xF1));
    EXPECT_EQ(image.pixelColor(100, 0), QColor(0xE8, 0xEF, 0xF1)) << "no border";
    EXPECT_EQ(image.pixelColor(0, 15), QColor(0xE8, 0xEF, 0xF1));
    EXPECT_EQ(image.pixelColor(0, 0).alpha(), 0);
    EXPECT_EQ(image.pixelColor(199, 29).alpha(), 0);
}

TEST(PopWidget, DoesNotKeepTheProgramAlive)
{
    QWidget mainWindow;
    mainWindow.show();
    PopWidget pop(nullptr);
    pop.show();
    bool shown = false;
    QTimer::singleShot(0, &mainWindow, [&] {
        mainWindow.close();
        shown = pop.isVisible();
    });
    QTimer::singleShot(2000, &mainWindow, [] { QCoreApplication::exit(1); });
    EXPECT_EQ(QApplication::exec(), 0);
    EXPECT_TRUE(shown);
}

TEST(PopWidget, IsShownWithoutTakingTheFocus)
{
    const PopWidget pop(nullptr);
    EXPECT_TRUE(pop.testAttribute(Qt::WA_ShowWithoutActivating));
}
