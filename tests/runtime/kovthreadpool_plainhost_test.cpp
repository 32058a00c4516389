// A host without a QCoreApplication and without an event loop of its own.
#include <KOVDoaHandle/runtime/kovthreadpool.h>

#include <gtest/gtest.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QPointer>

#include <atomic>

#include <KOVDoaHandle/runtime/kovthread.h>

namespace {

TEST(KOVThreadPoolInAPlainHost, RunsJobs)
{
    ASSERT_EQ(QCoreApplication::instance(), nullptr);
    std::atomic<int> sum{0};
    KOVThreadPool pool;

    KOVThread* const first = pool.run([&](KOVThreadInfo*) { sum += 1; }, QVariant());
    KOVThread* const second = pool.run([&](KOVThreadInfo*) { sum += 10; }, QVariant());
    first->wait();
    second->wait();

    EXPECT_EQ(sum, 11);
}

// Qt would drop what is queued for an event loop here.
TEST(KOVThreadPoolInAPlainHost, RunsFunctionsToo)
{
    KOVThreadPool pool;
    int invoked = 0;
    std::atomic<int> begun{0};

    pool.Invoke([&] { ++invoked; });
    EXPECT_EQ(invoked, 1);
    pool.Invoke(nullptr);
    pool.BeginInvoke([&] { ++begun; })->wait();

    EXPECT_EQ(begun, 1);
    while (pool.Clear(true), pool.NumberOfThread() > 0) {
        QThread::yieldCurrentThread();
    }
    EXPECT_EQ(pool.ToString(), "KOVThread Number:0\n");
}

// One process-wide pool, and nothing may touch it after this.
TEST(KOVThreadPoolInAPlainHost, HasOnePoolForTheProcessUntilItIsReleased)
{
    KOVThreadPool* const pool = KOVThreadPool::Pool();
    EXPECT_EQ(KOVThreadPool::Pool(), pool);
    const QPointer<KOVThread> thread = pool->StartNewThread();

    KOVThreadPool::Release();

    // It has ended, and stays: no event loop deletes it.
    ASSERT_FALSE(thread.isNull());
    EXPECT_TRUE(thread->isFinished());
}

}  // namespace
