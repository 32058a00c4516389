// What the simulation of array audio knows and its files do not tell.
#ifndef KOVTOOLS_ARRAYTRUTH_H
#define KOVTOOLS_ARRAYTRUTH_H

#include <nlohmann/json.hpp>

namespace kovtools {

class FieldOfView;
struct ArraySimulationOptions;

// The sources with their places (also as fractions u, v of the picture's width and height, null behind the picture
// plane), the positions of the microphones, and what was broken.
nlohmann::ordered_json describeArray(const ArraySimulationOptions& options, std::int64_t samples,
                                     const FieldOfView& view);

}  // namespace kovtools

#endif
