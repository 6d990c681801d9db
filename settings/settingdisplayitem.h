#pragma once

#include <QWidget>

#include <cstdint>
#include <memory>

class KvComboBox;

namespace Ui {
class SettingDisplayItem;
}

/// Chooses how events become frames: the span of event time in a frame, and the speed that the frame rate
/// follows from. A valid value is sent once, when it is picked or its typing has ended. GUI thread only.
class SettingDisplayItem : public QWidget
{
    Q_OBJECT

public:
    explicit SettingDisplayItem(QWidget* parent = nullptr);
    ~SettingDisplayItem() override;

    /// Whether the speed can be chosen.
    void setSlowRateEnabled(bool enabled);

signals:
    /// In microseconds, from 1 to 1000000.
    void signalCumulativeTimeChanged(uint64_t time_us);
    /// In frames per second; 0 for speeds below a frame per second.
    void signalFpsChanged(uint32_t fps);

private slots:
    void slotAccumulationTimeTextChanged(const QString& arg1);
    void slotAccumulationTimeTextEditFinished();
    void slotFrameRateTextChanged(const QString& arg1);
    void slotFrameRateEditTextFinished();

private:
    static void showValidity(KvComboBox& combo, bool valid);
    static void showApplied(KvComboBox& combo);

    std::unique_ptr<Ui::SettingDisplayItem> ui;
};
