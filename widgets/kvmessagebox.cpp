#include "widgets/kvmessagebox.h"

#include "ui_kvmessagebox.h"

#include "widgets/framelesscard.h"

#include <algorithm>

KVMessageBox::KVMessageBox(QString message, QString title, QString open_text, QString close_text,
                           QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::KVMessageBox>())
{
    ui->setupUi(this);
    ui->lb_title->setText(title);
    ui->lb_show_message->setText(message);
    ui->pb_close->setText(close_text);
    ui->pb_open->setText(open_text);
    fitText();
    makeFramelessCard(this, ui->widget_title_name);
}

KVMessageBox::~KVMessageBox() = default;

void KVMessageBox::fitText()
{
    ensurePolished();
    // Their stated least width would let the layout cut longer texts.
    for (QPushButton* button : {ui->pb_close, ui->pb_open}) {
        button->ensurePolished();
        button->setMinimumWidth(std::max(button->minimumWidth(), button->sizeHint().width()));
    }
    const int width = std::max(minimumWidth(), layout()->minimumSize().width());
    resize(width, std::max(minimumHeight(), layout()->totalHeightForWidth(width)));
}

void KVMessageBox::on_pb_open_clicked()
{
    accept();
}

void KVMessageBox::on_pb_close_clicked()
{
    reject();
}

void KVMessageBox::on_pb_win_close_clicked()
{
    close();
}
