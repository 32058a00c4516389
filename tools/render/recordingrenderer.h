// Renders a recording: the whole way from its frames to files.
#ifndef KOVTOOLS_RECORDINGRENDERER_H
#define KOVTOOLS_RECORDINGRENDERER_H

#include <filesystem>
#include <functional>
#include <opencv2/core/mat.hpp>
#include <vector>

#include "tools/recording/recording.h"
#include "tools/render/framepainter.h"
#include "tools/render/overlayimager.h"
#include "tools/render/renderoptions.h"
#include "tools/tracking/peakfollower.h"

namespace kovtools {

class RecordingRenderer
{
public:
    // `camera` may be empty. Throws DataError for a recording that cannot be rendered (no complete frame, a
    // map of less than 4 x 4 cells), UsageError for options that do not go with it.
    RecordingRenderer(const Recording& recording, const RenderOptions& options, const cv::Mat& camera);

    // Frames `first` ... `last`, from 1, which exist. Writes them to `output`, and a contact sheet to
    // `contactSheet` unless that is empty. Both appear only when all went well, but for a folder of pictures,
    // which grows. Tracks begin with the recording's first frame, rendered or not. Calls `afterFrame` after each frame.
    // To be called once. Throws DataError.
    void render(int first, int last, const std::filesystem::path& output,
                const std::filesystem::path& contactSheet, const std::function<void()>& afterFrame);

private:
    std::vector<TargetPoint> shownTracks(const EngMapResult& frame);
    FrameNotes notesFor(const EngMapResult& frame, int number) const;

    const Recording& m_recording;
    RenderOptions m_options;
    RegionEllipse m_region;
    OverlayImager m_imager;
    FramePainter m_painter;
    PeakFollower m_follower;
};

// Reads a camera picture of any format. Throws DataError.
cv::Mat readCameraPicture(const std::filesystem::path& file);

}  // namespace kovtools

#endif
