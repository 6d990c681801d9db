#include "playback/rangedialog.h"

#include "widgets/framelesscard.h"

#include <QFileDialog>
#include <QLineEdit>

RangeDialog::RangeDialog(QWidget* parent) : QDialog(parent) {}

void RangeDialog::makeCard(QWidget* titleBar)
{
    makeFramelessCard(this, titleBar);
}

void RangeDialog::setStartTime(std::uint64_t time)
{
    fields.startTime->setText(QString::number(time));
}

void RangeDialog::setEndTime(std::uint64_t time)
{
    fields.endTime->setText(QString::number(time));
}

std::uint64_t RangeDialog::startTime() const
{
    return fields.startTime->text().toULong();
}

std::uint64_t RangeDialog::endTime() const
{
    return fields.endTime->text().toULong();
}

void RangeDialog::setSavePath(const QString& folder)
{
    fields.savePath->setText(folder);
}

void RangeDialog::setFileName(const QString& name)
{
    fields.fileName->setText(name);
}

QString RangeDialog::savePath() const
{
    return fields.savePath->text();
}

QString RangeDialog::fullPath() const
{
    return savePath() + QLatin1Char('/') + fields.fileName->text();
}

void RangeDialog::on_pb_save_clicked()
{
    accept();
}

void RangeDialog::on_pb_cancel_clicked()
{
    close();
}

void RangeDialog::on_pb_win_close_clicked()
{
    close();
}

void RangeDialog::on_pb_select_dir_clicked()
{
    const QString folder
        = QFileDialog::getExistingDirectory(this, tr("Select Directory"), savePath(),
                                            QFileDialog::ShowDirsOnly | QFileDialog::DontResolveSymlinks);
    if (!folder.isEmpty())
        setSavePath(folder);
}
