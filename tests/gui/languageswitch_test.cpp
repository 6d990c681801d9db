#include "app/config.h"
#include "app/languageswitch.h"
#include "tests/gui/dialogcard.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/scripteddialogs.h"
#include "widgets/kvmessagebox.h"

#include <QDir>
#include <QFile>
#include <QPushButton>

using namespace Qt::Literals::StringLiterals;

namespace {

class LanguageSwitchTest : public testing::Test
{
protected:
    void SetUp() override
    {
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    }
    /// Asks, and presses this button of the question.
    void ask(const char* name)
    {
        const LanguageSwitch languageSwitch(config, [this](const QString& program) {
            started << program;
            languageInFile = stored();
            windowOpenAtStart = window.isVisible();
            return startable;
        });
        ScriptedPerson person([&](QWidget& modal) {
            auto* const box = qobject_cast<KVMessageBox*>(&modal);
            if (!box)
                return false;
            for (const char* label : {"lb_title", "lb_show_message"})
                texts << card::find<QLabel>(*box, label)->text();
            for (const char* button : {"pb_open", "pb_close"})
                texts << card::find<QPushButton>(*box, button)->text();
            QTest::mouseClick(card::find<QPushButton>(*box, name), Qt::LeftButton);
            return true;
        });
        languageSwitch.ask();
        EXPECT_TRUE(person.isDone()) << "nothing was asked";
    }
    static QString stored() { return Config(u"switch.ini"_s).language; }
    /// The name of a file that is not there: a Config of an earlier test has written its own at its end.
    static QString newFile()
    {
        QFile::remove(u"switch.ini"_s);
        return u"switch.ini"_s;
    }

    Config config{newFile()};
    QWidget window;
    QStringList texts;
    QStringList started;
    QString languageInFile;
    bool windowOpenAtStart = false;
    bool startable = true;
};

TEST_F(LanguageSwitchTest, AsksBetweenRestartAndLater)
{
    ask("pb_close");
    EXPECT_EQ(texts,
              (QStringList{u"Tips"_s, u"The language change will take effect after restart."_s, u"Restart"_s,
                           u"Later"_s}));
}

TEST_F(LanguageSwitchTest, LaterAndTheCrossChangeNothing)
{
    for (const char* name : {"pb_close", "pb_win_close"}) {
        config.language = u"en"_s;
        ask(name);
        EXPECT_EQ(config.language, u"en"_s) << name;
        EXPECT_TRUE(started.isEmpty()) << name;
        EXPECT_TRUE(window.isVisible()) << name;
    }
    EXPECT_FALSE(QFile::exists(u"switch.ini"_s)) << "nothing was stored";
}

TEST_F(LanguageSwitchTest, RestartStoresTheOtherLanguageClosesAllAndStartsThisProgram)
{
    config.language = u"en"_s;
    ask("pb_open");
    EXPECT_EQ(config.language, u"zh"_s);
    EXPECT_EQ(started, QStringList{QCoreApplication::applicationFilePath()});
    EXPECT_EQ(languageInFile, u"zh"_s) << "the new instance reads the file";
    EXPECT_FALSE(windowOpenAtStart);
    EXPECT_FALSE(window.isVisible());
}

TEST_F(LanguageSwitchTest, AProgramThatCannotBeStartedIsLogged)
{
    startable = false;
    const QString line = QCoreApplication::applicationFilePath() + u" cannot be started again."_s;
    const CapturedMessages log;
    ask("pb_open");
    EXPECT_EQ(log.warnings().count(line), 1);
}

TEST_F(LanguageSwitchTest, TheNewInstanceGetsNoArgumentsAndTheSameFolder)
{
    // A program that notes how it was started; renamed, the note is whole when it is there.
    const QString program = QDir::current().filePath(u"noting"_s);
    QFile script(program);
    ASSERT_TRUE(script.open(QIODevice::WriteOnly));
    script.write("#!/bin/sh\n{ echo $#; pwd -P; } > note.new\nmv note.new note\n");
    script.close();
    ASSERT_TRUE(script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    EXPECT_TRUE(LanguageSwitch::startDetached(program));
    QFile note(u"note"_s);
    ASSERT_TRUE(QTest::qWaitFor([&note] { return note.exists(); }, 20000));
    ASSERT_TRUE(note.open(QIODevice::ReadOnly));
    EXPECT_EQ(QString::fromLocal8Bit(note.readAll()), u"0\n"_s + QDir::current().canonicalPath() + u'\n');
    EXPECT_FALSE(LanguageSwitch::startDetached(QDir::current().filePath(u"no such program"_s)));
}

TEST_F(LanguageSwitchTest, ChineseBecomesEnglish)
{
    config.language = u"zh"_s;
    ask("pb_open");
    EXPECT_EQ(stored(), u"en"_s);
}

TEST_F(LanguageSwitchTest, AnUnknownLanguageBecomesEnglish)
{
    for (const QString& unknown : {u"fr"_s, QString(), u"EN"_s}) {
        config.language = unknown;
        ask("pb_open");
        EXPECT_EQ(config.language, u"en"_s) << unknown.toStdString();
    }
}

} // namespace
