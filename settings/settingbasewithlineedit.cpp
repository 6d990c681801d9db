#include "settings/settingbasewithlineedit.h"

#include "settings/itemtooltip.h"
#include "settings/layoutsettling.h"
#include "settings/parameternames.h"
#include "ui_settingbasewithlineedit.h"

#include <QApplication>
#include <QComboBox>
#include <QEvent>
#include <QSignalBlocker>

#include <optional>
#include <utility>

namespace {

const QString validColour = QStringLiteral("#004B6A");
const QString refusedColour = QStringLiteral("#FF6058");
const QString acceptedColour = QStringLiteral("#ACACAC");

std::optional<int> toNumber(const QString& text)
{
    bool ok = false;
    const int number = text.toInt(&ok);
    return ok ? std::optional(number) : std::nullopt;
}

} // namespace

SettingBaseWithLineEdit::SettingBaseWithLineEdit(std::string name, QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::SettingBaseWithLineEdit>())
{
    ui->setupUi(this);
    ui->lb_set_item_name->setText(QString::fromStdString(toDisplayName(std::move(name))));
    ui->lb_set_item_name->adjustSize();
    ui->widget_with_slider->hide();
    ui->horizontalSlider->setFocusProxy(ui->le_kv_line_edit);
    ui->horizontalSlider->installEventFilter(this);
    connect(ui->le_kv_line_edit, &KvLineEditBase::signalMouseHoverd, this,
            &SettingBaseWithLineEdit::onFieldHovered);
    connect(ui->le_kv_line_edit, &QLineEdit::editingFinished, this, &SettingBaseWithLineEdit::finishEditing);
}

SettingBaseWithLineEdit::~SettingBaseWithLineEdit() = default;

void SettingBaseWithLineEdit::setRange(int minimum, int maximum)
{
    min = minimum;
    max = maximum;
    if (!ui->le_kv_line_edit->text().isEmpty()) {
        ui->horizontalSlider->setRange(minimum, maximum);
        return;
    }
    // No value has been shown yet: where the slider comes to lie is nobody's choice, and no change.
    const QSignalBlocker silence(ui->horizontalSlider);
    const int before = ui->horizontalSlider->value();
    ui->horizontalSlider->setRange(minimum, maximum);
    if (before != ui->horizontalSlider->value())
        ui->horizontalSlider->setValue(minimum);
}

void SettingBaseWithLineEdit::setValue(int value)
{
    if (value < min || value > max)
        return;
    ui->le_kv_line_edit->setText(QString::number(value));
    ui->horizontalSlider->setValue(value);
}

void SettingBaseWithLineEdit::setUnit(const std::string& unit)
{
    if (unit.empty() || unit == " ")
        return;
    ui->lb_unit->setText(QString::fromStdString('(' + unit + ')'));
}

void SettingBaseWithLineEdit::setItemToolTip(const QString& text)
{
    attachItemToolTip(this, text);
}

void SettingBaseWithLineEdit::setValueChangedCallback(ValueChangedCallback callback)
{
    valueChangedCallback = std::move(callback);
}

void SettingBaseWithLineEdit::setLineEditBorderState(bool ok)
{
    refused = !ok;
    ui->le_kv_line_edit->setBorderColor(ok ? acceptedColour : refusedColour);
}

void SettingBaseWithLineEdit::on_horizontalSlider_valueChanged(int value)
{
    ui->le_kv_line_edit->setText(QString::number(value));
    const std::string key = toParameterKey(ui->lb_set_item_name->text().toStdString());
    emit signalItemValueChanged(key, value);
    if (valueChangedCallback)
        valueChangedCallback(key, value);
}

void SettingBaseWithLineEdit::on_le_kv_line_edit_textChanged(const QString& arg1)
{
    if (const std::optional<int> number = toNumber(arg1))
        step(*number);
    else
        ui->le_kv_line_edit->setBorderColor(refusedColour);
}

void SettingBaseWithLineEdit::on_pb_add_item_value_clicked()
{
    const std::optional<int> number = toNumber(ui->le_kv_line_edit->text());
    if (number && *number < max)
        step(*number + 1);
}

void SettingBaseWithLineEdit::on_pb_sub_item_value_clicked()
{
    const std::optional<int> number = toNumber(ui->le_kv_line_edit->text());
    if (number && *number > min)
        step(*number - 1);
}

bool SettingBaseWithLineEdit::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == ui->horizontalSlider && event->type() == QEvent::Wheel) {
        // The wheel scrolls the panel; ignored here, it goes on to it.
        event->ignore();
        return true;
    }
    if (hidesOnRelease && event->type() == QEvent::MouseButtonRelease) {
        hidesOnRelease = false;
        qApp->removeEventFilter(this);
        // The release is still on its way to whatever was pressed.
        const auto hideUnlessBack = [this] { setSliderShown(ui->le_kv_line_edit->hasFocus()); };
        QMetaObject::invokeMethod(this, hideUnlessBack, Qt::QueuedConnection);
    }
    return QWidget::eventFilter(watched, event);
}

void SettingBaseWithLineEdit::onFieldHovered(bool hovered)
{
    // Losing the focus greys the field.
    if (!hovered && refused)
        ui->le_kv_line_edit->setBorderColor(refusedColour);
    const bool pressing = QGuiApplication::mouseButtons() != Qt::NoButton;
    const bool listOpens = qobject_cast<QComboBox*>(QApplication::focusWidget()) != nullptr;
    if (hovered || !pressing || listOpens) {
        // At once where a list opens, which stays where the press found its combo box.
        setSliderShown(hovered);
        return;
    }
    // Else what is being pressed below would move up from under the pointer, and the click would be lost.
    hidesOnRelease = true;
    qApp->installEventFilter(this);
}

void SettingBaseWithLineEdit::setSliderShown(bool shown)
{
    ui->widget_with_slider->setVisible(shown);
    settleLayouts(this);
}

void SettingBaseWithLineEdit::finishEditing()
{
    const std::optional<int> number = toNumber(ui->le_kv_line_edit->text());
    if (!number) {
        ui->le_kv_line_edit->setBorderColor(refusedColour);
        return;
    }
    ui->horizontalSlider->setValue(*number);
    // A number beyond the range, typed while the slider stood at that end already, moved nothing.
    const QString held = QString::number(ui->horizontalSlider->value());
    if (ui->le_kv_line_edit->text() != held)
        ui->le_kv_line_edit->setText(held);
}

void SettingBaseWithLineEdit::step(int value)
{
    // First the field's colour, then the value: a camera that refuses it has the last word.
    if (ui->le_kv_line_edit->hasFocus())
        ui->le_kv_line_edit->setBorderColor(validColour);
    ui->horizontalSlider->setValue(value);
}
