#include "tools/discharge/dischargeanalysis.h"

#include <sstream>

#include "tools/support/errors.h"
#include "tools/support/inquotes.h"
#include "tools/support/wording.h"

namespace kovtools {

namespace {

// Of a pattern, as the analyser documents it.
constexpr long long spanOf(Mains mains)
{
    return mains == Mains::Hz60 ? 50624 : 60544;
}

// Where the first pattern is asked for: the first multiple of the poll distance at which there is one. It is
// whole then, and does not reach for what was before the recording.
long long firstPoll(Mains mains)
{
    const long long distance = pollDistance(mains);
    return (spanOf(mains) + distance - 1) / distance * distance;
}

std::string secondsText(long long samples)
{
    std::ostringstream text;
    text.precision(3);
    text << static_cast<double>(samples) / dischargeRate << " s";
    return text.str();
}

}  // namespace

int pollDistance(Mains mains)
{
    return 3 * dischargeRate / frequencyOf(mains);
}

long long fewestSamples(Mains mains)
{
    return firstPoll(mains) + static_cast<long long>(fewestVotes - 1) * pollDistance(mains);
}

void checkDischargeRecording(const SoundReader& reader, const DischargeInput& input)
{
    if (reader.sampleRate() != dischargeRate) {
        throw DataError(inQuotes(reader.path()) + " has " + std::to_string(reader.sampleRate()) +
                        " samples per second; the discharge analyser needs " + std::to_string(dischargeRate));
    }
    if (input.channel >= reader.channels()) {
        throw UsageError(inQuotes(reader.path()) + " has " + counted(reader.channels(), "channel") +
                         ", there is no channel " + std::to_string(input.channel + 1));
    }
    const long long fewest = fewestSamples(input.mains);
    if (reader.samples() < fewest) {
        throw DataError(inQuotes(reader.path()) + " lasts " + secondsText(reader.samples()) +
                        "; a verdict takes " + std::to_string(fewestVotes) + " votes, which at " +
                        std::to_string(frequencyOf(input.mains)) + " Hz mains need " + secondsText(fewest));
    }
}

DischargeAnalysis analyseDischarge(SoundReader& reader, const DischargeInput& input,
                                   const std::filesystem::path& models, const PatternWatcher& watch,
                                   const std::function<void()>& step)
{
    KOVPrpdProcess analyser(models.c_str());
    analyser.setPddMode(modeOf(input.mains));
    const int pageLength = analyser.pageLength();
    std::vector<float> frame(static_cast<std::size_t>(pageLength * analyser.pageNumber()));
    std::vector<float> block;
    std::vector<float> samples;
    DischargeAnalysis analysis;
    long long fed = 0;
    long long nextPoll = firstPoll(input.mains);
    for (;;) {
        reader.read(dischargeBlock, block);
        if (block.empty()) {
            break;
        }
        takeChannel(block, reader.channels(), input.channel, samples);
        const auto count = static_cast<int>(samples.size());
        analyser.FeedAudio(samples.data(), count);
        fed += count;
        if (fed >= nextPoll) {  // a block is shorter than the distance
            nextPoll += pollDistance(input.mains);
            analysis.votes += analyser.updatePdd() ? 1 : 0;
            analysis.result = analyser.getPddFrameData(frame.data(), static_cast<int>(frame.size()));
            watch({frame, pageLength, analysis.result});
        }
        step();
    }
    if (analysis.votes < fewestVotes) {  // the file was damaged
        throw DataError(reader.complaint().empty() ? inQuotes(reader.path()) + " is too short"
                                                   : reader.complaint());
    }
    return analysis;
}

}  // namespace kovtools
