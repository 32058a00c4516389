// Mixes several signals into one.
#ifndef KOVDOA_KOVMIXSOURCES_H
#define KOVDOA_KOVMIXSOURCES_H

#include <KOVDoaHandle/foundation/engine/containers.h>
#include <KOVDoaHandle/foundation/kovdoaexport.h>

// Adds the rows of `in` (one source each) sample by sample into `out`, in row order and single precision. When
// the largest sum is above 1.0 all are divided by it. Only a positive peak counts: a sum that goes below -1.0
// while its largest value is at most 1.0 stays as it is. That is agreed with the host and kept.
//   in   rows sources of cols samples; a row or column count that is not positive means silence
//   out  cols samples, as many as the input's; rows is not looked at. The caller owns both.
// 16-bit samples stand for s * 3.051851e-5 (s / 32767). A 16-bit output is the sum / 3.051851e-5 in single
// precision, truncated towards zero to a 32-bit integer, of which the low 16 bits are kept: beyond full scale it
// wraps around. What no 32-bit integer can hold, and NaN, become 0.
//
// Where the sizes differ: columns of `in` beyond those of `out` are left out; columns of `out` beyond those of
// `in` become 0 in a float output (and count for the largest value) and are left alone in a 16-bit one. An
// output without columns is left alone.
// Threads: re-entrant. Timing: linear; no allocation, no lock. A 16-bit output needs 16 KiB of stack; past 4096
// columns each sum is formed twice, since not all fit there.
KOVDOA_EXPORT void mixSources(mat2d_fp32* in, mat1d_fp32* out);
KOVDOA_EXPORT void mixSources(mat2d_short* in, mat1d_fp32* out);
KOVDOA_EXPORT void mixSources(mat2d_short* in, mat1d_short* out);
KOVDOA_EXPORT void mixSources(mat2d_fp32* in, mat1d_short* out);

#endif
