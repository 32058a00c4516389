#include "tools/render/recordingrenderer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <optional>
#include <utility>
#include <vector>

#include "tools/pictures/picturecodec.h"
#include "tools/render/contactsheet.h"
#include "tools/render/framesink.h"
#include "tools/support/errors.h"
#include "tools/support/inquotes.h"
#include "tools/support/partialfile.h"
#include "tools/support/silence.h"

namespace kovtools {

namespace {

constexpr int smallestMap = 4;  // rows and columns; the peak search reads that far

// Before anything is created from the sizes that the file claims.
const Recording& checkedForRendering(const Recording& recording)
{
    const RecordingScan& scan = recording.scan();
    if (recording.frames() == 0) {
        const std::string complaint = recording.complaint();
        throw DataError(complaint.empty() ? inQuotes(recording.path()) + " holds no frames" : complaint);
    }
    if (scan.resRows < smallestMap || scan.resCols < smallestMap) {
        throw DataError(inQuotes(recording.path()) + " has maps of " + std::to_string(scan.resRows) + " x " +
                        std::to_string(scan.resCols) + " cells; at least 4 x 4 are needed to render it");
    }
    return recording;
}

std::string captionFor(int number, int frames, double frameRate)
{
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "frame %d/%d   %.2f s", number, frames, (number - 1) / frameRate);
    return text.data();
}

}  // namespace

RecordingRenderer::RecordingRenderer(const Recording& recording, const RenderOptions& options,
                                     const cv::Mat& camera)
    : m_recording(checkedForRendering(recording)),
      m_options(options),
      m_region(regionEllipse(options, recording.scan().resRows, recording.scan().resCols)),
      m_imager(options, m_region),
      m_painter(options, m_region, camera),
      m_follower({options.minimumLevel, options.trackedPeaks})
{
}

// The tracks after one frame more, without those that lie outside what is shown.
std::vector<TargetPoint> RecordingRenderer::shownTracks(const EngMapResult& frame)
{
    std::vector<TargetPoint> tracks = m_follower.follow(frame);
    const int rows = frame.ResEngMap->rows;
    const int cols = frame.ResEngMap->cols;
    const auto isHidden = [&](const TargetPoint& track) {
        const bool isOnMap = track.row >= 0 && track.row < rows && track.col >= 0 && track.col < cols;
        const bool isShown =
            !m_region.active || m_options.outside || m_region.contains(track.row, track.col, rows, cols);
        return !isOnMap || !isShown;
    };
    tracks.erase(std::remove_if(tracks.begin(), tracks.end(), isHidden), tracks.end());
    return tracks;
}

FrameNotes RecordingRenderer::notesFor(const EngMapResult& frame, int number) const
{
    FrameNotes notes;
    notes.caption = captionFor(number, m_recording.frames(), m_options.frameRate);
    notes.range = colourRange(frame, m_options);
    notes.marks = cursorMarks(frame, m_options, m_region);
    notes.mapRows = frame.ResEngMap->rows;
    notes.mapCols = frame.ResEngMap->cols;
    return notes;
}

void RecordingRenderer::render(int first, int last, const std::filesystem::path& output,
                               const std::filesystem::path& contactSheet,
                               const std::function<void()>& afterFrame)
{
    std::vector<int> onSheet;
    std::optional<PartialFile> sheetFile;  // opened before the long work: better refused now than after it
    if (!contactSheet.empty()) {
        onSheet = evenlySpread(first, last);
        sheetFile.emplace(contactSheet);
    }
    ContactSheet sheet(static_cast<int>(onSheet.size()), m_options.picture);
    const std::unique_ptr<FrameSink> sink = openFrameSink(output, m_options.picture, m_options.frameRate);
    for (int number = 1; m_options.track && number < first; ++number) {
        m_follower.follow(m_recording.frame(number - 1));
    }
    for (int number = first; number <= last; ++number) {
        EngMapResult& frame = m_recording.frame(number - 1);
        // Before the imager adds the peaks that it finds.
        std::vector<TargetPoint> tracks = m_options.track ? shownTracks(frame) : std::vector<TargetPoint>();
        cv::Mat picture = m_painter.compose(m_imager.render(frame));
        FrameNotes notes = notesFor(frame, number);
        notes.tracks = std::move(tracks);
        if (std::find(onSheet.begin(), onSheet.end(), number) != onSheet.end()) {
            cv::Mat tile;
            cv::resize(picture, tile, sheet.tileSize(), 0.0, 0.0, cv::INTER_AREA);
            m_painter.annotate(tile, notes);
            sheet.add(tile);
        }
        m_painter.annotate(picture, notes);
        sink->add(picture, number);
        afterFrame();
    }
    if (sheetFile) {
        writePng(*sheetFile, sheet.picture());
    }
    sink->finish();
    if (sheetFile) {
        sheetFile->commit();
    }
}

cv::Mat readCameraPicture(const std::filesystem::path& file)
{
    const std::string bytes = readWholeFile(file);
    const SilencedStderr silenced;
    cv::Mat picture = pictureCodec().decode(bytes);
    if (picture.empty()) {
        throw DataError(inQuotes(file) + " is not a picture that can be read");
    }
    return picture;
}

}  // namespace kovtools
