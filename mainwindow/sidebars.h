#pragma once

#include <QObject>

#include <cstdint>
#include <memory>

class LiveSession;
class QBoxLayout;
class QPushButton;
class QWidget;
class SidebarApsSettingUI;
class SidebarCameraSettingUI;
class SidebarDvsSettingUI;
struct DisplayTiming;

/// The three settings panels of the window and the pane that shows one of them at a time: makes them, folds
/// them, fills them from the open camera and hands on what is set in them. GUI thread.
class SideBars : public QObject
{
    Q_OBJECT

public:
    /// Where the panels live in the window.
    struct Pane
    {
        QWidget* frame; ///< holds strip and panels
        QWidget* strip; ///< holds the buttons; all that is left when no panel is shown
        QBoxLayout* panels;
        QPushButton* cameraButton;
        QPushButton* dvsButton;
        QPushButton* apsButton;
    };

    /// The references and the pane outlive this.
    SideBars(const Pane& pane, LiveSession& session, DisplayTiming& timing);
    /// Ends the panels, which lets go of the camera's tools.
    ~SideBars() override;

    /// A button was checked: its panel takes the place of the others. Or unchecked: only the strip stays.
    void foldCamera(bool shown);
    void foldDvs(bool shown);
    void foldAps(bool shown);

    /// Fills the panels from the camera that is open now; one that has no such tool loses the section.
    void cameraChanged();
    /// A recording has no settings, but may be shown slower.
    void recordingOpened();

private:
    void fold(QWidget* panel, QPushButton* button, bool shown);
    void restoreWidth();
    void setDvsSettingTools();
    void setAccumulationTime(uint64_t microseconds);
    void setFrameRate(uint32_t framesPerSecond);

    Pane pane;
    LiveSession& session;
    DisplayTiming& timing;
    int unfoldedWidth = 0; ///< pixels, from before the pane was folded; 0 when it is not
    std::unique_ptr<SidebarCameraSettingUI> cameraPanel;
    std::unique_ptr<SidebarApsSettingUI> apsPanel;
    std::unique_ptr<SidebarDvsSettingUI> dvsPanel;
};
