// The roles of an audio server, as hosts see them: it can be started, it hands out sources, and sources are read.
//
// None of the three has a virtual destructor, because the order of the virtual operations is shared with hosts:
// never delete an object through one of these interfaces, only through its own type.
#ifndef KOVDOA_KOVSERVER_H
#define KOVDOA_KOVSERVER_H

#include <QtCore/QString>
#include <QtCore/QVariant>
#include <QtCore/Qt>

#include <KOVDoaHandle/foundation/kovdoaexport.h>

// Something that works between start() and close() and remembers the thread that constructed it.
class KOVDOA_EXPORT IKOVCoreServer
{
public:
    IKOVCoreServer();

    // Begins and ends the work; neither waits for it to have begun or ended.
    virtual void start() = 0;
    virtual void close() = 0;
    // False unless a derived class says otherwise.
    virtual bool isWorking();
    // True when called on the thread that constructed the object. A help for hosts; nothing here enforces it.
    virtual bool isValidThread();

    // The id of the constructing thread, as QThread::currentThreadId() gave it.
    Qt::HANDLE validThreadId();

private:
    Qt::HANDLE m_threadId;
};

// A stream of audio blocks to read from.
class KOVDOA_EXPORT IKOVServerReaderSource
{
public:
    // The oldest block, a variant holding a KOVAudioBuffer; invalid when there is none.
    virtual QVariant readData() = 0;
    // Wakes every thread that waits in readData().
    virtual void onDataReady() = 0;
};

// Hands out sources and takes them back.
class KOVDOA_EXPORT IKOVServerReader
{
public:
    // A new source that gets every block from now on; `name` is for the log. The caller owns it, and deletes it through
    // its own type.
    virtual IKOVServerReaderSource* createReaderSource(const QString& name) = 0;
    // The source gets no more blocks. It is not destroyed: the caller owns it.
    virtual void releaseReaderSource(IKOVServerReaderSource* source) = 0;
};

#endif
