/* Marks what libKOVDoaHandle exports; everything else in that library is hidden. C99 and C++. */
#ifndef KOVDOA_EXPORT_H
#define KOVDOA_EXPORT_H

#if defined(__MINGW32__) || defined(_MSC_VER)
#    ifdef KOVDOA_BUILD
#        define KOVDOA_EXPORT __declspec(dllexport)
#    else
#        define KOVDOA_EXPORT __declspec(dllimport)
#    endif
#else
#    define KOVDOA_EXPORT __attribute__((visibility("default")))
#endif

#endif
