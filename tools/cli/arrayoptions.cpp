#include "tools/cli/arrayoptions.h"

#include <filesystem>
#include <string>
#include <system_error>

#include "tools/arrayaudio/arrayrecording.h"
#include "tools/arrayaudio/geometryfile.h"
#include "tools/cli/optiontypes.h"
#include "tools/support/errors.h"
#include "tools/support/filepaths.h"
#include "tools/support/inquotes.h"
#include "tools/support/wording.h"

namespace kovtools {

void addArrayOptions(const CommandSyntax& command, ArrayChoice& choice)
{
    addInteger(command, "--channels", choice.channels, 1, mostMicrophones,
               "Number of microphones (default: as many as the geometry has)")
        .shownDefault("");
    addPath(command, "--geometry", choice.geometry, "FILE",
            "Positions of another array: a line 'x y z' per channel, metres (default: the array of 208)");
}

std::vector<Microphone> chosenArray(const ArrayChoice& choice)
{
    std::vector<Microphone> array =
        choice.geometry.empty() ? sunflowerSpiral() : readGeometry(choice.geometry);
    const int positions = static_cast<int>(array.size());
    if (choice.channels != 0 && choice.channels != positions) {
        throw UsageError(choice.geometry.empty()
                             ? "an array of " + counted(choice.channels, "channel") +
                                   " needs its positions; give them with --geometry"
                             : inQuotes(choice.geometry) + " has positions for " +
                                   counted(positions, "channel") + ", but --channels says " +
                                   std::to_string(choice.channels));
    }
    return array;
}

void addSetAsInput(FilesOfCommand& files, const std::string& role, const std::filesystem::path& folder,
                   int channels)
{
    files.addInput(role, folder);
    for (int i = 0; i < filesOfSet(mostMicrophones); ++i) {
        // A geometry may name fewer microphones than the folder holds; the others are recordings too.
        const std::filesystem::path file = fileOfSet(folder, i);
        std::error_code error;
        if (i < filesOfSet(channels) || std::filesystem::exists(file, error)) {
            files.addInput(role, file);
        }
    }
}

void addSetAsOutput(FilesOfCommand& files, const std::string& role, const std::filesystem::path& folder,
                    int channels)
{
    files.addOutput(role, folder);
    for (int i = 0; i < filesOfSet(channels); ++i) {
        files.addOutput(role, fileOfSet(folder, i));
    }
}

}  // namespace kovtools
