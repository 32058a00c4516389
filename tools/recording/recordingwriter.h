// Writes a recording through the library's own writer.
#ifndef KOVTOOLS_RECORDINGWRITER_H
#define KOVTOOLS_RECORDINGWRITER_H

#include <KOVDoaHandle/api/results.h>
#include <KOVDoaHandle/result/kovdoaresultserialize.h>

#include <cstdint>
#include <filesystem>
#include <memory>

#include "tools/support/partialfile.h"

namespace kovtools {

// Sizes that all frames of a recording share; those of pictures in pixels.
struct RecordingSizes
{
    int rows;
    int cols;
    int pictureWidth;
    int pictureHeight;
    int fftLength;
};

class RecordingWriter
{
public:
    // The working directory must be a Workspace. `target` appears with finish(). Throws DataError when it cannot be
    // written.
    RecordingWriter(const std::filesystem::path& target, const RecordingSizes& sizes);

    // The frame to fill in; it is of the recording's sizes and is written by save(), as often as that is called.
    EngMapResult& frame() { return *m_frame; }
    void save();

    // Checks that every frame has reached the disk (the library's writer reports no errors), puts the file in its
    // place and returns its size in bytes. Throws DataError.
    std::uint64_t finish();

private:
    struct Release
    {
        void operator()(EngMapResult* frame) const { releaseResultHandle(frame); }
    };

    PartialFile m_file;
    KOVDoaResultSerialize m_writer;
    std::unique_ptr<EngMapResult, Release> m_frame;
    int m_saved = 0;
};

}  // namespace kovtools

#endif
