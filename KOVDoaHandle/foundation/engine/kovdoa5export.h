/* Marks what libKOVDoa5 exports; everything else in that library is hidden. C99 and C++. */
#ifndef KOVDOA5_EXPORT_H
#define KOVDOA5_EXPORT_H

#if defined(__MINGW32__) || defined(_MSC_VER)
#    ifdef KOVDOA5_BUILD
#        define KOVDOA5_EXPORT __declspec(dllexport)
#    else
#        define KOVDOA5_EXPORT __declspec(dllimport)
#    endif
#else
#    define KOVDOA5_EXPORT __attribute__((visibility("default")))
#endif

#endif
