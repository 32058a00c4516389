// Mixes several signals into one.
#ifndef KOVDOA_KOVMIXSOURCES_H
#define KOVDOA_KOVMIXSOURCES_H

#include <KOVDoaHandle/foundation/engine/containers.h>
#include <KOVDoaHandle/foundation/kovdoaexport.h>

KOVDOA_EXPORT void mixSources(mat2d_fp32* in, mat1d_fp32* out);
KOVDOA_EXPORT void mixSources(mat2d_short* in, mat1d_fp32* out);
KOVDOA_EXPORT void mixSources(mat2d_short* in, mat1d_short* out);
KOVDOA_EXPORT void mixSources(mat2d_fp32* in, mat1d_short* out);

#endif
