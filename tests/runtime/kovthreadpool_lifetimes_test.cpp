// Pools that are made, used and destroyed in tight loops, each driven by one thread.
#include <KOVDoaHandle/runtime/kovthreadpool.h>

#include <gtest/gtest.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>
#include <QtCore/QThread>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include <KOVDoaHandle/runtime/kovthread.h>

namespace {

// Ends what is idle until nothing is left, and frees it as the event loop of this thread would.
void endAll(KOVThreadPool& pool)
{
    while (pool.Clear(true), pool.NumberOfThread() > 0) {
        QThread::yieldCurrentThread();
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

// One life of a pool: jobs, calls that wait and calls that do not. Returns how many functions ran.
int liveOnce(int round)
{
    std::atomic<int> ran{0};
    const auto count = [&ran] { ++ran; };
    KOVThreadPool pool;
    for (int i = 0; i < 3; ++i) {
        pool.run([&ran](KOVThreadInfo*) { ++ran; }, QVariant(i));
        pool.BeginInvoke(count);
        pool.Invoke(count);
    }
    if (round % 2 == 0) {
        pool.StartNewThread();
        pool.Clear(round % 4 == 0);
    }
    EXPECT_TRUE(pool.ToString().startsWith("KOVThread Number:"));
    endAll(pool);
    return ran;
}

TEST(KOVThreadPoolLifetimes, RunEveryFunctionInATightLoop)
{
    for (int round = 0; round < 200; ++round) {
        ASSERT_EQ(liveOnce(round), 9) << round;
    }
}

TEST(KOVThreadPoolLifetimes, RunEveryFunctionOfSeveralPoolsSideBySide)
{
    constexpr int rounds = 60;
    std::atomic<int> ran{0};
    std::vector<std::thread> drivers;
    for (int driver = 0; driver < 3; ++driver) {
        drivers.emplace_back([&ran] {
            for (int round = 0; round < rounds; ++round) {
                ran += liveOnce(round);
            }
        });
    }
    for (std::thread& driver : drivers) {
        driver.join();
    }

    EXPECT_EQ(ran, 3 * rounds * 9);
}

TEST(KOVThreadPoolLifetimes, KeepACountWholeUnderOneOfTheirMutexes)
{
    constexpr int additions = 2000;
    KOVThreadPool pool;
    const std::unique_ptr<QMutex> mutex(pool.getMutex("count"));
    // In two steps, so that additions would get lost without the mutex; atomic only for ThreadSanitizer, which does not
    // see into the locks of Qt.
    std::atomic<int> count{0};
    for (int thread = 0; thread < 4; ++thread) {
        pool.run(
            [&](KOVThreadInfo*) {
                for (int i = 0; i < additions; ++i) {
                    const QMutexLocker lock(mutex.get());
                    count.store(count.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
                }
            },
            QVariant());
    }
    endAll(pool);

    EXPECT_EQ(count, 4 * additions);
}

}  // namespace
