#include "tools/arrayaudio/brokenmicrophones.h"

#include <charconv>
#include <set>

#include "tools/support/errors.h"

namespace kovtools {

namespace {

bool readNumber(const std::string& text, int& number)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && number >= 0;
}

// Takes each microphone once.
class Roll
{
public:
    explicit Roll(int channels) : m_channels(channels) {}

    void take(int microphone)
    {
        exists(microphone);
        if (!m_taken.insert(microphone).second) {
            throw UsageError("microphone " + std::to_string(microphone) +
                             " is to be broken in two ways at once");
        }
    }

    // One whose signal is copied has to be whole, but may be copied several times.
    void needWhole(int microphone) const
    {
        exists(microphone);
        if (m_taken.count(microphone) != 0) {
            throw UsageError("microphone " + std::to_string(microphone) +
                             " is to be duplicated and broken at once");
        }
    }

private:
    void exists(int microphone) const
    {
        if (microphone >= m_channels) {
            throw UsageError("there is no microphone " + std::to_string(microphone) +
                             "; they are numbered 0 to " + std::to_string(m_channels - 1));
        }
    }

    int m_channels;
    std::set<int> m_taken;
};

}  // namespace

void BrokenMicrophones::check(int channels) const
{
    Roll roll(channels);
    for (const int microphone : dead) {
        roll.take(microphone);
    }
    for (const MicrophonePair& pair : duplicates) {
        roll.take(pair.first);
    }
    for (const MicrophonePair& pair : swaps) {
        roll.take(pair.first);
        roll.take(pair.second);
    }
    for (const MicrophonePair& pair : duplicates) {
        roll.needWhole(pair.second);
    }
}

int parseMicrophone(const std::string& option, const std::string& text)
{
    int number = 0;
    if (!readNumber(text, number)) {
        throw UsageError(option + ": '" + text + "' is not the number of a microphone");
    }
    return number;
}

MicrophonePair parsePair(const std::string& option, const std::string& text, char separator)
{
    MicrophonePair pair{};
    const std::size_t at = text.find(separator);
    if (at == std::string::npos || !readNumber(text.substr(0, at), pair.first) ||
        !readNumber(text.substr(at + 1), pair.second)) {
        throw UsageError(option + ": '" + text + "' is not two microphones such as 3" + separator + "4");
    }
    return pair;
}

}  // namespace kovtools
