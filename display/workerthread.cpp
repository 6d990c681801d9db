#include "display/workerthread.h"

#include <QDebug>

#include <exception>
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
    try {
        if (job)
            job();
    } catch (const std::exception& error) {
        // Memory, or a driver that keeps no promise: the job has failed, the program goes on.
        qCritical() << "A background job has ended early:" << error.what();
    } catch (...) {
        qCritical() << "A background job has ended early.";
    }
    emit taskCompleted();
}
