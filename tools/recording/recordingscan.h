// A look at a recording's structure, independent of the library's reader.
#ifndef KOVTOOLS_RECORDINGSCAN_H
#define KOVTOOLS_RECORDINGSCAN_H

#include <cstdint>
#include <filesystem>
#include <istream>
#include <string>

namespace kovtools {

// The library loads what it can from a file and does not say where it stopped, or why. This walk over the
// records finds that out, so that a recording which was cut off is neither taken for a whole one nor thrown
// away.
struct RecordingScan
{
    bool isRecording = false;  // begins with a recording's header
    std::string version;
    // What the header says; where it says nothing, what the library then assumes.
    int resRows = 64;
    int resCols = 48;
    int imgRows = 480;
    int imgCols = 640;
    int fftLen = 1024;
    int completeRecords = 0;
    std::uint64_t bytes = 0;
    // What is wrong with the file, as the end of a sentence that begins with its name; empty when it is
    // whole.
    std::string damage;

    bool isWhole() const { return isRecording && damage.empty(); }
};

// `stream`: binary, can be rewound; read from its beginning in pieces. A file that is no recording is given up
// after its first piece.
RecordingScan scanRecording(std::istream& stream);

// Throws DataError when the file is missing, unreadable or no regular file.
RecordingScan scanRecordingFile(const std::filesystem::path& file);

}  // namespace kovtools

#endif
