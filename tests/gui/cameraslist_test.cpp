#include "camera/cameraslist.h"

#include "camera/driver/cameradescription.h"

#include <QCursor>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <optional>

using namespace Qt::Literals::StringLiterals;

namespace {

std::vector<korvane::CameraDescription> cameras(const std::vector<std::string>& serials)
{
    std::vector<korvane::CameraDescription> descs;
    for (const std::string& serial : serials)
        descs.push_back({serial, "Halvora", "test"});
    return descs;
}

class CamerasListTest : public testing::Test
{
protected:
    CamerasList& open(const std::vector<std::string>& serials)
    {
        dialog.emplace(cameras(serials), nullptr);
        dialog->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&*dialog));
        return *dialog;
    }
    template <typename Widget>
    Widget* find(const char* name)
    {
        auto* widget = dialog->findChild<Widget*>(QLatin1StringView(name));
        EXPECT_NE(widget, nullptr) << name;
        return widget;
    }
    QListWidget* list() { return find<QListWidget>("listWidget_cameras"); }
    QPushButton* button(const char* name) { return find<QPushButton>(name); }
    QPoint row(int index) { return list()->visualItemRect(list()->item(index)).center(); }
    QStringList rows()
    {
        QStringList texts;
        for (int i = 0; i < list()->count(); ++i)
            texts << list()->item(i)->text();
        return texts;
    }
    std::optional<std::uint32_t> selected() const
    {
        std::uint32_t index = 77;
        if (dialog->selectedIndex(index))
            return index;
        EXPECT_EQ(index, 77U);
        return std::nullopt;
    }
    // Runs the dialog as its callers do and acts once it is on the screen.
    int run(const std::function<void()>& act)
    {
        QTimer::singleShot(0, &*dialog, act);
        return dialog->exec();
    }

    std::optional<CamerasList> dialog;
};

} // namespace

TEST_F(CamerasListTest, ListsTheSerialsInTheOrderGiven)
{
    open({"ZX000002", "AB000001", "MM000003"});
    EXPECT_EQ(rows(), (QStringList{u"ZX000002"_s, u"AB000001"_s, u"MM000003"_s}));
    EXPECT_FALSE(list()->isSortingEnabled());
    EXPECT_EQ(list()->iconSize(), QSize(24, 24));
    for (int i = 0; i < 3; ++i)
        EXPECT_FALSE(list()->item(i)->icon().pixmap(24, 24).isNull());
}

TEST_F(CamerasListTest, ShowsTheSerialExactlyAsItIs)
{
    open({" <b>&A</b> ", u"相机1"_s.toLocal8Bit().toStdString(), ""});
    EXPECT_EQ(rows(), (QStringList{u" <b>&A</b> "_s, u"相机1"_s, QString()}));
}

TEST_F(CamerasListTest, TheFirstCameraIsChosenBeforeTheDialogIsShown)
{
    dialog.emplace(cameras({"A", "B"}), nullptr);
    EXPECT_EQ(selected(), 0U);
}

TEST_F(CamerasListTest, WithoutCamerasNoneIsChosen)
{
    dialog.emplace(cameras({}), nullptr);
    EXPECT_EQ(selected(), std::nullopt);
}

TEST_F(CamerasListTest, TheIconOfTheChosenRowStandsOutFromTheRow)
{
    open({"A"});
    const QImage icon = list()->item(0)->icon().pixmap(QSize(24, 24), QIcon::Selected).toImage();
    const QImage plain = list()->item(0)->icon().pixmap(QSize(24, 24)).toImage();
    bool white = false;
    for (int y = 0; y < icon.height(); ++y) {
        for (int x = 0; x < icon.width(); ++x)
            white = white || icon.pixelColor(x, y) == QColor(Qt::white);
    }
    EXPECT_TRUE(white);
    EXPECT_NE(icon, plain);
}

TEST_F(CamerasListTest, OpenAtOnceSelectsTheFirstCamera)
{
    open({"A", "B", "C"});
    EXPECT_NE(run([this] { QTest::mouseClick(button("pb_open"), Qt::LeftButton); }), 0);
    EXPECT_EQ(selected(), 0U);
}

TEST_F(CamerasListTest, OpenTakesTheRowThatWasClicked)
{
    open({"A", "B", "C"});
    EXPECT_NE(run([this] {
                  QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, row(2));
                  QTest::mouseClick(button("pb_open"), Qt::LeftButton);
              }),
              0);
    EXPECT_EQ(selected(), 2U);
}

TEST_F(CamerasListTest, DoubleClickSelectsTheRowAndAccepts)
{
    open({"A", "B", "C"});
    EXPECT_NE(run([this] {
                  QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, row(1));
                  QTest::mouseDClick(list()->viewport(), Qt::LeftButton, {}, row(1));
              }),
              0);
    EXPECT_EQ(selected(), 1U);
}

TEST_F(CamerasListTest, CamerasWithTheSameSerialAreToldApartByTheirRow)
{
    open({"SAME", "SAME"});
    EXPECT_EQ(rows(), (QStringList{u"SAME"_s, u"SAME"_s}));
    EXPECT_NE(run([this] {
                  QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, row(1));
                  QTest::mouseClick(button("pb_open"), Qt::LeftButton);
              }),
              0);
    EXPECT_EQ(selected(), 1U);
}

TEST_F(CamerasListTest, WithoutCamerasOpenAcceptsWithoutASelection)
{
    open({});
    EXPECT_EQ(list()->count(), 0);
    EXPECT_NE(run([this] { QTest::mouseClick(button("pb_open"), Qt::LeftButton); }), 0);
    EXPECT_EQ(selected(), std::nullopt);
}

TEST_F(CamerasListTest, CloseRejects)
{
    open({"A"});
    QSignalSpy rejected(&*dialog, &QDialog::rejected);
    EXPECT_EQ(run([this] { QTest::mouseClick(button("pb_close"), Qt::LeftButton); }), 0);
    EXPECT_EQ(rejected.count(), 1);
}

TEST_F(CamerasListTest, TheCrossClosesAndRejects)
{
    open({"A"});
    QSignalSpy rejected(&*dialog, &QDialog::rejected);
    EXPECT_EQ(run([this] { QTest::mouseClick(button("pb_win_close"), Qt::LeftButton); }), 0);
    EXPECT_EQ(rejected.count(), 1);
    EXPECT_FALSE(dialog->isVisible());
}

TEST_F(CamerasListTest, EscapeRejects)
{
    open({"A"});
    EXPECT_EQ(run([this] { QTest::keyClick(list(), Qt::Key_Escape); }), 0);
}

TEST_F(CamerasListTest, ReturnOpensTheRowChosenWithTheArrows)
{
    open({"A", "B", "C"});
    EXPECT_NE(run([this] {
                  QTest::keyClick(list(), Qt::Key_Down);
                  QTest::keyClick(list(), Qt::Key_Return);
              }),
              0);
    EXPECT_EQ(selected(), 1U);
}

TEST_F(CamerasListTest, ReturnInTheSearchFieldOpensNothing)
{
    open({"A", "B"});
    QSignalSpy finished(&*dialog, &QDialog::finished);
    auto* field = find<QLineEdit>("le_search_camera");
    QTest::mouseClick(field, Qt::LeftButton);
    QTest::keyClick(field, Qt::Key_Return);
    QTest::keyClick(field, Qt::Key_Enter);
    EXPECT_EQ(finished.count(), 0);
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(selected(), 0U);
    QTest::keyClick(field, Qt::Key_Escape);
    EXPECT_EQ(finished.count(), 1) << "Escape leaves from there, too";
}

TEST_F(CamerasListTest, TheListHasTheFocusFirst)
{
    open({"A"});
    EXPECT_EQ(dialog->focusWidget(), list());
}

TEST_F(CamerasListTest, TypingIntoTheSearchFieldFiltersNothing)
{
    open({"A", "B", "C"});
    auto* field = find<QLineEdit>("le_search_camera");
    QTest::mouseClick(field, Qt::LeftButton);
    QTest::keyClicks(field, u"B"_s);
    EXPECT_EQ(field->text(), u"B"_s);
    EXPECT_EQ(rows(), (QStringList{u"A"_s, u"B"_s, u"C"_s}));
    for (int i = 0; i < 3; ++i)
        EXPECT_FALSE(list()->item(i)->isHidden());
    EXPECT_EQ(selected(), 0U);
}

TEST_F(CamerasListTest, TheSearchButtonDoesNothing)
{
    open({"A", "B", "C"});
    find<QLineEdit>("le_search_camera")->setText(u"C"_s);
    QTest::mouseClick(button("pb_searc_camera"), Qt::LeftButton);
    EXPECT_EQ(rows(), (QStringList{u"A"_s, u"B"_s, u"C"_s}));
    for (int i = 0; i < 3; ++i)
        EXPECT_FALSE(list()->item(i)->isHidden());
    EXPECT_EQ(selected(), 0U);
    EXPECT_TRUE(dialog->isVisible());
}

TEST_F(CamerasListTest, TheSearchButtonLightsUpUnderTheMouse)
{
    open({"A"});
    QPushButton* const search = button("pb_searc_camera");
    QCursor::setPos(dialog->mapToGlobal(QPoint(5, 5)));
    ASSERT_TRUE(QTest::qWaitFor([search] { return !search->underMouse(); }));
    const QImage rest = search->grab().toImage();
    QCursor::setPos(search->mapToGlobal(search->rect().center()));
    ASSERT_TRUE(QTest::qWaitFor([search] { return search->underMouse(); }));
    EXPECT_NE(search->grab().toImage(), rest);
}

TEST_F(CamerasListTest, ShowsItsTexts)
{
    open({});
    EXPECT_EQ(find<QLabel>("lb_title")->text(), u"Open a camera"_s);
    EXPECT_EQ(find<QLabel>("label")->text(), u"Camera List"_s);
    EXPECT_EQ(find<QLineEdit>("le_search_camera")->placeholderText(), u"Search Cameras..."_s);
    EXPECT_EQ(button("pb_open")->text(), u"Open"_s);
    EXPECT_EQ(button("pb_close")->text(), u"Close"_s);
    EXPECT_TRUE(find<QWidget>("widget_search")->isAncestorOf(find<QLineEdit>("le_search_camera")));
    EXPECT_TRUE(find<QWidget>("widget_search")->isAncestorOf(button("pb_searc_camera")));
    EXPECT_TRUE(find<QWidget>("widget_body")->isAncestorOf(list()));
    EXPECT_TRUE(find<QWidget>("widget_title_name")->isAncestorOf(find<QLabel>("lb_title")));
}

TEST_F(CamerasListTest, IsFramelessWithItsCrossOutsideTheDragArea)
{
    open({"A"});
    EXPECT_TRUE(dialog->windowFlags().testFlag(Qt::FramelessWindowHint));
    EXPECT_EQ(dialog->windowTitle(), u"Open a camera"_s);
    EXPECT_TRUE(find<QWidget>("widget_title_bar")->isAncestorOf(button("pb_win_close")));
    EXPECT_FALSE(find<QWidget>("widget_title_name")->isAncestorOf(button("pb_win_close")));
    EXPECT_EQ(button("pb_win_close")->size(), QSize(30, 30));
    EXPECT_EQ(find<QWidget>("widget_title_bar")->height(), 50);
}

#if KORVANE_OWN_FRAME
TEST_F(CamerasListTest, IsDraggedByItsTitle)
{
    open({"A"});
    dialog->move(100, 120);
    auto* title = find<QWidget>("lb_title");
    const QPoint at(30, 15);
    QTest::mousePress(title, Qt::LeftButton, {}, at);
    QTest::mouseMove(title, at + QPoint(40, 60));
    QTest::mouseRelease(title, Qt::LeftButton, {}, at);
    EXPECT_EQ(dialog->pos(), QPoint(140, 180));
}
#endif

TEST_F(CamerasListTest, PaintsTheCardInItsColours)
{
    open({"A", "B"});
    const QImage picture = dialog->grab().toImage();
    EXPECT_EQ(picture.pixelColor(dialog->width() / 2, 10), QColor(0x00, 0x4B, 0x6A));
    EXPECT_EQ(picture.pixelColor(10, dialog->height() - 30), QColor(Qt::white));
    EXPECT_LT(picture.pixelColor(0, 0).alpha(), 255);
    EXPECT_LT(picture.pixelColor(dialog->width() - 1, dialog->height() - 1).alpha(), 255);

    const QRect chosen = list()->visualItemRect(list()->item(0));
    const QPoint corner
        = list()->viewport()->mapTo(&*dialog, QPoint(chosen.right() - 20, chosen.center().y()));
    EXPECT_EQ(picture.pixelColor(corner), QColor(0x00, 0x4B, 0x6A));
}

TEST_F(CamerasListTest, IsAChildWindowOfItsParent)
{
    QWidget window;
    const CamerasList child(cameras({"A"}), &window);
    EXPECT_EQ(child.parentWidget(), &window);
    EXPECT_TRUE(child.isWindow());
}
