#include "app/kvgeneralsetting.h"

#include "ui_kvgeneralsetting.h"

#include "app/config.h"
#include "widgets/framelesscard.h"

#include <QFileDialog>
#include <QTabBar>

KvGeneralSetting::KvGeneralSetting(QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::KvGeneralSetting>())
{
    ui->setupUi(this);
    ui->tw_settings->tabBar()->hide();
    makeFramelessCard(this, ui->widget_title_name);

    config = Config::getInstance(QStringLiteral("config.ini"));
    ui->le_default_file_path->setText(config->output_raw_file_path);
    ui->le_default_video_file_path->setText(config->video_save_path);
}

KvGeneralSetting::~KvGeneralSetting() = default;

void KvGeneralSetting::on_pb_win_close_clicked()
{
    close();
}

void KvGeneralSetting::on_pb_cancel_clicked()
{
    close();
}

void KvGeneralSetting::on_pb_save_clicked()
{
    config->video_save_path = ui->le_default_video_file_path->text();
    config->output_raw_file_path = ui->le_default_file_path->text();
    close();
}

void KvGeneralSetting::on_pb_select_dir_clicked()
{
    chooseFolder(config->output_raw_file_path, ui->le_default_file_path);
}

void KvGeneralSetting::on_pb_select_video_save_path_clicked()
{
    chooseFolder(config->video_save_path, ui->le_default_video_file_path);
}

void KvGeneralSetting::chooseFolder(const QString& configured, QLineEdit* field)
{
    const QString folder
        = QFileDialog::getExistingDirectory(this, tr("Select Directory"), configured,
                                            QFileDialog::ShowDirsOnly | QFileDialog::DontResolveSymlinks);
    if (!folder.isEmpty())
        field->setText(folder);
}
