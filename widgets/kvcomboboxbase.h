#pragma once

#include <QComboBox>

/// A combo box that tells when its list opens and closes and leaves the mouse wheel to its parent. GUI thread
/// only.
class KVComboBoxBase : public QComboBox
{
    Q_OBJECT

public:
    explicit KVComboBoxBase(QWidget* parent = nullptr);

    void showPopup() override;
    void hidePopup() override;

signals:
    /// The list is about to open.
    void popupShown();
    /// The list is about to close; also comes when it was not open.
    void popupHidden();

protected:
    void wheelEvent(QWheelEvent* event) override;
};
