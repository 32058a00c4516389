// How a thread's state is put into words.
#ifndef KOVDOA_THREADSTATE_P_H
#define KOVDOA_THREADSTATE_P_H

#include <QtCore/QString>

namespace KOVPrivate {

// One line of a report. (Its spellings are known to hosts, the stray r of a running thread included.)
//   id  native id, 0 for a thread that has not run yet
inline QString threadStateLine(bool isRunning, quintptr id, bool isBusy)
{
    // What is busy and does not run has been torn out of its work.
    const char* state = isBusy ? "is error" : id != 0 ? "is stoped" : "is ready to start";
    if (isRunning) {
        state = isBusy ? "is do work" : "is in idle";
    }
    return QLatin1String(isRunning ? "\tKOVrThread id=" : "\tKOVThread id=") +
           QString::number(static_cast<qulonglong>(id)) + QLatin1String(" state='") + QLatin1String(state) +
           QLatin1String("'\n");
}

}  // namespace KOVPrivate

#endif
