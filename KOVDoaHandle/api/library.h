/* The library as a whole: its version and its log files. C99 and C++. */
#ifndef KOVDOA_API_LIBRARY_H
#define KOVDOA_API_LIBRARY_H

#include <KOVDoaHandle/foundation/kovdoaexport.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The library's version text, "0019"; the pointer stays valid as long as the library is loaded. */
KOVDOA_EXPORT const char* Version(void);

/* Switches the log files on: "./log/log-yyyy-MM-dd.txt", relative to the working directory. From then on Qt's
 * messages of the whole process go there. May be called again. */
KOVDOA_EXPORT void initLogging(void);

#ifdef __cplusplus
}
#endif

#endif
