/* The one way out for the engine library's diagnostics: a callback that the host library registers.
 * C99 and C++; C linkage. */
#ifndef KOVDOA_ENGINE_MESSAGEHOOK_H
#define KOVDOA_ENGINE_MESSAGEHOOK_H

#include <KOVDoaHandle/foundation/engine/kovdoa5export.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Receives one diagnostic of the engine.
 *   file, line, function  where it arose; valid for the duration of the call only
 *   message               the text; the engine never puts a percent sign into it, because the receiver may use
 *                         it as a printf-style format
 * May be called from any thread that uses the engine. */
typedef void (*DoaMessageHandler)(const char* file, int line, const char* function, const char* message);

/* Registers the callback for every later diagnostic of the engine, replacing the former one; a null pointer
 * switches diagnostics off. Process-wide. Threads: may be called at any time from any thread. */
KOVDOA5_EXPORT void InstallDoaMessageHandler(DoaMessageHandler handler);

#ifdef __cplusplus
}
#endif

#endif
