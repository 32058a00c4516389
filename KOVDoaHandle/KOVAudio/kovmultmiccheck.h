// Self-test of the 208-microphone array.
#ifndef KOVDOA_KOVMULTMICCHECK_H
#define KOVDOA_KOVMULTMICCHECK_H

#include <memory>

#include <KOVDoaHandle/foundation/engine/containers.h>
#include <KOVDoaHandle/foundation/kovdoaexport.h>

// What one test found, per channel. Plain data.
struct MicCheckResult
{
    bool flags[208];    // true: passed
    float values[208];  // what was measured; see the tests
    float elapsed;      // milliseconds that the test took
};

// The samples collected so far, and the transforms of the alignment test. The transforms keep nothing: each
// call makes and frees its own window, arrays and plans. Pointers are not checked; with a fill count below 1
// nothing is read or written and the lag is 0. Threads: the transforms read only, so any number at a time
// between two fills.
class KOVDOA_EXPORT KOVMultMicCheckPrivate
{
public:
    // No samples yet.
    KOVMultMicCheckPrivate();
    ~KOVMultMicCheckPrivate();
    KOVMultMicCheckPrivate(const KOVMultMicCheckPrivate&) = delete;
    KOVMultMicCheckPrivate& operator=(const KOVMultMicCheckPrivate&) = delete;

    // Forward transform of fillCount samples behind a Hann window, to fillCount (real, imaginary) pairs; not
    // divided by the count.
    void fftforward(float* x, float out[][2]);
    // Magnitudes of the backward transform of fillCount pairs; not divided by the count.
    void fftBackward(float in[][2], float* out);
    // Lag of b relative to a in samples, both of fillCount samples: negative where b is late,
    // -n / 2 ... (n - 1) / 2. By cross-correlation with phase transform; of equal maxima the first counts. 0
    // when a channel is silent or holds a NaN.
    int gccphat(float* a, float* b);

    mat2d_fp32* samples;  // 208 rows of 96,000 samples, a row per channel; owned
    int fillCount;        // samples in each row, 0 ... 96,000; also the length of the transforms
};

// Collects up to one second of all channels at 96,000 Hz and tests it. To test again, take a new object:
// there is no way to empty one.
//
//   KOVMultMicCheck check;
//   while (!check.fillAudio(nextBlock(), 1024)) {}
//   const MicCheckResult levels = check.checkRMS();
//
// Each test needs 48,000 samples per channel; with fewer, every flag is false and every value 0. `elapsed` is
// filled in always.
// Threads: one thread fills; the tests only read and may run side by side between two fills.
class KOVDOA_EXPORT KOVMultMicCheck
{
public:
    // Allocates 80 MB for the samples.
    KOVMultMicCheck();
    ~KOVMultMicCheck();
    KOVMultMicCheck(const KOVMultMicCheck&) = delete;
    KOVMultMicCheck& operator=(const KOVMultMicCheck&) = delete;

    // Appends n samples from each of 208 channel pointers: 16-bit ones times 3.051851e-5 (single precision),
    // single-precision ones as they are. False while everything has found room, also when the store is then
    // exactly full; true when it is full and the rest of the block was dropped. n < 1 appends nothing and
    // gives false.
    bool fillAudio(short** data, int n);
    bool fillAudio(float** data, int n);

    // Do the neighbours 2k and 2k + 1 carry different signals? Walks both, adding up absolute values in
    // single precision; both pass at the first sample where both sums and the difference between them exceed
    // 0.0001. Identical (shorted, duplicated) and silent channels fail, and so does a NaN before that sample.
    // Value: the channel's sum up to the sample that decided, times 32767 * 96000 / samples per channel.
    MicCheckResult checkSame();

    // Is the channel loud enough? Value: 20 log10(KOVBlas::Rms about the mean) + 120, dB relative to a
    // millionth; passes above 30. Silence: -infinity, fails.
    MicCheckResult checkRMS();

    // Are the channels aligned? Takes the pairs (0, 4), (1, 5), (2, 7) and (3, 6) only; value of both: the
    // lag of the second relative to the first in samples; both pass within -99 ... 99. By agreement channel 0
    // is compared with itself at the end, so it always passes with value 0, whatever its lag to channel 4.
    // Channels above 7: false and 0. A silent channel has lag 0 and passes: checkRMS() finds those.
    // Timing: a dozen transforms of the whole length; allocates and frees what they need.
    MicCheckResult checkXcorr();

private:
    std::unique_ptr<KOVMultMicCheckPrivate> d;
};

#endif
