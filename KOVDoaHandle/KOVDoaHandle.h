/* Every plain export of the library: the one header a host includes that calls through a C boundary. C99 and C++.
 * Hosts built with the same C++ toolchain may include the headers of the classes instead. */
#ifndef KOVDOA_KOVDOAHANDLE_H
#define KOVDOA_KOVDOAHANDLE_H

#include <KOVDoaHandle/api/containers.h>
#include <KOVDoaHandle/api/gasleak.h>
#include <KOVDoaHandle/api/imager.h>
#include <KOVDoaHandle/api/library.h>
#include <KOVDoaHandle/api/prpd.h>
#include <KOVDoaHandle/api/resampler.h>
#include <KOVDoaHandle/api/resultfile.h>
#include <KOVDoaHandle/api/results.h>

#endif
