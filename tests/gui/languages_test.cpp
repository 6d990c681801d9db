#include "app/languages.h"

#include "tests/support/capturedmessages.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

QString title()
{
    return QCoreApplication::translate("CamerasList", "Open a camera");
}

bool isChinese(const QString& text)
{
    return std::any_of(text.begin(), text.end(), [](QChar c) { return c.script() == QChar::Script_Han; });
}

} // namespace

TEST(LoadLanguage, ZhShowsChineseTexts)
{
    ASSERT_EQ(title(), u"Open a camera"_s);
    const CapturedMessages log;
    EXPECT_TRUE(loadLanguage(u"zh"_s));
    EXPECT_TRUE(isChinese(title())) << title().toStdString();
    EXPECT_TRUE(isChinese(QCoreApplication::translate("InitDialog", "Version: %1")));
    EXPECT_EQ(QCoreApplication::translate("QPlatformTheme", "Cancel"), u"取消"_s) << "Qt's own texts";
    EXPECT_TRUE(isChinese(QCoreApplication::translate("QWidgetTextControl", "&Copy")));
    EXPECT_EQ(log.debug(), QStringList());
}

TEST(LoadLanguage, AnythingButZhShowsEnglishTexts)
{
    for (const QString& language : {u"en"_s, u"fr"_s, u"ZH"_s, QString()}) {
        const CapturedMessages log;
        EXPECT_TRUE(loadLanguage(language));
        EXPECT_EQ(title(), u"Open a camera"_s);
        EXPECT_EQ(QCoreApplication::translate("QPlatformTheme", "Cancel"), u"Cancel"_s);
        EXPECT_EQ(log.debug(), QStringList());
    }
}
