#include "app/fonts.h"

#include "tests/support/capturedmessages.h"

#include <QApplication>
#include <QFontInfo>
#include <QFontMetrics>
#include <QLabel>
#include <QRawFont>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString sample = u"Handgloves 01:15:000250 相机"_s;

// The head table holds the checksum and the dates of a font file, so no other font has the same.
void expectEmbeddedFont(QFont font)
{
    font.setPixelSize(40);
    const QRawFont embedded(u":/font/NotoSansSC-Medium.ttf"_s, 40);
    ASSERT_TRUE(embedded.isValid());
    const QRawFont used = QRawFont::fromFont(font);
    EXPECT_EQ(used.fontTable("head"), embedded.fontTable("head")) << font.family().toStdString();
}

} // namespace

TEST(LoadApplicationFont, MakesTheEmbeddedFontTheApplicationsFont)
{
    const CapturedMessages log;
    ASSERT_TRUE(loadApplicationFont());
    EXPECT_EQ(log.debug(), QStringList());

    const QFont font = QApplication::font();
    EXPECT_EQ(font.family(), u"Noto Sans SC"_s);
    EXPECT_EQ(font.hintingPreference(), QFont::PreferNoHinting);
    EXPECT_EQ(font.pointSize(), QFont(u"Noto Sans SC"_s).pointSize());
    EXPECT_EQ(font.weight(), QFont::Normal);
    EXPECT_EQ(font.style(), QFont::StyleNormal);
    expectEmbeddedFont(font);
}

TEST(LoadApplicationFont, GivesTheEmbeddedFontForEveryFamilyThatTheStyleSheetsName)
{
    ASSERT_TRUE(loadApplicationFont());
    for (const QString& family :
         {u"Noto Sans SC"_s, u"Noto Sans SC Medium"_s, u"Noto Sans"_s, u"Noto Sans Myanmar"_s}) {
        expectEmbeddedFont(QFont(family));
        EXPECT_TRUE(QFontInfo(QFont(family)).family().startsWith(u"Noto Sans SC"_s));
    }
}

TEST(LoadApplicationFont, GivesTheEmbeddedFontToStyleSheets)
{
    ASSERT_TRUE(loadApplicationFont());
    for (const char* family : {"Noto Sans SC Medium", "Noto Sans", "Noto Sans Myanmar"}) {
        QLabel label(sample);
        label.setStyleSheet(u"font: 16px \"%1\";"_s.arg(QLatin1StringView(family)));
        label.ensurePolished();
        EXPECT_EQ(label.font().pixelSize(), 16);
        expectEmbeddedFont(label.font());
    }
}

TEST(LoadApplicationFont, HasGlyphsForTheTextsInBothLanguages)
{
    ASSERT_TRUE(loadApplicationFont());
    const QFontMetrics metrics(QApplication::font());
    for (const QChar c : sample + u"©–µ×设置语言"_s)
        EXPECT_TRUE(metrics.inFont(c)) << "U+" << QString::number(c.unicode(), 16).toStdString();
}

TEST(LoadApplicationFont, TwiceIsHarmless)
{
    ASSERT_TRUE(loadApplicationFont());
    ASSERT_TRUE(loadApplicationFont());
    EXPECT_EQ(QFont::substitutes(u"Noto Sans"_s).size(), 1);
    expectEmbeddedFont(QApplication::font());
}
