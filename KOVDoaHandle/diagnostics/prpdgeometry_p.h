// How the stream is laid out in mains cycles: counts in samples (96 kHz) and in bins of eight samples (12
// kHz).
#ifndef KOVDOA_PRPDGEOMETRY_P_H
#define KOVDOA_PRPDGEOMETRY_P_H

namespace KOVPrivate {

// Samples in one bin of the envelope.
constexpr int binSamples = 8;

// A pattern has ten pages, each the sum of three mains cycles.
constexpr int pageCount = 10;
constexpr int cyclesPerPage = 3;

struct MainsGeometry
{
    int cycle;        // bins in a mains cycle, which is the length of a page
    int span;         // samples that a pattern is built from
    int alignment;    // samples; the span ends at a multiple of it, so that consecutive patterns are in phase
    int measured;     // samples at the start of the span that level and peak are taken over
    int phaseOffset;  // bins that the displayed phase lies behind the start of a page
    int nearBy;       // bins; a reference closer than this is approached smoothly
    int farAway;      // bins; an average further than this is a whole cycle away, otherwise half a cycle

    constexpr int halfCycle() const { return cycle / 2; }
    constexpr int frameSize() const { return pageCount * cycle; }
    constexpr int bins() const { return span / binSamples; }
};

constexpr MainsGeometry mains50{240, 60544, 5760, 4864, 54, 80, 160};
constexpr MainsGeometry mains60{200, 50624, 4800, 4224, 45, 66, 133};

// Everything sized for 50 Hz also serves 60 Hz.
constexpr int largestCycle = mains50.cycle;
constexpr int largestFrame = mains50.frameSize();
constexpr int largestSpan = mains50.span;
constexpr int largestEnvelope = mains50.bins();

}  // namespace KOVPrivate

#endif
