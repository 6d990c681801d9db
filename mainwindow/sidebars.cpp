#include "mainwindow/sidebars.h"

#include "camera/livesession.h"
#include "display/displaytiming.h"
#include "settings/sidebarapssettingui.h"
#include "settings/sidebarcamerasettingui.h"
#include "settings/sidebardvssettingui.h"

#include <QBoxLayout>
#include <QDebug>
#include <QPushButton>
#include <QSplitter>

#include <utility>

namespace {

constexpr int widestPane = 500; // pixels

} // namespace

SideBars::SideBars(const Pane& settingPane, LiveSession& liveSession, DisplayTiming& displayTiming)
    : pane(settingPane), session(liveSession), timing(displayTiming),
      cameraPanel(std::make_unique<SidebarCameraSettingUI>(nullptr)),
      apsPanel(std::make_unique<SidebarApsSettingUI>(nullptr)),
      dvsPanel(std::make_unique<SidebarDvsSettingUI>(nullptr))
{
    apsPanel->hide();
    dvsPanel->hide();
    pane.panels->addWidget(cameraPanel.get());
    pane.panels->addWidget(apsPanel.get());
    pane.panels->addWidget(dvsPanel.get());
    connect(cameraPanel.get(), &SidebarCameraSettingUI::signalCumulativeTimeChanged, this,
            &SideBars::setAccumulationTime);
    connect(cameraPanel.get(), &SidebarCameraSettingUI::signalFpsChanged, this, &SideBars::setFrameRate);
}

SideBars::~SideBars() = default;

void SideBars::foldCamera(bool shown)
{
    fold(cameraPanel.get(), pane.cameraButton, shown);
}

void SideBars::foldDvs(bool shown)
{
    fold(dvsPanel.get(), pane.dvsButton, shown);
}

void SideBars::foldAps(bool shown)
{
    fold(apsPanel.get(), pane.apsButton, shown);
}

void SideBars::fold(QWidget* panel, QPushButton* button, bool shown)
{
    if (!shown) {
        unfoldedWidth = pane.frame->width();
        panel->hide();
        pane.frame->setMaximumWidth(pane.strip->width());
        return;
    }
    panel->show();
    for (QWidget* const one :
         {static_cast<QWidget*>(cameraPanel.get()), static_cast<QWidget*>(apsPanel.get()),
          static_cast<QWidget*>(dvsPanel.get())}) {
        if (one != panel)
            one->hide();
    }
    pane.frame->setMaximumWidth(widestPane);
    restoreWidth();
    for (QPushButton* const one : {pane.cameraButton, pane.dvsButton, pane.apsButton})
        one->setChecked(one == button);
}

void SideBars::restoreWidth()
{
    auto* const splitter = qobject_cast<QSplitter*>(pane.frame->parentWidget());
    const int wanted = std::exchange(unfoldedWidth, 0);
    if (!splitter || wanted == 0)
        return;
    QList<int> sizes = splitter->sizes();
    sizes[1] -= wanted - sizes[0];
    sizes[0] = wanted;
    splitter->setSizes(sizes);
}

void SideBars::cameraChanged()
{
    setDvsSettingTools();
    if (session.hasFusionCamera())
        apsPanel->setApsToolUI(session.tool(korvane::ToolType::Aps));
    if (session.hasDvsCamera() || session.hasFusionCamera())
        cameraPanel->setSlowRateEnabled(false);
}

void SideBars::setDvsSettingTools()
{
    using korvane::ToolType;
    const auto biases = session.tool(ToolType::Biases);
    const auto triggerIn = session.tool(ToolType::TriggerIn);
    const auto antiFlicker = session.tool(ToolType::AntiFlicker);
    const auto eventRateControl = session.tool(ToolType::EventRateControl);
    const auto eventTrailFilter = session.tool(ToolType::EventTrailFilter);
    const auto roi = session.tool(ToolType::Roi);
    dvsPanel->setBiasesToolUI(biases);
    dvsPanel->setTriggerInToolUI(triggerIn);
    dvsPanel->setAntiFlickerToolUI(antiFlicker);
    dvsPanel->setEventRateControlToolUI(eventRateControl);
    dvsPanel->setEventTrailFilterToolUI(eventTrailFilter);
    dvsPanel->setROIToolUI(roi);
}

void SideBars::recordingOpened()
{
    apsPanel->clearApsToolUI();
    dvsPanel->clearAllToolUI();
    cameraPanel->setSlowRateEnabled(true);
}

void SideBars::setAccumulationTime(uint64_t microseconds)
{
    session.setAccumulationTime(microseconds);
}

void SideBars::setFrameRate(uint32_t framesPerSecond)
{
    // A speed below one picture in thirty comes as 0, by which nothing can be divided.
    if (!timing.setFrameRate(static_cast<int>(framesPerSecond)))
        qDebug().noquote() << "Frame rate" << framesPerSecond << "is not possible, it stays at"
                           << timing.frameRate.load();
}
