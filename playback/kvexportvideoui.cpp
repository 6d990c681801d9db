#include "playback/kvexportvideoui.h"

#include "ui_kvexportvideoui.h"

#include "widgets/cardcorners.h"

#include <QFileDialog>

#include <QWKWidgets/widgetwindowagent.h>

KvExportVideoUI::KvExportVideoUI(QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::KvExportVideoUI>())
{
    ui->setupUi(this);
    auto* const agent = new QWK::WidgetWindowAgent(this);
    agent->setup(this);
    agent->setTitleBar(ui->widget_title_bar);
    setAttribute(Qt::WA_TranslucentBackground);
    new CardCorners(this);
}

KvExportVideoUI::~KvExportVideoUI() = default;

void KvExportVideoUI::setStartTime(std::uint64_t time)
{
    ui->le_start_time->setText(QString::number(time));
}

void KvExportVideoUI::setEndTime(std::uint64_t time)
{
    ui->le_end_time->setText(QString::number(time));
}

std::uint64_t KvExportVideoUI::startTime() const
{
    return ui->le_start_time->text().toULong();
}

std::uint64_t KvExportVideoUI::endTime() const
{
    return ui->le_end_time->text().toULong();
}

void KvExportVideoUI::setSavePath(const QString& folder)
{
    ui->le_save_file_path->setText(folder);
}

void KvExportVideoUI::setFileName(const QString& name)
{
    ui->le_file_name->setText(name);
}

QString KvExportVideoUI::savePath() const
{
    return ui->le_save_file_path->text();
}

QString KvExportVideoUI::fullPath() const
{
    return savePath() + QLatin1Char('/') + ui->le_file_name->text();
}

void KvExportVideoUI::on_pb_save_clicked()
{
    accept();
}

void KvExportVideoUI::on_pb_cancel_clicked()
{
    close();
}

void KvExportVideoUI::on_pb_win_close_clicked()
{
    close();
}

void KvExportVideoUI::on_pb_select_dir_clicked()
{
    const QString folder
        = QFileDialog::getExistingDirectory(this, tr("Select Directory"), savePath(),
                                            QFileDialog::ShowDirsOnly | QFileDialog::DontResolveSymlinks);
    if (!folder.isEmpty())
        setSavePath(folder);
}
