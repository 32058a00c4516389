// The worker thread. A function reaches a running event loop inside a queued call of KOVSync::doSync(); one
// KOVSync is made for each call and deletes itself in the target thread.
#include <KOVDoaHandle/runtime/kovthread.h>

#include <QtCore/QMetaObject>
#include <QtCore/QMetaType>

#include <utility>

namespace {

// The copy that a blocking call lends to the target thread. It has a name of its own so that tests/tsan.supp
// can speak of this hand-over, whose order Qt's event queue guarantees, and of nothing else.
std::function<void()> copyForTargetThread(const std::function<void()>& f)
{
    return f;
}

}  // namespace

KOVThreadInfo::~KOVThreadInfo() = default;

KOVThread::KOVThread(QObject* parent) : QThread(parent)
{
    // Functions travel through queued calls as arguments of this type; repeating the registration does no
    // harm.
    qRegisterMetaType<std::function<void()>>("std::function<void ()>");
}

KOVThread::~KOVThread()
{
    // The caller has waited inside Qt for the thread to finish. This shows the same order to tools that
    // cannot look inside Qt.
    static_cast<void>(m_hasEnded.load(std::memory_order_acquire));
}

KOVThread* KOVThread::run(std::function<void(KOVThreadInfo*)> callback, QVariant data, bool autoDelete,
                          const QString& name)
{
    auto* thread = new KOVThread(nullptr);
    if (autoDelete) {
        thread->setAutoDelete();
    }
    // The name only: hosts know threads made this way by the label "NULL".
    thread->setObjectName(name);
    thread->m_callback = std::move(callback);
    thread->m_data = std::move(data);
    thread->start(QThread::InheritPriority);
    return thread;
}

void KOVThread::setCallback(const std::function<void(KOVThreadInfo*)>& callback)
{
    m_callback = callback;
}

void KOVThread::setAutoDelete()
{
    connect(this, &QThread::finished, this, &QObject::deleteLater, Qt::QueuedConnection);
    m_autoDelete = true;
}

bool KOVThread::isAutoDelete()
{
    return m_autoDelete;
}

void KOVThread::setThreadData(QVariant& data)
{
    m_data = data;
}

QVariant& KOVThread::ThreadData()
{
    return m_data;
}

void KOVThread::setLabel(QString label)
{
    // A thread that is just starting reads its own object name, unlocked, before it reaches run(). That takes
    // microseconds; and what runs on the thread itself, such as a slot of started(), comes after it.
    while (isRunning() && m_threadId == nullptr && QThread::currentThread() != this) {
        QThread::yieldCurrentThread();
    }
    setObjectName(label);
    const std::lock_guard lock(m_labelMutex);
    m_label = std::move(label);
}

QString KOVThread::getLabel()
{
    const std::lock_guard lock(m_labelMutex);
    return m_label;
}

bool KOVThread::IsBusy()
{
    return m_busy;
}

KOVThread* KOVThread::Thread()
{
    return this;
}

Qt::HANDLE KOVThread::ThreadId()
{
    return m_threadId;
}

int KOVThread::exec()
{
    return QThread::exec();
}

bool KOVThread::Invoke(std::function<void()> f)
{
    const bool isDelivered = invokeThroughSync(f, Qt::BlockingQueuedConnection);
    // The wait inside Qt orders what the function did before what the caller does next. Reading the flag that
    // the function's end has written shows the same order to tools that cannot look inside Qt.
    static_cast<void>(m_busy.load(std::memory_order_acquire));
    return isDelivered;
}

bool KOVThread::BeginInvoke(std::function<void()> f)
{
    return invokeThroughSync(f, Qt::QueuedConnection);
}

bool KOVThread::invokeThroughSync(const std::function<void()>& f, Qt::ConnectionType type)
{
    auto* sync = new KOVSync(this);
    sync->setAutoDelete();
    return QMetaObject::invokeMethod(sync, "doSync", type,
                                     Q_ARG(std::function<void()>, copyForTargetThread(f)));
}

void KOVThread::run()
{
    m_threadId = QThread::currentThreadId();
    if (m_callback) {
        m_busy = true;
        m_callback(this);
    } else {
        QThread::exec();
    }
    m_busy = false;
    Q_EMIT completed();
    Q_EMIT sigCompleted(getLabel());
    m_hasEnded.store(true, std::memory_order_release);
}

KOVSync::KOVSync() : QObject(nullptr) {}

KOVSync::KOVSync(KOVThread* thread) : QObject(nullptr)
{
    m_thread = thread;
    moveToThread(thread);
}

KOVSync::~KOVSync() = default;

void KOVSync::setAutoDelete()
{
    m_autoDelete = true;
}

void KOVSync::doSync(std::function<void()> task)
{
    if (task) {
        // Written by the caller of Invoke() or BeginInvoke(), so everything it did before is visible from
        // here on.
        KOVThread* const thread = m_thread.load(std::memory_order_acquire);
        if (thread != nullptr) {
            thread->m_busy = true;
        }
        task();
        if (thread != nullptr) {
            thread->m_busy = false;
        }
    }
    if (m_autoDelete) {
        deleteLater();
    }
}
