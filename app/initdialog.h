#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class InitDialog;
}

/// The splash with logo, version and copyright that closes itself after two seconds. GUI thread only.
class InitDialog : public QDialog
{
    Q_OBJECT

public:
    /// Starts the two seconds.
    explicit InitDialog(QWidget* parent = nullptr);
    ~InitDialog() override;

private slots:
    void on_btn_close_clicked();

private:
    std::unique_ptr<Ui::InitDialog> ui;
};
