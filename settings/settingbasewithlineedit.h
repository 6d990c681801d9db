#pragma once

#include <QWidget>

#include <functional>
#include <memory>
#include <string>

namespace Ui {
class SettingBaseWithLineEdit;
}

/// A row that edits an integer parameter: typed, stepped with plus and minus, or slid while the field has the
/// focus. Fill it (tooltip, range, value, unit) before connecting it: a value set counts as a change. GUI
/// thread only.
class SettingBaseWithLineEdit : public QWidget
{
    Q_OBJECT

public:
    /// Takes the value once it has changed; answers whether the camera accepted it.
    using ValueChangedCallback = std::function<bool(std::string key, int value)>;

    SettingBaseWithLineEdit(std::string name, QWidget* parent = nullptr);
    ~SettingBaseWithLineEdit() override;

    void setRange(int minimum, int maximum);
    /// Nothing changes for a value outside the range.
    void setValue(int value);
    void setUnit(const std::string& unit);
    void setItemToolTip(const QString& text);
    void setValueChangedCallback(ValueChangedCallback callback);
    /// Colours the field after a write that the camera accepted or refused. Refused it stays, also when the
    /// focus comes and goes, until a write is accepted.
    void setLineEditBorderState(bool ok);

signals:
    void signalItemValueChanged(std::string name, int value);

private slots:
    void on_horizontalSlider_valueChanged(int value);
    void on_le_kv_line_edit_textChanged(const QString& arg1);
    void on_pb_add_item_value_clicked();
    void on_pb_sub_item_value_clicked();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void onFieldHovered(bool hovered);
    void setSliderShown(bool shown);
    void finishEditing();
    void step(int value);

    std::unique_ptr<Ui::SettingBaseWithLineEdit> ui;
    int min = 0;
    int max = 0;
    ValueChangedCallback valueChangedCallback;
    bool refused = false; ///< what the camera said last
    bool hidesOnRelease = false; ///< the slider goes when the mouse button that took the focus is released
};
