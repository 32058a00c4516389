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

class KOVDOA_EXPORT KOVThreadPool
{
public:
    KOVThreadPool();
    ~KOVThreadPool();
    KOVThreadPool(const KOVThreadPool&) = delete;
    KOVThreadPool& operator=(const KOVThreadPool&) = delete;

    static KOVThreadPool* Pool();
    static void Release();

    KOVThread* run(std::function<void(KOVThreadInfo*)> callback, QVariant data);
    KOVThread* Invoke(std::function<void()> f);
    KOVThread* BeginInvoke(std::function<void()> f);
    KOVThread* StartNewThread();
    int NumberOfThread();
    int Clear(bool force);
    QString ToString();
    QMutex* getMutex(QString name);

private:
    QList<KOVThread*> m_threads;
    QHash<QString, QMutex*> m_mutexes;
};

#endif
