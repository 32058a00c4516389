// What the server interfaces do by themselves.
#include <KOVDoaHandle/KOVAudio/kovserver.h>

#include <QtCore/QThread>

IKOVCoreServer::IKOVCoreServer() : m_threadId(QThread::currentThreadId()) {}

bool IKOVCoreServer::isWorking()
{
    return false;
}

bool IKOVCoreServer::isValidThread()
{
    return QThread::currentThreadId() == m_threadId;
}

Qt::HANDLE IKOVCoreServer::validThreadId()
{
    return m_threadId;
}
