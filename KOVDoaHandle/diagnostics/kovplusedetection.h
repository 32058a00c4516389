// Finds short bursts in one channel of a multichannel signal and cuts the strongest out of all.
#ifndef KOVDOA_KOVPLUSEDETECTION_H
#define KOVDOA_KOVPLUSEDETECTION_H

#include <memory>

#include <KOVDoaHandle/foundation/kovdoaexport.h>

// A burst is what stands above a fifth of the range of the detection channel's magnitude and is followed by
// 50 quiet samples. (The class name is the boundary's.)
//
// Threads: one may feed while another retrieves. The building blocks (KOV_...) take no lock. Timing: feeding
// copies, and does not allocate; a detection allocates a segment per burst.
//
// Delay: none of its own; a segment begins three quarters of its length before its highest sample.
class KOVDOA_EXPORT KOVPluseDetection
{
public:
    //   rate           samples per second; has no influence, all lengths are in samples
    //   segmentLength  samples L of a segment; less than 0 counts as 0
    //   channels       number of channels; less than 0 counts as 0. Each takes 147 kB.
    KOVPluseDetection(int rate, int segmentLength, int channels);
    ~KOVPluseDetection();
    KOVPluseDetection(const KOVPluseDetection&) = delete;
    KOVPluseDetection& operator=(const KOVPluseDetection&) = delete;

    // Appends n samples of every channel; ignored when n is not positive.
    //   channels       one pointer to n samples for each channel
    //   detectChannel  the channel that is searched; one that does not exist counts as silent
    // With more than 32767 samples buffered, all that was found is forgotten and only the last L samples
    // stay, which are not searched again. A block beyond what the buffer has room for (36863 samples in all)
    // fills it to the brim first, is flushed, and goes on.
    void FeedSignal(float** channels, int n, int detectChannel);

    // Searches what is buffered. True when there are bursts; then L samples of each channel, with the
    // strongest burst at three quarters, are copied to out[channel].
    //   out    one pointer to L samples for each channel
    //   count  number of bursts, those counted that have more than 1/20 of the strongest one's mean square
    // Flushes then, as FlushSignal() and FlushPulse() do. False, with count untouched and nothing flushed,
    // when nothing is buffered or out is null. A segment that would begin before or end behind the buffered
    // samples is moved inside; with fewer than L of them, the rest is what the buffer holds behind them, and
    // zero behind its end.
    bool GetPulse(float** out, int& count);

    // Drops all but the last L samples of each channel, or everything when there are no more than L. What
    // stays is taken as silence by the next search.
    void FlushSignal();

    // Forgets the bursts found so far. The strongest one's place and mean square are kept until a stronger
    // one is found.
    void FlushPulse();

    // A number that is kept for the host, 207 at first; it does not influence anything here. Threads: any.
    void setPulseChannel(int channel);
    int pulseChannel();

    // Building blocks. Single precision throughout, sums in index order.
    //
    // Magnitude of the first n samples of the detection channel; of the 36863 there are at most.
    void KOV_Abs(float* out, int n);
    // Maps the smallest value onto 0 and the largest (or 0, when none is above) onto 1, and what is then
    // below 0.2 onto 0. A constant has no range and gives NaN.
    void KOV_Rescale(float* x, int n);
    // Mean square; NaN for n < 1.
    void KOV_STE(float* x, int n, float& energy);
    // Recursive filter in place, from rest: y[i] = sum over k >= 0 of b[k] x[i-k], minus sum over k >= 1 of
    // a[k] y[i-k], with `order` coefficients each. When a[0] is not 1 all coefficients are divided by it
    // first. Order 0 or less: nothing.
    void KOV_Filter(float* x, int n, float* a, float* b, int order);
    // Mean square of x behind a low-pass at 1/96 of the sampling rate; x is kept.
    void KOV_NoiseFloor(float* x, int n, float& floor);
    // Searches a rescaled envelope (which it clears burst by burst) of the first n detection samples.
    void KOV_MaxPulseSegment(float* env, int n);
    // The largest value above 0 and its first index, or 0 and -1. NaN is passed over.
    float KOV_FindMax(float* x, int n, int& index);
    // The smallest value below 99999 and its first index; or 99999, with the index untouched.
    float KOV_FindMin(float* x, int n, int& index);
    // The search of GetPulse(): bursts are added to those already found.
    void KOV_DetectPulse();
    // Replaces x by its envelope, the magnitude of the analytic signal (S. L. Marple, Computing the
    // discrete-time "analytic" signal via FFT, IEEE Transactions on Signal Processing 47, 1999), by a
    // transform whose length is the next power of two, zero-padded. n <= 0: nothing; n is at most 2^30.
    // Allocates.
    void KOV_Hilbert(float* x, int n);

private:
    class KOVDOA_LOCAL Private;
    std::unique_ptr<Private> d;
};

#endif
