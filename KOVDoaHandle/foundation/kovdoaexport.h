/* Marks what libKOVDoaHandle exports; everything else in that library is hidden. A class nested in an exported one is
 * exported with it unless it is marked KOVDOA_LOCAL. C99 and C++. */
#ifndef KOVDOA_EXPORT_H
#define KOVDOA_EXPORT_H

#if defined(__MINGW32__) || defined(_MSC_VER)
#    ifdef KOVDOA_BUILD
#        define KOVDOA_EXPORT __declspec(dllexport)
#    else
#        define KOVDOA_EXPORT __declspec(dllimport)
#    endif
#    define KOVDOA_LOCAL
#else
#    define KOVDOA_EXPORT __attribute__((visibility("default")))
#    define KOVDOA_LOCAL __attribute__((visibility("hidden")))
#endif

#endif
