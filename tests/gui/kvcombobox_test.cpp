#include "widgets/kvcombobox.h"

#include "widgets/kvcomboboxbase.h"
#include "widgets/nofocusframedelegate.h"

#include <QApplication>
#include <QCompleter>
#include <QLineEdit>
#include <QListView>
#include <QPainter>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace {

const QColor accent(0x00, 0x4B, 0x6A);
const QColor litFrame(0xD7, 0xE7, 0xEE);
const QColor quietText(0xA7, 0xA7, 0xA7);
const QColor ground(0x11, 0x22, 0x33);

/// A combo box with entries in a shown window, and what it reports.
class KvComboBoxTest : public testing::Test
{
protected:
    KvComboBoxTest()
    {
        QPalette palette;
        palette.setColor(QPalette::Window, ground);
        window.setPalette(palette);
        auto* layout = new QVBoxLayout(&window);
        layout->addWidget(combo);
        layout->addWidget(other);
        combo->addItems({u"33.33ms"_s, u"100ms"_s, u"10ms"_s, u"1ms"_s});
        window.resize(240, 100);
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        base = window.findChild<KVComboBoxBase*>(u"cb_combox_in_widget"_s);
        frame = window.findChild<QWidget*>(u"comboBoxWidget"_s);
        field = base->lineEdit();
        // The first entry has become the current one.
        EXPECT_EQ(finished.count(), 1);
        EXPECT_EQ(typed.count(), 0);
        finished.clear();
    }

    void type(const QString& text)
    {
        field->setFocus();
        field->selectAll();
        QTest::keyClicks(field, text);
    }

    void choose(int row)
    {
        base->showPopup();
        auto* list = base->view();
        const QPoint place = list->visualRect(list->model()->index(row, 0)).center();
        // The list does not take a click that may belong to its opening.
        QTest::mouseMove(list->viewport(), place);
        QTest::keyClick(list, Qt::Key_Home);
        for (int i = 0; i < row; ++i)
            QTest::keyClick(list, Qt::Key_Down);
        QTest::keyClick(list, Qt::Key_Return);
    }

    QColor frameColor() { return window.grab().toImage().pixelColor(frame->mapTo(&window, QPoint(100, 1))); }
    QColor comboBorderColor()
    {
        return window.grab().toImage().pixelColor(base->mapTo(&window, QPoint(100, 0)));
    }
    QColor textColor() const { return field->palette().color(QPalette::Text); }

    QWidget window;
    KvComboBox* combo = new KvComboBox(&window);
    QLineEdit* other = new QLineEdit(&window);
    KVComboBoxBase* base = nullptr;
    QWidget* frame = nullptr;
    QLineEdit* field = nullptr;
    QSignalSpy typed{combo, &KvComboBox::signalLineEditTextChanged};
    QSignalSpy finished{combo, &KvComboBox::signalLineEditEditingFinished};
};

} // namespace

TEST(KVComboBoxBase, LeavesTheWheelToItsParent)
{
    KVComboBoxBase combo;
    combo.addItems({u"a"_s, u"b"_s, u"c"_s});
    combo.setCurrentIndex(1);
    combo.show();
    for (const int delta : {-120, 120}) {
        const QPointF place = combo.rect().center();
        QWheelEvent turn(place, combo.mapToGlobal(place), {}, QPoint(0, delta), Qt::NoButton, Qt::NoModifier,
                         Qt::NoScrollPhase, false);
        turn.accept();
        QApplication::sendEvent(&combo, &turn);
        EXPECT_EQ(combo.currentIndex(), 1);
        EXPECT_FALSE(turn.isAccepted()) << "an accepted turn would end here";
    }
}

TEST(KVComboBoxBase, TellsBeforeItsListOpensAndCloses)
{
    KVComboBoxBase combo;
    combo.addItems({u"a"_s, u"b"_s});
    combo.show();
    QStringList told;
    QObject::connect(&combo, &KVComboBoxBase::popupShown, &combo,
                     [&] { told += combo.view()->isVisible() ? u"shown late"_s : u"shown"_s; });
    QObject::connect(&combo, &KVComboBoxBase::popupHidden, &combo,
                     [&] { told += combo.view()->isVisible() ? u"hidden"_s : u"hidden late"_s; });
    combo.showPopup();
    EXPECT_TRUE(combo.view()->isVisible());
    combo.hidePopup();
    EXPECT_FALSE(combo.view()->isVisible());
    EXPECT_EQ(told, (QStringList{u"shown"_s, u"hidden"_s}));
}

TEST(KVComboBoxBase, WithoutEntriesNoListOpensAndNothingIsTold)
{
    KVComboBoxBase combo;
    combo.show();
    QSignalSpy shown(&combo, &KVComboBoxBase::popupShown);
    combo.showPopup();
    EXPECT_EQ(shown.count(), 0);
    EXPECT_FALSE(combo.view()->isVisible());
}

TEST(KVComboBoxBase, TheListHangsTwoPixelsLowerThanAPlainOne)
{
    QComboBox plain;
    KVComboBoxBase combo;
    plain.setEditable(true);
    combo.setEditable(true);
    for (QComboBox* each : {&plain, static_cast<QComboBox*>(&combo)}) {
        each->addItems({u"a"_s, u"b"_s});
        each->setGeometry(100, 100, 120, 30);
        each->show();
        each->showPopup();
    }
    EXPECT_EQ(combo.view()->window()->y(), plain.view()->window()->y() + 2);
    EXPECT_TRUE(combo.view()->window()->windowFlags().testFlag(Qt::NoDropShadowWindowHint));
    EXPECT_FALSE(QApplication::isEffectEnabled(Qt::UI_AnimateCombo));
    plain.hidePopup();
    combo.hidePopup();
}

TEST(KVComboBoxBase, DrawsNoFocusFrameOnItsEntries)
{
    KVComboBoxBase combo;
    combo.addItem(u"a"_s);
    auto* delegate = qobject_cast<NoFocusFrameDelegate*>(combo.view()->itemDelegate());
    ASSERT_NE(delegate, nullptr);
    EXPECT_NE(qobject_cast<QListView*>(combo.view()), nullptr);

    const auto drawn = [&](QAbstractItemDelegate& by, QStyle::State state) {
        QImage image(80, 24, QImage::Format_ARGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        QStyleOptionViewItem option;
        option.rect = image.rect();
        option.state = QStyle::State_Enabled | QStyle::State_KeyboardFocusChange | state;
        by.paint(&painter, option, combo.model()->index(0, 0));
        return image;
    };
    QStyledItemDelegate plain;
    ASSERT_NE(drawn(plain, QStyle::State_HasFocus), drawn(plain, {}));
    EXPECT_EQ(drawn(*delegate, QStyle::State_HasFocus), drawn(*delegate, {}));
}

TEST_F(KvComboBoxTest, WritesInTwelvePixels)
{
    EXPECT_EQ(base->font().pixelSize(), 12);
    EXPECT_EQ(base->font().family(), u"Noto Sans SC Medium"_s);
    EXPECT_EQ(field->font().pixelSize(), 12);
}

TEST_F(KvComboBoxTest, ChoosingAnEntryReportsAFinishedEditAndNoTyping)
{
    QSignalSpy current(combo, &KvComboBox::currentTextChanged);
    choose(1);
    EXPECT_EQ(combo->text(), u"100ms"_s);
    EXPECT_EQ(combo->currentIndex(), 1);
    EXPECT_EQ(finished.count(), 1);
    EXPECT_EQ(typed.count(), 0);
    EXPECT_EQ(current.count(), 1);
    other->setFocus();
    EXPECT_EQ(finished.count(), 1) << "the focus that leaves sends nothing again";
    combo->setCurrentIndex(3);
    EXPECT_EQ(finished.count(), 2);
    EXPECT_EQ(typed.count(), 0);
}

TEST_F(KvComboBoxTest, ChoosingTheCurrentEntryTakesBackWhatWasTyped)
{
    type(u"7"_s);
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(combo->text(), u"7"_s);
    EXPECT_EQ(finished.count(), 1);
    finished.clear();
    typed.clear();
    choose(0);
    EXPECT_EQ(combo->text(), u"33.33ms"_s);
    EXPECT_EQ(finished.count(), 1);
    EXPECT_EQ(typed.count(), 0);
}

TEST_F(KvComboBoxTest, TypingReportsEveryChangeAndCompletesNothing)
{
    type(u"10"_s);
    ASSERT_EQ(typed.count(), 2);
    EXPECT_EQ(typed.at(0).at(0).toString(), u"1"_s);
    EXPECT_EQ(typed.at(1).at(0).toString(), u"10"_s);
    EXPECT_EQ(finished.count(), 0);
    EXPECT_EQ(base->completer(), nullptr);
}

TEST_F(KvComboBoxTest, ReturnAndThenLossOfFocusSendOnce)
{
    type(u"10"_s);
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(finished.count(), 1);
    other->setFocus();
    EXPECT_EQ(finished.count(), 1);
    EXPECT_EQ(combo->text(), u"10"_s);
    EXPECT_EQ(combo->count(), 4) << "Return adds no entry";
}

TEST_F(KvComboBoxTest, LossOfFocusFinishesTheEdit)
{
    type(u"50"_s);
    other->setFocus();
    EXPECT_EQ(finished.count(), 1);
    field->setFocus();
    other->setFocus();
    EXPECT_EQ(finished.count(), 1) << "nothing was edited";
}

TEST_F(KvComboBoxTest, TypingTheSameAgainSendsAgain)
{
    type(u"50"_s);
    QTest::keyClick(field, Qt::Key_Return);
    type(u"50"_s);
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(finished.count(), 2);
}

TEST_F(KvComboBoxTest, TypingAnEntrysTextIsTypingToo)
{
    type(u"33.33ms"_s);
    EXPECT_EQ(typed.count(), 7);
    EXPECT_EQ(finished.count(), 0);
    type(u"100ms"_s);
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(finished.count(), 1);
    EXPECT_EQ(combo->currentIndex(), 1);
}

TEST_F(KvComboBoxTest, ASlotThatRewritesTheTextCausesNothing)
{
    QSignalSpy current(combo, &KvComboBox::currentTextChanged);
    QObject::connect(combo, &KvComboBox::signalLineEditEditingFinished, combo, [this] {
        const int cursor = combo->cursorPosition();
        if (!combo->text().endsWith(u"ms"_s))
            combo->setText(combo->text() + u"ms"_s);
        combo->setCursorPosition(cursor);
    });
    type(u"50"_s);
    current.clear();
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(combo->text(), u"50ms"_s);
    EXPECT_EQ(combo->cursorPosition(), 2);
    EXPECT_EQ(finished.count(), 1);
    EXPECT_EQ(typed.count(), 2);
    EXPECT_EQ(current.count(), 0);
    other->setFocus();
    EXPECT_EQ(finished.count(), 1);
    EXPECT_EQ(frameColor(), ground);
}

TEST_F(KvComboBoxTest, RewritingToAnEntryFromASlotOrOutsideCausesNothing)
{
    combo->setCurrentIndex(1);
    finished.clear();
    const auto rewriting = QObject::connect(combo, &KvComboBox::signalLineEditEditingFinished, combo,
                                            [this] { field->setText(u"100ms"_s); });
    type(u"100"_s);
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(combo->text(), u"100ms"_s);
    EXPECT_EQ(finished.count(), 1);
    QObject::disconnect(rewriting);
    typed.clear();
    const auto visit = [this] {
        field->setFocus();
        other->setFocus();
    };
    visit();
    combo->setText(u"x"_s);
    visit();
    combo->setText(u"100ms"_s);
    visit();
    combo->clear();
    visit();
    EXPECT_EQ(finished.count(), 1) << "what the program wrote is nothing to send";
    EXPECT_EQ(typed.count(), 0);
    EXPECT_EQ(combo->count(), 0);
    EXPECT_TRUE(combo->text().isEmpty());
}

TEST_F(KvComboBoxTest, TypingThatASlotCorrectsHasStillToBeFinished)
{
    QObject::connect(combo, &KvComboBox::signalLineEditTextChanged, combo,
                     [this](const QString& text) { combo->setText(text.left(2)); });
    type(u"123"_s);
    EXPECT_EQ(combo->text(), u"12"_s);
    EXPECT_EQ(finished.count(), 0);
    other->setFocus();
    EXPECT_EQ(finished.count(), 1);
}

TEST_F(KvComboBoxTest, OpeningTheListLightsTheFrameAndClosingItEndsThat)
{
    EXPECT_EQ(frameColor(), ground);
    EXPECT_EQ(textColor(), quietText);
    EXPECT_EQ(comboBorderColor(), quietText);
    base->showPopup();
    EXPECT_EQ(frameColor(), ground) << "not before the event loop has run";
    ASSERT_TRUE(QTest::qWaitFor([this] { return frameColor() == litFrame; }));
    EXPECT_EQ(textColor(), accent);
    EXPECT_EQ(frame->styleSheet(), u"border: 2px solid #D7E7EE; border-radius: 3px;"_s);
    base->hidePopup();
    EXPECT_EQ(frameColor(), ground);
    EXPECT_EQ(textColor(), quietText);
}

TEST_F(KvComboBoxTest, AListClosedAtOnceLeavesNoLight)
{
    base->showPopup();
    base->hidePopup();
    bool turned = false;
    QMetaObject::invokeMethod(
        combo, [&] { turned = true; }, Qt::QueuedConnection);
    ASSERT_TRUE(QTest::qWaitFor([&] { return turned; }));
    QCoreApplication::processEvents();
    EXPECT_EQ(frameColor(), ground);
    EXPECT_EQ(textColor(), quietText);
}

TEST_F(KvComboBoxTest, TypingLightsTheFrameUntilTheEditIsFinished)
{
    type(u"5"_s);
    EXPECT_EQ(frameColor(), litFrame);
    EXPECT_EQ(textColor(), accent);
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(frameColor(), ground);
    EXPECT_EQ(textColor(), quietText);
}

TEST_F(KvComboBoxTest, ColoursThatMarkAWrongTextStayUntilTheTextChanges)
{
    const QColor wrong(0xFF, 0xDA, 0xD8);
    QObject::connect(combo, &KvComboBox::signalLineEditTextChanged, combo, [this](const QString& text) {
        if (text == u"5x"_s)
            combo->setBorderColor(u"#FFDAD8"_s);
    });
    type(u"5x"_s);
    EXPECT_EQ(frameColor(), wrong);
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(frameColor(), wrong);
    QTest::keyClick(field, Qt::Key_Backspace);
    EXPECT_EQ(frameColor(), litFrame);
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(frameColor(), ground);
}

TEST_F(KvComboBoxTest, WithoutTextEntryTypingDoesNothing)
{
    combo->setTextEditable(false);
    EXPECT_TRUE(field->isReadOnly());
    type(u"5"_s);
    QTest::keyClick(field, Qt::Key_Return);
    other->setFocus();
    EXPECT_EQ(combo->text(), u"33.33ms"_s);
    EXPECT_EQ(typed.count(), 0);
    EXPECT_EQ(finished.count(), 0);
    EXPECT_EQ(frameColor(), ground);
    choose(2);
    EXPECT_EQ(combo->text(), u"10ms"_s);
    EXPECT_EQ(finished.count(), 1) << "choosing goes on";
}

TEST_F(KvComboBoxTest, WithoutTextEntryAClickIntoTheFieldOpensTheList)
{
    QTest::mouseClick(field, Qt::LeftButton);
    EXPECT_FALSE(base->view()->isVisible());
    combo->setTextEditable(false);
    QTest::mouseClick(field, Qt::RightButton);
    EXPECT_FALSE(base->view()->isVisible());
    QTest::mouseClick(field, Qt::LeftButton);
    EXPECT_TRUE(base->view()->isVisible());
    base->hidePopup();
}

TEST_F(KvComboBoxTest, TextEntrySwitchedOnTwiceStillReportsOnce)
{
    combo->setTextEditable(true);
    combo->setTextEditable(false);
    combo->setTextEditable(true);
    combo->setTextEditable(true);
    type(u"5"_s);
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(typed.count(), 1);
    EXPECT_EQ(finished.count(), 1);
}

TEST_F(KvComboBoxTest, RewritesOneDeclarationOfItsStyleSheets)
{
    combo->setBorderColor(u"#FFDAD8"_s);
    EXPECT_EQ(frame->styleSheet(), u"border: 2px solid #FFDAD8; border-radius: 3px;"_s);
    EXPECT_EQ(frameColor(), QColor(0xFF, 0xDA, 0xD8));
    frame->setStyleSheet(u"background: #123456;"_s);
    combo->setBorderColor(u"#FFDAD8"_s);
    EXPECT_EQ(frame->styleSheet(), u"background: #123456;"_s) << "without a match nothing changes";

    combo->setStyleDeclaration(u"border"_s, u"border: 1px solid #FF6058;"_s);
    EXPECT_EQ(comboBorderColor(), QColor(0xFF, 0x60, 0x58));
    EXPECT_TRUE(base->styleSheet().contains(u"border-radius: 3px;"_s)) << "only the first";
    base->setStyleSheet(u"font: 12px;"_s);
    combo->setTextColor(u"#004B6A"_s);
    EXPECT_EQ(base->styleSheet(), u"font: 12px;color: #004B6A;"_s);
    combo->setTextColor(u"#A7A7A7"_s);
    EXPECT_EQ(base->styleSheet(), u"font: 12px;color: #A7A7A7;"_s);
    combo->setStyleDeclaration(u"border"_s, u"border: 1px solid #A7A7A7;"_s);
    EXPECT_EQ(base->styleSheet(), u"font: 12px;color: #A7A7A7; border: 1px solid #A7A7A7;"_s);
}

TEST_F(KvComboBoxTest, ShowsAnArrowAndGreysWhenDisabled)
{
    const auto arrowPixels = [this] {
        const QImage image = base->grab(QRect(base->width() - 24, 4, 20, base->height() - 8)).toImage();
        int drawn = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                drawn += image.pixelColor(x, y) != image.pixelColor(0, 0);
        return drawn;
    };
    EXPECT_GT(arrowPixels(), 8);
    combo->setEnabled(false);
    EXPECT_EQ(field->palette().color(QPalette::Disabled, QPalette::Text), QColor(0xC7, 0xC7, 0xC7));
}

TEST(KvComboBox, MayGoWhileItsTextIsBeingTypedOrItsListIsOpen)
{
    QWidget window;
    auto* combo = new KvComboBox(&window);
    combo->addItems({u"a"_s, u"b"_s});
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    int reports = 0;
    QObject::connect(combo, &KvComboBox::signalLineEditEditingFinished, &window, [&] { ++reports; });
    auto* field = combo->comboBox()->lineEdit();
    field->setFocus();
    QTest::keyClicks(field, u"x"_s);
    combo->comboBox()->showPopup();
    reports = 0;
    delete combo;
    EXPECT_EQ(reports, 0);
    QCoreApplication::processEvents();
}
