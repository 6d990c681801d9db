#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class KvGeneralSetting;
}
class Config;
class QLineEdit;

/// Changes the folders for recordings and videos. Saving takes the texts over as they are typed; they reach
/// the file when the configuration is next saved. GUI thread.
class KvGeneralSetting : public QDialog
{
    Q_OBJECT

public:
    explicit KvGeneralSetting(QWidget* parent);
    ~KvGeneralSetting() override;

private slots:
    void on_pb_win_close_clicked();
    void on_pb_cancel_clicked();
    void on_pb_save_clicked();
    void on_pb_select_dir_clicked();
    void on_pb_select_video_save_path_clicked();

private:
    void chooseFolder(const QString& configured, QLineEdit* field);

    std::unique_ptr<Ui::KvGeneralSetting> ui;
    Config* config; ///< the process's
};
