#include "settings/settingpanel.h"

#include "ui_settingui.h"

#include <QPainter>
#include <QVBoxLayout>

#include <utility>

SettingPanel::SettingPanel(const QString& heading, QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::SettingUI>())
{
    ui->setupUi(this);
    ui->lb_setting_ui->setText(heading);

    auto content = std::make_unique<QWidget>();
    contentLayout = new QVBoxLayout(content.get());
    contentLayout->setContentsMargins(0, 0, 0, 0);
    contentLayout->addStretch(1);
    ui->scroll_area_setting->setWidget(content.release());
    ui->scroll_area_setting->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    ui->scroll_area_setting->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    ui->scroll_area_setting->setWidgetResizable(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

SettingPanel::~SettingPanel() = default;

std::map<std::string, korvane::BasicParameterInfo>
SettingPanel::beginSection(SettingSection& section, const QString& title,
                           std::shared_ptr<korvane::CameraTool> tool, const char* noToolText,
                           const char* noParametersText)
{
    removeBox(section.box);
    std::map<std::string, korvane::BasicParameterInfo> parameters;
    if (tool == nullptr) {
        qDebug("%s", noToolText);
        return parameters;
    }
    section.tool = std::move(tool);
    section.tool->getAllParameterInfo(parameters);
    if (parameters.empty()) {
        qDebug("%s", noParametersText);
        return parameters;
    }
    section.box = std::make_unique<SettingItemBox>();
    section.box->setTitle(title);
    // Before its items: what is put into a box that stands in its place is styled once, not twice.
    insertBox(section.box.get());
    return parameters;
}

void SettingPanel::endSection(SettingSection& section)
{
    if (section.box == nullptr)
        return;
    section.box->setFold(true);
    update();
}

void SettingPanel::insertBox(SettingItemBox* box)
{
    contentLayout->insertWidget(contentLayout->count() - 1, box);
    ensureTrailingStretch();
    update();
}

void SettingPanel::removeBox(std::unique_ptr<SettingItemBox>& box)
{
    if (box == nullptr)
        return;
    // Else the focus would wander to an item of another section, and open its slider.
    if (QWidget* const focused = box->focusWidget())
        focused->clearFocus();
    contentLayout->removeWidget(box.get());
    box.reset();
    contentLayout->update();
}

void SettingPanel::paintEvent(QPaintEvent*)
{
    // An opaque widget owes every one of its pixels; this is the colour of the pane that the panels stand in.
    QPainter(this).fillRect(rect(), QColor(0xFC, 0xFC, 0xFC));
}

void SettingPanel::ensureTrailingStretch()
{
    const int count = contentLayout->count();
    if (count == 0 || contentLayout->itemAt(count - 1)->spacerItem() == nullptr)
        contentLayout->addStretch(1);
}
