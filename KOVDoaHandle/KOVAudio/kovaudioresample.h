// Sampling-rate conversion by picking samples, with optional filters before it.
#ifndef KOVDOA_KOVAUDIORESAMPLE_H
#define KOVDOA_KOVAUDIORESAMPLE_H

#include <memory>

#include <KOVDoaHandle/foundation/kovdoaexport.h>

// Turns blocks of single-precision samples from one rate to another. Each output sample is the input sample at
// or before its place in time; nothing is interpolated. Before that, two filters can be switched on:
//
//   flag        filter (Q 0.707, unity gain)
//   rmAliasing  high-pass at 10 Hz
//   rmDC        low-pass at the output rate
//
// With both on, the high-pass comes first. The flags' names and their filters are crossed, the low-pass stands
// at the output rate and not at half of it, and both filters are designed for samples at 96 000 Hz whatever the
// input rate: all three are agreed with the host and kept.
//
// A stream may come in blocks: the filters carry on from one block to the next (while their flag is set). The
// picking starts afresh in every block, so where a block's length is no whole multiple of the rates' ratio the
// output depends on how the stream is cut.
//
// Delay, in samples at 96 kHz: the picking adds none (a sample comes up to one input sample early). The 10 Hz
// high-pass delays 1 kHz by 0.22 and 10 kHz by 0.002. The low-pass delays low frequencies by
//   output rate     8000   16 000   22 050   32 000   44 100   48 000 and more
//   samples         2.64     1.22     0.80     0.41     0.09     0 (it changes nothing)
// and generally by 1 / (1.414 tan(pi rate / 96 000)); at other input rates as many input samples.
//
// Threads: one at a time per object; different objects are independent.
class KOVDOA_EXPORT KOVAudioReSample
{
public:
    // Longest input block that doReSample takes, in samples.
    static constexpr int maximumBlock = 409600;

    //   inputRate, outputRate  Hz; only their ratio and the low-pass depend on them
    //   gain                   dB of amplitude (20 dB is a factor of 10)
    // Nothing is checked; what odd rates do is said at doReSample. Allocates about 1.6 MB, once.
    KOVAudioReSample(int inputRate, int outputRate, float gain, bool rmAliasing, bool rmDC);
    ~KOVAudioReSample();
    KOVAudioReSample(const KOVAudioReSample&) = delete;
    KOVAudioReSample& operator=(const KOVAudioReSample&) = delete;

    // Filters a block as the flags say and picks
    //   out[k] = filtered[trunc(k * ratio)] * 10^(gain / 20),  k = 0, 1, ..., outCount - 1,
    // with ratio = input rate / output rate and the product in single precision, up to the first index that is
    // inCount or more; the outputs from there on keep what they held.
    //   in   inCount samples, not changed; of more than maximumBlock only the first maximumBlock are taken
    //   out  room for outCount samples; may be `in`, which has been copied by then
    // A count that is not positive means no samples. The picking also stops at an index below 0 or one that is
    // no number: rates of different sign give at most the sample at 0, an output rate of 0 gives none.
    // Timing: linear; no allocation, no lock.
    void doReSample(float* in, int inCount, float* out, int outCount);

    // The picking alone: out[k] = in[trunc(k * ratio)], without filters, gain or state, and with no limit to the
    // block's length. `out` must not overlap `in`. Otherwise as above.
    static void FastAudioReSample(float* in, int inRate, int inCount, float* out, int outRate, int outCount);

    // Settings; they take effect with the next block.
    float getGain();
    void setGain(float gain);
    bool getRmAliasingEnable();
    void setRmAliasingEnable(bool enable);
    bool getRmDCEnable();
    void setRmDCEnable(bool enable);

    // Forgets the stream so far: both filters start afresh.
    void resetFilter();

private:
    class KOVDOA_LOCAL Private;
    std::unique_ptr<Private> d;
};

#endif
