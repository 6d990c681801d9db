#include "mainwindow/windowmenus.h"

#include "app/config.h"
#include "app/kvgeneralsetting.h"
#include "app/productinfo.h"
#include "tests/gui/mainwindowfixture.h"
#include "tests/support/scripteddialogs.h"

#include <QDesktopServices>
#include <QFileDialog>
#include <QListWidget>
#include <QSignalSpy>
#include <QUrl>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace {

/// Takes the place of the desktop's browser.
class Browser : public QObject
{
    Q_OBJECT

public:
    Browser() { QDesktopServices::setUrlHandler(u"https"_s, this, "open"); }
    ~Browser() override { QDesktopServices::unsetUrlHandler(u"https"_s); }

    QList<QUrl> opened;

public slots:
    void open(const QUrl& url) { opened.append(url); }
};

constexpr const char* menuButtons[] = {"pb_menu_file", "pb_menu_device", "pb_menu_setting", "pb_menu_help"};

class WindowMenusTest : public MainWindowTest
{
protected:
    /// What a menu shows, top to bottom; separators as "-".
    static QStringList items(const QMenu& menu)
    {
        QStringList texts;
        for (const QAction* const action : menu.actions())
            texts << (action->isSeparator() ? u"-"_s : action->text());
        return texts;
    }
    static QAction* action(const QMenu& menu, const QString& text)
    {
        for (QAction* const candidate : menu.actions()) {
            if (candidate->text() == text)
                return candidate;
        }
        return nullptr;
    }
    WindowMenus& menus() const { return *window->findChild<WindowMenus*>(); }
    static void clickItem(QMenu& menu, const QString& text)
    {
        QAction* const item = action(menu, text);
        ASSERT_NE(item, nullptr) << text.toStdString();
        QTest::mouseClick(&menu, Qt::LeftButton, {}, menu.actionGeometry(item).center());
    }
    /// Opens a menu of the title bar with the mouse and clicks an item.
    void choose(const char* menuButton, const QString& text)
    {
        const PopupVisitor visitor([&text](QMenu& menu) { clickItem(menu, text); });
        click(menuButton);
        EXPECT_TRUE(visitor.hasCome()) << menuButton;
    }
    /// The same for an item that asks something, and the answer.
    void chooseAndAnswer(const char* menuButton, const QString& text, const char* answer)
    {
        QStringList texts;
        const ScriptedPerson person([&](QWidget& modal) {
            for (const char* const part : {"lb_title", "lb_show_message"}) {
                if (const auto* const label = modal.findChild<QLabel*>(QLatin1StringView(part)))
                    texts << label->text();
            }
            for (const char* const part : {"pb_open", "pb_close"}) {
                if (const auto* const one = modal.findChild<QPushButton*>(QLatin1StringView(part)))
                    texts << one->text();
            }
            QTest::mouseClick(modal.findChild<QPushButton*>(QLatin1StringView(answer)), Qt::LeftButton);
            return true;
        });
        choose(menuButton, text);
        EXPECT_TRUE(QTest::qWaitFor([&person] { return person.isDone(); })) << "nothing was asked";
        EXPECT_TRUE(QTest::qWaitFor([] { return QApplication::activeModalWidget() == nullptr; }));
        asked = texts;
    }

    QStringList asked; ///< title, message and both answers of the last question
};

} // namespace

TEST_F(WindowMenusTest, ItsMenusAreClippedToTheirRoundedCorners)
{
    const auto maskOf = [](QMenu& menu) {
        menu.popup(QPoint(300, 300));
        const QRegion mask = menu.mask();
        menu.close();
        return mask;
    };
    for (const char* const name : menuButtons) {
        QMenu& menu = *button(name).menu();
        const QRegion mask = maskOf(menu);
        EXPECT_EQ(mask.boundingRect(), menu.rect()) << name;
        EXPECT_TRUE(mask.contains(menu.rect().topLeft()) && mask.contains(menu.rect().topRight())) << name;
        EXPECT_FALSE(mask.contains(menu.rect().bottomLeft())) << name;
        EXPECT_FALSE(mask.contains(menu.rect().bottomRight())) << name;
    }
    QMenu& viewerSetting = find<QMenu>("menu_viewer_setting");
    const QRegion mask = maskOf(viewerSetting);
    EXPECT_EQ(mask.boundingRect(), viewerSetting.rect());
    EXPECT_FALSE(mask.contains(viewerSetting.rect().topLeft()));
    EXPECT_FALSE(mask.contains(viewerSetting.rect().bottomRight()));
}

TEST_F(WindowMenusTest, TheFourMenusHoldTheirItemsInOrder)
{
    EXPECT_EQ(
        items(*button("pb_menu_file").menu()),
        QStringList({u"Open Recording"_s, u"-"_s, u"Save as..."_s, u"Cut Recording"_s, u"-"_s, u"Quit"_s}));
    EXPECT_EQ(items(*button("pb_menu_device").menu()), QStringList({u"Open Camera"_s, u"-"_s}));
    EXPECT_EQ(items(*button("pb_menu_setting").menu()), QStringList({u"General Setting"_s, u"EN/中文"_s}));
    EXPECT_EQ(items(*button("pb_menu_help").menu()), QStringList({u"About us"_s}));
}

TEST_F(WindowMenusTest, EveryMenuIsFramelessWithoutShadowAndTranslucent)
{
    std::vector<QMenu*> menus{&find<QMenu>("menu_viewer_setting")};
    for (const char* const name : menuButtons)
        menus.push_back(button(name).menu());
    for (const QMenu* const menu : menus) {
        const std::string name = menu->objectName().toStdString();
        EXPECT_TRUE(menu->windowFlags().testFlag(Qt::FramelessWindowHint)) << name;
        EXPECT_TRUE(menu->windowFlags().testFlag(Qt::NoDropShadowWindowHint)) << name;
        EXPECT_EQ(menu->windowFlags() & Qt::WindowType_Mask, Qt::Popup) << name;
        EXPECT_TRUE(menu->testAttribute(Qt::WA_TranslucentBackground)) << name;
    }
}

TEST_F(WindowMenusTest, AClickOnAMenuButtonPopsItsMenuUpBelow)
{
    for (const char* const name : menuButtons) {
        const QPushButton& one = button(name);
        QPoint place;
        const QMenu* shown = nullptr;
        const PopupVisitor visitor([&](QMenu& menu) {
            place = menu.pos();
            shown = &menu;
        });
        click(name);
        ASSERT_TRUE(visitor.hasCome()) << name;
        EXPECT_EQ(shown, one.menu()) << name;
        EXPECT_EQ(place, one.mapToGlobal(QPoint(0, one.height()))) << name;
    }
}

TEST_F(WindowMenusTest, TheFileAndDeviceMenusAreTheWindowsTheOthersNobodys)
{
    EXPECT_EQ(button("pb_menu_file").menu()->parent(), window.get());
    EXPECT_EQ(button("pb_menu_device").menu()->parent(), window.get());
    EXPECT_EQ(button("pb_menu_setting").menu()->parent(), nullptr);
    EXPECT_EQ(button("pb_menu_help").menu()->parent(), nullptr);
}

TEST_F(WindowMenusTest, TheMenusWithoutParentGoWithTheWindow)
{
    const QPointer<QMenu> setting = button("pb_menu_setting").menu();
    const QPointer<QMenu> help = button("pb_menu_help").menu();
    window.reset();
    EXPECT_TRUE(setting.isNull());
    EXPECT_TRUE(help.isNull());
}

TEST_F(WindowMenusTest, OpenRecordingAsksForAFileOnce)
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    int dialogs = 0;
    const ScriptedPerson person([&dialogs](QWidget& modal) {
        auto* const dialog = qobject_cast<QFileDialog*>(&modal);
        if (!dialog)
            return false;
        ++dialogs;
        dialog->reject();
        return false;
    });
    choose("pb_menu_file", u"Open Recording"_s);
    ASSERT_TRUE(QTest::qWaitFor([&] { return dialogs == 1 && !QApplication::activeModalWidget(); }));
    EXPECT_TRUE(window->isVisible());
}

TEST_F(WindowMenusTest, OpenCameraShowsTheListOfCamerasOnce)
{
    int lists = 0;
    const ScriptedPerson person([&lists](QWidget& modal) {
        if (!modal.findChild<QListWidget*>(u"listWidget_cameras"_s))
            return false;
        ++lists;
        qobject_cast<QDialog*>(&modal)->reject();
        return false;
    });
    choose("pb_menu_device", u"Open Camera"_s);
    ASSERT_TRUE(QTest::qWaitFor([&] { return lists == 1 && !QApplication::activeModalWidget(); }));
    EXPECT_TRUE(window->isVisible());
}

TEST_F(WindowMenusTest, QuitClosesTheWindow)
{
    choose("pb_menu_file", u"Quit"_s);
    EXPECT_TRUE(QTest::qWaitFor([this] { return !window->isVisible(); }));
}

TEST_F(WindowMenusTest, AboutUsAnsweredWithCloseOpensNothing)
{
    const Browser browser;
    chooseAndAnswer("pb_menu_help", u"About us"_s, "pb_close");
    EXPECT_EQ(asked, QStringList({u"Tips"_s, u"Is it open in the browser?"_s, u"Open"_s, u"Close"_s}));
    EXPECT_EQ(browser.opened, QList<QUrl>());
    EXPECT_TRUE(window->isVisible());
}

TEST_F(WindowMenusTest, AboutUsAnsweredWithOpenOpensTheMakersWebSite)
{
    const Browser browser;
    chooseAndAnswer("pb_menu_help", u"About us"_s, "pb_open");
    EXPECT_TRUE(QTest::qWaitFor([&browser] { return !browser.opened.isEmpty(); }));
    EXPECT_EQ(browser.opened, QList<QUrl>({QUrl(QString(productinfo::webAddress))}));
}

TEST_F(WindowMenusTest, TheLanguageSwitchPutOffForLaterChangesNothing)
{
    const Config* const config = Config::getInstance(u"config.ini"_s);
    const QString before = config->language;
    chooseAndAnswer("pb_menu_setting", u"EN/中文"_s, "pb_close");
    EXPECT_EQ(asked,
              QStringList({u"Tips"_s, u"The language change will take effect after restart."_s, u"Restart"_s,
                           u"Later"_s}));
    EXPECT_EQ(config->language, before);
    EXPECT_TRUE(window->isVisible());
}

TEST_F(WindowMenusTest, GeneralSettingRunsTheDialogWithoutParentAndDestroysIt)
{
    QPointer<QWidget> dialog;
    const QWidget* parent = window.get();
    const ScriptedPerson person([&](QWidget& modal) {
        if (!qobject_cast<KvGeneralSetting*>(&modal))
            return false;
        dialog = &modal;
        parent = modal.parentWidget();
        modal.close();
        return true;
    });
    choose("pb_menu_setting", u"General Setting"_s);
    EXPECT_TRUE(QTest::qWaitFor([&] { return person.isDone() && dialog.isNull(); }));
    EXPECT_EQ(parent, nullptr);
    EXPECT_TRUE(window->isVisible());
}

TEST_F(WindowMenusTest, TheGeneralSettingsButtonRunsTheDialogOverTheWindowAndIsUncheckedAfterwards)
{
    const QWidget* parent = nullptr;
    bool checked = false;
    const ScriptedPerson person([&](QWidget& modal) {
        if (!qobject_cast<KvGeneralSetting*>(&modal))
            return false;
        parent = modal.parentWidget();
        checked = button("pb_fold_general_setting").isChecked();
        modal.close();
        return true;
    });
    click("pb_fold_general_setting");
    EXPECT_TRUE(person.isDone());
    EXPECT_EQ(parent, window.get());
    EXPECT_TRUE(checked) << "while the dialog is open";
    EXPECT_FALSE(button("pb_fold_general_setting").isChecked());
    EXPECT_TRUE(button("pb_fold_setting").isChecked()) << "the side bars are not touched";
    EXPECT_EQ(find("frame_setting").maximumWidth(), 500);
}

TEST_F(WindowMenusTest, SavingAndCuttingAskForARecordingFirst)
{
    for (const QString& item : {u"Save as..."_s, u"Cut Recording"_s}) {
        QSignalSpy tips(window.get(), &MainWidget::signalShowLeftBottomTips);
        choose("pb_menu_file", item);
        ASSERT_TRUE(QTest::qWaitFor([&tips] { return tips.count() == 1; })) << item.toStdString();
        EXPECT_EQ(tips[0][0].toString(), u"Please open a raw file first."_s);
        EXPECT_EQ(tips[0][1].value<KvMessageType>(), Warning);
        EXPECT_EQ(tips[0][2].toString(), QString());
    }
}

TEST_F(WindowMenusTest, EveryMenuTellsTheWindowWhatWasTriggered)
{
    std::vector<QMenu*> all{&find<QMenu>("menu_viewer_setting")};
    for (const char* const name : menuButtons)
        all.push_back(button(name).menu());
    for (QMenu* const menu : all) {
        QAction nothing(u"Something else"_s);
        QSignalSpy told(&menus(), &WindowMenus::triggered);
        emit menu->triggered(&nothing);
        EXPECT_EQ(told.count(), 1) << menu->objectName().toStdString();
        // The window's slot acts on it, whichever menu it comes from.
        QSignalSpy quitAsked(&menus(), &WindowMenus::quitRequested);
        QAction quit(u"Quit"_s);
        emit menu->triggered(&quit);
        EXPECT_EQ(quitAsked.count(), 1) << menu->objectName().toStdString();
        EXPECT_FALSE(window->isVisible()) << menu->objectName().toStdString();
        window->show();
    }
}

TEST_F(WindowMenusTest, AnEntryIsKnownByItsText)
{
    // The same texts on other actions: what counts is the text.
    const std::pair<QString, void (WindowMenus::*)()> entries[]
        = {{u"Quit"_s, &WindowMenus::quitRequested},
           {u"About us"_s, &WindowMenus::aboutRequested},
           {u"EN/中文"_s, &WindowMenus::languageRequested},
           {u"General Setting"_s, &WindowMenus::generalSettingRequested}};
    WindowMenus& all = menus();
    all.disconnect(window.get());
    for (const auto& [text, signal] : entries) {
        QSignalSpy told(&all, signal);
        const QAction action(text);
        all.openAction(&action);
        EXPECT_EQ(told.count(), 1) << text.toStdString();
    }
    // The others have connections of their own, and act once.
    for (const QString& text : {u"Open Camera"_s, u"Open Recording"_s, u"Save as..."_s, u"Cut Recording"_s}) {
        QSignalSpy camera(&all, &WindowMenus::openCameraRequested);
        QSignalSpy recording(&all, &WindowMenus::openRecordingRequested);
        QSignalSpy save(&all, &WindowMenus::saveAsRequested);
        QSignalSpy cut(&all, &WindowMenus::cutRequested);
        const QAction action(text);
        all.openAction(&action);
        EXPECT_EQ(camera.count() + recording.count() + save.count() + cut.count(), 0) << text.toStdString();
    }
}

TEST_F(WindowMenusTest, AnUnknownActionDoesNothing)
{
    QAction other(u"Something else"_s);
    ASSERT_TRUE(QMetaObject::invokeMethod(window.get(), "openActionSlot", Q_ARG(QAction*, &other)));
    QCoreApplication::processEvents();
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST_F(WindowMenusTest, TheViewerSettingMenuHoldsTheCheckableToggleAndASeparator)
{
    const QMenu& menu = find<QMenu>("menu_viewer_setting");
    EXPECT_EQ(items(menu), QStringList({u"Toggle Start/End Point"_s, u"-"_s}));
    EXPECT_TRUE(menu.actions().constFirst()->isCheckable());
    EXPECT_FALSE(menu.actions().constFirst()->isChecked());
    EXPECT_EQ(menu.parent(), window.get());
}

TEST_F(WindowMenusTest, TheViewerSettingMenuOpensAboveItsButtonAlignedToTheRight)
{
    const QPushButton& setting = button("pb_viewer_setting");
    QRect shown;
    bool checked = false;
    const PopupVisitor visitor([&](QMenu& menu) {
        shown = menu.geometry();
        checked = setting.isChecked();
    });
    click("pb_viewer_setting");
    ASSERT_TRUE(visitor.hasCome());
    EXPECT_TRUE(checked) << "while the menu is open";
    EXPECT_FALSE(setting.isChecked()) << "after the menu has closed";
    const QPoint corner = setting.mapToGlobal(QPoint(setting.sizeHint().width(), 0));
    EXPECT_EQ(shown.bottom() + 1, corner.y());
    EXPECT_EQ(shown.right() + 1, corner.x());
}

TEST_F(WindowMenusTest, ToggleStartEndPointShowsTheSideHandlesAndResetsTheRange)
{
    KvThreeHandleSlider& timeline = slider();
    timeline.setMaximum(5000);
    timeline.setMinimum(100);
    ASSERT_EQ(timeline.handleMode(), 1);
    const auto toggle = [this] {
        const PopupVisitor visitor([](QMenu& menu) { clickItem(menu, u"Toggle Start/End Point"_s); });
        click("pb_viewer_setting");
        ASSERT_TRUE(visitor.hasCome());
        EXPECT_FALSE(button("pb_viewer_setting").isChecked());
    };

    toggle();
    EXPECT_EQ(timeline.handleMode(), 3);
    EXPECT_TRUE(find<QMenu>("menu_viewer_setting").actions().constFirst()->isChecked());
    timeline.setLowerValue(1000);
    timeline.setUpperValue(4000);
    EXPECT_EQ(timeline.effectiveLowerValue(), 1000);
    EXPECT_EQ(timeline.effectiveUpperValue(), 4000);

    toggle();
    EXPECT_EQ(timeline.handleMode(), 1);
    EXPECT_EQ(timeline.effectiveLowerValue(), 100);
    EXPECT_EQ(timeline.effectiveUpperValue(), 5000);

    toggle();
    EXPECT_EQ(timeline.handleMode(), 3);
    EXPECT_EQ(timeline.effectiveLowerValue(), 100) << "the range set before is forgotten";
    EXPECT_EQ(timeline.effectiveUpperValue(), 5000);
}

#include "windowmenus_test.moc"

TEST_F(WindowMenusTest, AMenuClosedElsewhereLeavesNoMarkOnItsButton)
{
    for (const char* const name : {"pb_menu_file", "pb_menu_device", "pb_menu_setting", "pb_menu_help"}) {
        QPushButton& one = button(name);
        const auto markedAfterClosingAt = [&](const QPoint& pointer) {
            const PopupVisitor visitor([&](QMenu&) {
                QCursor::setPos(pointer);
                // On most platforms a menu that pops up does not tell the button that the pointer leaves.
                one.setAttribute(Qt::WA_UnderMouse);
            });
            click(name);
            EXPECT_TRUE(visitor.hasCome()) << name;
            QCoreApplication::processEvents();
            return one.underMouse();
        };
        EXPECT_FALSE(markedAfterClosingAt(one.mapToGlobal(QPoint(20, 60)))) << name;
        EXPECT_TRUE(markedAfterClosingAt(one.mapToGlobal(one.rect().center()))) << name;
    }
}
