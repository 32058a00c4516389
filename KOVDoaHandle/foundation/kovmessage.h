// Diagnostics of the library and of its engine, gathered in one daily text file under "./log/".
//
// The file is "./log/log-" + the local date as yyyy-MM-dd + ".txt", relative to the process's working directory
// at the time of each message. One message is one line:
//     Debug:2024-01-02 03:04:05 Flie(kovthread) Line(42) start        followed by CR LF
// ("Flie" is spelled so in every file ever written; tools that read the files look for it.)
#ifndef KOVDOA_KOVMESSAGE_H
#define KOVDOA_KOVMESSAGE_H

#include <QtCore/qlogging.h>

#include <KOVDoaHandle/foundation/kovdoaexport.h>

class QString;

// Switches the log files on: creates "./log/" if it is missing (one level only; a failure is ignored), registers
// doaMessage with the engine and installs qtMessage as Qt's message handler. The handler installed before is
// dropped. Calling it again does no harm. Threads: any.
KOVDOA_EXPORT void initMessage();

// Qt message handler: appends one line to today's file. The file is opened, flushed and closed for each message,
// so a crash loses at most the line being written; a line that cannot be written is lost silently.
//   type     gives the word at the start of the line; an unknown value gives none
//   context  its file (the part after the last "/") and line appear in the line; a null file gives an empty name
//   text     the message
// Threads: any; one process-wide lock keeps lines whole. Timing: touches the disk.
KOVDOA_EXPORT void qtMessage(QtMsgType type, const QMessageLogContext& context, const QString& text);

// Callback for the engine (see InstallDoaMessageHandler): sends its diagnostic through Qt's debug stream in the
// category "default". `message` is the printf-style format of that call, with no arguments behind it, so it must
// not contain a stray percent sign. Threads: any.
KOVDOA_EXPORT void doaMessage(const char* file, int line, const char* function, const char* message);

#endif
