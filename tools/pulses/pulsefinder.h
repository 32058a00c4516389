// The library's pulse detection over a sound of any length.
#ifndef KOVTOOLS_PULSEFINDER_H
#define KOVTOOLS_PULSEFINDER_H

#include <KOVDoaHandle/diagnostics/kovplusedetection.h>

#include <functional>
#include <vector>

namespace kovtools {

struct PulseOptions
{
    int channels = 1;
    int sampleRate = 96000;  // Hz
    int segment = 1024;      // samples
    int channel = 0;         // that is searched, from 0
};

// What one full buffer gave.
struct PulseBuffer
{
    long long first = 0;  // sample of the sound that the buffer begins with
    int samples = 0;      // in the buffer; the first segment's worth may be from the buffer before
    int count = 0;        // bursts
    float peak =
        0.0F;  // largest magnitude of the searched channel in the cut segment, full scale 1; 0 without one
    float level = 0.0F;  // root mean square of the samples that are searched for the first time, full scale 1
};

class PulseFinder
{
public:
    static constexpr int bufferSamples =
        32767;  // what the detector holds; with more it forgets what it found

    // Called when a buffer has been searched. `segment` is interleaved, all channels, the strongest burst at three
    // quarters; empty without a burst.
    using Report = std::function<void(const PulseBuffer& buffer, const std::vector<float>& segment)>;

    // The segment is shorter than the buffer, the channel one of the channels.
    PulseFinder(const PulseOptions& options, Report report);

    // Samples still missing in the buffer, at least 1: no more may be fed at once.
    int room() const { return bufferSamples - m_buffered; }

    // Feeds interleaved samples, at most room() of each channel, and searches when the buffer is full.
    void feed(const std::vector<float>& block);

    // Searches what is left over.
    void finish();

private:
    void search();

    PulseOptions m_options;
    Report m_report;
    KOVPluseDetection m_detector;
    std::vector<std::vector<float>> m_block;    // one row a channel
    std::vector<std::vector<float>> m_segment;  // likewise
    long long m_fed = 0;                        // samples of each channel
    int m_buffered = 0;                         // in the detector
    int m_new = 0;                              // of these, not searched yet
    double m_squares = 0.0;                     // of the searched channel's new samples, added up
};

}  // namespace kovtools

#endif
