// Microphones that the simulation breaks, so that a check of the array has something to find.
#ifndef KOVTOOLS_BROKENMICROPHONES_H
#define KOVTOOLS_BROKENMICROPHONES_H

#include <string>
#include <vector>

namespace kovtools {

struct MicrophonePair
{
    int first;
    int second;
};

struct BrokenMicrophones
{
    std::vector<int> dead;                   // nothing left but the noise of their converters
    std::vector<MicrophonePair> duplicates;  // the first carries the second's signal
    std::vector<MicrophonePair> swaps;       // each carries the other's signal

    bool any() const { return !dead.empty() || !duplicates.empty() || !swaps.empty(); }

    // Throws UsageError when one is not among `channels` microphones, or is named in two ways at once: then nobody
    // could say what is to become of it.
    void check(int channels) const;
};

// "12" and "3=4" or "3:4", by `separator`. Throws UsageError that begins with `option`.
int parseMicrophone(const std::string& option, const std::string& text);
MicrophonePair parsePair(const std::string& option, const std::string& text, char separator);

}  // namespace kovtools

#endif
