#include "tools/scene/scenerecorder.h"

#include "tools/scene/scenesimulation.h"
#include "tools/scene/truth.h"

namespace kovtools {

namespace {

RecordingSizes sizesOf(const SceneOptions& options)
{
    return {options.rows, options.cols, options.pictureWidth, options.pictureHeight, options.fftLength};
}

}  // namespace

SceneRecorder::SceneRecorder(const std::filesystem::path& target, SceneSimulation& scene, bool withPeaks)
    : m_scene(scene),
      m_writer(target, sizesOf(scene.options())),
      m_withPeaks(withPeaks),
      m_truth(describeScene(scene))
{
}

void SceneRecorder::record(const std::function<void()>& afterFrame)
{
    const FrameContext context{m_scene.firstBandBin(), m_scene.lastBandBin(),
                               static_cast<float>(sceneDistance)};
    int number = 0;
    for (auto frames = m_scene.nextFrames(); !frames.empty(); frames = m_scene.nextFrames()) {
        for (const SimulatedFrame& frame : frames) {
            fillFrameFields(context, frame.map, frame.spectrum, m_writer.frame());
            if (m_withPeaks) {
                m_peaks.mark(m_writer.frame());
            }
            m_writer.save();
            m_truth["frames"].push_back(describeSources(m_scene, frame, ++number));
            afterFrame();
        }
    }
}

}  // namespace kovtools
