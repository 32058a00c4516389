#include "tools/audio/microphonecheck.h"

#include <KOVDoaHandle/KOVAudio/kovmultmiccheck.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>

#include "tools/arrayaudio/arrayrecording.h"
#include "tools/arrayaudio/placementcheck.h"
#include "tools/scene/arraygeometry.h"
#include "tools/support/errors.h"

namespace kovtools {

namespace {

constexpr int mostSamples = 96000;   // of each microphone that the library's check keeps
constexpr int leastSamples = 48000;  // below which its tests give no answer
constexpr int readingBlock = 4000;   // samples; divides both

// The pairs that the library's alignment test compares. Nothing is compared with microphones beyond these.
constexpr std::array<std::array<int, 2>, 4> alignedPairs{{{0, 4}, {1, 5}, {2, 7}, {3, 6}}};

using Microphones = std::vector<MicrophoneResult>;

MicrophoneResult& at(Microphones& microphones, int number)
{
    return microphones[static_cast<std::size_t>(number)];
}

// A fingerprint of a signal that is the same for the same samples only (FNV-1a: G. Fowler, L. C. Noll, K.-P. Vo).
class Fingerprint
{
public:
    void add(const float* samples, int count)
    {
        for (int i = 0; i < count; ++i) {
            std::uint32_t bits = 0;
            std::memcpy(&bits, samples + i, sizeof bits);
            m_value = (m_value ^ bits) * 0x100000001B3U;
        }
    }

    std::uint64_t value() const { return m_value; }

private:
    std::uint64_t m_value = 0xCBF29CE484222325U;
};

void checkRecording(const ArrayRecording& recording)
{
    if (recording.channels() != arrayMicrophones) {
        throw DataError("the check is for arrays of " + std::to_string(arrayMicrophones) + " microphones");
    }
    if (recording.samples() < leastSamples) {
        const std::string complaint = recording.complaint();
        throw DataError("the recording holds " + std::to_string(recording.samples()) +
                        " samples of each microphone; the check needs " + std::to_string(leastSamples) +
                        " (half a second at 96000 Hz)" + (complaint.empty() ? "" : "; " + complaint));
    }
}

// Reads the beginning of the recording into the library's check, and takes a fingerprint of each microphone.
std::vector<Fingerprint> fill(KOVMultMicCheck& check, ArrayRecording& recording, int samples)
{
    std::vector<std::vector<float>> block(arrayMicrophones, std::vector<float>(readingBlock));
    std::vector<float*> rows;
    for (std::vector<float>& row : block) {
        rows.push_back(row.data());
    }
    std::vector<Fingerprint> fingerprints(arrayMicrophones);
    for (int first = 0; first < samples; first += readingBlock) {
        const int count = std::min(readingBlock, samples - first);
        recording.read(first, count, rows.data());
        check.fillAudio(rows.data(), count);
        for (std::size_t microphone = 0; microphone < rows.size(); ++microphone) {
            fingerprints[microphone].add(rows[microphone], count);
        }
    }
    return fingerprints;
}

TestResult resultOf(const MicCheckResult& results, int microphone)
{
    return {results.values[microphone], results.flags[microphone]};
}

void runLibraryTests(KOVMultMicCheck& check, Microphones& microphones)
{
    const MicCheckResult level = check.checkRMS();
    const MicCheckResult distinct = check.checkSame();
    const MicCheckResult alignment = check.checkXcorr();
    for (int number = 0; number < arrayMicrophones; ++number) {
        at(microphones, number).level = resultOf(level, number);
        at(microphones, number).distinct = resultOf(distinct, number);
    }
    for (const std::array<int, 2>& pair : alignedPairs) {
        for (const int number : pair) {
            at(microphones, number).alignment = resultOf(alignment, number);
        }
    }
}

void findCopies(const std::vector<Fingerprint>& fingerprints, Microphones& microphones)
{
    std::map<std::uint64_t, int> firstOf;
    for (int number = 0; number < arrayMicrophones; ++number) {
        const std::uint64_t value = fingerprints[static_cast<std::size_t>(number)].value();
        const auto [first, isNew] = firstOf.emplace(value, number);
        if (!isNew) {
            at(microphones, number).copyOf = first->second;
            at(microphones, first->second).copyOf = number;
        }
    }
}

void runPlacementTest(ArrayRecording& recording, ArrayCheck& check)
{
    const PlacementCheck placement = checkPlacement(recording, sunflowerSpiral());
    if (!placement.possible) {
        check.placementReason = placement.reason;
        return;
    }
    for (std::size_t i = 0; i < check.microphones.size(); ++i) {
        if (std::isfinite(placement.agreement[i])) {  // silence has no place
            check.microphones[i].placement = TestResult{placement.agreement[i], placement.passed[i]};
        }
    }
}

bool isMisplaced(const MicrophoneResult& microphone)
{
    return microphone.placement && !microphone.placement->passed;
}

// Neighbours that the library cannot tell apart although both are loud enough: not the same samples, or there would be
// a copy already, but the same magnitudes, as of one signal and its inverse.
void takeEqualNeighboursForCopies(Microphones& microphones)
{
    for (int first = 0; first + 1 < static_cast<int>(microphones.size()); first += 2) {
        MicrophoneResult& one = at(microphones, first);
        MicrophoneResult& other = at(microphones, first + 1);
        if (one.distinct.passed || !one.level.passed || !other.level.passed) {
            continue;
        }
        if (one.copyOf < 0) {
            one.copyOf = first + 1;
        }
        if (other.copyOf < 0) {
            other.copyOf = first;
        }
    }
}

// Of two with the same signal, the one that is out of its place is the copy; where the places do not tell, both are
// suspect.
void blameCopies(Microphones& microphones)
{
    for (MicrophoneResult& microphone : microphones) {
        if (microphone.fault != Fault::None || microphone.copyOf < 0) {
            continue;
        }
        if (isMisplaced(microphone) || !isMisplaced(at(microphones, microphone.copyOf))) {
            microphone.fault = Fault::Copy;
        }
    }
}

// A lag too long is a fault of both, unless one of them has another fault that explains it.
void blameMisaligned(Microphones& microphones)
{
    for (const std::array<int, 2>& pair : alignedPairs) {
        MicrophoneResult& one = at(microphones, pair[0]);
        MicrophoneResult& other = at(microphones, pair[1]);
        if (one.fault != Fault::None || other.fault != Fault::None) {
            continue;
        }
        for (MicrophoneResult* const microphone : {&one, &other}) {
            if (microphone->alignment && !microphone->alignment->passed) {
                microphone->fault = Fault::Misaligned;
            }
        }
    }
}

}  // namespace

std::string faultName(Fault fault)
{
    switch (fault) {
        case Fault::None:
            break;
        case Fault::Silent:
            return "silent";
        case Fault::Copy:
            return "copy";
        case Fault::Misplaced:
            return "misplaced";
        case Fault::Misaligned:
            return "misaligned";
    }
    return "ok";
}

std::vector<int> ArrayCheck::failing() const
{
    std::vector<int> numbers;
    for (std::size_t i = 0; i < microphones.size(); ++i) {
        if (microphones[i].fault != Fault::None) {
            numbers.push_back(static_cast<int>(i));
        }
    }
    return numbers;
}

ArrayCheck checkArray(ArrayRecording& recording, bool placement)
{
    checkRecording(recording);
    ArrayCheck result;
    result.samples = static_cast<int>(std::min<std::int64_t>(recording.samples(), mostSamples));
    result.sampleRate = recording.sampleRate();
    result.microphones.resize(arrayMicrophones);
    {
        KOVMultMicCheck check;
        findCopies(fill(check, recording, result.samples), result.microphones);
        runLibraryTests(check, result.microphones);
    }
    if (placement) {
        runPlacementTest(recording, result);
    } else {
        result.placementReason = "not asked for";
    }
    findFaults(result.microphones);
    return result;
}

void findFaults(Microphones& microphones)
{
    for (MicrophoneResult& microphone : microphones) {
        if (!microphone.level.passed) {
            microphone.fault = Fault::Silent;
            microphone.copyOf = -1;  // silence is everywhere the same
        }
    }
    takeEqualNeighboursForCopies(microphones);
    blameCopies(microphones);
    for (MicrophoneResult& microphone : microphones) {
        if (microphone.fault == Fault::None && isMisplaced(microphone)) {
            microphone.fault = Fault::Misplaced;
        }
    }
    blameMisaligned(microphones);
}

}  // namespace kovtools
