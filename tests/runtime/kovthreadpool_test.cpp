#include <KOVDoaHandle/runtime/kovthreadpool.h>

#include <gtest/gtest.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>
#include <QtCore/QPointer>
#include <QtCore/QThread>

#include <atomic>
#include <latch>
#include <memory>
#include <vector>

#include <KOVDoaHandle/runtime/kovthread.h>

namespace {

// Does what the event loop of a host's main thread does with threads that are to be deleted.
void deleteWhatIsToBeDeleted()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

// A pool that leaves no thread behind, not even one that is just finishing a function; jobs must have been told to end.
class TidyPool : public KOVThreadPool
{
public:
    TidyPool() = default;
    ~TidyPool()
    {
        while (Clear(true), NumberOfThread() > 0) {
            QThread::yieldCurrentThread();
        }
        deleteWhatIsToBeDeleted();
    }
};

void waitForEnd(KOVThread& thread)
{
    thread.wait();
    ASSERT_FALSE(thread.IsBusy());
}

QString lineOf(KOVThread& thread, const char* kind, const char* state)
{
    return QString("\t%1 id=%2 state='%3'\n")
        .arg(kind)
        .arg(reinterpret_cast<quintptr>(thread.ThreadId()))
        .arg(state);
}

// A job that is inside its callback from begin() on, until end().
class Job
{
public:
    std::function<void(KOVThreadInfo*)> callback()
    {
        return [this](KOVThreadInfo*) {
            m_hasBegun.count_down();
            m_mayEnd.wait();
        };
    }

    void waitUntilItHasBegun() { m_hasBegun.wait(); }
    void end() { m_mayEnd.count_down(); }

private:
    std::latch m_hasBegun{1};
    std::latch m_mayEnd{1};
};

TEST(KOVThreadPool, ReportsThatItIsEmpty)
{
    TidyPool pool;

    EXPECT_EQ(pool.NumberOfThread(), 0);
    EXPECT_EQ(pool.ToString(), "KOVThread Number:0\n");
    EXPECT_EQ(pool.Clear(true), 0);
}

// ---- Jobs ----

TEST(KOVThreadPool, RunsAJobOnceWithItsDataOnAThreadOfItsOwn)
{
    TidyPool pool;
    std::atomic<int> sum{0};
    std::atomic<Qt::HANDLE> id{nullptr};

    KOVThread* const thread = pool.run(
        [&](KOVThreadInfo* info) {
            sum += info->ThreadData().toInt();
            id = info->ThreadId();
        },
        QVariant(21));
    waitForEnd(*thread);

    EXPECT_EQ(sum, 21);
    EXPECT_EQ(id, thread->ThreadId());
    EXPECT_NE(id, QThread::currentThreadId());
    EXPECT_EQ(pool.NumberOfThread(), 1);
}

TEST(KOVThreadPool, RemovesAndDeletesEndedThreadsBeforeTheNextJob)
{
    TidyPool pool;
    Job job;
    KOVThread* const working = pool.run(job.callback(), QVariant());
    const QPointer<KOVThread> ended = pool.run([](KOVThreadInfo*) {}, QVariant());
    waitForEnd(*ended);

    KOVThread* const next = pool.run([](KOVThreadInfo*) {}, QVariant());
    EXPECT_EQ(pool.NumberOfThread(), 2);
    EXPECT_FALSE(ended.isNull());  // until the event loop comes to it
    deleteWhatIsToBeDeleted();

    EXPECT_TRUE(ended.isNull());
    EXPECT_TRUE(working->isRunning());
    job.end();
    waitForEnd(*working);
    waitForEnd(*next);
}

TEST(KOVThreadPool, RunsAnEventLoopInTheAbsenceOfAJob)
{
    TidyPool pool;
    KOVThread* const thread = pool.run(nullptr, QVariant());

    KOVThread* const used = pool.Invoke([] {});

    EXPECT_EQ(used, thread);
}

// ---- Calls ----

TEST(KOVThreadPool, InvokesOnANewThreadFirstAndOnTheSameThreadThen)
{
    TidyPool pool;
    int calls = 0;
    Qt::HANDLE id = nullptr;

    KOVThread* const first = pool.Invoke([&] {
        ++calls;
        id = QThread::currentThreadId();
    });
    KOVThread* const second = pool.Invoke([&] { ++calls; });

    EXPECT_EQ(calls, 2);
    EXPECT_EQ(id, first->ThreadId());
    EXPECT_EQ(second, first);
    EXPECT_EQ(pool.NumberOfThread(), 1);
}

TEST(KOVThreadPool, InvokesOnANewThreadWhileAJobIsInsideItsCallback)
{
    TidyPool pool;
    Job job;
    KOVThread* const working = pool.run(job.callback(), QVariant());
    job.waitUntilItHasBegun();
    bool hasRun = false;

    KOVThread* const used = pool.Invoke([&] { hasRun = true; });

    EXPECT_TRUE(hasRun);
    EXPECT_NE(used, working);
    EXPECT_EQ(pool.NumberOfThread(), 2);
    job.end();
    waitForEnd(*working);
}

TEST(KOVThreadPool, NeverInvokesOnAThreadWhoseJobHasNotBegunYet)
{
    for (int round = 0; round < 100; ++round) {
        TidyPool pool;
        Job job;
        KOVThread* const working = pool.run(job.callback(), QVariant());

        ASSERT_NE(pool.Invoke([] {}), working);

        job.end();
        waitForEnd(*working);
    }
}

// While the slots of its last signals run, such a thread still runs and is not busy; but it has no event loop, and a
// call that it was chosen for would never come back.
TEST(KOVThreadPool, NeverInvokesOnAThreadWhoseJobHasEnded)
{
    TidyPool pool;
    Job job;
    std::latch isEnding(1);
    std::latch mayEnd(1);
    std::latch hasRun(1);
    KOVThread* const ending = pool.run(job.callback(), QVariant());
    QObject::connect(ending, &KOVThread::completed, [&] {
        isEnding.count_down();
        mayEnd.wait();
    });
    job.end();
    isEnding.wait();
    const bool looksIdle = ending->isRunning() && !ending->IsBusy();

    const bool isAnother = pool.BeginInvoke([&] { hasRun.count_down(); }) != ending;

    mayEnd.count_down();
    waitForEnd(*ending);
    EXPECT_TRUE(looksIdle);
    ASSERT_TRUE(isAnother);
    hasRun.wait();
}

TEST(KOVThreadPool, InvokesOnAThreadThatIsJustStarting)
{
    for (int round = 0; round < 100; ++round) {
        TidyPool pool;
        KOVThread* const started = pool.StartNewThread();
        bool hasRun = false;

        ASSERT_EQ(pool.Invoke([&] { hasRun = true; }), started);

        ASSERT_TRUE(hasRun);
    }
}

TEST(KOVThreadPool, InvokesOnTheFirstIdleThreadOfTheList)
{
    TidyPool pool;
    Job job;
    KOVThread* const working = pool.run(job.callback(), QVariant());
    KOVThread* const first = pool.StartNewThread();
    KOVThread* const second = pool.StartNewThread();
    job.waitUntilItHasBegun();

    EXPECT_EQ(pool.Invoke([] {}), first);
    EXPECT_EQ(pool.Invoke([&] { EXPECT_EQ(pool.Invoke([] {}), second); }), first);

    job.end();
    waitForEnd(*working);
}

TEST(KOVThreadPool, ReturnsFromBeginInvokeBeforeTheFunctionRuns)
{
    TidyPool pool;
    std::latch mayRun(1);
    std::latch hasRun(1);

    KOVThread* const thread = pool.BeginInvoke([&] {
        mayRun.wait();
        hasRun.count_down();
    });

    EXPECT_NE(thread, nullptr);
    EXPECT_FALSE(hasRun.try_wait());
    mayRun.count_down();
    hasRun.wait();
}

TEST(KOVThreadPool, BeginsAFunctionOnANewThreadWhileTheOthersAreBusy)
{
    TidyPool pool;
    std::latch hasBegun(1);
    std::latch mayEnd(1);
    std::latch hasEnded(2);
    KOVThread* const first = pool.BeginInvoke([&] {
        hasBegun.count_down();
        mayEnd.wait();
        hasEnded.count_down();
    });
    hasBegun.wait();

    KOVThread* const second = pool.BeginInvoke([&] { hasEnded.count_down(); });

    EXPECT_NE(second, first);
    mayEnd.count_down();
    hasEnded.wait();
}

TEST(KOVThreadPool, TakesEmptyFunctions)
{
    TidyPool pool;

    KOVThread* const thread = pool.Invoke(nullptr);

    EXPECT_EQ(pool.BeginInvoke(nullptr), thread);
    EXPECT_EQ(pool.Clear(true), 1);
}

TEST(KOVThreadPool, RemovesAndDeletesEndedThreadsBeforeACall)
{
    TidyPool pool;
    std::vector<QPointer<KOVThread>> ended;
    for (int i = 0; i < 3; ++i) {
        ended.emplace_back(pool.StartNewThread());
    }
    for (const auto& thread : ended) {
        thread->quit();
        thread->wait();
    }

    KOVThread* const used = pool.Invoke([] {});
    EXPECT_EQ(pool.NumberOfThread(), 1);
    EXPECT_TRUE(used->isRunning());
    deleteWhatIsToBeDeleted();

    for (const auto& thread : ended) {
        EXPECT_TRUE(thread.isNull());
    }
}

TEST(KOVThreadPool, BeginsNoFunctionOnAnEndedThread)
{
    TidyPool pool;
    const QPointer<KOVThread> ended = pool.StartNewThread();
    ended->quit();
    ended->wait();
    std::latch hasRun(1);

    const bool isAnother = pool.BeginInvoke([&] { hasRun.count_down(); }) != ended.data();

    EXPECT_EQ(pool.NumberOfThread(), 1);
    ASSERT_TRUE(isAnother);
    hasRun.wait();
    deleteWhatIsToBeDeleted();
    EXPECT_TRUE(ended.isNull());
}

// ---- Clearing ----

TEST(KOVThreadPool, KeepsARunningThreadUnlessForced)
{
    TidyPool pool;
    const QPointer<KOVThread> thread = pool.StartNewThread();

    EXPECT_EQ(pool.Clear(false), 0);
    EXPECT_EQ(pool.NumberOfThread(), 1);
    EXPECT_EQ(pool.Clear(true), 1);
    EXPECT_EQ(pool.NumberOfThread(), 0);

    ASSERT_FALSE(thread.isNull());
    EXPECT_TRUE(thread->isFinished());
    deleteWhatIsToBeDeleted();
    EXPECT_TRUE(thread.isNull());
}

TEST(KOVThreadPool, RemovesEndedThreadsWithoutForce)
{
    TidyPool pool;
    KOVThread* const loop = pool.StartNewThread();
    waitForEnd(*pool.run([](KOVThreadInfo*) {}, QVariant()));
    EXPECT_EQ(pool.NumberOfThread(), 2);

    EXPECT_EQ(pool.Clear(false), 1);

    EXPECT_EQ(pool.NumberOfThread(), 1);
    EXPECT_EQ(pool.Invoke([] {}), loop);
}

TEST(KOVThreadPool, KeepsABusyThreadEvenWhenForced)
{
    TidyPool pool;
    Job job;
    KOVThread* const working = pool.run(job.callback(), QVariant());
    pool.StartNewThread();

    // Whether or not the job has begun.
    EXPECT_EQ(pool.Clear(true), 1);
    job.waitUntilItHasBegun();
    EXPECT_EQ(pool.Clear(true), 0);
    EXPECT_EQ(pool.NumberOfThread(), 1);

    job.end();
    waitForEnd(*working);
    EXPECT_EQ(pool.Clear(true), 1);
}

TEST(KOVThreadPool, LosesNoQueuedFunctionWhenForcedToClear)
{
    for (int round = 0; round < 100; ++round) {
        TidyPool pool;
        std::latch hasRun(1);

        pool.BeginInvoke([&] { hasRun.count_down(); });
        pool.Clear(true);

        hasRun.wait();
    }
}

TEST(KOVThreadPool, EndsItsIdleThreadsWhenItIsDestroyed)
{
    auto pool = std::make_unique<KOVThreadPool>();
    const QPointer<KOVThread> thread = pool->StartNewThread();

    pool.reset();

    ASSERT_FALSE(thread.isNull());
    EXPECT_TRUE(thread->isFinished());
    deleteWhatIsToBeDeleted();
    EXPECT_TRUE(thread.isNull());
}

TEST(KOVThreadPool, LeavesABusyThreadAloneWhenItIsDestroyed)
{
    Job job;
    auto pool = std::make_unique<KOVThreadPool>();
    const std::unique_ptr<KOVThread> working(pool->run(job.callback(), QVariant()));
    job.waitUntilItHasBegun();

    pool.reset();

    EXPECT_TRUE(working->isRunning());
    job.end();
    waitForEnd(*working);
}

// ---- Report ----

TEST(KOVThreadPool, ReportsItsThreadsInTheOrderTheyWereAdded)
{
    TidyPool pool;
    Job job;
    KOVThread* const working = pool.run(job.callback(), QVariant());
    KOVThread* const idle = pool.StartNewThread();
    KOVThread* const ended = pool.StartNewThread();
    job.waitUntilItHasBegun();
    ASSERT_TRUE(idle->Invoke([] {}));
    ended->quit();
    ended->wait();

    const QString report = pool.ToString();

    EXPECT_EQ(report, "KOVThread Number:3\n" + lineOf(*working, "KOVrThread", "is do work") +
                          lineOf(*idle, "KOVrThread", "is in idle") +
                          lineOf(*ended, "KOVThread", "is stoped"));
    job.end();
    waitForEnd(*working);
}

TEST(KOVThreadPool, ReportsThatAThreadWorksWhileAFunctionRunsOnIt)
{
    TidyPool pool;
    QString report;

    KOVThread* const thread = pool.Invoke([&] { report = pool.ToString(); });

    EXPECT_EQ(report, "KOVThread Number:1\n" + lineOf(*thread, "KOVrThread", "is do work"));
}

// ---- Mutexes ----

TEST(KOVThreadPool, GivesOneMutexForEachName)
{
    TidyPool pool;

    // Never deleted by the pool, so the test does.
    const std::unique_ptr<QMutex> a(pool.getMutex("a"));
    const std::unique_ptr<QMutex> b(pool.getMutex("b"));
    const std::unique_ptr<QMutex> unnamed(pool.getMutex(QString()));

    EXPECT_EQ(pool.getMutex("a"), a.get());
    EXPECT_NE(a, b);
    EXPECT_NE(a, unnamed);
    EXPECT_EQ(pool.getMutex(""), unnamed.get());
}

TEST(KOVThreadPool, GivesMutexesThatAreNotRecursive)
{
    TidyPool pool;
    const std::unique_ptr<QMutex> mutex(pool.getMutex("a"));

    EXPECT_FALSE(mutex->isRecursive());
    ASSERT_TRUE(mutex->tryLock());
    EXPECT_FALSE(mutex->tryLock());
    mutex->unlock();
}

TEST(KOVThreadPool, LeavesItsMutexesToTheirUsersWhenItIsDestroyed)
{
    auto pool = std::make_unique<KOVThreadPool>();
    const std::unique_ptr<QMutex> mutex(pool->getMutex("a"));
    mutex->lock();

    pool.reset();

    EXPECT_FALSE(mutex->tryLock());
    mutex->unlock();
}

}  // namespace
