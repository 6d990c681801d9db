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

public slots:
    /// Tells what a triggered action asks for, by its text.
    void openActionSlot(QAction* action);

signals:
    void openCameraRequested();
    void openRecordingRequested();
    void quitRequested();
    void aboutRequested();
    void languageRequested();
    void startEndPointToggled(bool on);

private:
    void buildTitleBarMenus(const Buttons& buttons);
    void buildViewerSettingMenu();
    void prepare(QMenu& menu, const QString& styleSheet);

    const QString openCameraText;
    const QString openRecordingText;
    const QString quitText;
    const QString languageText;
    const QString aboutText;
    const QString startEndPointText;

    QMenu* fileMenu; ///< the window's
    QMenu* deviceMenu; ///< the window's
    std::unique_ptr<QMenu> settingMenu;
    std::unique_ptr<QMenu> helpMenu;
    QMenu* viewerSettingMenu; ///< the window's
};
