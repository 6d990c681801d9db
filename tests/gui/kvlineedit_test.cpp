#include "widgets/kvlineedit.h"

#include "widgets/kvlineeditbase.h"
#include "widgets/kvslider.h"
#include "widgets/popwidget.h"

#include <QApplication>
#include <QIcon>
#include <QPainter>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace {

PopWidget* findPopup()
{
    for (QWidget* each : QApplication::topLevelWidgets())
        if (auto* pop = qobject_cast<PopWidget*>(each))
            return pop;
    return nullptr;
}

class KvLineEditTest : public testing::Test
{
protected:
    KvLineEditTest()
    {
        auto* layout = new QVBoxLayout(&window);
        layout->addWidget(line);
        layout->addWidget(other);
        line->setSliderRange(0, 100);
        window.setGeometry(150, 120, 260, 120);
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        other->setFocus();
        editor = line->findChild<KvLineEditBase*>(u"le_kv_line_edit_base"_s);
    }

    /// The offscreen platform activates the pop-up, though that wants no focus and gives it back.
    void focusEditor()
    {
        editor->setFocus();
        ASSERT_TRUE(QTest::qWaitFor([this] {
            return QApplication::activeWindow() == &window && QApplication::focusWidget() == editor;
        }));
    }

    /// Made when the editor first has the focus.
    KvSlider* slider() const
    {
        const PopWidget* pop = findPopup();
        return pop == nullptr ? nullptr : pop->findChild<KvSlider*>();
    }

    QWidget window;
    QLineEdit* other = new QLineEdit(&window); // the first, which has the focus at first
    KvLineEdit* line = new KvLineEdit(&window);
    KvLineEditBase* editor = nullptr;
    QSignalSpy edited{line, &KvLineEdit::textEdited};
    QSignalSpy finished{line, &KvLineEdit::textFinished};
};

} // namespace

TEST(KvLineEditBase, TheBorderAndTheSignalFollowTheFocus)
{
    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    auto* other = new QLineEdit(&window);
    auto* editor = new KvLineEditBase(&window);
    layout->addWidget(other);
    layout->addWidget(editor);
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    other->setFocus();
    QSignalSpy hovered(editor, &KvLineEditBase::signalMouseHoverd);
    const auto border = [editor] { return editor->grab().toImage().pixelColor(60, 0); };
    EXPECT_EQ(border(), QColor(0xAC, 0xAC, 0xAC));
    EXPECT_EQ(editor->palette().color(QPalette::Text), QColor(0x55, 0x55, 0x55));
    EXPECT_TRUE(editor->alignment().testFlag(Qt::AlignHCenter));
    EXPECT_EQ(editor->font().pixelSize(), 12);
    EXPECT_EQ(editor->font().family(), u"Noto Sans SC Medium"_s);
    editor->setFocus();
    EXPECT_EQ(border(), QColor(0x00, 0x4B, 0x6A));
    other->setFocus();
    EXPECT_EQ(border(), QColor(0xAC, 0xAC, 0xAC));
    ASSERT_EQ(hovered.count(), 2);
    EXPECT_TRUE(hovered.at(0).at(0).toBool());
    EXPECT_FALSE(hovered.at(1).at(0).toBool());
    editor->setBorderColor(u"#FF6058"_s);
    EXPECT_EQ(border(), QColor(0xFF, 0x60, 0x58));
    editor->setStyleSheet(u"color: #555555;"_s);
    editor->setBorderColor(u"#FF6058"_s);
    EXPECT_EQ(editor->styleSheet(), u"color: #555555;border: 1px solid #FF6058;"_s);
}

TEST_F(KvLineEditTest, ThePopUpsHandleIsItsImageInNinePixels)
{
    focusEditor();
    ASSERT_NE(slider(), nullptr);
    slider()->setValue(50);
    QImage handle(9, 9, QImage::Format_ARGB32);
    handle.fill(Qt::transparent);
    QPainter painter(&handle);
    QIcon(u":/img/assets/btn_setting_thumbs.svg"_s).paint(&painter, handle.rect());
    painter.end();
    const QImage shown = slider()->grab().toImage();
    const auto standsAt = [&](int left, int top) {
        int compared = 0;
        for (int y = 0; y < handle.height(); ++y) {
            for (int x = 0; x < handle.width(); ++x) {
                if (handle.pixelColor(x, y).alpha() < 255)
                    continue;
                ++compared;
                if (shown.pixelColor(left + x, top + y).rgb() != handle.pixelColor(x, y).rgb())
                    return false;
            }
        }
        return compared > 20;
    };
    QPoint place(-1, -1);
    for (int top = 0; top <= shown.height() - handle.height(); ++top) {
        for (int left = 0; left <= shown.width() - handle.width(); ++left)
            place = standsAt(left, top) ? QPoint(left, top) : place;
    }
    ASSERT_NE(place, QPoint(-1, -1)) << "the image is not to be seen";
    EXPECT_NEAR(place.x() + 4, shown.width() / 2, 2);
    EXPECT_NEAR(place.y() + 4, shown.height() / 2, 1);
}

TEST_F(KvLineEditTest, TypingANumberAndLeavingMovesTheSliderAndReportsOnce)
{
    focusEditor();
    QTest::keyClicks(editor, u"12"_s);
    ASSERT_EQ(edited.count(), 2);
    EXPECT_EQ(edited.at(1).at(0).toString(), u"12"_s);
    EXPECT_EQ(finished.count(), 0);
    EXPECT_EQ(slider()->value(), 0);
    other->setFocus();
    EXPECT_EQ(slider()->value(), 12);
    ASSERT_EQ(finished.count(), 1);
    EXPECT_EQ(finished.at(0).at(0).toString(), u"12"_s);
}

TEST_F(KvLineEditTest, ReturnAndThenLossOfFocusReportOnce)
{
    focusEditor();
    QTest::keyClicks(editor, u"12"_s);
    QTest::keyClick(editor, Qt::Key_Return);
    other->setFocus();
    EXPECT_EQ(finished.count(), 1);
    focusEditor();
    other->setFocus();
    EXPECT_EQ(finished.count(), 1) << "nothing was edited";
}

TEST_F(KvLineEditTest, ATextThatIsNoNumberLeavesTheSliderAndIsReported)
{
    line->setText(u"40"_s);
    focusEditor();
    editor->selectAll();
    QTest::keyClicks(editor, u"abc"_s);
    other->setFocus();
    EXPECT_EQ(slider()->value(), 40);
    ASSERT_EQ(finished.count(), 1);
    EXPECT_EQ(finished.at(0).at(0).toString(), u"abc"_s);
}

TEST_F(KvLineEditTest, ANumberBeyondTheRangeStaysInTheText)
{
    focusEditor();
    QTest::keyClicks(editor, u"150"_s);
    other->setFocus();
    EXPECT_EQ(slider()->value(), 100);
    EXPECT_EQ(line->text(), u"150"_s);
    ASSERT_EQ(finished.count(), 1);
    EXPECT_EQ(finished.at(0).at(0).toString(), u"150"_s);
}

TEST_F(KvLineEditTest, TheReleasedSliderBringsANumberBeyondTheRangeBackIntoIt)
{
    focusEditor();
    QTest::keyClicks(editor, u"150"_s);
    QTest::keyClick(editor, Qt::Key_Return);
    ASSERT_EQ(line->text(), u"150"_s);
    finished.clear();
    const QPoint handle(slider()->width() - 4, slider()->height() / 2);
    QTest::mousePress(slider(), Qt::LeftButton, {}, handle);
    ASSERT_TRUE(slider()->isSliderDown());
    QTest::mouseRelease(slider(), Qt::LeftButton, {}, handle);
    EXPECT_EQ(slider()->value(), 100);
    EXPECT_EQ(line->text(), u"100"_s);
    ASSERT_EQ(finished.count(), 1);
    EXPECT_EQ(finished.at(0).at(0).toString(), u"100"_s);
}

TEST_F(KvLineEditTest, MovingTheSliderRewritesTheTextAndReportsOnce)
{
    focusEditor();
    ASSERT_NE(slider(), nullptr);
    QSignalSpy moved(slider(), &QSlider::valueChanged);
    slider()->setValue(70);
    EXPECT_EQ(line->text(), u"70"_s);
    EXPECT_EQ(moved.count(), 1) << "no way back into the slider";
    ASSERT_EQ(finished.count(), 1);
    EXPECT_EQ(finished.at(0).at(0).toString(), u"70"_s);
    EXPECT_EQ(edited.count(), 0);
    other->setFocus();
    EXPECT_EQ(finished.count(), 1);
}

TEST_F(KvLineEditTest, TheOwnersRangeAndTextReportNothing)
{
    line->setText(u"40"_s);
    line->setSliderRange(50, 60);
    line->setText(u"55"_s);
    focusEditor();
    EXPECT_EQ(slider()->value(), 55);
    EXPECT_EQ(slider()->minimum(), 50);
    EXPECT_EQ(slider()->maximum(), 60);
    other->setFocus();
    EXPECT_EQ(line->text(), u"55"_s);
    EXPECT_EQ(finished.count(), 0);
    EXPECT_EQ(edited.count(), 0);
}

TEST_F(KvLineEditTest, TheSliderFloatsUnderTheEditorWhileThatHasTheFocus)
{
    EXPECT_EQ(findPopup(), nullptr) << "made when first needed";
    focusEditor();
    PopWidget* pop = findPopup();
    ASSERT_NE(pop, nullptr);
    EXPECT_TRUE(pop->isVisible());
    const QPoint under = editor->mapToGlobal(QPoint(0, editor->height()));
    EXPECT_EQ(pop->geometry(), QRect(under, QSize(editor->width(), 20)));
    other->setFocus();
    EXPECT_FALSE(pop->isVisible());
    focusEditor();
    EXPECT_TRUE(pop->isVisible());
    EXPECT_EQ(findPopup(), pop);
}

TEST_F(KvLineEditTest, TheSliderFloatsUnderTheAnchorAndAsWideAsIt)
{
    line->setAnchor(&window);
    focusEditor();
    const PopWidget* pop = findPopup();
    ASSERT_NE(pop, nullptr);
    const int bottom = editor->mapToGlobal(QPoint(0, editor->height())).y();
    EXPECT_EQ(pop->geometry(), QRect(window.mapToGlobal(QPoint(0, 0)).x(), bottom + 5, 260, 30));
}

TEST_F(KvLineEditTest, AnAnchorThatIsGoneIsNoAnchor)
{
    auto* anchor = new QWidget(&window);
    line->setAnchor(anchor);
    delete anchor;
    focusEditor();
    const PopWidget* pop = findPopup();
    ASSERT_NE(pop, nullptr);
    EXPECT_EQ(pop->size(), QSize(editor->width(), 20));
}

TEST_F(KvLineEditTest, ThePopUpTakesNoFocusAndHasCleanCorners)
{
    focusEditor();
    const PopWidget* pop = findPopup();
    ASSERT_NE(pop, nullptr);
    EXPECT_TRUE(
        pop->windowFlags().testFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus));
    EXPECT_TRUE(pop->testAttribute(Qt::WA_ShowWithoutActivating));
    EXPECT_FALSE(pop->testAttribute(Qt::WA_QuitOnClose));
    EXPECT_EQ(pop->parent(), nullptr);
    KvSlider* inside = slider();
    ASSERT_NE(inside, nullptr);
    QTest::mouseClick(inside, Qt::LeftButton, {}, QPoint(inside->width() - 20, inside->height() / 2));
    EXPECT_GT(inside->value(), 80);
    EXPECT_EQ(QApplication::focusWidget(), editor);
    EXPECT_TRUE(pop->isVisible());
    EXPECT_FALSE(pop->mask().isEmpty());
    EXPECT_FALSE(pop->mask().contains(QPoint(0, 0)));
    EXPECT_TRUE(pop->mask().contains(QPoint(pop->width() / 2, 0)));
}

TEST_F(KvLineEditTest, TheSliderIsDrawnInTheKitsColours)
{
    line->setText(u"50"_s);
    focusEditor();
    KvSlider* inside = slider();
    ASSERT_NE(inside, nullptr);
    const QImage image = inside->grab().toImage();
    const int middle = image.height() / 2;
    EXPECT_EQ(image.pixelColor(image.width() / 4, middle), QColor(0x00, 0x4B, 0x6A));
    EXPECT_EQ(image.pixelColor(image.width() * 3 / 4, middle), QColor(0xC7, 0xC7, 0xC7));
}

TEST_F(KvLineEditTest, GoesWithItsPopUpWhileThatIsShown)
{
    focusEditor();
    QTest::keyClicks(editor, u"12"_s);
    const QPointer<PopWidget> pop = findPopup();
    const QPointer<KvSlider> inside = slider();
    ASSERT_FALSE(pop.isNull());
    ASSERT_FALSE(inside.isNull());
    delete line;
    EXPECT_TRUE(pop.isNull());
    EXPECT_TRUE(inside.isNull());
    EXPECT_EQ(finished.count(), 0);
}
