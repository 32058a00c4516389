// Second-order recursive sections: a record of coefficients, their designer, and the filter that runs one.
#ifndef KOVDOA5_KOVFILTER_H
#define KOVDOA5_KOVFILTER_H

#include <memory>

#include <KOVDoaHandle/foundation/engine/kovdoa5export.h>

// One section, H(z) = (b0 + b1 z^-1 + b2 z^-2) / (a0 + a1 z^-1 + a2 z^-2). A plain value: 24 bytes, owns
// nothing. What the designer writes is all a filter needs; the order of the values is no one else's business.
struct IIRCoef_t
{
    float b0;
    float b1;
    float b2;
    float a0;
    float a1;
    float a2;
};

// Designs sections by the bilinear transform of the analogue prototypes, prewarped so that the corner stands at the named frequency.
class KOVDOA5_EXPORT KOVIIRDesigner
{
public:
    static IIRCoef_t createLowPass(float cutoff, float q, float gain, float sampleRate);
    static IIRCoef_t createHighPass(float cutoff, float q, float gain, float sampleRate);
};

// Runs one section over a stream that comes in blocks.
class KOVDOA5_EXPORT KOVFilter
{
public:
    explicit KOVFilter(IIRCoef_t coefficients);
    ~KOVFilter();
    KOVFilter(const KOVFilter&) = delete;
    KOVFilter& operator=(const KOVFilter&) = delete;

    // Filters n samples from `in` to `out` (which may be the same array) and keeps the state for the next call.
    void filter(float* in, float* out, int n);

    // Forgets the stream so far.
    void reset();

private:
    class Private;
    std::unique_ptr<Private> d;
};

#endif
