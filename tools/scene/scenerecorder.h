// Records a simulated scene through the library's own writer.
#ifndef KOVTOOLS_SCENERECORDER_H
#define KOVTOOLS_SCENERECORDER_H

#include <KOVDoaHandle/api/results.h>
#include <KOVDoaHandle/result/kovdoaresultserialize.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>

#include "tools/scene/framefields.h"
#include "tools/support/partialfile.h"

namespace kovtools {

class SceneSimulation;

class SceneRecorder
{
public:
    // The working directory must be a Workspace. `target` appears with finish(). Throws DataError when it
    // cannot be written. `withPeaks`: stores the peaks of each frame.
    SceneRecorder(const std::filesystem::path& target, SceneSimulation& scene, bool withPeaks);

    // Simulates and records the whole scene; calls `afterFrame` after each frame.
    void record(const std::function<void()>& afterFrame);

    // Where the sources were, frame by frame.
    const nlohmann::ordered_json& truth() const { return m_truth; }

    // Checks that every frame has reached the disk (the writer reports no errors), puts the file in its place
    // and returns its size in bytes. Throws DataError.
    std::uint64_t finish();

private:
    struct Release
    {
        void operator()(EngMapResult* record) const { releaseResultHandle(record); }
    };

    SceneSimulation& m_scene;
    PartialFile m_file;
    KOVDoaResultSerialize m_writer;
    std::unique_ptr<EngMapResult, Release> m_record;
    PeakMarker m_peaks;
    bool m_withPeaks;
    nlohmann::ordered_json m_truth;
};

}  // namespace kovtools

#endif
