// From array audio to energy maps, frame by frame.
#ifndef KOVTOOLS_ARRAYBEAMFORMER_H
#define KOVTOOLS_ARRAYBEAMFORMER_H

#include <cstdint>
#include <utility>
#include <vector>

#include "tools/arrayaudio/arrayrecording.h"
#include "tools/beamform/blockspectra.h"
#include "tools/beamform/delayandsum.h"

namespace kovtools {

struct BeamformOptions
{
    double bandLow = 8000.0;    // Hz
    double bandHigh = 32000.0;  // Hz
    int bins = 24;              // beamformed of the band; 0: all of it
    int rows = 48;
    int cols = 64;
    int pictureWidth = 640;
    int pictureHeight = 480;
    double distance = 5.0;  // m, to which the array is focused; 0: plane waves
    WindowKind window = WindowKind::Hann;
    int fftLength = 1024;
    double overlap = 0.5;     // share of a block that the next one covers again
    double frameRate = 25.0;  // frames/s
};

struct BeamformedFrame
{
    std::vector<float> map;       // rows x cols, row-major, Pa; greater than 0
    std::vector<float> spectrum;  // mean square pressure per bin, mean over microphones and blocks, Pa^2
};

// The bins that stand for a band: it is cut into at most `count` parts of whole bins, and the strongest bin of each
// part stands for it with the part's whole power. A lone wave thus shows its exact level, be it noise or a tone at
// whatever frequency. `powers` are those of all bins; each result has its share of the weight 1 by which powers are
// multiplied. Silent parts are left out.
std::vector<std::pair<int, double>> representativeBins(const std::vector<double>& powers, int firstBin,
                                                       int lastBin, int count);

class ArrayBeamformer
{
public:
    // `array` has one position per channel. Throws UsageError when no bin lies in the band, DataError when the
    // recording is shorter than one block.
    ArrayBeamformer(ArrayRecording& recording, const std::vector<Microphone>& array,
                    const BeamformOptions& options);

    const BeamformOptions& options() const { return m_options; }
    int frames() const { return m_frames; }

    // Bins of the band, first and last.
    int firstBandBin() const { return m_firstBin; }
    int lastBandBin() const { return m_lastBin; }

    // Frame `index`: the mean over the blocks that begin in its interval. Throws DataError when the recording cannot be
    // read, Interrupted after Ctrl-C.
    BeamformedFrame frame(int index);

private:
    std::int64_t frameStart(int index) const;
    int blocksOf(int index) const;
    void addBlocks(std::int64_t first, int blocks, double share, std::vector<float>& powers,
                   std::vector<double>& spectrum);

    ArrayRecording& m_recording;
    BeamformOptions m_options;
    DelayAndSum m_beamformer;
    BlockSpectra m_spectra;
    std::vector<std::vector<float>> m_rows;
    int m_hop;
    int m_firstBin;
    int m_lastBin;
    int m_frames = 0;
};

}  // namespace kovtools

#endif
