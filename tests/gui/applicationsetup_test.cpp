#include "app/applicationsetup.h"

#include <QApplication>
#include <QIcon>
#include <QImage>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

TEST(ApplicationSetup, SetsTheAttributesThatWindowsAreMadeUnder)
{
    ASSERT_FALSE(QApplication::testAttribute(Qt::AA_DontCreateNativeWidgetSiblings));
    setApplicationAttributes();
    EXPECT_TRUE(QApplication::testAttribute(Qt::AA_DontCreateNativeWidgetSiblings));
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    EXPECT_TRUE(QApplication::testAttribute(Qt::AA_EnableHighDpiScaling));
#pragma GCC diagnostic pop
}

TEST(ApplicationSetup, TellsTheSystemNameVersionAndIcon)
{
    nameApplication();
    setApplicationIcon();
    EXPECT_EQ(QApplication::applicationName(), u"KorvaneInsight"_s);
    EXPECT_EQ(QApplication::applicationVersion(), u"1.0.3"_s);
    const QImage logo(u":/img/assets/Korvane logo_navigate.png"_s);
    ASSERT_FALSE(logo.isNull());
    const QImage icon = QApplication::windowIcon().pixmap(logo.size()).toImage();
    EXPECT_EQ(icon.convertToFormat(QImage::Format_ARGB32_Premultiplied),
              logo.convertToFormat(QImage::Format_ARGB32_Premultiplied));
}
