#include "display/workerthread.h"

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
    if (job)
        job();
    emit taskCompleted();
}
