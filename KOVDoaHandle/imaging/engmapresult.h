// One frame of imaging results: the energy map, its spectrum, extremes, peaks and a few scalars.
//
// The layout is part of the boundary: hosts built with the same toolchain read the fields directly.
#ifndef KOVDOA_ENGMAPRESULT_H
#define KOVDOA_ENGMAPRESULT_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include <KOVDoaHandle/foundation/engine/containers.h>

// One peak of a frame, or one track. The first three fields are those of fpoint2d.
struct TargetPoint
{
    float value = 0.0F;     // linear level at the peak
    std::int32_t row = 0;   // map row, 0 at the top
    std::int32_t col = 0;   // map column, 0 at the left
    std::int32_t id = 0;    // identity that target tracking gave it
    std::int32_t life = 0;  // life counter of the track
    bool matched = false;   // the track was found again in this frame
};

// Levels are linear (amplitude-like); decibels appear only as 20 log10 of ratios. Who writes what: the producer of
// the frame (the beamformer, or the reader of a recording) supplies the map, the spectrum, PowerBandsFFTSpec, the
// View fields, median, distance and firstPointInRadius; the renderer rewrites maxSpl, minSpl and, with a region of
// interest, the two Extern fields, and appends the peaks that it found to a frame that came without.
struct EngMapResult
{
    mat2d_fp32* ResEngMap = nullptr;  // the energy map, map rows x map columns; owned
    vec_fp32* PowerSpec = nullptr;    // power spectrum, FFT length / 2 + 1 bins; owned
    float PowerBandsFFTSpec = 0.0F;   // one level computed from the spectrum over the working band
    fpoint2d maxSpl{};                // highest value inside the region of interest, or of the whole map
    fpoint2d minSpl{};                // lowest value there
    fpoint2d maxSplExtern{};          // highest value outside the region of interest
    fpoint2d minSplExtern{};          // lowest value there
    fpoint2d maxSplView{};            // the same four as shown, supplied by the producer
    fpoint2d minSplView{};            //
    fpoint2d maxSplExternView{};      //
    fpoint2d minSplExternView{};      //
    std::vector<TargetPoint> peaks;   // peaks of the frame, in stored order
    bool firstPointInRadius = false;  // with several cursors: the renderer may show one more
    float median = 0.0F;              // median level of the frame
    float distance = 0.0F;            // distance to the target, m
};

static_assert(sizeof(fpoint2d) == 12);
static_assert(sizeof(TargetPoint) == 24 && offsetof(TargetPoint, matched) == 20);
#if defined(__x86_64__) || defined(_M_X64) || defined(__aarch64__)
static_assert(offsetof(EngMapResult, PowerBandsFFTSpec) == 16 && offsetof(EngMapResult, maxSpl) == 20);
static_assert(offsetof(EngMapResult, minSplExternView) == 104 && offsetof(EngMapResult, peaks) == 120);
static_assert(offsetof(EngMapResult, firstPointInRadius) == 120 + sizeof(std::vector<TargetPoint>));
static_assert(offsetof(EngMapResult, distance) == 128 + sizeof(std::vector<TargetPoint>));
#endif

#endif
