// What the simulation knows and the recording does not tell: where the sources were.
#ifndef KOVTOOLS_TRUTH_H
#define KOVTOOLS_TRUTH_H

#include <nlohmann/json.hpp>

namespace kovtools {

class SceneSimulation;
struct SimulatedFrame;

// The scene's parameters, with an empty list "frames".
nlohmann::ordered_json describeScene(const SceneSimulation& scene);

// One element of "frames": number (from 1) and each source's position on the map, in the picture and as an
// angle.
nlohmann::ordered_json describeSources(const SceneSimulation& scene, const SimulatedFrame& frame, int number);

}  // namespace kovtools

#endif
