#include "display/workerthread.h"
#include "tests/support/capturedmessages.h"

#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

#include <atomic>
#include <semaphore>
#include <stdexcept>

TEST(WorkerThread, TakesItsJobOver)
{
    std::function<void()> job = [] {};
    const WorkerThread worker(std::move(job));
    EXPECT_FALSE(job); // NOLINT(bugprone-use-after-move)
    EXPECT_FALSE(worker.isRunning());
}

TEST(WorkerThread, RunsItsJobOnceOnAThreadOfItsOwnAndThenTellsSoOnce)
{
    std::atomic<int> runs{0};
    std::atomic<QThread*> runner{nullptr};
    int runsWhenTold = -1;
    WorkerThread worker([&] {
        ++runs;
        runner = QThread::currentThread();
    });
    int told = 0;
    QObject::connect(
        &worker, &WorkerThread::taskCompleted, &worker,
        [&] {
            ++told;
            runsWhenTold = runs;
        },
        Qt::QueuedConnection);
    worker.start();
    ASSERT_TRUE(QTest::qWaitFor([&] { return told > 0 && worker.isFinished(); }));
    EXPECT_EQ(runs, 1);
    EXPECT_EQ(runsWhenTold, 1) << "the job comes first";
    EXPECT_EQ(runner.load(), &worker);
    QCoreApplication::processEvents();
    EXPECT_EQ(told, 1);
}

TEST(WorkerThread, WhatItsJobPostedComesBeforeItsEnd)
{
    QStringList order;
    QObject receiver;
    WorkerThread worker([&] {
        QMetaObject::invokeMethod(
            &receiver, [&order] { order << QStringLiteral("posted"); }, Qt::QueuedConnection);
    });
    QObject::connect(
        &worker, &WorkerThread::taskCompleted, &worker, [&order] { order << QStringLiteral("completed"); },
        Qt::QueuedConnection);
    worker.start();
    ASSERT_TRUE(QTest::qWaitFor([&order] { return order.size() == 2; }));
    EXPECT_EQ(order, (QStringList{QStringLiteral("posted"), QStringLiteral("completed")}));
}

TEST(WorkerThread, WithoutAJobItOnlyTellsThatItEnded)
{
    WorkerThread worker(nullptr);
    QSignalSpy spy(&worker, &WorkerThread::taskCompleted);
    worker.start();
    ASSERT_TRUE(worker.wait());
    EXPECT_EQ(spy.count(), 1);
}

TEST(WorkerThread, AJobThatThrowsIsLoggedAndToldToHaveEnded)
{
    const CapturedMessages messages;
    WorkerThread worker([] { throw std::runtime_error("no more memory"); });
    QSignalSpy spy(&worker, &WorkerThread::taskCompleted);
    worker.start();
    ASSERT_TRUE(worker.wait());
    EXPECT_EQ(spy.count(), 1);
    const QStringList lines = messages.of(QtCriticalMsg);
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines.constFirst().contains(QStringLiteral("no more memory")));
}

TEST(WorkerThread, ItsEndWaitsForTheJob)
{
    std::binary_semaphore begun(0);
    std::atomic<bool> ended{false};
    {
        WorkerThread worker([&] {
            begun.release();
            for (int i = 0; i < 100; ++i)
                QThread::yieldCurrentThread();
            ended = true;
        });
        worker.start();
        begun.acquire();
    }
    EXPECT_TRUE(ended);
}

TEST(WorkerThread, BelongsToTheParentGiven)
{
    QObject parent;
    const auto* const worker = new WorkerThread([] {}, &parent);
    EXPECT_EQ(worker->parent(), &parent);
}
