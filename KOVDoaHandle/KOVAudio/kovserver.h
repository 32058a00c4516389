// The roles of an audio server, as hosts see them: it can be started, it hands out sources, and sources are read.
#ifndef KOVDOA_KOVSERVER_H
#define KOVDOA_KOVSERVER_H

#include <QtCore/QString>
#include <QtCore/QVariant>
#include <QtCore/Qt>

#include <KOVDoaHandle/foundation/kovdoaexport.h>

// None of the three has a virtual destructor: objects are deleted through their own type.

class KOVDOA_EXPORT IKOVCoreServer
{
public:
    IKOVCoreServer();

    virtual void start() = 0;
    virtual void close() = 0;
    virtual bool isWorking();
    virtual bool isValidThread();

    Qt::HANDLE validThreadId();

private:
    Qt::HANDLE m_threadId;
};

class KOVDOA_EXPORT IKOVServerReaderSource
{
public:
    virtual QVariant readData() = 0;
    virtual void onDataReady() = 0;
};

class KOVDOA_EXPORT IKOVServerReader
{
public:
    virtual IKOVServerReaderSource* createReaderSource(const QString& name) = 0;
    virtual void releaseReaderSource(IKOVServerReaderSource* source) = 0;
};

#endif
