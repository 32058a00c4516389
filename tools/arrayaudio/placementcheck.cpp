// First the place of the strongest source is found: on a grid of plane waves, then finer, with its distance. Then
// the cross-spectrum of each microphone with the sum of all the others is formed, both steered to that place. In step,
// it is real and positive at every frequency, whatever the level and the noise; its phase shows where the microphone
// really stands.
#include "tools/arrayaudio/placementcheck.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>
#include <utility>

#include "tools/arrayaudio/arrayrecording.h"
#include "tools/beamform/arraybeamformer.h"
#include "tools/beamform/blockspectra.h"
#include "tools/beamform/delayandsum.h"
#include "tools/scene/scenesimulation.h"

namespace kovtools {

namespace {

constexpr int blockLength = 1024;
constexpr int mostBlocks = 64;         // 0.7 s
constexpr int fewestBlocks = 8;        // fewer leave too much to chance
constexpr int fewestMicrophones = 8;   // likewise
constexpr int frequencies = 32;        // spread over the working band
constexpr double silence = 0.01;       // of the median power: 20 dB below it
constexpr float clearlyInStep = 0.9F;  // median agreement without which no source stands out
constexpr float smallestGap = 0.03F;   // below 1; a path that is wrong by 0.7 mm
constexpr float scatterFactor = 6.0F;  // or so many times the median gap
constexpr double fullTurn = 2.0 * std::numbers::pi;

float medianOf(std::vector<float> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

PlacementCheck cannotTell(const std::string& reason)
{
    PlacementCheck check;
    check.reason = reason;
    return check;
}

// The microphones that are heard at all, at the beamformed bins.
struct Heard
{
    std::vector<std::size_t> channels;
    std::vector<Microphone> array;
    std::vector<BeamformedBin> bins;
};

double powerOf(const MicrophoneSpectra& spectra, int microphone)
{
    double sum = 0.0;
    for (int s = 0; s < spectra.snapshots(); ++s) {
        sum += static_cast<double>(std::norm(spectra.at(microphone, s)));
    }
    return sum;
}

std::vector<BeamformedBin> readBins(ArrayRecording& recording, int blocks)
{
    const int samples = blocks * blockLength;
    std::vector<std::vector<float>> rows(static_cast<std::size_t>(recording.channels()),
                                         std::vector<float>(static_cast<std::size_t>(samples)));
    std::vector<float*> pointers;
    for (std::vector<float>& row : rows) {
        pointers.push_back(row.data());
    }
    recording.read(0, samples, pointers.data());
    BlockSpectra spectra(recording.channels(), blockLength, WindowKind::Hann);
    spectra.analyse(rows, blockLength, blocks);

    const double binWidth = recording.sampleRate() / static_cast<double>(blockLength);
    const int lastBin = std::min(static_cast<int>(bandHigh / binWidth), spectra.bins() - 1);
    const int firstBin = std::min(static_cast<int>(std::ceil(bandLow / binWidth)), lastBin);
    std::vector<BeamformedBin> bins;
    for (const auto& [bin, weight] :
         representativeBins(spectra.meanPowers(), firstBin, lastBin, frequencies)) {
        bins.push_back({bin * binWidth, 1.0F, spectra.atBin(bin)});
    }
    return bins;
}

Heard withoutSilentOnes(std::vector<BeamformedBin> bins, const std::vector<Microphone>& geometry)
{
    std::vector<float> powers;
    for (std::size_t m = 0; m < geometry.size(); ++m) {
        double power = 0.0;
        for (const BeamformedBin& bin : bins) {
            power += powerOf(bin.spectra, static_cast<int>(m));
        }
        powers.push_back(static_cast<float>(power));
    }
    Heard heard;
    const auto least = static_cast<float>(silence) * medianOf(powers);
    for (std::size_t m = 0; m < geometry.size(); ++m) {
        if (powers[m] > least) {
            heard.channels.push_back(m);
            heard.array.push_back(geometry[m]);
        }
    }
    for (const BeamformedBin& bin : bins) {
        const int snapshots = bin.spectra.snapshots();
        MicrophoneSpectra kept(static_cast<int>(heard.channels.size()), snapshots);
        for (std::size_t i = 0; i < heard.channels.size(); ++i) {
            for (int s = 0; s < snapshots; ++s) {
                kept.set(static_cast<int>(i), s, bin.spectra.at(static_cast<int>(heard.channels[i]), s));
            }
        }
        heard.bins.push_back({bin.frequency, 1.0F, std::move(kept)});
    }
    return heard;
}

// A point to steer to: a direction by its first two cosines, and how near (1 / m, 0 infinitely far).
struct Focus
{
    double x = 0.0;
    double y = 0.0;
    double nearness = 0.0;
    double side = 1.0;  // before (1) or behind (-1) the array

    bool exists() const { return x * x + y * y < 1.0 && nearness >= 0.0; }
    Direction direction() const { return {x, y, side * std::sqrt(1.0 - x * x - y * y)}; }
    double distance() const { return nearness == 0.0 ? infinitelyFar : 1.0 / nearness; }
};

struct Candidate
{
    Focus focus;
    float power = -1.0F;
};

// The strongest of points that are all equally near.
Candidate strongestOf(const Heard& heard, const std::vector<Focus>& points)
{
    std::vector<Direction> looks;
    for (const Focus& point : points) {
        looks.push_back(point.direction());
    }
    std::vector<float> powers(points.size());
    DelayAndSum(heard.array, looks, points.front().distance())
        .addPowers(heard.bins, heard.bins.front().spectra.snapshots(), powers);
    const auto best = std::max_element(powers.begin(), powers.end());
    return {points[static_cast<std::size_t>(best - powers.begin())], *best};
}

Candidate coarsely(const Heard& heard)
{
    constexpr double spacing = 0.025;  // a third of the main lobe at the highest frequencies
    const bool isFlat = std::all_of(heard.array.begin(), heard.array.end(),
                                    [](const Microphone& microphone) { return microphone.z == 0.0; });
    std::vector<Focus> points;
    for (double y = -0.975; y < 1.0; y += spacing) {
        for (double x = -0.975; x < 1.0; x += spacing) {
            if (Focus{x, y}.exists()) {
                points.push_back({x, y});
                if (!isFlat) {
                    points.push_back({x, y, 0.0, -1.0});
                }
            }
        }
    }
    return strongestOf(heard, points);
}

// Steps that shrink whenever the middle is the best place.
Focus strongestSource(const Heard& heard)
{
    Candidate best = coarsely(heard);
    double step = 0.0125;
    double nearnessStep = 0.4;
    while (step > 1e-4) {
        Candidate next = best;
        for (const double nearer : {-nearnessStep, 0.0, nearnessStep}) {
            std::vector<Focus> points;
            for (const double up : {-step, 0.0, step}) {
                for (const double right : {-step, 0.0, step}) {
                    Focus point = best.focus;
                    point.x += right;
                    point.y += up;
                    point.nearness = std::max(0.0, point.nearness + nearer);
                    if (point.exists() && point.nearness < 4.0) {
                        points.push_back(point);
                    }
                }
            }
            if (points.empty()) {
                continue;
            }
            const Candidate found = strongestOf(heard, points);
            if (found.power > next.power) {
                next = found;
            }
        }
        if (next.power <= best.power) {
            step *= 0.5;
            nearnessStep *= 0.5;
        }
        best = next;
    }
    return best.focus;
}

std::vector<double> advancesTo(const Heard& heard, const Focus& focus)
{
    std::vector<double> advances;
    for (const Microphone& microphone : heard.array) {
        advances.push_back(advance(microphone, focus.direction(), focus.distance()));
    }
    return advances;
}

// Per heard microphone: the real part of its cross-spectra with the others' sum, over their magnitudes.
std::vector<float> agreements(const Heard& heard, const std::vector<double>& advances)
{
    const std::size_t count = heard.array.size();
    std::vector<double> inStep(count);
    std::vector<double> magnitudes(count);
    for (const BeamformedBin& bin : heard.bins) {
        std::vector<std::complex<double>> cross(count);
        std::vector<std::complex<double>> steered(count);
        for (int s = 0; s < bin.spectra.snapshots(); ++s) {
            std::complex<double> sum = 0.0;
            for (std::size_t m = 0; m < count; ++m) {
                steered[m] = std::complex<double>(bin.spectra.at(static_cast<int>(m), s)) *
                             std::polar(1.0, fullTurn * bin.frequency * advances[m]);
                sum += steered[m];
            }
            for (std::size_t m = 0; m < count; ++m) {
                cross[m] += steered[m] * std::conj(sum - steered[m]);
            }
        }
        for (std::size_t m = 0; m < count; ++m) {
            inStep[m] += cross[m].real();
            magnitudes[m] += std::abs(cross[m]);
        }
    }
    std::vector<float> agreement;
    for (std::size_t m = 0; m < count; ++m) {
        agreement.push_back(magnitudes[m] > 0.0 ? static_cast<float>(inStep[m] / magnitudes[m]) : 0.0F);
    }
    return agreement;
}

// Share of the pairs that would still agree better than `limit` if they were swapped.
float pairsThatHideASwap(const Heard& heard, const std::vector<double>& advances, float limit)
{
    std::vector<double> powers;
    double sum = 0.0;
    for (const BeamformedBin& bin : heard.bins) {
        double power = 0.0;
        for (std::size_t m = 0; m < heard.array.size(); ++m) {
            power += powerOf(bin.spectra, static_cast<int>(m));
        }
        powers.push_back(power);
        sum += power;
    }
    std::size_t pairs = 0;
    std::size_t alike = 0;
    for (std::size_t m = 0; m < advances.size(); ++m) {
        for (std::size_t n = 0; n < m; ++n) {
            double agreement = 0.0;
            for (std::size_t b = 0; b < powers.size(); ++b) {
                agreement += powers[b] / sum *
                             std::cos(fullTurn * heard.bins[b].frequency * (advances[m] - advances[n]));
            }
            ++pairs;
            alike += agreement > static_cast<double>(limit) ? 1 : 0;
        }
    }
    return static_cast<float>(alike) / static_cast<float>(pairs);
}

}  // namespace

PlacementCheck checkPlacement(ArrayRecording& recording, const std::vector<Microphone>& geometry)
{
    const int blocks =
        static_cast<int>(std::min<std::int64_t>(recording.samples() / blockLength, mostBlocks));
    if (blocks < fewestBlocks) {
        return cannotTell("the recording is too short");
    }
    std::vector<BeamformedBin> bins = readBins(recording, blocks);
    if (bins.empty()) {
        return cannotTell("the recording is silent");
    }
    const Heard heard = withoutSilentOnes(std::move(bins), geometry);
    if (static_cast<int>(heard.channels.size()) < fewestMicrophones) {
        return cannotTell("too few microphones hear anything");
    }
    const std::vector<double> advances = advancesTo(heard, strongestSource(heard));
    const std::vector<float> agreement = agreements(heard, advances);
    const float typical = medianOf(agreement);
    if (!(typical >= clearlyInStep)) {
        return cannotTell("no source stands out clearly enough");
    }
    const float limit = 1.0F - std::max(smallestGap, scatterFactor * (1.0F - typical));

    PlacementCheck check;
    check.alikePairs = pairsThatHideASwap(heard, advances, limit);
    if (check.alikePairs > 0.5F) {
        return cannotTell(
            "the strongest source stands so nearly straight ahead that its sound reaches most microphones "
            "together");
    }
    check.possible = true;
    check.agreement.assign(geometry.size(), std::numeric_limits<float>::quiet_NaN());
    check.passed.assign(geometry.size(), true);
    for (std::size_t i = 0; i < heard.channels.size(); ++i) {
        check.agreement[heard.channels[i]] = agreement[i];
        check.passed[heard.channels[i]] = agreement[i] >= limit;
    }
    return check;
}

}  // namespace kovtools
