#include "widgets/waitingwin.h"

#include "ui_waitingwin.h"

#include <QEvent>
#include <QMovie>
#include <QTimer>
#include <QWindow>

#include <chrono>

namespace {

// A quick job ends while the dialog before it still hands the keyboard back. Were the spinner gone by then,
// Qt would take the main window, which has the keyboard again, for one without it; so it waits for its own
// turn, though not for a window manager that gives it none.
constexpr std::chrono::milliseconds longestActivation{2000};

} // namespace

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
    if (!isVisible() || isActiveWindow())
        close();
    else
        QTimer::singleShot(longestActivation, this, &QWidget::close);
}

bool WaitingWin::event(QEvent* event)
{
    const bool handled = QDialog::event(event);
    if (event->type() == QEvent::WindowActivate && jobEnded)
        QMetaObject::invokeMethod(this, &QWidget::close, Qt::QueuedConnection);
    return handled;
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
