#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class SettingItemBox;
}

/// A foldable section of a settings panel: a title bar with a fold button above the section's items. GUI
/// thread only.
class SettingItemBox : public QWidget
{
    Q_OBJECT

public:
    /// A new box is folded.
    explicit SettingItemBox(QWidget* parent = nullptr);
    ~SettingItemBox() override;

    void setTitle(const QString& title);
    /// Appends an item below the others. The box owns it from then on.
    void addItem(QWidget* item);
    /// Puts an item at a place of the stack; at the end when there is no such place. The box owns it from
    /// then on.
    void insertItem(QWidget* item, int index);
    void setFold(bool folded);
    /// What items are children of once they are added; they may be from the beginning.
    QWidget* itemParent() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private slots:
    void on_pb_fold_clicked(bool checked);

private:
    void applyFold(bool folded);
    void settle(QWidget* item);

    std::unique_ptr<Ui::SettingItemBox> ui;
};
