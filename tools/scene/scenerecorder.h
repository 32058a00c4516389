// Records a simulated scene through the library's own writer.
#ifndef KOVTOOLS_SCENERECORDER_H
#define KOVTOOLS_SCENERECORDER_H

#include <cstdint>
#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>

#include "tools/recording/recordingwriter.h"
#include "tools/scene/framefields.h"

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

    // Puts the file in its place and returns its size in bytes. Throws DataError.
    std::uint64_t finish() { return m_writer.finish(); }

private:
    SceneSimulation& m_scene;
    RecordingWriter m_writer;
    PeakMarker m_peaks;
    bool m_withPeaks;
    nlohmann::ordered_json m_truth;
};

}  // namespace kovtools

#endif
