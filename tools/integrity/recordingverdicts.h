// The verdicts on a recording, for people and for machines.
#ifndef KOVTOOLS_RECORDINGVERDICTS_H
#define KOVTOOLS_RECORDINGVERDICTS_H

#include <filesystem>
#include <ostream>
#include <string>

#include "tools/recording/recordingpieces.h"

namespace kovtools {

// How many pieces of a recording got which verdict.
struct VerdictCounts
{
    long long complete = 0;
    long long torn = 0;
    long long malformed = 0;
    long long headerDisagreeing = 0;
    // Complete ones before the first fault: all that a reader shows which stops there, as the other commands do.
    long long used = 0;

    void add(Verdict verdict);
    long long faults() const { return torn + malformed + headerDisagreeing; }
    long long total() const { return complete + faults(); }
};

// "header disagreeing"
std::string verdictName(Verdict verdict);

// "record 7", or "what lies at byte 1242" where no record bears a number.
std::string pieceName(const RecordingPiece& piece);

// Writes the verdicts on the recording in `file` to `out`, piece by piece as they are found: however many records
// there are, none is kept. Takes all of `pieces`.
VerdictCounts writeVerdictTable(std::ostream& out, const std::filesystem::path& file, RecordingPieces& pieces,
                                bool faultsOnly);
VerdictCounts writeVerdictJson(std::ostream& out, const std::filesystem::path& file, RecordingPieces& pieces,
                               bool faultsOnly);

}  // namespace kovtools

#endif
