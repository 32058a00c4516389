// From a simulated frame to the record that is written: extremes, median, levels and peaks.
#ifndef KOVTOOLS_FRAMEFIELDS_H
#define KOVTOOLS_FRAMEFIELDS_H

#include <vector>

#include <KOVDoaHandle/imaging/engmapresult.h>

namespace kovtools {

class SceneSimulation;
struct SimulatedFrame;

// Fills every field of `record` but the peaks, which become empty. The record has the map and spectrum size
// of the scene.
void fillFrameFields(const SceneSimulation& scene, const SimulatedFrame& frame, EngMapResult& record);

// Stores the strongest peaks of the frames and gives each the identity of the nearest peak of the frame
// before.
class PeakMarker
{
public:
    void mark(EngMapResult& record);

private:
    std::vector<TargetPoint> m_before;
    int m_identities = 0;
};

}  // namespace kovtools

#endif
