#pragma once

#include "widgets/kvmessagetype.h"

#include <QWidget>

#include <memory>

namespace Ui {
class KvFilePathReminderForm;
}

/// A toast that deletes itself three seconds after it was made, shown or not. Whoever makes it, on the heap,
/// places and shows it; its size is final from the start. GUI thread only.
class KvFilePathReminderForm : public QWidget
{
    Q_OBJECT

public:
    /// file_path: the folder that "Open Dir" opens; without one there is no such button.
    KvFilePathReminderForm(QString tips, KvMessageType type, QString file_path, QWidget* parent);
    ~KvFilePathReminderForm() override;

public slots:
    void onTimeupDestroy();
    void on_pb_open_dir_clicked();
    void on_pb_close_clicked();

protected:
    void showEvent(QShowEvent* event) override;

private:
    void applyLook(KvMessageType type);
    void fitText();

    std::unique_ptr<Ui::KvFilePathReminderForm> ui;
    QString filePath;
};
