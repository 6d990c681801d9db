#include "app/aboutusform.h"

#include <QGridLayout>
#include <QVBoxLayout>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

TEST(AboutUSForm, IsAnEmptyFormWithTheLayoutsForAPage)
{
    QWidget window;
    const AboutUSForm form(&window);
    EXPECT_EQ(form.parentWidget(), &window);
    EXPECT_EQ(form.windowTitle(), u"Form"_s);
    auto* const grid = form.findChild<QGridLayout*>(u"gridLayout"_s);
    ASSERT_NE(grid, nullptr);
    EXPECT_EQ(form.layout(), grid);
    ASSERT_EQ(grid->count(), 1);
    auto* const page = qobject_cast<QVBoxLayout*>(grid->itemAt(0)->layout());
    ASSERT_NE(page, nullptr);
    EXPECT_EQ(page->objectName(), u"verticalLayout"_s);
    EXPECT_EQ(page->count(), 0);
    EXPECT_TRUE(form.findChildren<QWidget*>().isEmpty());
}
