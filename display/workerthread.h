#pragma once

#include <QThread>

#include <functional>

/// Runs one job off the GUI thread. The job reaches the GUI through queued calls only; what it throws ends
/// the job and is logged.
class WorkerThread : public QThread
{
    Q_OBJECT

public:
    explicit WorkerThread(std::function<void()> job, QObject* parent = nullptr);
    /// Waits for the job.
    ~WorkerThread() override;

signals:
    /// Emitted on the worker thread, after the job.
    void taskCompleted();

protected:
    void run() override;

private:
    std::function<void()> job;
};
