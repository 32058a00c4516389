// The header of a recording.
#ifndef KOVTOOLS_RECORDINGHEADER_H
#define KOVTOOLS_RECORDINGHEADER_H

#include <cstdint>
#include <string>

#include "tools/recording/filewindow.h"

namespace kovtools {

// The library loads no larger map or spectrum, bytes.
constexpr std::int64_t largestBlock = 16LL * 1024 * 1024;

// What a part of a recording is.
enum class Verdict {
    Complete,           // just what the library's reader expects
    Torn,               // right as far as it goes, but it ends too early
    Malformed,          // something in it cannot be
    HeaderDisagreeing,  // right in itself, with a map or spectrum of another size than the header says
};

struct RecordingHeader
{
    std::string version;
    // What the header says; where it says nothing, what the library then assumes.
    int resRows = 64;
    int resCols = 48;
    int imgRows = 480;
    int imgCols = 640;
    int fftLen = 1024;

    int bins() const { return fftLen / 2 + 1; }
};

struct HeaderFinding
{
    bool isRecording = false;  // begins with a recording's header
    RecordingHeader header;
    Verdict verdict = Verdict::Malformed;  // never HeaderDisagreeing
    std::string reason;                    // why it is not complete
    std::uint64_t end = 0;                 // offset of what follows a complete one
};

// Of a file that is no recording only the first bytes are read.
HeaderFinding readRecordingHeader(FileWindow& window);

// What is wrong with a file whose header is not complete, as the end of a sentence that begins with its name.
std::string headerDamage(const HeaderFinding& finding);

}  // namespace kovtools

#endif
