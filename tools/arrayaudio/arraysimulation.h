// What the microphones of an array record of sources that stand still. docs/array-audio.md tells the whole model.
#ifndef KOVTOOLS_ARRAYSIMULATION_H
#define KOVTOOLS_ARRAYSIMULATION_H

#include <cstdint>
#include <vector>

#include "tools/arrayaudio/brokenmicrophones.h"
#include "tools/arrayaudio/leakhiss.h"
#include "tools/arrayaudio/standingsource.h"
#include "tools/scene/arraygeometry.h"
#include "tools/scene/random.h"
#include "tools/support/realtransform.h"

namespace kovtools {

struct ArraySimulationOptions
{
    std::vector<Microphone> array;
    std::vector<StandingSource> sources;
    BrokenMicrophones broken;
    double noise = 0.02;  // Pa, root mean square of each microphone's own noise over the working band
    std::uint64_t seed = 1;
};

// Uses all cores; the same options give the same samples on any number of them.
class ArraySimulation
{
public:
    static constexpr int step = HissLayout::step;  // samples that next() gives

    explicit ArraySimulation(ArraySimulationOptions options);

    // The next `step` samples of every microphone, Pa: channels() rows, valid until the next call.
    const float* const* next();

    int channels() const { return static_cast<int>(m_options.array.size()); }
    const ArraySimulationOptions& options() const { return m_options; }

private:
    // How one source reaches one microphone.
    struct Path
    {
        double advance;  // s before the middle of the array
        double gain;     // 1 m / distance
    };
    struct Scratch;

    Path path(const StandingSource& source, std::size_t microphone) const;
    void nextSections();
    void record(std::size_t microphone, Scratch& scratch);
    void addLeaks(std::size_t microphone, Scratch& scratch);
    void addTone(const StandingSource& source, std::size_t index, std::size_t microphone, float* row) const;
    void addPulses(const StandingSource& source, std::size_t index, std::size_t microphone, float* row) const;
    void addNoise(std::size_t microphone, float* row);
    void breakMicrophones();

    ArraySimulationOptions m_options;
    RealTransform m_padded;
    RealTransform m_section;
    std::vector<std::size_t> m_leaks;     // which of the sources are leaks ...
    std::vector<LeakHiss> m_hisses;       // ... their hisses ...
    std::vector<HalfSpectrum> m_spectra;  // ... and the spectra of their present sections
    std::vector<double> m_starts;  // of each source: a tone's phase, or when in a period the pulses come
    std::vector<Random> m_noises;  // one per microphone, so that threads need not take turns
    std::vector<RealSignal> m_overlaps;  // per microphone: what the sections so far give from now on
    std::vector<RealSignal> m_samples;
    std::vector<const float*> m_rows;  // what next() returns, duplicates and swaps included
    std::int64_t m_position = 0;       // samples given so far
};

}  // namespace kovtools

#endif
