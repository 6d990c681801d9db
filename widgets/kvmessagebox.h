#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class KVMessageBox;
}

/// A question with two answers. exec() gives accepted for the open button, rejected for the close button, the
/// cross, Escape and a close. GUI thread only.
class KVMessageBox : public QDialog
{
    Q_OBJECT

public:
    KVMessageBox(QString message, QString title, QString open_text, QString close_text, QWidget* parent);
    ~KVMessageBox() override;

private slots:
    void on_pb_open_clicked();
    void on_pb_close_clicked();
    void on_pb_win_close_clicked();

private:
    void fitText();

    std::unique_ptr<Ui::KVMessageBox> ui;
};
