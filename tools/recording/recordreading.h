// One record of a recording: is it what the library's reader expects?
#ifndef KOVTOOLS_RECORDREADING_H
#define KOVTOOLS_RECORDREADING_H

#include <cstdint>
#include <optional>
#include <string>

#include "tools/recording/filewindow.h"
#include "tools/recording/recordingheader.h"

namespace kovtools {

struct RecordFinding
{
    Verdict verdict = Verdict::Malformed;
    std::optional<int> number;  // that it bears
    std::uint64_t end = 0;      // offset behind it; of a torn or malformed one, as far as it could be read
    std::string reason;         // why it is not complete; empty for one that is
};

// Reads the record that should begin at `from`. What lies from `end` on is not looked at: a record that needs it is
// torn.
RecordFinding readRecord(FileWindow& window, std::uint64_t from, std::uint64_t end,
                         const RecordingHeader& header);

// Offset of the next first line of a record from `from` on, or `end`. It need not stand at the beginning of a line:
// records have been appended to torn ones.
std::uint64_t findRecordStart(FileWindow& window, std::uint64_t from, std::uint64_t end);

}  // namespace kovtools

#endif
