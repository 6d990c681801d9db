#pragma once

#include <QDialog>
#include <QPointer>

#include <memory>

namespace Ui {
class WaitingWin;
}
class QMovie;

/// The modal spinner that stands over a widget while a background job runs. It lives for one exec(), which
/// returns once jobDone() was called, before or after; until then neither Escape nor a close ends it.
///
/// GUI thread only: connect a worker's end to jobDone() with a queued connection.
class WaitingWin : public QDialog
{
    Q_OBJECT

public:
    /// anchorWidget: the widget to stand over, not owned; may be null.
    explicit WaitingWin(QWidget* anchorWidget);
    ~WaitingWin() override;

    /// Blocks until the job is done; returns at once when it already is.
    int exec() override;

public slots:
    /// The job has ended: close, at the latest as soon as a window manager has activated the spinner.
    void jobDone();
    /// Escape and every close; refused while the job runs.
    void reject() override;

protected:
    bool event(QEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    std::unique_ptr<Ui::WaitingWin> ui;
    std::unique_ptr<QMovie> movie;
    QPointer<QWidget> anchor;
    bool jobEnded = false;
};
