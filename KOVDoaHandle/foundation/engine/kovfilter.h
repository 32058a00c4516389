// Second-order recursive sections: a record of coefficients, their designer, and the filter that runs one.
#ifndef KOVDOA5_KOVFILTER_H
#define KOVDOA5_KOVFILTER_H

#include <memory>

#include <KOVDoaHandle/foundation/engine/kovdoa5export.h>

// One section, H(z) = (b0 + b1 z^-1 + b2 z^-2) / (a0 + a1 z^-1 + a2 z^-2). A plain value: 24 bytes, owns
// nothing. What the designer writes is all a filter needs; the order of the values is no one else's business.
// a0 is not 1: scaled freely, the other two can place a low corner far more closely than single precision
// otherwise could.
struct IIRCoef_t
{
    float b0;
    float b1;
    float b2;
    float a0;
    float a1;
    float a2;
};

// Designs second-order low-pass and high-pass sections. The analogue prototypes are
//   low-pass 1 / (s^2 + s/Q + 1), high-pass s^2 / (s^2 + s/Q + 1),
// carried over by the bilinear transform and prewarped so that the corner stands at the named frequency, by the
// formulas of R. Bristow-Johnson, "Audio EQ Cookbook" (W3C Note, 2021). Slope 12 dB per octave; gain at the
// corner = Q times the pass band's (-3 dB at 0.707); for Q > 0.707 the response peaks near the corner.
//   cutoff      corner in Hz
//   q           quality factor, dimensionless
//   gain        of the pass band, linear; 1 leaves the level alone
//   sampleRate  in Hz
// Worked out in double precision and rounded together: the pass band's gain is right to 1e-6, the corner's place
// to 1e-4 and, for Q up to 2, its gain to 2e-4 for corners of 10 Hz and up at 96 kHz (5e-4 below).
//
// Every argument gives finite coefficients of a stable section:
//   cutoff      is moved to at least rate / 25000 from 0 and from rate / 2 (single precision carries no closer:
//               3.84 Hz at 96 kHz), except where the limit is a section that changes nothing: a low-pass whose
//               corner is at or above rate / 2 and a high-pass whose corner is at or below 0 only apply the
//               gain. So a low-pass at 0 or below is one at rate / 25000, and a high-pass at or above rate / 2
//               one at rate / 2 - rate / 25000. NaN: only applies the gain.
//   q           not positive or NaN: 1/sqrt(2). Positive values are limited to 0.01 ... 1000.
//   gain        NaN or infinite: 1. Limited to +-1e30.
//   sampleRate  not positive, NaN or infinite: only applies the gain.
//
// Delay in samples (group delay) at the frequency f, the same for both kinds, with k = tan(pi cutoff / rate),
// t = tan(pi f / rate) and v = t / k:
//   (1 + t^2) / (2 k Q) * (1 + v^2) / ((1 - v^2)^2 + v^2 / Q^2)
// That is 1 / (2 k Q) well below the corner, where a low-pass passes, and next to nothing well above it, where a
// high-pass passes. At 96 kHz:
//   low-pass 4800 Hz, Q 0.707      4.5 at low frequencies
//   low-pass 22 050 Hz, Q 0.707    0.8
//   low-pass 48 000 Hz and above   0 (changes nothing)
//   high-pass 10 Hz, Q 0.707       0.22 at 1 kHz, 0.0022 at 10 kHz
//   high-pass 25 000 Hz, Q 0.707   1.3 at 30 kHz, 0.87 at 40 kHz
// Threads: stateless.
class KOVDOA5_EXPORT KOVIIRDesigner
{
public:
    static IIRCoef_t createLowPass(float cutoff, float q, float gain, float sampleRate);
    static IIRCoef_t createHighPass(float cutoff, float q, float gain, float sampleRate);
};

// Runs one section over a stream that comes in blocks: a stream cut in any way gives the same samples, bit for
// bit, as the stream in one piece, and the same on every processor.
//
// Signals are single precision; state and sums are double, because a direct form in single precision turns its
// own rounding into noise and drift when the corner is low (10 Hz at 96 kHz: over 100 dB worse).
// A state below 1e-36 counts as silence and becomes 0, so that the slow numbers below the normal range never
// circulate. Input that is not finite makes the rest of the output NaN until reset().
// Threads: one at a time per filter.
class KOVDOA5_EXPORT KOVFilter
{
public:
    // Copies the coefficients; the state is zero. a0 must not be 0.
    explicit KOVFilter(IIRCoef_t coefficients);
    ~KOVFilter();
    KOVFilter(const KOVFilter&) = delete;
    KOVFilter& operator=(const KOVFilter&) = delete;

    // Filters n samples from `in` to `out`, continuing the stream, and keeps the state for the next call.
    //   in, out  n samples each; the same array, or arrays that do not overlap
    // n <= 0 does nothing. Timing: linear in n; no allocation, no lock.
    void filter(float* in, float* out, int n);

    // Forgets the stream so far: the next sample is the first.
    void reset();

private:
    class Private;
    std::unique_ptr<Private> d;
};

#endif
