// Makes ultrasound audible: shifts the band above a base frequency down to 0 Hz.
#ifndef KOVDOA_KOVSUPERHETERODYNE_H
#define KOVDOA_KOVSUPERHETERODYNE_H

#include <memory>

#include <KOVDoaHandle/foundation/kovdoaexport.h>

// Takes one channel at 96,000 Hz and gives 16-bit sound at 48,000 Hz: the band above the base frequency is
// kept, multiplied with a cosine at the base frequency, low-pass filtered, freed of rumble below 100 Hz,
// levelled and halved in rate. A tone at base + f is heard at f; one at base - f too, weakened by the band
// filter alone.
//
//   KOVSuperHeterodyne monitor;
//   monitor.init();
//   monitor.start();
//   monitor.feedSignal(block, 1024);          // the thread that records
//   int count = 0;
//   const short* sound = monitor.readAll(count);  // the thread that plays
//
// How the input is cut into feeds makes no difference, how it is cut into *reads* does, by agreement: the
// limiter measures each reading as a whole and gives it one gain, and every reading begins with its own first
// sample when the rate is halved, so a reading of an odd number of samples drops its last one. Filters and
// oscillator run on from reading to reading.
//
// Delay of the chain (group delay) in samples at 96,000 Hz; half as many samples of the output:
//
//   heard at         500 Hz   1 kHz   2 kHz   4 kHz
//   base 20,000 Hz     10.1     5.0     3.7     3.2
//   base 30,000 Hz     11.7     6.7     5.5     5.2
//   base 38,600 Hz     17.5    12.7    12.0    11.7
//   base 42,000 Hz     32.8    29.2    19.6     (1)
//
// (1) The mixer's other product, at 96000 - 2 base - f, is no longer filtered out.
// The four low-passes add the sum of 1 / (2 Q tan(pi c / 96000)) towards low frequencies, with the corners
// c = 48000 - base - 4540 (Q 0.7), + 2500 (Q 2), + 1500 (Q 2) and + 500 (Q 1); the band filter 2 to 6
// samples; the rumble filter what makes the low end late. A reading waits for nothing beyond what was fed.
//
// Threads: one feeds, one reads, and one controls (start, stop, setBaseFrequency, setVolume, setChannel); the
// three may work at the same time. Before init() nothing is taken, and reading gives no samples. Pointers are
// not checked.
class KOVDOA_EXPORT KOVSuperHeterodyne
{
public:
    // Base frequency 38,600 Hz, volume 0 dB, channel 127, stopped.
    KOVSuperHeterodyne();
    ~KOVSuperHeterodyne();
    KOVSuperHeterodyne(const KOVSuperHeterodyne&) = delete;
    KOVSuperHeterodyne& operator=(const KOVSuperHeterodyne&) = delete;

    // Designs the filters for the base frequency, computes two seconds and more of oscillator and makes all
    // buffers (2.7 MB). To be called once, before the threads come; again, it begins afresh with nothing
    // pending and cleared filters, and leaves the settings and the started state.
    void init();

    // Clears the filters, the oscillator's phase and what is pending, and starts. Waits for a reading in
    // progress.
    void start();
    // Stops, once a feed in progress is complete. What is pending can still be read.
    void stop();
    bool isStart();

    // Append n samples at 96,000 Hz to what is pending: 16-bit ones divided by 36727 (so that full scale
    // stays below 1: 32767 becomes 0.8922), single-precision ones as they are or times `gain`. Also while
    // stopped, except when n < 1. When more than 101,376 samples are pending, the whole backlog is dropped
    // first, also by an empty feed to a started monitor. Of a feed larger than the room left in 102,400
    // samples, the end is dropped; feeds of at most 1024 always find room. Timing: no allocation.
    void feedSignal(short* data, int n);
    void feedSignal(float* data, int n);
    void feedSignal(float* data, int n, float gain);

    // Processes all that is pending, N samples, and returns N / 2 samples at 48,000 Hz; `count` is their
    // number. A stopped monitor with nothing pending: null, count -1. Before init(): null, count -1, or 0
    // once started. The array belongs to the monitor and is valid until the next readAll().
    // Level: output = sample * 32767 * volume * 29.54, cut off towards zero; a reading whose standard
    // deviation lies above 60 dB on getDecibel()'s scale is brought down to 60 first. There is no saturation:
    // values beyond 16 bits wrap around (their low 16 bits are taken), values beyond 32 bits and NaN give 0.
    // A NaN or infinity that was fed stays in the filters until start().
    // Timing: no allocation; the feeding thread is kept waiting only for the exchange of two pointers.
    short* readAll(int& count);

    // Drops what is pending.
    void flushBuffer();

    // Hz, rounded to a multiple of 100 (halves away from zero). Drops what is pending. A started monitor is
    // stopped and started again, with a pause of 50 ms after each, during which reading waits. In a stopped
    // one, the oscillator's phase and the rumble filter run on.
    void setBaseFrequency(float frequency);
    // As rounded.
    float baseFrequency();

    // Decibels, on top of the make-up gain; 0 at first.
    void setVolume(float decibels);
    float getVolume();

    // 20 log10(x) + 120: dB relative to a millionth. 0 gives -infinity.
    float getDecibel(float x);
    // Standard deviation (divisor n), summed in single precision in index order. NaN for n = 0.
    float rmsCalculate(float* x, int n);

    // The microphone that the host listens to. Only kept; nothing here uses it.
    void setChannel(int channel);
    int channel();

private:
    class KOVDOA_LOCAL Private;
    std::unique_ptr<Private> d;
};

#endif
