// The pool's threads know a little more than a plain KOVThread, so that the pool neither waits for nor throws away
// work that has been handed over but has not begun: a thread only says that it is busy from the work's start on.
#include <KOVDoaHandle/runtime/kovthreadpool.h>

#include <QtCore/QCoreApplication>

#include <atomic>
#include <memory>
#include <utility>

#include <KOVDoaHandle/runtime/kovthread.h>
#include <KOVDoaHandle/runtime/threadstate_p.h>

namespace {

// A function on its way to a thread, as an entry in the count of that thread's queued functions. One that Qt drops,
// because the thread has ended or the process has no QCoreApplication, leaves the count as well, perhaps after the
// thread's object has gone.
class QueuedCall
{
public:
    QueuedCall(std::function<void()> f, std::shared_ptr<std::atomic<int>> count)
        : m_function(std::move(f)), m_count(std::move(count))
    {
        ++*m_count;
    }
    ~QueuedCall() { leave(); }
    QueuedCall(const QueuedCall&) = delete;
    QueuedCall& operator=(const QueuedCall&) = delete;

    void run()
    {
        m_function();
        leave();
    }

private:
    void leave()
    {
        if (!std::exchange(m_hasLeft, true)) {
            --*m_count;
        }
    }

    std::function<void()> m_function;
    std::shared_ptr<std::atomic<int>> m_count;
    bool m_hasLeft = false;
};

// What travels: copied in both threads. Qt's event queue orders them; the counter shows the same order to tools that
// cannot look inside Qt.
class QueuedCallHandle
{
public:
    explicit QueuedCallHandle(std::shared_ptr<QueuedCall> call) : m_call(std::move(call))
    {
        s_handedOver.fetch_add(1, std::memory_order_release);
    }
    QueuedCallHandle(const QueuedCallHandle& other) : m_call(other.callAfterHandOver()) {}
    QueuedCallHandle& operator=(const QueuedCallHandle&) = delete;
    ~QueuedCallHandle() = default;

    void operator()() const { m_call->run(); }

private:
    const std::shared_ptr<QueuedCall>& callAfterHandOver() const
    {
        static_cast<void>(s_handedOver.load(std::memory_order_acquire));
        return m_call;
    }

    static inline std::atomic<unsigned int> s_handedOver{0};
    std::shared_ptr<QueuedCall> m_call;
};

class PooledThread : public KOVThread
{
public:
    PooledThread() : KOVThread(nullptr) {}

    // Before start(). An empty job makes an event loop of the thread.
    void setJob(std::function<void(KOVThreadInfo*)> job)
    {
        if (!job) {
            return;
        }
        m_hasJob = true;
        m_hasOpenJob = true;
        setCallback([this, job = std::move(job)](KOVThreadInfo* info) {
            job(info);
            m_hasOpenJob = false;
        });
    }

    void queue(std::function<void()> f)
    {
        if (!f) {
            return;
        }
        BeginInvoke(QueuedCallHandle(std::make_shared<QueuedCall>(std::move(f), m_queuedCalls)));
    }

    // A job's thread has no event loop that could take a call: not before its job begins, and not while the slots of
    // its last signals run either, when it is no longer busy.
    bool canTakeCalls() { return !m_hasJob && !IsBusy(); }
    bool isWorking() { return IsBusy() || m_hasOpenJob; }
    bool hasWorkLeft() { return isWorking() || *m_queuedCalls > 0; }

private:
    bool m_hasJob = false;
    std::atomic<bool> m_hasOpenJob{false};
    const std::shared_ptr<std::atomic<int>> m_queuedCalls = std::make_shared<std::atomic<int>>(0);
};

// Every thread of the list is made here.
PooledThread* pooled(KOVThread* thread)
{
    return static_cast<PooledThread*>(thread);
}

PooledThread* startInto(QList<KOVThread*>& threads, std::function<void(KOVThreadInfo*)> job, QVariant data)
{
    auto* const thread = new PooledThread;
    thread->setJob(std::move(job));
    thread->setThreadData(data);
    thread->start(QThread::InheritPriority);
    threads.append(thread);
    return thread;
}

// From the last to the first.
void reapFrom(QList<KOVThread*>& threads)
{
    for (int i = threads.size() - 1; i >= 0; --i) {
        if (!threads.at(i)->isRunning()) {
            threads.takeAt(i)->deleteLater();
        }
    }
}

// The first thread that can take a call; a new one when there is none.
PooledThread* idleThreadOf(QList<KOVThread*>& threads)
{
    for (KOVThread* const thread : std::as_const(threads)) {
        if (pooled(thread)->canTakeCalls()) {
            return pooled(thread);
        }
    }
    return startInto(threads, nullptr, QVariant());
}

// Without a QCoreApplication Qt drops what is queued for an event loop, so a call becomes a job.
bool canQueueCalls()
{
    return QCoreApplication::instance() != nullptr;
}

PooledThread* startCallAsJob(QList<KOVThread*>& threads, std::function<void()> f)
{
    return startInto(
        threads,
        [f = std::move(f)](KOVThreadInfo*) {
            if (f) {
                f();
            }
        },
        QVariant());
}

}  // namespace

KOVThreadPool::KOVThreadPool() = default;

KOVThreadPool::~KOVThreadPool()
{
    Clear(true);
}

KOVThreadPool* KOVThreadPool::Pool()
{
    static KOVThreadPool* const pool = new KOVThreadPool;
    return pool;
}

void KOVThreadPool::Release()
{
    delete Pool();
}

KOVThread* KOVThreadPool::run(std::function<void(KOVThreadInfo*)> callback, QVariant data)
{
    const QList<KOVThread*> threads = m_threads;
    for (KOVThread* const thread : threads) {
        if (!thread->isRunning()) {
            m_threads.removeOne(thread);
            thread->deleteLater();
        }
    }
    return startInto(m_threads, std::move(callback), std::move(data));
}

KOVThread* KOVThreadPool::Invoke(std::function<void()> f)
{
    reapFrom(m_threads);
    if (!canQueueCalls()) {
        PooledThread* const job = startCallAsJob(m_threads, std::move(f));
        job->wait();
        // The job has cleared it last: reading it shows the order to tools that cannot look inside wait().
        static_cast<void>(job->IsBusy());
        return job;
    }
    PooledThread* const thread = idleThreadOf(m_threads);
    // A thread that the system has refused to start would keep the caller for ever.
    if (thread->isRunning()) {
        thread->Invoke(std::move(f));
    }
    return thread;
}

KOVThread* KOVThreadPool::BeginInvoke(std::function<void()> f)
{
    reapFrom(m_threads);
    if (!canQueueCalls()) {
        return startCallAsJob(m_threads, std::move(f));
    }
    PooledThread* const thread = idleThreadOf(m_threads);
    thread->queue(std::move(f));
    return thread;
}

KOVThread* KOVThreadPool::StartNewThread()
{
    return startInto(m_threads, nullptr, QVariant());
}

int KOVThreadPool::NumberOfThread()
{
    return m_threads.size();
}

int KOVThreadPool::Clear(bool force)
{
    int removed = 0;
    for (int i = m_threads.size() - 1; i >= 0; --i) {
        KOVThread* const thread = m_threads.at(i);
        if (thread->isRunning()) {
            if (!force || pooled(thread)->hasWorkLeft()) {
                continue;
            }
            // Deleting a thread that still runs ends the process, and quit() only asks it to end.
            thread->quit();
            thread->wait();
        }
        m_threads.removeAt(i);
        thread->deleteLater();
        ++removed;
    }
    return removed;
}

QString KOVThreadPool::ToString()
{
    QString report =
        QLatin1String("KOVThread Number:") + QString::number(m_threads.size()) + QLatin1Char('\n');
    for (KOVThread* const thread : std::as_const(m_threads)) {
        const bool isRunning = thread->isRunning();
        const bool isBusy = isRunning ? pooled(thread)->isWorking() : thread->IsBusy();
        report +=
            KOVPrivate::threadStateLine(isRunning, reinterpret_cast<quintptr>(thread->ThreadId()), isBusy);
    }
    return report;
}

QMutex* KOVThreadPool::getMutex(QString name)
{
    QMutex*& mutex = m_mutexes[name];
    if (mutex == nullptr) {
        mutex = new QMutex;
    }
    return mutex;
}
