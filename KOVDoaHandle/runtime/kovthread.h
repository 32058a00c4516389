// The library's one kind of worker thread, and the small object that carries a function onto it.
#ifndef KOVDOA_KOVTHREAD_H
#define KOVDOA_KOVTHREAD_H

#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QThread>
#include <QtCore/QVariant>

#include <atomic>
#include <functional>
#include <mutex>

#include <KOVDoaHandle/foundation/kovdoaexport.h>

class KOVThread;

// What a job sees of the thread that runs it.
class KOVDOA_EXPORT KOVThreadInfo
{
public:
    virtual ~KOVThreadInfo();
    // The thread object itself.
    virtual KOVThread* Thread() = 0;
    // Native id of the running thread; 0 until it has started running.
    virtual Qt::HANDLE ThreadId() = 0;
    // The data given at the start; may be read and written by the job.
    virtual QVariant& ThreadData() = 0;
    // Enters the thread's event loop; returns its exit code.
    virtual int exec() = 0;
};

// A thread that runs one callback once or, without a callback, an event loop on which other threads can
// execute functions (Invoke, BeginInvoke).
//
// Threads: configure before start(); Invoke, BeginInvoke, IsBusy, ThreadId and getLabel may be called from
// any thread while the object lives, and setLabel also while it runs. An exception that leaves the callback
// is not caught.
class KOVDOA_EXPORT KOVThread : public QThread, public KOVThreadInfo
{
    Q_OBJECT

public:
    explicit KOVThread(QObject* parent);
    ~KOVThread() override;

    // Starts `callback` on a new thread and returns the thread's object at once.
    //   data        handed to the job through ThreadData()
    //   autoDelete  the object deletes itself after it has finished (in the event loop of the thread that
    //               called run()); the caller must not touch it then. Otherwise the caller owns it.
    //   name        object name of the thread; the label stays "NULL", and sigCompleted() carries that
    static KOVThread* run(std::function<void(KOVThreadInfo*)> callback, QVariant data, bool autoDelete,
                          const QString& name);

    // Replaces the job; before start() only.
    void setCallback(const std::function<void(KOVThreadInfo*)>& callback);

    // Lets the object delete itself when the thread has finished. Cannot be taken back.
    void setAutoDelete();
    bool isAutoDelete();

    void setThreadData(QVariant& data);

    // The label is what sigCompleted() carries; setting it sets the object name too. "NULL" at first.
    void setLabel(QString label);
    QString getLabel();

    // True while a callback or an invoked function executes. May be stale by the time it is read.
    bool IsBusy();

    // In this order: it is that of the slots that hosts see behind QThread's.
    KOVThread* Thread() override;
    Qt::HANDLE ThreadId() override;
    QVariant& ThreadData() override;
    int exec() override;

    // Runs `f` on this thread's event loop and waits until it has returned. The thread must run an event
    // loop; otherwise the call waits until it does, for ever when the thread has ended. Never call it from the
    // thread itself. An empty function does nothing. Returns what Qt does, which is true for every call it has
    // queued: in a process without a QCoreApplication, where event loops drop what they are given, the call
    // returns true at once although `f` does not run. (KOVThreadPool::Invoke() works there too.)
    bool Invoke(std::function<void()> f);

    // Queues `f` for this thread's event loop and returns at once; functions run in the order of the calls.
    // Returns true, also where `f` will never run: see Invoke().
    bool BeginInvoke(std::function<void()> f);

Q_SIGNALS:
    // Emitted, from the thread itself, when the job has ended ...
    void completed();
    // ... and then this, with the label. (The parameter's spelling is the boundary's.)
    void sigCompleted(QString lableName);

protected:
    void run() override;

private:
    friend class KOVSync;

    bool invokeThroughSync(const std::function<void()>& f, Qt::ConnectionType type);

    std::function<void(KOVThreadInfo*)> m_callback;
    std::atomic<Qt::HANDLE> m_threadId{nullptr};
    QVariant m_data;
    std::atomic<bool> m_autoDelete{false};
    std::atomic<bool> m_busy{false};
    std::atomic<bool> m_hasEnded{false};  // the thread touches nothing here any more
    std::mutex m_labelMutex;
    QString m_label = QStringLiteral("NULL");
};

// Carries functions into a thread's event loop.
class KOVDOA_EXPORT KOVSync : public QObject
{
    Q_OBJECT

public:
    // Stays in the thread that creates it.
    KOVSync();
    // Moves to `thread`, so that its slot runs there, and marks that thread busy while it does.
    explicit KOVSync(KOVThread* thread);
    ~KOVSync() override;

    // Lets the object delete itself after one doSync().
    void setAutoDelete();

public Q_SLOTS:
    // Runs `task` unless it is empty.
    void doSync(std::function<void()> task);

private:
    // Written where the object is made, read where it runs.
    std::atomic<bool> m_autoDelete{false};
    std::atomic<KOVThread*> m_thread{nullptr};
};

#endif
