// A recording taken apart: every record of it, and what lies between them where it is damaged.
#ifndef KOVTOOLS_RECORDINGPIECES_H
#define KOVTOOLS_RECORDINGPIECES_H

#include <cstdint>
#include <istream>
#include <optional>
#include <string>

#include "tools/recording/filewindow.h"
#include "tools/recording/recordingheader.h"

namespace kovtools {

// A stretch of the file that begins with a record, complete or not, or where one should begin.
struct RecordingPiece
{
    Verdict verdict = Verdict::Malformed;
    std::optional<int> number;  // of the record; none when it bears none, or none begins here
    std::uint64_t offset = 0;   // in the file
    std::uint64_t bytes = 0;
    std::string reason;  // why it is not complete, as a sentence without its full stop; empty for one that is
};

class RecordingPieces
{
public:
    // `stream`: binary, seekable; read in windows, whatever its size. Reads the header.
    explicit RecordingPieces(std::istream& stream);

    const HeaderFinding& header() const { return m_header; }
    std::uint64_t fileBytes() const { return m_window.size(); }

    // The pieces from the header's end to the file's end, without a gap; then nothing. Behind a damaged place it goes
    // on at the next first line of a record. Nothing from the start when the header is not complete, because records
    // say nothing without it. Throws Interrupted after Ctrl-C.
    std::optional<RecordingPiece> next();

private:
    FileWindow m_window;
    HeaderFinding m_header;
    std::uint64_t m_position;
};

}  // namespace kovtools

#endif
