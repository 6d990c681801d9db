#include "app/initdialog.h"

#include "app/productinfo.h"

#include "ui_initdialog.h"

#include <QDebug>
#include <QGraphicsDropShadowEffect>
#include <QIcon>
#include <QTimer>

#include <chrono>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

InitDialog::InitDialog(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::InitDialog>())
{
    ui->setupUi(this);
    // An icon picks the file for the screen's pixel density, a form's pixmap or style sheet does not.
    const QIcon logo(u":/img/assets/Korvane logo_ system-version.png"_s);
    ui->label->setPixmap(logo.pixmap(ui->label->maximumSize()));
    setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
    setAttribute(Qt::WA_TranslucentBackground);

    auto* shadow = new QGraphicsDropShadowEffect(this);
    shadow->setOffset(0, 0);
    shadow->setColor(QColor(0x44, 0x44, 0x44));
    shadow->setBlurRadius(30);
    setGraphicsEffect(shadow);
    setContentsMargins(10, 10, 10, 10);

    QTimer::singleShot(2000ms, Qt::PreciseTimer, this, &QDialog::close);

    qDebug().noquote().nospace() << "KorvaneInsight Version: " << productinfo::version;
    ui->lb_version->setText(tr("Version: %1").arg(productinfo::version));
    ui->label_2->setText(tr(productinfo::copyrightLine));
}

InitDialog::~InitDialog() = default;

void InitDialog::on_btn_close_clicked()
{
    close();
}
