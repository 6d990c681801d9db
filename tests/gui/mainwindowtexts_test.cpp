#include "mainwindow/mainwidget.h"

#include "camera/simulation/simulatedbackend.h"
#include "tests/gui/mainwindowfixture.h"
#include "widgets/kvtooltip.h"

#include <QFontMetrics>
#include <QLineEdit>
#include <QScrollArea>
#include <QTranslator>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace {

/// The window in one of the languages, at its smallest and at the size of its screen.
class MainWindowTextsTest : public MainWindowTest, public testing::WithParamInterface<const char*>
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(translator.load(u":/app_%1.qm"_s.arg(QLatin1StringView(GetParam()))));
        QCoreApplication::installTranslator(&translator);
        MainWindowTest::SetUp();
        // Also run at 200 %.
        ASSERT_EQ(window->devicePixelRatio(), qEnvironmentVariable("QT_SCALE_FACTOR", u"1"_s).toDouble());
        window->resize(window->minimumSize());
        // All that can stand there.
        emit window->toShowCameraSerial(u"HAL-000001"_s);
        emit window->toShowCameraTimestamp(75'000'250);
        find<QLabel>("lb_recoding_time").setText(u"00:07"_s);
        find<QLabel>("label_time").setText(u"01:15:000250/01:15:000250"_s);
        QCoreApplication::processEvents();
    }
    ~MainWindowTextsTest() override
    {
        window.reset();
        QCoreApplication::removeTranslator(&translator);
    }

    /// Fails unless a widget has room for a text in its own font.
    static void expectRoom(const QWidget& widget, const QString& text, const QSize& room)
    {
        const QFontMetrics metrics(widget.font());
        const std::string name = (widget.objectName() + u": "_s + text).toStdString();
        EXPECT_LE(metrics.horizontalAdvance(text), room.width()) << name;
        // The rectangle is rounded outwards.
        EXPECT_LE(metrics.tightBoundingRect(text).height() - 1, room.height()) << name;
    }
    static bool isScrolled(const QWidget* widget)
    {
        for (const QWidget* one = widget; one; one = one->parentWidget()) {
            if (qobject_cast<const QScrollArea*>(one->parentWidget()))
                return true;
        }
        return false;
    }
    void expectNothingClipped()
    {
        for (const QLabel* const label : window->findChildren<QLabel*>()) {
            if (!label->isVisible() || label->text().isEmpty())
                continue;
            expectRoom(*label, label->text(), label->contentsRect().size());
        }
        for (const QPushButton* const one : window->findChildren<QPushButton*>()) {
            if (one->isVisible() && !one->text().isEmpty())
                expectRoom(*one, one->text(), one->rect().size());
        }
        // Nor does a pane push out of the window or over its neighbour.
        for (const QWidget* const widget : window->findChildren<QWidget*>()) {
            if (!widget->isVisible() || widget->isWindow() || widget->window() != window.get())
                continue;
            const QRect inWindow(widget->mapTo(window.get(), QPoint()), widget->size());
            // What is scrolled may go on below.
            const bool scrolled = widget->visibleRegion().isEmpty() || isScrolled(widget);
            EXPECT_TRUE(scrolled || window->rect().contains(inWindow)) << widget->objectName().toStdString();
            EXPECT_GE(inWindow.left(), 0) << widget->objectName().toStdString();
            EXPECT_LE(inWindow.right(), window->rect().right()) << widget->objectName().toStdString();
        }
        EXPECT_LE(window->minimumSizeHint().width(), window->width());
        EXPECT_LE(window->minimumSizeHint().height(), window->height());
    }
    QTranslator translator;
};

} // namespace

TEST_P(MainWindowTextsTest, NothingIsClippedAtTheSmallestSizeWhicheverPanelIsShown)
{
    EXPECT_EQ(window->size(), QSize(1000, 650));
    expectNothingClipped();
    for (const char* const name : {"pb_fold_dvs_setting", "pb_fold_aps_setting", "pb_fold_setting"}) {
        click(name);
        QCoreApplication::processEvents();
        expectNothingClipped();
    }
}

TEST_P(MainWindowTextsTest, NothingIsClippedMaximised)
{
    window->showMaximized();
    QCoreApplication::processEvents();
    EXPECT_GT(window->width(), window->minimumWidth());
    expectNothingClipped();
}

TEST_P(MainWindowTextsTest, NothingIsClippedInThePanelsOfACamera)
{
    const auto cameras = std::make_shared<korvane::simulation::SimulatedBackend>();
    korvane::registerBackend(cameras);
    // The kind that fills all of the panels.
    window->openCamera(u"PEL-000001"_s);
    const auto folds = [this] { return find("frame_setting").findChildren<QPushButton*>(u"pb_fold"_s); };
    EXPECT_TRUE(QTest::qWaitFor([&] { return folds().size() >= 8; }, 20000));
    for (const char* const panel : {"pb_fold_setting", "pb_fold_dvs_setting", "pb_fold_aps_setting"}) {
        if (!button(panel).isChecked())
            click(panel);
        for (QPushButton* const fold : folds()) {
            if (fold->isVisible())
                fold->click();
        }
        QCoreApplication::processEvents();
        expectNothingClipped();
        int fields = 0;
        for (const QLineEdit* const field : find("frame_setting").findChildren<QLineEdit*>()) {
            if (!field->isVisible())
                continue;
            ++fields;
            // Qt keeps two pixels on either side of the text.
            expectRoom(*field, field->text(), field->contentsRect().size() - QSize(4, 0));
        }
        EXPECT_GE(fields, 2) << panel;
    }
    window.reset();
    korvane::unregisterBackend(cameras);
}

TEST_P(MainWindowTextsTest, EveryMenuEntryFitsItsMenu)
{
    for (const char* const name :
         {"pb_menu_file", "pb_menu_device", "pb_menu_setting", "pb_menu_help", "pb_viewer_setting"}) {
        const PopupVisitor visitor([name](QMenu& menu) {
            QFont font = menu.font();
            font.setPixelSize(12);
            const int paddings = menu.objectName() == "menu_viewer_setting"_L1 ? 36 + 10 : 10;
            for (const QAction* const action : menu.actions()) {
                if (action->isSeparator())
                    continue;
                const QRect item = menu.actionGeometry(const_cast<QAction*>(action));
                EXPECT_GE(item.height(), 30) << name;
                EXPECT_LE(QFontMetrics(font).horizontalAdvance(action->text()) + paddings, item.width())
                    << name << ": " << action->text().toStdString();
            }
        });
        click(name);
        EXPECT_TRUE(visitor.hasCome()) << name;
    }
}

TEST_P(MainWindowTextsTest, EverythingIsTranslated)
{
    const bool english = std::string_view(GetParam()) == "en";
    for (const char* const name : {"pb_menu_file", "pb_menu_device", "pb_menu_setting", "pb_menu_help"}) {
        EXPECT_FALSE(button(name).text().isEmpty()) << name;
        EXPECT_EQ(button(name).text().front().unicode() < 128, english) << name;
        for (const QAction* const action : button(name).menu()->actions()) {
            if (!action->isSeparator() && action->text() != u"EN/中文"_s) {
                EXPECT_EQ(action->text().front().unicode() < 128, english) << action->text().toStdString();
            }
        }
    }
    EXPECT_EQ(find<QMenu>("menu_viewer_setting").actions().constFirst()->text().front().unicode() < 128,
              english);
    const auto tips = window->findChildren<KvToolTip*>(Qt::FindDirectChildrenOnly);
    EXPECT_EQ(tips.count(), 6);
    for (const KvToolTip* const tip : tips)
        EXPECT_EQ(tip->text().front().unicode() < 128, english) << tip->text().toStdString();
}

INSTANTIATE_TEST_SUITE_P(Languages, MainWindowTextsTest, testing::Values("en", "zh"),
                         [](const auto& language) { return std::string(language.param); });
