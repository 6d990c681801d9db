#include "widgets/waitingwin.h"

#include "ui_waitingwin.h"

#include <QMovie>
#include <QWindow>

WaitingWin::WaitingWin(QWidget* anchorWidget)
    : QDialog(nullptr), ui(std::make_unique<Ui::WaitingWin>()), anchor(anchorWidget)
{
    ui->setupUi(this);
    setModal(true);
    setAttribute(Qt::WA_TranslucentBackground);
    setWindowFlags(Qt::FramelessWindowHint);
    setStyleSheet(QStringLiteral("background: transparent;"));

    movie = std::make_unique<QMovie>(QStringLiteral(":/img/icon/waiting.gif"));
    ui->label->setScaledContents(true);
    ui->label->setMovie(movie.get());
    ui->label->setAttribute(Qt::WA_TranslucentBackground);
    ui->label->setStyleSheet(QStringLiteral("background: transparent;"));
    // A file that only begins like an animation is told by its first picture.
    if (movie->jumpToFrame(0) && movie->isValid()) {
        ui->label->setMovie(movie.get());
        movie->start();
    } else {
        qDebug("GIF is not valid or not found");
    }
}

WaitingWin::~WaitingWin()
{
    movie->stop();
}

int WaitingWin::exec()
{
    if (jobEnded)
        return result();
    return QDialog::exec();
}

void WaitingWin::jobDone()
{
    jobEnded = true;
    close();
}

void WaitingWin::reject()
{
    // A close comes here too, and is given up when the window stays.
    if (jobEnded)
        QDialog::reject();
}

void WaitingWin::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    const QWidget* under = anchor.data();
    if (under == nullptr)
        return;
    const QPoint corner = under->mapToGlobal(QPoint(0, 0));
    move(corner.x() + (under->width() - width()) / 2, corner.y() + (under->height() - height()) / 2);
    // Keeps the spinner above the window it stands on, though it has no parent.
    if (windowHandle() != nullptr)
        windowHandle()->setTransientParent(under->window()->windowHandle());
}
