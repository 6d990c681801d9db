#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

/// Whether a window with this title is on the screen.
bool showsWindow(const QString& title)
{
    QProcess search;
    search.start(u"xdotool"_s, {u"search"_s, u"--onlyvisible"_s, u"--name"_s, u'^' + title + u'$'});
    return search.waitForFinished() && search.exitStatus() == QProcess::NormalExit && search.exitCode() == 0;
}

} // namespace

// The texts of what is made before the language is loaded stay English for good.
TEST(DesktopStart, TheProgramStartsInTheLanguageOfItsSettings)
{
    for (const auto& [language, title] :
         {std::pair(u"en"_s, u"Widget"_s), std::pair(u"zh"_s, u"KorvaneInsight"_s)}) {
        const QTemporaryDir folder;
        QFile settings(folder.filePath(u"config.ini"_s));
        ASSERT_TRUE(settings.open(QIODevice::WriteOnly));
        settings.write("[Setting]\nlanguage=" + language.toLatin1() + '\n');
        settings.close();
        QProcess program;
        program.setWorkingDirectory(folder.path());
        program.start(QStringLiteral(KORVANE_EXECUTABLE), {u"--no-splash"_s});
        EXPECT_TRUE(QTest::qWaitFor([&title] { return showsWindow(title); }, 30000)) << title.toStdString();
        program.terminate();
        ASSERT_TRUE(program.waitForFinished());
    }
}
