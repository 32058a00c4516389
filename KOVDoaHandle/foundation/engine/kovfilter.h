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
// carried over by the bilinear transform and prewarped so that the corner stands at the named frequency: the
// formulas of R. Bristow-Johnson, "Cookbook formulae for audio equalizer biquad filter coefficients" (1994,
// W3C Note 2021). Slope 12 dB per octave; gain at the corner = Q times the pass band's (-3 dB at 0.707); for
// Q > 0.707 the response peaks near the corner.
//   cutoff      corner in Hz
//   q           quality factor, dimensionless
//   gain        of the pass band, linear; 1 leaves the level alone
//   sampleRate  in Hz
// Worked out in double precision and rounded together, so that the pass band's gain is right to 1e-6 and the
// corner to 1e-4 of the frequency at every corner the section can have.
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
// Delay in samples, with w = 2 pi cutoff / sampleRate: the low-pass delays slow signals by 1 / (2 Q tan(w/2)),
// and the high-pass signals near rate / 2 by tan(w/2) / (2 Q), which is next to nothing in its pass band when
// the corner is low. Far above the corner f0 a high-pass moves the phase by about f0 / (Q f) radians ahead:
// at 48 000 Hz and more a low-pass for 96 kHz changes nothing and delays by 0 samples; at 10 Hz and Q = 0.707 a
// high-pass delays 1 kHz by 0.2 samples and 10 kHz by 0.003.
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
// own rounding into noise and drift when the corner is low (10 Hz at 96 kHz: about 60 dB worse).
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
