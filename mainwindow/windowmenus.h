#pragma once

#include <QMenu>
#include <QObject>
#include <QString>

#include <memory>

class QAction;
class QPushButton;
class QWidget;

/// The title bar's menus and the viewer-setting menu. It tells what was chosen; acting on it is others'
/// business. GUI thread.
class WindowMenus : public QObject
{
    Q_OBJECT

public:
    /// The buttons that the menus hang on.
    struct Buttons
    {
        QPushButton* file;
        QPushButton* device;
        QPushButton* setting;
        QPushButton* help;
    };

    WindowMenus(QWidget* window, const Buttons& buttons);
    ~WindowMenus() override;

    /// Pops the viewer-setting menu up above its button, right edges aligned, and returns when it has closed.
    void runViewerSettingMenu(const QPushButton* button);

    /// Tells by one of the signals below what a triggered action asks for, which is known by its text.
    void openAction(const QAction* action);

signals:
    /// An entry of any of the menus was chosen.
    void triggered(QAction* action);
    void openCameraRequested();
    void openRecordingRequested();
    void saveAsRequested();
    void cutRequested();
    void quitRequested();
    void aboutRequested();
    void languageRequested();
    void generalSettingRequested();
    void startEndPointToggled(bool on);

private:
    void buildTitleBarMenus(const Buttons& buttons);
    void buildViewerSettingMenu();
    void prepare(QMenu& menu, const QString& styleSheet);

    const QString openCameraText;
    const QString openRecordingText;
    const QString saveAsText;
    const QString cutText;
    const QString quitText;
    const QString generalSettingText;
    const QString languageText;
    const QString aboutText;
    const QString startEndPointText;

    QMenu* fileMenu; ///< the window's
    QMenu* deviceMenu; ///< the window's
    std::unique_ptr<QMenu> settingMenu;
    std::unique_ptr<QMenu> helpMenu;
    QMenu* viewerSettingMenu; ///< the window's
};
