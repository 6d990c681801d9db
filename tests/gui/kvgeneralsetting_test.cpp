#include "app/config.h"
#include "app/fonts.h"
#include "app/kvgeneralsetting.h"
#include "tests/gui/dialogcard.h"
#include "tests/support/scripteddialogs.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QListWidget>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>

#include <optional>

using namespace Qt::Literals::StringLiterals;

namespace {

class KvGeneralSettingTest : public testing::Test
{
protected:
    void SetUp() override
    {
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        ASSERT_TRUE(loadApplicationFont());
        QDir::current().mkpath(u"recordings"_s);
        QDir::current().mkpath(u"recordings/inside"_s);
        QDir::current().mkpath(u"videos"_s);
        config->output_raw_file_path = recordings;
        config->video_save_path = videos;
        dialog.emplace(nullptr);
        dialog->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&*dialog));
    }
    QLineEdit* field(const char* name) const { return card::find<QLineEdit>(*dialog, name); }
    QPushButton* button(const char* name) const { return card::find<QPushButton>(*dialog, name); }
    QString text(const char* label) const { return card::find<QLabel>(*dialog, label)->text(); }
    void type(const char* name, const QString& typed)
    {
        field(name)->selectAll();
        QTest::keyClicks(field(name), typed);
    }
    void click(const char* name) { QTest::mouseClick(button(name), Qt::LeftButton); }
    bool within(const char* inner, const char* outer) const
    {
        return card::find<QWidget>(*dialog, outer)->isAncestorOf(card::find<QWidget>(*dialog, inner));
    }
    /// Presses a chooser's button and answers the chooser: with a folder, or with nothing.
    QString startOfChooser(const char* name, const QString& answer)
    {
        QString start;
        ScriptedPerson person([&](QWidget& modal) {
            auto* const chooser = qobject_cast<QFileDialog*>(&modal);
            if (!chooser)
                return false;
            EXPECT_EQ(chooser->windowTitle(), u"Select Directory"_s);
            EXPECT_EQ(chooser->fileMode(), QFileDialog::Directory);
            EXPECT_TRUE(chooser->testOption(QFileDialog::ShowDirsOnly));
            EXPECT_TRUE(chooser->testOption(QFileDialog::DontResolveSymlinks));
            start = chooser->directory().absolutePath();
            if (answer.isEmpty()) {
                chooser->reject();
            } else {
                auto* const typed = card::find<QLineEdit>(*chooser, "fileNameEdit");
                typed->setText(answer);
                QTest::keyClick(typed, Qt::Key_Return);
            }
            return true;
        });
        click(name);
        EXPECT_TRUE(person.isDone());
        return start;
    }
    QStringList configured() const { return {config->output_raw_file_path, config->video_save_path}; }

    Config* config = Config::getInstance(u"config.ini"_s);
    const QString recordings = QDir::current().filePath(u"recordings"_s);
    const QString videos = QDir::current().filePath(u"videos"_s);
    std::optional<KvGeneralSetting> dialog;
};

TEST_F(KvGeneralSettingTest, ShowsItsTextsUnderTheirNames)
{
    EXPECT_EQ(dialog->windowTitle(), u"KvGerenalSetting"_s);
    EXPECT_EQ(text("lb_title"), u"General Settings"_s);
    EXPECT_EQ(text("lb_title_2"), u"File Settings"_s);
    EXPECT_EQ(text("label"), u"Default Out Raw File Path"_s);
    EXPECT_EQ(text("label_2"), u"Default Video File Path"_s);
    EXPECT_EQ(button("pb_cancel")->text(), u"Cancel"_s);
    EXPECT_EQ(button("pb_save")->text(), u"Save"_s);
    EXPECT_EQ(button("pb_win_close")->text(), QString());
    EXPECT_TRUE(within("lb_title", "widget_title_name"));
    EXPECT_TRUE(within("widget_title_name", "widget_title_bar"));
    EXPECT_TRUE(within("pb_win_close", "widget_title_bar"));
    EXPECT_FALSE(within("pb_win_close", "widget_title_name")) << "the cross is no place to drag";
    for (const char* name : {"label", "le_default_file_path", "pb_select_dir"})
        EXPECT_TRUE(within(name, "widget_raw_file_path_setting")) << name;
    for (const char* name : {"label_2", "le_default_video_file_path", "pb_select_video_save_path"})
        EXPECT_TRUE(within(name, "widget_raw_file_path_setting_2")) << name;
}

TEST_F(KvGeneralSettingTest, ListsOnePageAndHidesItsTabs)
{
    const auto* const pages = card::find<QTabWidget>(*dialog, "tw_settings");
    EXPECT_FALSE(pages->tabBar()->isVisible());
    ASSERT_EQ(pages->count(), 2);
    EXPECT_EQ(pages->tabText(0), u"Tab 1"_s);
    EXPECT_EQ(pages->tabText(1), u"Tab 2"_s);
    EXPECT_EQ(pages->currentIndex(), 0);
    EXPECT_TRUE(pages->widget(0)->isAncestorOf(field("le_default_file_path")));
    const auto* const list = card::find<QListWidget>(*dialog, "lw_general_setting_items");
    ASSERT_EQ(list->count(), 1);
    EXPECT_EQ(list->item(0)->text(), u"File"_s);
}

TEST_F(KvGeneralSettingTest, BeginsWithTheConfiguredFolders)
{
    EXPECT_EQ(field("le_default_file_path")->text(), recordings);
    EXPECT_EQ(field("le_default_video_file_path")->text(), videos);
}

TEST_F(KvGeneralSettingTest, CancelCrossAndEscapeKeepTheOldFolders)
{
    const auto closes = [this](const std::function<void()>& act) {
        dialog->show();
        type("le_default_file_path", u"/typed"_s);
        type("le_default_video_file_path", u"/typed too"_s);
        act();
        return !dialog->isVisible();
    };
    const QStringList before = configured();
    EXPECT_TRUE(closes([this] { click("pb_cancel"); }));
    EXPECT_EQ(configured(), before);
    EXPECT_TRUE(closes([this] { click("pb_win_close"); }));
    EXPECT_EQ(configured(), before);
    EXPECT_TRUE(closes([this] { QTest::keyClick(field("le_default_file_path"), Qt::Key_Escape); }));
    EXPECT_EQ(configured(), before);
}

TEST_F(KvGeneralSettingTest, SaveTakesTheTextsAsTypedAndWritesNoFile)
{
    config->save();
    const auto content = [] {
        QFile file(u"config.ini"_s);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    const QByteArray before = content();
    ASSERT_FALSE(before.isEmpty());
    field("le_default_file_path")->setText(u"/no such/录像 "_s);
    field("le_default_video_file_path")->clear();
    click("pb_save");
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_EQ(configured(), (QStringList{u"/no such/录像 "_s, QString()}));
    EXPECT_EQ(content(), before) << "the values wait for the next save";
    config->save();
    EXPECT_NE(content(), before);
    EXPECT_FALSE(QDir(u"/no such"_s).exists());
}

TEST_F(KvGeneralSettingTest, ReturnInAFieldSaves)
{
    type("le_default_file_path", u"/typed"_s);
    QTest::keyClick(field("le_default_file_path"), Qt::Key_Return);
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_EQ(config->output_raw_file_path, u"/typed"_s);
}

TEST_F(KvGeneralSettingTest, AChooserAlwaysStartsAtTheConfiguredFolder)
{
    type("le_default_file_path", u"/typed"_s);
    EXPECT_EQ(startOfChooser("pb_select_dir", recordings + u"/inside"_s), recordings);
    EXPECT_EQ(field("le_default_file_path")->text(), recordings + u"/inside"_s);
    EXPECT_EQ(startOfChooser("pb_select_dir", QString()), recordings) << "not at the first choice";
    EXPECT_EQ(field("le_default_file_path")->text(), recordings + u"/inside"_s)
        << "an empty answer changes nothing";
    EXPECT_EQ(field("le_default_video_file_path")->text(), videos);
    EXPECT_EQ(config->output_raw_file_path, recordings) << "only saving takes it over";
}

TEST_F(KvGeneralSettingTest, TheVideoFolderHasItsOwnChooser)
{
    EXPECT_EQ(startOfChooser("pb_select_video_save_path", recordings), videos);
    EXPECT_EQ(field("le_default_video_file_path")->text(), recordings);
    EXPECT_EQ(startOfChooser("pb_select_video_save_path", QString()), videos);
    EXPECT_EQ(field("le_default_file_path")->text(), recordings);
    click("pb_save");
    EXPECT_EQ(configured(), (QStringList{recordings, recordings}));
}

TEST_F(KvGeneralSettingTest, TabGoesThroughTheFieldsInReadingOrder)
{
    dialog->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&*dialog));
    card::expectTabOrder(*dialog,
                         {"le_default_file_path", "pb_select_dir", "le_default_video_file_path",
                          "pb_select_video_save_path", "pb_cancel", "pb_save", "lw_general_setting_items"});
}

TEST_F(KvGeneralSettingTest, IsAFramelessCardInItsColours)
{
    card::expectFamilyLook(*dialog);
    card::expectHoverLooks(*dialog);
    card::expectPressedLooks(*dialog);
    card::expectBox(*dialog, "widget_raw_file_path_setting");
    card::expectBox(*dialog, "widget_raw_file_path_setting_2");
    EXPECT_EQ(dialog->font().pixelSize(), 18);
    EXPECT_EQ(dialog->font().family(), u"Noto Sans SC Medium"_s);
    EXPECT_EQ(field("le_default_file_path")->font().pixelSize(), 18);
    EXPECT_EQ(field("le_default_file_path")->font().family(), u"Noto Sans SC Medium"_s);
}

TEST_F(KvGeneralSettingTest, NothingIsClippedInEitherLanguage)
{
    card::expectNothingClipped([] { return std::make_unique<KvGeneralSetting>(nullptr); });
}

#if KORVANE_OWN_FRAME
TEST_F(KvGeneralSettingTest, IsDraggedByItsTitle)
{
    card::expectDraggedBy(*dialog, "lb_title");
}
#endif

} // namespace
