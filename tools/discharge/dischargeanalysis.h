// The library's discharge analyser, run over a recording.
#ifndef KOVTOOLS_DISCHARGEANALYSIS_H
#define KOVTOOLS_DISCHARGEANALYSIS_H

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <KOVDoaHandle/diagnostics/kovprpdprocess.h>

#include "tools/audio/soundreader.h"
#include "tools/discharge/mains.h"

namespace kovtools {

constexpr int dischargeBlock = 1024;  // samples fed at a time
constexpr int fewestVotes = 26;       // before them the analyser publishes no shares

// What the analyser says of a recording.
struct DischargeAnalysis
{
    PRPDResult result{};  // after the last poll
    int votes = 0;        // patterns that have been built; each casts one vote
};

// A pattern that has just been built: ten pages of `pageLength` bins, page by page.
struct DischargePattern
{
    const std::vector<float>& frame;
    int pageLength;
    PRPDResult result;
};
using PatternWatcher = std::function<void(const DischargePattern&)>;

// Samples between two polls: three mains cycles, the distance at which the analyser has a new pattern. Each
// pattern is thus voted on once.
int pollDistance(Mains mains);

// Samples that a recording must have for `fewestVotes` patterns.
long long fewestSamples(Mains mains);

// Which samples of a sound file to analyse, and how.
struct DischargeInput
{
    std::filesystem::path file;  // absolute
    int channel = 0;             // from 0
    Mains mains = Mains::Hz50;
};

// Throws DataError when the recording has another sample rate or is too short, UsageError when it lacks the
// channel.
void checkDischargeRecording(const SoundReader& reader, const DischargeInput& input);

// Feeds all of `reader` and polls. `models`: folder of the model files. `watch` sees each pattern; `step` is
// called for each block and may throw to stop.
DischargeAnalysis analyseDischarge(SoundReader& reader, const DischargeInput& input,
                                   const std::filesystem::path& models, const PatternWatcher& watch,
                                   const std::function<void()>& step);

}  // namespace kovtools

#endif
