// This program embeds no font, no Chinese translation and an English translation without texts.

#include "app/fonts.h"
#include "app/languages.h"
#include "tests/support/capturedmessages.h"

#include <QApplication>
#include <QFile>
#include <QFont>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

TEST(LoadApplicationFont, LogsAndKeepsTheDefaultFontWhenTheFontIsMissing)
{
    ASSERT_FALSE(QFile::exists(u":/font/NotoSansSC-Medium.ttf"_s));
    const QFont before = QApplication::font();
    const CapturedMessages log;
    EXPECT_FALSE(loadApplicationFont());
    EXPECT_EQ(log.debug(), QStringList{u"Failed to load font!"_s});
    EXPECT_EQ(QApplication::font(), before);
    EXPECT_FALSE(QFont::substitutions().contains(u"noto sans"_s));
}

TEST(LoadLanguage, LogsAndGoesOnWhenTheTranslationCannotBeLoaded)
{
    ASSERT_FALSE(QFile::exists(u":/app_zh.qm"_s));
    const CapturedMessages log;
    EXPECT_FALSE(loadLanguage(u"zh"_s));
    EXPECT_EQ(log.debug(), QStringList{u"Load language failed."_s});
    EXPECT_EQ(QCoreApplication::translate("CamerasList", "Open a camera"), u"Open a camera"_s);
}

TEST(LoadLanguage, LogsAndGoesOnWhenTheTranslationCannotBeInstalled)
{
    ASSERT_TRUE(QFile::exists(u":/app_en.qm"_s));
    const CapturedMessages log;
    EXPECT_FALSE(loadLanguage(u"en"_s));
    EXPECT_EQ(log.debug(), QStringList{u"install translator failed."_s});
    EXPECT_EQ(QCoreApplication::translate("CamerasList", "Open a camera"), u"Open a camera"_s);
}

TEST(LoadLanguage, TakesTheEnglishTranslationForAnythingButZh)
{
    for (const QString& language : {u"en"_s, u"fr"_s, u"ZH"_s, QString()}) {
        const CapturedMessages log;
        EXPECT_FALSE(loadLanguage(language));
        EXPECT_EQ(log.debug(), QStringList{u"install translator failed."_s}) << language.toStdString();
    }
}
