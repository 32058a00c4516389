// A registry of worker threads, and mutexes by name.
#ifndef KOVDOA_KOVTHREADPOOL_H
#define KOVDOA_KOVTHREADPOOL_H

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QMutex>
#include <QtCore/QString>
#include <QtCore/QVariant>

#include <functional>

#include <KOVDoaHandle/foundation/kovdoaexport.h>

class KOVThread;
class KOVThreadInfo;

// Starts job threads, keeps event-loop threads for calls from elsewhere, and drops threads that have ended. It owns its
// threads: a pointer that it returns is good until the pool removes the thread, and a little longer, because threads
// are deleted with deleteLater(), in the event loop of the thread that drives the pool. Without such a loop they stay.
//
// A thread that a host ends itself, with quit(), must have ended (wait()) before the next call here: Invoke() could
// still choose it and would wait for ever.
//
// In a process without a QCoreApplication, where Qt delivers nothing to event loops, every function gets a thread of its
// own, as a job does.
//
// Threads: one thread drives a pool; nothing here is locked. Functions and jobs run on the pool's threads.
class KOVDOA_EXPORT KOVThreadPool
{
public:
    KOVThreadPool();
    // Clear(true). Busy threads are left to themselves: they go on, and nobody deletes their objects.
    ~KOVThreadPool();
    KOVThreadPool(const KOVThreadPool&) = delete;
    KOVThreadPool& operator=(const KOVThreadPool&) = delete;

    // The pool of the process, made by the first call.
    static KOVThreadPool* Pool();
    // Destroys it. Once, at the end: neither Pool() nor Release() may be called after it.
    static void Release();

    // Removes the threads that have ended, then runs `callback` once on a new thread, with `data` as its ThreadData().
    // Returns that thread. An empty callback starts an event loop.
    KOVThread* run(std::function<void(KOVThreadInfo*)> callback, QVariant data);

    // Remove the threads that have ended, choose the first event-loop thread that is not busy (or start one), and run
    // `f` on it. Invoke() waits until f has returned; BeginInvoke() does not. A thread whose queued functions have not
    // begun is not busy, so f may have to wait for them. Return the thread used. There is no limit to the number of
    // threads; should the system refuse one, f does not run.
    KOVThread* Invoke(std::function<void()> f);
    KOVThread* BeginInvoke(std::function<void()> f);

    // Starts an event-loop thread.
    KOVThread* StartNewThread();

    // Threads in the pool, running or not.
    int NumberOfThread();

    // Removes the threads that have ended; with `force` also those that run but have nothing to do, which are told to
    // quit and waited for. A thread with a job, or with functions queued by BeginInvoke(), is never removed. Returns
    // how many were.
    int Clear(bool force);

    // The number of threads, then a line for each, in the order in which they were added.
    QString ToString();

    // The non-recursive mutex of that name, made by the first call. It is never deleted, not even with the pool, so
    // that callers may go on using it.
    QMutex* getMutex(QString name);

private:
    QList<KOVThread*> m_threads;
    QHash<QString, QMutex*> m_mutexes;
};

#endif
