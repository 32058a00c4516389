// The simulated scene: what the array hears of it, frame by frame. docs/simulated-scene.md tells the whole
// model.
#ifndef KOVTOOLS_SCENESIMULATION_H
#define KOVTOOLS_SCENESIMULATION_H

#include <cstdint>
#include <vector>

#include "tools/beamform/delayandsum.h"
#include "tools/scene/fieldofview.h"
#include "tools/scene/random.h"
#include "tools/scene/soundsource.h"

namespace kovtools {

constexpr double sampleRate = 96000.0;     // Hz
constexpr double bandLow = 8000.0;         // Hz, the working band: from where the array begins to resolve ...
constexpr double bandHigh = 32000.0;       // Hz ... to where the sensors and the air let little through
constexpr int beamformedFrequencies = 12;  // spread over the band
constexpr int snapshotsPerFrame = 6;       // independent spectra averaged in a frame
constexpr double sceneDistance = 5.0;      // m, from the array to the wall of the camera picture

struct SceneOptions
{
    int frames = 100;
    int rows = 48;
    int cols = 64;
    int sources = 3;
    std::uint64_t seed = 1;
    int pictureWidth = 640;
    int pictureHeight = 480;
    int fftLength = 1024;
    double noise = 0.02;      // Pa, root mean square of each microphone's own noise over the working band
    double frameRate = 25.0;  // frames/s
};

// Where a source is in one frame, and how loud.
struct SourceState
{
    PicturePosition position;
    double level;  // Pa, root mean square over the working band
};

struct SimulatedFrame
{
    std::vector<float> map;       // rows x cols, row-major, Pa; greater than 0
    std::vector<float> spectrum;  // mean square pressure per bin, mean over the microphones, Pa^2
    std::vector<SourceState> sources;
};

class SceneSimulation
{
public:
    explicit SceneSimulation(const SceneOptions& options);

    const SceneOptions& options() const { return m_options; }
    const FieldOfView& fieldOfView() const { return m_view; }
    const std::vector<SoundSource>& sources() const { return m_sources; }

    // Bins of the working band, first and last.
    int firstBandBin() const { return m_firstBandBin; }
    int lastBandBin() const { return m_lastBandBin; }

    // The next frames, as many as are simulated at one go; none at the end.
    std::vector<SimulatedFrame> nextFrames();

private:
    double binFrequency(int bin) const { return bin * sampleRate / m_options.fftLength; }
    int bandBins() const { return m_lastBandBin - m_firstBandBin + 1; }
    double sourcePower(std::size_t source, int bin, double level) const;
    SimulatedFrame startFrame(int number);
    void hearFrame(SimulatedFrame& frame, int firstSnapshot, std::vector<BeamformedBin>& bins);
    void hearFrequency(SimulatedFrame& frame, int bin, int firstSnapshot, MicrophoneSpectra& spectra);
    void fillOtherBins(SimulatedFrame& frame);
    std::vector<float> beamform(const std::vector<MicrophoneSpectra>& spectra) const;

    SceneOptions m_options;
    FieldOfView m_view;
    Random m_random;
    std::vector<Microphone> m_array;
    std::vector<SoundSource> m_sources;
    std::vector<double> m_bandDensity;  // of each source: its power density summed over the band's bins
    DelayAndSum m_beamformer;
    int m_firstBandBin;
    int m_lastBandBin;
    std::vector<int> m_bins;  // the beamformed ones
    int m_nextFrame = 0;
};

}  // namespace kovtools

#endif
