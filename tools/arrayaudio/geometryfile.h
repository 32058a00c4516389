// Arrays other than the instrument's own, from a text file.
#ifndef KOVTOOLS_GEOMETRYFILE_H
#define KOVTOOLS_GEOMETRYFILE_H

#include <filesystem>
#include <vector>

#include "tools/scene/arraygeometry.h"

namespace kovtools {

constexpr int mostMicrophones = 1024;

// One line per channel, in the order of the channels: x y z in metres, separated by blanks, tabs or commas. What
// follows a # is a comment; empty lines do not count. Throws DataError, one sentence that names the line and what is
// wrong with it: not three numbers, farther from the middle than the simulation and the beamformer allow, too many
// lines, none at all.
std::vector<Microphone> readGeometry(const std::filesystem::path& file);

}  // namespace kovtools

#endif
