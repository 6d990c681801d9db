#include "display/workerthread.h"

#include "display/runguarded.h"

#include <utility>

WorkerThread::WorkerThread(std::function<void()> work, QObject* parent)
    : QThread(parent), job(std::move(work))
{
}

WorkerThread::~WorkerThread()
{
    wait();
}

void WorkerThread::run()
{
    // Memory, or a driver that keeps no promise: the job has failed, the program goes on.
    if (job)
        runGuarded("A background job has ended early:", job);
    emit taskCompleted();
}
