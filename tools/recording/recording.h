// A recording, loaded through the library's plain exports.
#ifndef KOVTOOLS_RECORDING_H
#define KOVTOOLS_RECORDING_H

#include <KOVDoaHandle/api/resultfile.h>

#include <filesystem>
#include <memory>

#include "tools/recording/recordingscan.h"

namespace kovtools {

class Recording
{
public:
    // Loads the file at `path` (absolute) and waits for the end of that. The working directory must be a
    // Workspace: the frames live in its cache folder. Throws DataError when the file is missing or is no
    // recording; one that is cut off or damaged gives the frames before that, see scan().
    explicit Recording(const std::filesystem::path& path);

    const std::filesystem::path& path() const { return m_path; }
    const RecordingScan& scan() const { return m_scan; }

    // The sentence about why there is less than the file should hold: it is damaged, or the temporary folder had
    // no room for all of its frames. Empty when all is well.
    std::string complaint() const;

    // Loaded ones; fewer than scan() counts when there was no room for more.
    int frames() const { return m_frames; }

    // Frame `index`, from 0; its map and spectrum have the header's sizes. Throws DataError when the frame's
    // memory could not be had.
    EngMapResult& frame(int index) const;

private:
    struct Close
    {
        void operator()(KOVDoaResultSerialize* recording) const { destoryResultSerializeHandle(recording); }
    };

    std::filesystem::path m_path;
    RecordingScan m_scan;
    std::unique_ptr<KOVDoaResultSerialize, Close> m_handle;
    int m_frames = 0;
};

}  // namespace kovtools

#endif
