// How far a recording is whole.
#ifndef KOVTOOLS_RECORDINGSCAN_H
#define KOVTOOLS_RECORDINGSCAN_H

#include <cstdint>
#include <filesystem>
#include <istream>
#include <string>

#include "tools/recording/recordingheader.h"

namespace kovtools {

// The library loads what it can from a file and does not say where it stopped, or why. This walk over the
// records finds that out, so that a recording which was cut off is neither taken for a whole one nor thrown
// away. It ends at the first record that is not complete; RecordingPieces goes on behind it.
struct RecordingScan : RecordingHeader
{
    bool isRecording = false;  // begins with a recording's header
    int completeRecords = 0;
    std::uint64_t bytes = 0;
    // What is wrong with the file, as the end of a sentence that begins with its name; empty when it is
    // whole.
    std::string damage;

    bool isWhole() const { return isRecording && damage.empty(); }
};

// `stream`: binary, seekable; read in pieces. A file that is no recording is given up after its first piece.
RecordingScan scanRecording(std::istream& stream);

// Throws DataError when the file is missing, unreadable or no regular file.
RecordingScan scanRecordingFile(const std::filesystem::path& file);

}  // namespace kovtools

#endif
