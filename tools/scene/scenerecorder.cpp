#include "tools/scene/scenerecorder.h"

#include <QtCore/QString>

#include <string>

#include "tools/recording/recordingscan.h"
#include "tools/scene/scenesimulation.h"
#include "tools/scene/truth.h"
#include "tools/support/errors.h"
#include "tools/support/workspace.h"

namespace kovtools {

namespace {

constexpr const char* linkName = "simulated.kov";

}  // namespace

SceneRecorder::SceneRecorder(const std::filesystem::path& target, SceneSimulation& scene, bool withPeaks)
    : m_scene(scene),
      m_file(target),
      m_writer(QStringLiteral("cache")),
      m_withPeaks(withPeaks),
      m_truth(describeScene(scene))
{
    const SceneOptions& options = scene.options();
    m_record.reset(createResultHandle(options.rows, options.cols, options.pictureHeight, options.pictureWidth,
                                      options.fftLength));
    Workspace::link(m_file.path(), linkName);
    m_writer.startSave(QString::fromLatin1(linkName), options.rows, options.cols, options.pictureHeight,
                       options.pictureWidth, options.fftLength);
}

void SceneRecorder::record(const std::function<void()>& afterFrame)
{
    int number = 0;
    for (auto frames = m_scene.nextFrames(); !frames.empty(); frames = m_scene.nextFrames()) {
        for (const SimulatedFrame& frame : frames) {
            fillFrameFields(m_scene, frame, *m_record);
            if (m_withPeaks) {
                m_peaks.mark(*m_record);
            }
            m_writer.Save(m_record.get());
            m_truth["frames"].push_back(describeSources(m_scene, frame, ++number));
            afterFrame();
        }
    }
}

std::uint64_t SceneRecorder::finish()
{
    const RecordingScan scan = scanRecordingFile(m_file.path());
    if (!scan.isWhole() || scan.completeRecords != m_scene.options().frames) {
        throw DataError("the recording could not be written completely (is the disk full?)");
    }
    m_file.commit();
    return scan.bytes;
}

}  // namespace kovtools
