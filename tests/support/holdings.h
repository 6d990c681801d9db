#pragma once

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <numeric>
#include <string>
#include <vector>

/// What the process holds.
struct Holdings
{
    int megabytes = 0; ///< resident, but for what is mapped of files
    int allocated = 0; ///< megabytes that the program has asked for
    int threads = 0;
    int handles = 0; ///< open files, sockets and the like

    static Holdings now()
    {
        malloc_trim(0);
        Holdings held;
        const struct mallinfo2 heap = mallinfo2();
        held.allocated = static_cast<int>((heap.uordblks + heap.hblkhd) / 1024 / 1024);
        QFile status(QStringLiteral("/proc/self/status"));
        if (status.open(QIODevice::ReadOnly)) {
            const QList<QByteArray> lines = status.readAll().split('\n');
            for (const QByteArray& line : lines) {
                if (line.startsWith("RssAnon:"))
                    held.megabytes = line.mid(8).simplified().split(' ')[0].toInt() / 1024;
                else if (line.startsWith("Threads:"))
                    held.threads = line.mid(8).trimmed().toInt();
            }
        }
        held.handles = static_cast<int>(QDir(QStringLiteral("/proc/self/fd"))
                                            .entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System)
                                            .size());
        return held;
    }
};

/// Sees that rounds of the same work leave nothing behind: call it after each, in the same state of rest.
class SteadyHoldings
{
public:
    /// The first rounds only tell what a round holds. Of what was freed the allocator keeps up to 64 MB in
    /// each arena that a thread had, of which there are eight for a processor: `mostResident` megabytes more
    /// than at first are no leak.
    SteadyHoldings(std::size_t warmUpRounds, int mostResident)
        : warmUp(warmUpRounds), allowedResident(mostResident)
    {
    }

    void check(long long seconds)
    {
        const Holdings now = Holdings::now();
        const std::size_t number = ++rounds;
        std::printf("%4lld s  round %3zu  %4d MB  %4d MB allocated  %2d threads  %2d handles\n", seconds,
                    number, now.megabytes, now.allocated, now.threads, now.handles);
        std::fflush(stdout);
        if (number <= warmUp) {
            settled.megabytes = std::max(settled.megabytes, now.megabytes);
            settled.allocated = std::max(settled.allocated, now.allocated);
            settled.threads = std::max(settled.threads, now.threads);
            settled.handles = std::max(settled.handles, now.handles);
            return;
        }
        const std::string when = "round " + std::to_string(number);
        ASSERT_LE(now.threads, settled.threads) << when;
        ASSERT_LE(now.handles, settled.handles) << when;
        ASSERT_LE(now.allocated, settled.allocated + allowedMore) << when;
        ASSERT_LE(now.megabytes, settled.megabytes + allowedResident) << when;
        allocated.push_back(now.allocated);
    }

    /// A slow leak, which no single round shows.
    void expectNoDrift() const
    {
        if (allocated.size() < manyRounds)
            return;
        const auto third = static_cast<std::ptrdiff_t>(allocated.size() / 3);
        const int before = std::accumulate(allocated.begin(), allocated.begin() + third, 0);
        const int after = std::accumulate(allocated.end() - third, allocated.end(), 0);
        EXPECT_LE(static_cast<double>(after - before) / static_cast<double>(third), allowedDrift);
    }

private:
    // Megabytes. How far ahead frames are decoded when a round ends is chance, and each takes 25 of them.
    static constexpr int allowedMore = 52;
    static constexpr double allowedDrift = 10; // of what the rounds hold on the average
    static constexpr std::size_t manyRounds = 12;

    const std::size_t warmUp;
    const int allowedResident;
    std::size_t rounds = 0;
    Holdings settled;
    std::vector<int> allocated;
};
