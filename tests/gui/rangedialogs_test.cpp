#include "app/fonts.h"
#include "playback/kvcutrawfile.h"
#include "playback/kvexportvideoui.h"
#include "tests/gui/dialogcard.h"
#include "tests/support/scripteddialogs.h"

#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

#include <cstdint>

using namespace Qt::Literals::StringLiterals;

namespace {

/// One of the two dialogs that ask for a range, on the screen.
template <typename Dialog>
class RangeDialogTest : public testing::Test
{
protected:
    void SetUp() override
    {
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        ASSERT_TRUE(loadApplicationFont());
        dialog.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    }
    QLineEdit* field(const char* name) const { return card::find<QLineEdit>(dialog, name); }
    QPushButton* button(const char* name) const { return card::find<QPushButton>(dialog, name); }
    QStringList texts() const
    {
        QStringList all;
        for (const char* name : {"le_start_time", "le_end_time", "le_save_file_path", "le_file_name"})
            all << field(name)->text();
        return all;
    }
    void type(const char* name, const QString& text)
    {
        field(name)->selectAll();
        QTest::keyClicks(field(name), text);
    }

    static constexpr bool exports = std::is_same_v<Dialog, KvExportVideoUI>;
    QWidget window;
    Dialog dialog{&window};
};

using Dialogs = testing::Types<KvExportVideoUI, KvCutRawFile>;

/// Names the cases by what the dialog is for.
struct DialogNames
{
    template <typename Dialog>
    static std::string GetName(int)
    {
        return std::is_same_v<Dialog, KvExportVideoUI> ? "Export" : "Cut";
    }
};

TYPED_TEST_SUITE(RangeDialogTest, Dialogs, DialogNames);

TYPED_TEST(RangeDialogTest, ShowsItsTextsUnderTheirNames)
{
    EXPECT_EQ(this->dialog.windowTitle(), this->exports ? u"KvExportVideoUI"_s : u"KvCutRawFile"_s);
    const auto* const title = card::find<QLabel>(this->dialog, "lb_title");
    EXPECT_EQ(title->text(), this->exports ? u"Export a video"_s : u"Cut Recording"_s);
    EXPECT_TRUE(card::find<QWidget>(this->dialog, "widget_title_bar")->isAncestorOf(title));
    const QStringList captions{u"Start Time"_s, u"End Time"_s, u"Save File Path"_s, u"File Name"_s};
    QStringList shown;
    for (const char* name : {"label", "label_2", "label_3", "label_4"})
        shown << card::find<QLabel>(this->dialog, name)->text();
    EXPECT_EQ(shown, captions);
    EXPECT_EQ(this->field("le_file_name")->text(), this->exports ? u"xxx.mp4"_s : u"xxx.raw"_s);
    EXPECT_EQ(this->button("pb_cancel")->text(), u"Cancel"_s);
    EXPECT_EQ(this->button("pb_save")->text(), this->exports ? u"Export"_s : u"Cut"_s);
    for (const char* name : {"pb_win_close", "pb_start_time_plus", "pb_start_time_sub", "pb_end_time_plus",
                             "pb_end_time_sub", "pb_select_dir"})
        EXPECT_EQ(this->button(name)->text(), QString()) << name;
    EXPECT_TRUE(
        card::find<QWidget>(this->dialog, "widget_start_time")->isAncestorOf(this->field("le_start_time")));
    EXPECT_TRUE(
        card::find<QWidget>(this->dialog, "widget_end_time")->isAncestorOf(this->field("le_end_time")));
    EXPECT_TRUE(card::find<QWidget>(this->dialog, "widget_save_file_path")
                    ->isAncestorOf(this->field("le_save_file_path")));
    EXPECT_EQ(this->dialog.parentWidget(), &this->window);
}

TYPED_TEST(RangeDialogTest, TimesAreDecimalMicrosecondsBeyondThirtyTwoBits)
{
    const std::uint64_t large = (std::uint64_t(1) << 33) + 12345;
    this->dialog.setStartTime(5000);
    this->dialog.setEndTime(large);
    EXPECT_EQ(this->texts().mid(0, 2), (QStringList{u"5000"_s, u"8589946937"_s}));
    EXPECT_EQ(this->dialog.startTime(), 5000u);
    EXPECT_EQ(this->dialog.endTime(), large);
}

TYPED_TEST(RangeDialogTest, ATimeThatIsNoNumberIsReadAsZero)
{
    this->dialog.setStartTime(7);
    this->dialog.setEndTime(7);
    for (const QString& text :
         {u"abc"_s, u"-5"_s, u"1e3"_s, u"12 ms"_s, u"0x10"_s, u"99999999999999999999999"_s}) {
        this->type("le_start_time", text);
        this->type("le_end_time", text);
        EXPECT_EQ(this->field("le_start_time")->text(), text) << "anything can be typed";
        EXPECT_EQ(this->dialog.startTime(), 0u) << text.toStdString();
        EXPECT_EQ(this->dialog.endTime(), 0u) << text.toStdString();
    }
    this->field("le_start_time")->clear();
    EXPECT_EQ(this->dialog.startTime(), 0u);
}

TYPED_TEST(RangeDialogTest, TheFullPathJoinsFolderAndNameAsTyped)
{
    this->dialog.setSavePath(u"/data/视频"_s);
    this->dialog.setFileName(u"take"_s);
    EXPECT_EQ(this->dialog.savePath(), u"/data/视频"_s);
    EXPECT_EQ(this->dialog.fullPath(), u"/data/视频/take"_s) << "no suffix is added";
    this->type("le_file_name", u"a/b.txt"_s);
    EXPECT_EQ(this->dialog.fullPath(), u"/data/视频/a/b.txt"_s);
    this->type("le_save_file_path", u"nowhere"_s);
    EXPECT_EQ(this->dialog.fullPath(), u"nowhere/a/b.txt"_s);
}

TYPED_TEST(RangeDialogTest, SaveAcceptsWhateverStandsThere)
{
    this->type("le_start_time", u"later"_s);
    this->field("le_save_file_path")->clear();
    this->field("le_file_name")->clear();
    QTest::mouseClick(this->button("pb_save"), Qt::LeftButton);
    EXPECT_FALSE(this->dialog.isVisible());
    EXPECT_EQ(this->dialog.result(), QDialog::Accepted);
}

TYPED_TEST(RangeDialogTest, CancelCrossAndEscapeReject)
{
    const auto ends = [this](const std::function<void()>& act) {
        this->dialog.show();
        this->dialog.setResult(QDialog::Accepted);
        act();
        return !this->dialog.isVisible() && this->dialog.result() == QDialog::Rejected;
    };
    EXPECT_TRUE(ends([this] { QTest::mouseClick(this->button("pb_cancel"), Qt::LeftButton); }));
    EXPECT_TRUE(ends([this] { QTest::mouseClick(this->button("pb_win_close"), Qt::LeftButton); }));
    EXPECT_TRUE(ends([this] { QTest::keyClick(this->field("le_end_time"), Qt::Key_Escape); }));
}

TYPED_TEST(RangeDialogTest, ReturnInAFieldSaves)
{
    QTest::keyClick(this->field("le_end_time"), Qt::Key_Return);
    EXPECT_FALSE(this->dialog.isVisible());
    EXPECT_EQ(this->dialog.result(), QDialog::Accepted);
}

TYPED_TEST(RangeDialogTest, PlusAndMinusButtonsChangeNothing)
{
    this->dialog.setStartTime(5000);
    this->dialog.setEndTime(9000);
    const QStringList before = this->texts();
    for (const char* name :
         {"pb_start_time_plus", "pb_start_time_sub", "pb_end_time_plus", "pb_end_time_sub"}) {
        QTest::mouseClick(this->button(name), Qt::LeftButton);
        EXPECT_EQ(this->texts(), before) << name;
        EXPECT_TRUE(this->dialog.isVisible()) << name;
    }
}

TYPED_TEST(RangeDialogTest, TheChooserStartsAtTheTypedFolderAndItsAnswerReplacesIt)
{
    QDir::current().mkpath(u"there/inside"_s);
    const QString there = QDir::current().filePath(u"there"_s);
    this->dialog.setSavePath(there);
    const auto choose = [this](const std::function<void(QFileDialog&)>& answer) {
        ScriptedPerson person([&answer](QWidget& modal) {
            auto* const chooser = qobject_cast<QFileDialog*>(&modal);
            if (chooser)
                answer(*chooser);
            return chooser != nullptr;
        });
        QTest::mouseClick(this->button("pb_select_dir"), Qt::LeftButton);
        EXPECT_TRUE(person.isDone());
    };
    choose([&](QFileDialog& chooser) {
        EXPECT_EQ(chooser.windowTitle(), u"Select Directory"_s);
        EXPECT_EQ(chooser.directory().absolutePath(), there);
        EXPECT_EQ(chooser.fileMode(), QFileDialog::Directory);
        EXPECT_TRUE(chooser.testOption(QFileDialog::ShowDirsOnly));
        EXPECT_TRUE(chooser.testOption(QFileDialog::DontResolveSymlinks));
        chooser.reject();
    });
    EXPECT_EQ(this->dialog.savePath(), there) << "an empty answer changes nothing";
    choose([&](QFileDialog& chooser) {
        card::find<QLineEdit>(chooser, "fileNameEdit")->setText(there + u"/inside"_s);
        QTest::keyClick(card::find<QLineEdit>(chooser, "fileNameEdit"), Qt::Key_Return);
    });
    EXPECT_EQ(this->dialog.savePath(), there + u"/inside"_s);
    EXPECT_EQ(this->dialog.fullPath(), there + u"/inside/"_s + this->field("le_file_name")->text());
}

TYPED_TEST(RangeDialogTest, TabGoesThroughTheFieldsInReadingOrder)
{
    this->dialog.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&this->dialog));
    card::expectTabOrder(this->dialog,
                         {"le_start_time", "le_end_time", "le_save_file_path", "pb_select_dir",
                          "le_file_name", "pb_cancel", "pb_save"});
}

TYPED_TEST(RangeDialogTest, IsAFramelessCardInTheFamilysColours)
{
    card::expectFamilyLook(this->dialog);
    for (const char* name :
         {"widget_start_time", "widget_end_time", "widget_save_file_path", "widget_file_name"})
        card::expectBox(this->dialog, name);
    card::expectHoverLooks(this->dialog);
    card::expectPressedLooks(this->dialog);
}

TYPED_TEST(RangeDialogTest, NothingIsClippedInEitherLanguage)
{
    card::expectNothingClipped([] { return std::make_unique<TypeParam>(nullptr); });
}

#if KORVANE_OWN_FRAME
TYPED_TEST(RangeDialogTest, IsDraggedByItsTitle)
{
    card::expectDraggedBy(this->dialog, "lb_title");
}
#endif

} // namespace
