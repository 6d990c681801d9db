#include "settings/settingdisplayitem.h"

#include "settings/accumulationtime.h"
#include "ui_settingdisplayitem.h"
#include "widgets/kvcombobox.h"

#include <QDebug>

#include <optional>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr double slowestSpeed = 0.003;
constexpr double fastestSpeed = 1000.0;
constexpr double framesPerSecondAtSpeedOne = 30.0;

QString withTimeUnit(const QString& text)
{
    return hasTimeUnit(text) ? text : text + u"ms"_s;
}

std::optional<double> toSpeed(const QString& text)
{
    bool ok = false;
    const double speed = text.toDouble(&ok);
    if (!ok || !(speed >= slowestSpeed && speed <= fastestSpeed))
        return std::nullopt;
    return speed;
}

} // namespace

SettingDisplayItem::SettingDisplayItem(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::SettingDisplayItem>())
{
    ui->setupUi(this);
    setAttribute(Qt::WA_MouseTracking);
    KvComboBox* const accumulation = ui->widget_combobox_accumulation_time;
    KvComboBox* const speed = ui->widget_combobox_frame_rate;
    accumulation->addItems({u"33.33ms"_s, u"100ms"_s, u"10ms"_s, u"1ms"_s});
    speed->addItems({u"1"_s, u"2"_s, u"5"_s, u"10"_s, u"100"_s, u"1000"_s});

    connect(accumulation, &KvComboBox::signalLineEditTextChanged, this,
            &SettingDisplayItem::slotAccumulationTimeTextChanged);
    connect(accumulation, &KvComboBox::signalLineEditEditingFinished, this,
            &SettingDisplayItem::slotAccumulationTimeTextEditFinished);
    connect(accumulation, &KvComboBox::currentTextChanged, this,
            &SettingDisplayItem::slotAccumulationTimeTextChanged);
    connect(speed, &KvComboBox::signalLineEditTextChanged, this,
            &SettingDisplayItem::slotFrameRateTextChanged);
    connect(speed, &KvComboBox::signalLineEditEditingFinished, this,
            &SettingDisplayItem::slotFrameRateEditTextFinished);
    accumulation->setTextEditable(true);
    speed->setTextEditable(true);
}

SettingDisplayItem::~SettingDisplayItem() = default;

void SettingDisplayItem::setSlowRateEnabled(bool enabled)
{
    ui->widget_combobox_frame_rate->setEnabled(enabled);
}

void SettingDisplayItem::slotAccumulationTimeTextChanged(const QString& arg1)
{
    showValidity(*ui->widget_combobox_accumulation_time,
                 isAccumulationTime(parseAccumulationTime(withTimeUnit(arg1))));
}

void SettingDisplayItem::slotAccumulationTimeTextEditFinished()
{
    KvComboBox& combo = *ui->widget_combobox_accumulation_time;
    const int cursor = combo.cursorPosition();
    const QString text = withTimeUnit(combo.text());
    const uint64_t microseconds = parseAccumulationTime(text);
    if (!isAccumulationTime(microseconds))
        return;
    combo.setText(text);
    combo.setCursorPosition(cursor);
    showApplied(combo);
    emit signalCumulativeTimeChanged(microseconds);
}

void SettingDisplayItem::slotFrameRateTextChanged(const QString& arg1)
{
    showValidity(*ui->widget_combobox_frame_rate, toSpeed(arg1).has_value());
}

void SettingDisplayItem::slotFrameRateEditTextFinished()
{
    KvComboBox& combo = *ui->widget_combobox_frame_rate;
    const std::optional<double> speed = toSpeed(combo.text());
    if (!speed)
        return;
    qDebug().nospace() << "play speed: " << *speed;
    // A frame rate has 16 bits.
    const auto framesPerSecond = static_cast<uint16_t>(static_cast<int>(*speed * framesPerSecondAtSpeedOne));
    emit signalFpsChanged(framesPerSecond);
    qDebug().nospace() << "frame rate change: " << framesPerSecond;
    showApplied(combo);
}

void SettingDisplayItem::showValidity(KvComboBox& combo, bool valid)
{
    combo.setStyleDeclaration(u"border"_s,
                              valid ? u"border: 1px solid #004B6A;"_s : u"border: 1px solid #FF6058;"_s);
    combo.setBorderColor(valid ? u"#D7E7EE"_s : u"#FFDAD8"_s);
    if (!valid)
        combo.update();
}

void SettingDisplayItem::showApplied(KvComboBox& combo)
{
    combo.setStyleDeclaration(u"border"_s, u"border: 1px solid #A7A7A7;"_s);
}
