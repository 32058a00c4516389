#include "tools/cli/dischargeoptions.h"

#include <charconv>
#include <string>

namespace kovtools {

namespace {

constexpr int mostChannels = 1024;  // libsndfile's own limit

}  // namespace

void addMains(const CommandSyntax& command, Mains& mains)
{
    const auto read = [&mains](const std::string& text) {
        if (text != "50" && text != "60") {
            refuse("--mains", "'" + text + "' is not one of 50, 60");
        }
        mains = text == "60" ? Mains::Hz60 : Mains::Hz50;
    };
    command.addOption("--mains", read, "Mains frequency, Hz: 50 or 60")
        .kind("HZ")
        .shownDefault(std::to_string(frequencyOf(mains)));
}

void addSoundChannel(const CommandSyntax& command, int& channel)
{
    const auto read = [&channel](const std::string& text) {
        int number = 0;
        const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error != std::errc() || stop != text.data() + text.size() || number < 1 ||
            number > mostChannels) {
            refuse("--channel",
                   "'" + text + "' is not a whole number from 1 to " + std::to_string(mostChannels));
        }
        channel = number - 1;
    };
    command.addOption("--channel", read, "Channel of the sound file, from 1")
        .kind("N")
        .shownDefault(std::to_string(channel + 1));
}

}  // namespace kovtools
