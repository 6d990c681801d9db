#include "playback/kvcutrawfile.h"

#include "ui_kvcutrawfile.h"

#include "widgets/cardcorners.h"

#include <QFileDialog>

#include <QWKWidgets/widgetwindowagent.h>

KvCutRawFile::KvCutRawFile(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::KvCutRawFile>())
{
    ui->setupUi(this);
    auto* const agent = new QWK::WidgetWindowAgent(this);
    agent->setup(this);
    agent->setTitleBar(ui->widget_title_bar);
    setAttribute(Qt::WA_TranslucentBackground);
    new CardCorners(this);
}

KvCutRawFile::~KvCutRawFile() = default;

void KvCutRawFile::setStartTime(std::uint64_t time)
{
    ui->le_start_time->setText(QString::number(time));
}

void KvCutRawFile::setEndTime(std::uint64_t time)
{
    ui->le_end_time->setText(QString::number(time));
}

std::uint64_t KvCutRawFile::startTime() const
{
    return ui->le_start_time->text().toULong();
}

std::uint64_t KvCutRawFile::endTime() const
{
    return ui->le_end_time->text().toULong();
}

void KvCutRawFile::setSavePath(const QString& folder)
{
    ui->le_save_file_path->setText(folder);
}

void KvCutRawFile::setFileName(const QString& name)
{
    ui->le_file_name->setText(name);
}

QString KvCutRawFile::savePath() const
{
    return ui->le_save_file_path->text();
}

QString KvCutRawFile::fullPath() const
{
    return savePath() + QLatin1Char('/') + ui->le_file_name->text();
}

void KvCutRawFile::on_pb_save_clicked()
{
    accept();
}

void KvCutRawFile::on_pb_cancel_clicked()
{
    close();
}

void KvCutRawFile::on_pb_win_close_clicked()
{
    close();
}

void KvCutRawFile::on_pb_select_dir_clicked()
{
    const QString folder
        = QFileDialog::getExistingDirectory(this, tr("Select Directory"), savePath(),
                                            QFileDialog::ShowDirsOnly | QFileDialog::DontResolveSymlinks);
    if (!folder.isEmpty())
        setSavePath(folder);
}
