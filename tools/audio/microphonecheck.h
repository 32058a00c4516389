// The self-test of the microphone array: the library's three tests and the program's own, and what they amount to.
#ifndef KOVTOOLS_MICROPHONECHECK_H
#define KOVTOOLS_MICROPHONECHECK_H

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace kovtools {

class ArrayRecording;

// What is wrong with a microphone.
enum class Fault {
    None,
    Silent,     // its level is below the floor
    Copy,       // it gives the very signal of another one
    Misplaced,  // its signal belongs to another place of the array
    Misaligned  // it lags behind its partner by more than sound does across the array
};

constexpr std::array<Fault, 4> everyFault{Fault::Silent, Fault::Copy, Fault::Misplaced, Fault::Misaligned};

std::string faultName(Fault fault);  // "silent" and so on; "ok" for none

struct TestResult
{
    float value = 0.0F;
    bool passed = true;
};

struct MicrophoneResult
{
    // The library's tests.
    TestResult level;     // dB above a millionth of full scale; more than 30 passes
    TestResult distinct;  // sum of magnitudes until it differs from the neighbour's, library's scale
    std::optional<TestResult> alignment;  // lag behind the partner, samples; microphones 0 to 7 only

    // The program's own. Placement is the agreement with the wave that all the others hear: 1 is in step. Silence has
    // none.
    std::optional<TestResult> placement;
    int copyOf = -1;  // the other microphone with the same samples; -1: none

    Fault fault = Fault::None;
};

struct ArrayCheck
{
    int samples = 0;              // of each microphone that were looked at
    int sampleRate = 0;           // Hz
    std::string placementReason;  // why the places cannot be checked; empty when they were
    std::vector<MicrophoneResult> microphones;

    std::vector<int> failing() const;  // in order
};

// Checks the first second. `placement` says whether the microphones stand as the documented geometry says; without it
// that is not looked at. Throws DataError when the recording is not one of 208 microphones, is too short or cannot be
// read.
ArrayCheck checkArray(ArrayRecording& recording, bool placement);

// Finds the microphones that are to blame for the tests that failed; a test of a pair alone does not tell which of
// the two it is. Fills in the faults.
void findFaults(std::vector<MicrophoneResult>& microphones);

}  // namespace kovtools

#endif
