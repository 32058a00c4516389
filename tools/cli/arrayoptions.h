// Options of the commands that work on array audio: which array it is.
#ifndef KOVTOOLS_ARRAYOPTIONS_H
#define KOVTOOLS_ARRAYOPTIONS_H

#include <filesystem>
#include <vector>

#include "tools/cli/commandsyntax.h"
#include "tools/scene/arraygeometry.h"

namespace kovtools {

class FilesOfCommand;

struct ArrayChoice
{
    int channels = 0;  // 0: not given
    std::filesystem::path geometry;
};

// --channels and --geometry.
void addArrayOptions(const CommandSyntax& command, ArrayChoice& choice);

// The instrument's own array, or the one of the file. Throws UsageError when the number of channels does not fit,
// DataError when the file is bad.
std::vector<Microphone> chosenArray(const ArrayChoice& choice);

// The WAV files of a set of `channels` in `folder`, and the folder itself, under the role `role`; as input also the
// files of a larger set that stand there.
void addSetAsInput(FilesOfCommand& files, const std::string& role, const std::filesystem::path& folder,
                   int channels);
void addSetAsOutput(FilesOfCommand& files, const std::string& role, const std::filesystem::path& folder,
                    int channels);

}  // namespace kovtools

#endif
