#include "mainwindow/windowmenus.h"

#include "mainwindow/titlemenu.h"
#include "widgets/cardcorners.h"

#include <QCoreApplication>
#include <QCursor>
#include <QEvent>
#include <QFont>
#include <QFontMetrics>
#include <QPushButton>

namespace {

// The file menu's separator keeps off the sides; the other menus' run through.
QString titleBarMenuStyle(const QString& separatorMargin)
{
    return QStringLiteral(R"(
QMenu { background-color: #FFFFFF; border: 1px solid #AAAAAA; margin: 0px;
        border-bottom-left-radius: 5px; border-bottom-right-radius: 5px; }
QMenu::item { height: 30px; margin: 2px; padding-left: 10px; padding-right: 24px;
              font-size: 12px; color: #575757; background-color: transparent; }
QMenu::item:selected, QMenu::item:selected:hover:pressed { background-color: #004B6A; color: #FFFFFF; border-radius: 5px; }
QMenu::item:selected:hover { background-color: #EDF1F3; color: #004B6A; border-radius: 5px; }
QMenu::separator { height: 1px; background-color: #C3C3C3; %1 }
)")
        .arg(separatorMargin);
}

const QString viewerMenuStyle = QStringLiteral(R"(
QMenu { background-color: #FFFFFF; border: 1px solid #004B6A; border-radius: 3px; }
QMenu::item { height: 30px; padding-left: -20px; padding-right: 10px; font-size: 12px; color: #575757;
              background-color: transparent; }
QMenu::item:hover, QMenu::item:selected { background-color: #EDF1F3; color: #555555; }
QMenu::indicator { width: 36px; height: 20px; subcontrol-origin: padding; subcontrol-position: right center;
                   right: 10px; }
QMenu::indicator:checked { image: url(":/img/assets/btn_switch_enable.svg"); }
QMenu::indicator:unchecked { image: url(":/img/assets/btn_switch_disable.svg"); }
)");

/// A menu takes the pointer away from its button without a word: closed somewhere else, it would leave the
/// button looking as if the pointer were still on it.
void endHover(QPushButton* button)
{
    if (!button->underMouse() || button->rect().contains(button->mapFromGlobal(QCursor::pos())))
        return;
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(button, &leave);
    button->update();
}

void attach(QMenu* menu, QPushButton* button)
{
    button->setMenu(menu);
    // Queued: until it is closed, what is under the pointer is the menu's affair.
    QObject::connect(
        menu, &QMenu::aboutToHide, button, [button] { endHover(button); }, Qt::QueuedConnection);
}

} // namespace

WindowMenus::WindowMenus(QWidget* window, const Buttons& buttons)
    : QObject(window), openCameraText(tr("Open Camera")), openRecordingText(tr("Open Recording")),
      saveAsText(tr("Save as...")), cutText(tr("Cut Recording")), quitText(tr("Quit")),
      generalSettingText(tr("General Setting")), languageText(tr("EN/中文")), aboutText(tr("About us")),
      startEndPointText(tr("Toggle Start/End Point")), fileMenu(new TitleMenu(window)),
      deviceMenu(new TitleMenu(window)), settingMenu(std::make_unique<TitleMenu>()),
      helpMenu(std::make_unique<TitleMenu>()), viewerSettingMenu(new QMenu(window))
{
    buildViewerSettingMenu();
    buildTitleBarMenus(buttons);
}

WindowMenus::~WindowMenus() = default;

void WindowMenus::prepare(QMenu& menu, const QString& styleSheet)
{
    menu.setWindowFlags(menu.windowFlags() | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint);
    menu.setAttribute(Qt::WA_TranslucentBackground);
    menu.setStyleSheet(styleSheet);
    connect(&menu, &QMenu::triggered, this, &WindowMenus::triggered);
}

void WindowMenus::buildTitleBarMenus(const Buttons& buttons)
{
    fileMenu->setObjectName(QStringLiteral("menu_file"));
    deviceMenu->setObjectName(QStringLiteral("menu_device"));
    settingMenu->setObjectName(QStringLiteral("menu_setting"));
    helpMenu->setObjectName(QStringLiteral("menu_help"));
    prepare(*fileMenu, titleBarMenuStyle(QStringLiteral("margin-left: 2px; margin-right: 2px;")));
    prepare(*deviceMenu, titleBarMenuStyle(QString()));
    prepare(*settingMenu, titleBarMenuStyle(QString()));
    prepare(*helpMenu, titleBarMenuStyle(QString()));
    for (QMenu* const menu : {fileMenu, deviceMenu, settingMenu.get(), helpMenu.get()})
        new CardCorners(menu, 5, CardCorners::Which::Bottom);

    connect(fileMenu->addAction(openRecordingText), &QAction::triggered, this,
            &WindowMenus::openRecordingRequested);
    fileMenu->addSeparator();
    connect(fileMenu->addAction(saveAsText), &QAction::triggered, this, &WindowMenus::saveAsRequested);
    connect(fileMenu->addAction(cutText), &QAction::triggered, this, &WindowMenus::cutRequested);
    fileMenu->addSeparator();
    fileMenu->addAction(quitText);
    connect(deviceMenu->addAction(openCameraText), &QAction::triggered, this,
            &WindowMenus::openCameraRequested);
    deviceMenu->addSeparator();
    settingMenu->addAction(generalSettingText);
    settingMenu->addAction(languageText);
    helpMenu->addAction(aboutText);

    attach(fileMenu, buttons.file);
    attach(deviceMenu, buttons.device);
    attach(settingMenu.get(), buttons.setting);
    attach(helpMenu.get(), buttons.help);
}

void WindowMenus::buildViewerSettingMenu()
{
    viewerSettingMenu->setObjectName(QStringLiteral("menu_viewer_setting"));
    prepare(*viewerSettingMenu, viewerMenuStyle);
    new CardCorners(viewerSettingMenu, 3);
    QAction* const startEndPoint = viewerSettingMenu->addAction(startEndPointText);
    startEndPoint->setCheckable(true);
    connect(startEndPoint, &QAction::triggered, this, &WindowMenus::startEndPointToggled);
    viewerSettingMenu->addSeparator();
    // The style makes no room for the switch itself: a short text would run into it.
    QFont font = viewerSettingMenu->font();
    font.setPixelSize(12);
    constexpr int switchAndMargins = 80; // pixels
    viewerSettingMenu->setMinimumWidth(QFontMetrics(font).horizontalAdvance(startEndPointText)
                                       + switchAndMargins);
}

void WindowMenus::runViewerSettingMenu(const QPushButton* button)
{
    const QSize menuSize = viewerSettingMenu->sizeHint();
    viewerSettingMenu->exec(
        button->mapToGlobal(QPoint(button->sizeHint().width() - menuSize.width(), -menuSize.height())));
}

void WindowMenus::openAction(const QAction* action)
{
    const QString text = action->text();
    if (text == openCameraText || text == openRecordingText)
        return; // their own connections act
    if (text == quitText)
        emit quitRequested();
    else if (text == aboutText)
        emit aboutRequested();
    else if (text == languageText)
        emit languageRequested();
    else if (text == generalSettingText)
        emit generalSettingRequested();
}
