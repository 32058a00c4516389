#include <KOVDoaHandle/runtime/kovthread.h>

#include <gtest/gtest.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>
#include <QtCore/QMetaMethod>
#include <QtCore/QPointer>

#include <atomic>
#include <cstddef>
#include <cstring>
#include <latch>
#include <mutex>
#include <thread>
#include <vector>

namespace {

// The tests' own thread gets an event loop to delete things in, as a host's main thread has.
class Application : public ::testing::Environment
{
public:
    void SetUp() override
    {
        m_application = std::make_unique<QCoreApplication>(m_argumentCount, m_arguments);
    }

    void TearDown() override
    {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        m_application.reset();
    }

private:
    char m_name[8] = "tests";
    char* m_arguments[2] = {m_name, nullptr};
    int m_argumentCount = 1;
    std::unique_ptr<QCoreApplication> m_application;
};

[[maybe_unused]] const auto* const application = ::testing::AddGlobalTestEnvironment(new Application);

// Waits for the end of the thread. Reading the flag that the thread has written last shows ThreadSanitizer,
// which does not see into QThread::wait(), that what the job did comes before what the test does next.
void waitForEnd(KOVThread& thread)
{
    thread.wait();
    ASSERT_FALSE(thread.IsBusy());
}

// The methods that a class adds to its base's meta-object.
std::vector<QMetaMethod> ownMethods(const QMetaObject& type)
{
    std::vector<QMetaMethod> methods;
    for (int i = type.methodOffset(); i < type.methodCount(); ++i) {
        methods.push_back(type.method(i));
    }
    return methods;
}

// What a finished thread has emitted, in order. Connected directly, so filled by the thread itself.
class Emissions
{
public:
    explicit Emissions(KOVThread& thread)
    {
        QObject::connect(
            &thread, &KOVThread::completed, &thread, [this] { add(QStringLiteral("completed")); },
            Qt::DirectConnection);
        QObject::connect(
            &thread, &KOVThread::sigCompleted, &thread,
            [this](const QString& label) { add("label " + label); }, Qt::DirectConnection);
    }

    std::vector<QString> all()
    {
        const std::lock_guard lock(m_mutex);
        return m_texts;
    }

private:
    void add(const QString& text)
    {
        const std::lock_guard lock(m_mutex);
        m_texts.push_back(text);
    }

    std::mutex m_mutex;
    std::vector<QString> m_texts;
};

// A thread that runs an event loop until the end of the test.
class KOVThreadLoop : public ::testing::Test
{
protected:
    KOVThreadLoop() { thread.start(); }
    ~KOVThreadLoop() override
    {
        thread.quit();
        thread.wait();
    }

    KOVThread thread{nullptr};
};

TEST(KOVThread, HasExactlyTwoSignalsOfItsOwnAndNothingElse)
{
    const auto methods = ownMethods(KOVThread::staticMetaObject);

    EXPECT_STREQ(KOVThread::staticMetaObject.className(), "KOVThread");
    ASSERT_EQ(methods.size(), 2U);
    EXPECT_EQ(methods[0].methodType(), QMetaMethod::Signal);
    EXPECT_EQ(methods[0].methodSignature(), "completed()");
    EXPECT_EQ(methods[1].methodType(), QMetaMethod::Signal);
    EXPECT_EQ(methods[1].methodSignature(), "sigCompleted(QString)");
    EXPECT_EQ(methods[1].parameterNames(), QList<QByteArray>{"lableName"});
    EXPECT_EQ(KOVThread::staticMetaObject.propertyCount(), KOVThread::staticMetaObject.propertyOffset());
}

TEST(KOVSync, HasExactlyOneSlotOfItsOwn)
{
    const auto methods = ownMethods(KOVSync::staticMetaObject);

    EXPECT_STREQ(KOVSync::staticMetaObject.className(), "KOVSync");
    ASSERT_EQ(methods.size(), 1U);
    EXPECT_EQ(methods[0].methodType(), QMetaMethod::Slot);
    EXPECT_EQ(methods[0].methodSignature(), "doSync(std::function<void()>)");
    EXPECT_EQ(methods[0].parameterNames(), QList<QByteArray>{"task"});
}

TEST(KOVThread, RegistersTheTypeInWhichFunctionsTravel)
{
    const KOVThread thread(nullptr);

    EXPECT_NE(QMetaType::type("std::function<void ()>"), static_cast<int>(QMetaType::UnknownType));
}

TEST(KOVThread, IsIdleAndWithoutAnIdBeforeItStarts)
{
    KOVThread thread(nullptr);

    EXPECT_EQ(thread.ThreadId(), nullptr);
    EXPECT_FALSE(thread.IsBusy());
    EXPECT_FALSE(thread.isAutoDelete());
    EXPECT_FALSE(thread.ThreadData().isValid());
    EXPECT_EQ(thread.getLabel(), "NULL");
    EXPECT_EQ(thread.Thread(), &thread);
    EXPECT_EQ(thread.stackSize(), 0U);  // the system's default
}

TEST(KOVThread, RunsItsCallbackOnceOnAThreadOfItsOwn)
{
    KOVThread thread(nullptr);
    std::atomic<int> calls{0};
    std::atomic<Qt::HANDLE> idInside{nullptr};
    std::atomic<Qt::HANDLE> idTold{nullptr};
    std::atomic<bool> wasBusy{false};
    thread.setCallback([&](KOVThreadInfo* info) {
        ++calls;
        idInside = QThread::currentThreadId();
        idTold = info->ThreadId();
        wasBusy = info->Thread()->IsBusy();
    });

    thread.start();
    waitForEnd(thread);

    EXPECT_EQ(calls, 1);
    EXPECT_NE(idInside, QThread::currentThreadId());
    EXPECT_EQ(idTold, idInside);
    EXPECT_TRUE(wasBusy);
}

TEST(KOVThread, IsIdleAndKeepsItsIdAfterItHasFinished)
{
    KOVThread thread(nullptr);
    thread.setCallback([](KOVThreadInfo*) {});

    thread.start();
    waitForEnd(thread);

    EXPECT_FALSE(thread.IsBusy());
    EXPECT_NE(thread.ThreadId(), nullptr);
}

TEST(KOVThread, LetsTheJobReadAndWriteItsData)
{
    KOVThread thread(nullptr);
    QVariant data = 20;
    thread.setThreadData(data);
    thread.setCallback([](KOVThreadInfo* info) { info->ThreadData() = info->ThreadData().toInt() + 1; });

    thread.start();
    waitForEnd(thread);

    EXPECT_EQ(thread.ThreadData().toInt(), 21);
    EXPECT_EQ(data.toInt(), 20);
}

TEST(KOVThread, EmitsCompletedAndThenItsLabel)
{
    KOVThread thread(nullptr);
    Emissions emissions(thread);
    thread.setLabel("reader");
    thread.setCallback([](KOVThreadInfo*) {});

    thread.start();
    waitForEnd(thread);

    EXPECT_EQ(emissions.all(), (std::vector<QString>{"completed", "label reader"}));
}

TEST(KOVThread, SetsTheObjectNameTogetherWithTheLabel)
{
    KOVThread thread(nullptr);

    thread.setLabel("reader %1");

    EXPECT_EQ(thread.getLabel(), "reader %1");
    EXPECT_EQ(thread.objectName(), "reader %1");
}

#if defined(__GNUC__) && defined(__x86_64__)
// Where a virtual function stands in its class's table, as the platform's member pointers tell it.
template <typename Member>
std::ptrdiff_t tableOffset(Member member)
{
    std::ptrdiff_t offset = 0;
    std::memcpy(&offset, &member, sizeof offset);
    return offset;
}

TEST(KOVThread, AddsItsFourFunctionsToTheTableInTheAgreedOrder)
{
    constexpr auto slot = static_cast<std::ptrdiff_t>(sizeof(void*));
    const std::ptrdiff_t first = tableOffset(&KOVThread::Thread);

    EXPECT_EQ(tableOffset(&KOVThread::ThreadId), first + slot);
    EXPECT_EQ(tableOffset(&KOVThread::ThreadData), first + 2 * slot);
    EXPECT_EQ(tableOffset(&KOVThread::exec), first + 3 * slot);
}
#endif

TEST(KOVThread, TakesALabelFromASlotThatRunsAsItStarts)
{
    KOVThread thread(nullptr);
    thread.setCallback([](KOVThreadInfo*) {});
    QObject::connect(
        &thread, &QThread::started, &thread, [&thread] { thread.setLabel("early"); }, Qt::DirectConnection);

    thread.start();
    ASSERT_TRUE(thread.wait(10'000));

    EXPECT_EQ(thread.getLabel(), "early");
}

TEST(KOVThreadRun, GivesTheObjectItsNameButLeavesTheLabel)
{
    std::latch mayEnd(1);
    KOVThread* const thread =
        KOVThread::run([&](KOVThreadInfo*) { mayEnd.wait(); }, QVariant(), false, "gasLeakInit");
    Emissions emissions(*thread);

    EXPECT_EQ(thread->objectName(), "gasLeakInit");
    EXPECT_EQ(thread->getLabel(), "NULL");

    mayEnd.count_down();
    waitForEnd(*thread);
    EXPECT_EQ(emissions.all(), (std::vector<QString>{"completed", "label NULL"}));
    delete thread;
}

TEST(KOVThreadRun, EmitsALabelThatWasSetWhileTheJobRan)
{
    std::latch mayEnd(1);
    KOVThread* const thread =
        KOVThread::run([&](KOVThreadInfo*) { mayEnd.wait(); }, QVariant(), false, "job");
    Emissions emissions(*thread);

    thread->setLabel("x");
    mayEnd.count_down();
    waitForEnd(*thread);

    EXPECT_EQ(emissions.all(), (std::vector<QString>{"completed", "label x"}));
    delete thread;
}

TEST(KOVThreadRun, HandsTheDataToTheJob)
{
    std::atomic<int> seen{0};

    KOVThread* const thread = KOVThread::run([&](KOVThreadInfo* info) { seen = info->ThreadData().toInt(); },
                                             QVariant(96000), false, "job");
    waitForEnd(*thread);

    EXPECT_EQ(seen, 96000);
    EXPECT_FALSE(thread->isAutoDelete());
    delete thread;
}

TEST(KOVThreadRun, DeletesTheObjectAfterTheJobWhenAskedTo)
{
    std::latch mayEnd(1);
    const QPointer<KOVThread> thread =
        KOVThread::run([&](KOVThreadInfo*) { mayEnd.wait(); }, QVariant(), true, "job");
    EXPECT_TRUE(thread->isAutoDelete());
    thread->wait(0);
    EXPECT_FALSE(thread.isNull());

    mayEnd.count_down();
    while (!thread.isNull()) {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    EXPECT_TRUE(thread.isNull());
}

TEST(KOVThreadRun, KeepsTheObjectWhenNotAskedToDeleteIt)
{
    const QPointer<KOVThread> thread = KOVThread::run([](KOVThreadInfo*) {}, QVariant(), false, "job");
    waitForEnd(*thread);

    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    ASSERT_FALSE(thread.isNull());
    delete thread;
}

TEST_F(KOVThreadLoop, RunsUntilItIsToldToQuit)
{
    ASSERT_TRUE(thread.Invoke([] {}));
    EXPECT_TRUE(thread.isRunning());

    thread.quit();

    EXPECT_TRUE(thread.wait());
}

TEST_F(KOVThreadLoop, ReturnsFromInvokeOnlyAfterTheFunctionRanOnTheThread)
{
    bool hasRun = false;
    Qt::HANDLE id = nullptr;

    EXPECT_TRUE(thread.Invoke([&] {
        id = QThread::currentThreadId();
        hasRun = true;
    }));

    EXPECT_TRUE(hasRun);
    EXPECT_EQ(id, thread.ThreadId());
    EXPECT_NE(id, QThread::currentThreadId());
}

TEST_F(KOVThreadLoop, IsBusyOnlyWhileAnInvokedFunctionRuns)
{
    bool wasBusy = false;

    thread.Invoke([] {});
    EXPECT_FALSE(thread.IsBusy());
    thread.Invoke([&] { wasBusy = thread.IsBusy(); });

    EXPECT_TRUE(wasBusy);
    EXPECT_FALSE(thread.IsBusy());
}

TEST_F(KOVThreadLoop, ReturnsFromBeginInvokeBeforeTheFunctionRuns)
{
    std::latch mayRun(1);
    std::latch hasRun(1);

    EXPECT_TRUE(thread.BeginInvoke([&] {
        mayRun.wait();
        hasRun.count_down();
    }));

    EXPECT_FALSE(hasRun.try_wait());
    mayRun.count_down();
    hasRun.wait();
}

TEST_F(KOVThreadLoop, RunsQueuedFunctionsInTheOrderOfTheCalls)
{
    std::vector<int> order;

    for (int i = 0; i < 200; ++i) {
        thread.BeginInvoke([&order, i] { order.push_back(i); });
    }
    std::vector<int> seen;
    thread.Invoke([&] { seen = order; });

    std::vector<int> expected;
    for (int i = 0; i < 200; ++i) {
        expected.push_back(i);
    }
    EXPECT_EQ(seen, expected);
}

TEST_F(KOVThreadLoop, AcceptsFunctionsFromSeveralThreadsAtOnce)
{
    constexpr int callers = 4;
    constexpr int callsEach = 50;
    int total = 0;  // touched on the loop's thread only
    std::vector<std::thread> threads;

    for (int caller = 0; caller < callers; ++caller) {
        threads.emplace_back([&] {
            for (int i = 0; i < callsEach; ++i) {
                if (i % 2 == 0) {
                    thread.Invoke([&] { ++total; });
                } else {
                    thread.BeginInvoke([&] { ++total; });
                }
            }
        });
    }
    for (std::thread& caller : threads) {
        caller.join();
    }

    int seen = 0;
    thread.Invoke([&] { seen = total; });
    EXPECT_EQ(seen, callers * callsEach);
}

TEST_F(KOVThreadLoop, IgnoresAnEmptyFunction)
{
    EXPECT_TRUE(thread.Invoke(std::function<void()>()));
    EXPECT_TRUE(thread.BeginInvoke(nullptr));
    EXPECT_TRUE(thread.Invoke([] {}));
    EXPECT_FALSE(thread.IsBusy());
}

TEST(KOVThread, QueuesFunctionsUntilItsEventLoopStarts)
{
    KOVThread thread(nullptr);
    std::latch hasRun(1);
    EXPECT_TRUE(thread.BeginInvoke([&] { hasRun.count_down(); }));
    EXPECT_FALSE(hasRun.try_wait());

    thread.start();
    hasRun.wait();

    thread.quit();
    waitForEnd(thread);
}

TEST(KOVThread, ServesFunctionsInsideACallbackThatEntersTheEventLoop)
{
    KOVThread thread(nullptr);
    std::atomic<int> exitCode{0};
    thread.setCallback([&](KOVThreadInfo* info) { exitCode = info->exec(); });
    thread.start();
    bool hasRun = false;

    EXPECT_TRUE(thread.Invoke([&] { hasRun = true; }));

    EXPECT_TRUE(hasRun);
    thread.exit(7);
    waitForEnd(thread);
    EXPECT_EQ(exitCode, 7);
}

TEST(KOVSync, RunsATaskInItsOwnThreadWhenNoneIsAttached)
{
    KOVSync sync;
    bool hasRun = false;

    sync.doSync([&] { hasRun = true; });
    sync.doSync(nullptr);

    EXPECT_TRUE(hasRun);
    EXPECT_EQ(sync.thread(), QThread::currentThread());
}

TEST(KOVSync, DeletesItselfAfterOneTaskWhenAskedTo)
{
    const QPointer<KOVSync> kept = new KOVSync;
    const QPointer<KOVSync> deleted = new KOVSync;
    deleted->setAutoDelete();

    kept->doSync([] {});
    deleted->doSync(nullptr);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    EXPECT_FALSE(kept.isNull());
    EXPECT_TRUE(deleted.isNull());
    delete kept;
}

TEST(KOVSync, MovesToTheThreadItIsMadeFor)
{
    KOVThread thread(nullptr);

    const KOVSync sync(&thread);

    EXPECT_EQ(sync.thread(), &thread);
}

}  // namespace
