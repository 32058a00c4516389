#include "tools/recording/recordingscan.h"

#include <fstream>

#include "tools/recording/filewindow.h"
#include "tools/recording/recordreading.h"
#include "tools/support/errors.h"
#include "tools/support/inquotes.h"
#include "tools/support/partialfile.h"

namespace kovtools {

namespace {

std::string recordsBefore(int records)
{
    if (records == 0) {
        return "no record before that is complete";
    }
    return records == 1 ? "the one complete record before that is used"
                        : "the " + std::to_string(records) + " complete records before that are used";
}

std::string recordDamage(const RecordFinding& finding, int recordsBeforeIt)
{
    const std::string record = "record " + std::to_string(recordsBeforeIt + 1);
    const std::string place = finding.verdict == Verdict::Torn
                                  ? "is truncated: it ends inside " + record
                                  : "is damaged in " + record + " (" + finding.reason + ")";
    return place + "; " + recordsBefore(recordsBeforeIt);
}

}  // namespace

RecordingScan scanRecording(std::istream& stream)
{
    FileWindow window(stream);
    const HeaderFinding header = readRecordingHeader(window);
    RecordingScan scan;
    static_cast<RecordingHeader&>(scan) = header.header;
    scan.isRecording = header.isRecording;
    scan.bytes = window.size();
    if (header.verdict != Verdict::Complete) {
        scan.damage = headerDamage(header);
        return scan;
    }
    for (std::uint64_t from = header.end; from < window.size();) {
        const RecordFinding finding = readRecord(window, from, window.size(), header.header);
        if (finding.verdict != Verdict::Complete) {
            scan.damage = recordDamage(finding, scan.completeRecords);
            break;
        }
        from = finding.end;
        ++scan.completeRecords;
    }
    return scan;
}

RecordingScan scanRecordingFile(const std::filesystem::path& file)
{
    std::ifstream stream = openForReading(file);
    RecordingScan scan = scanRecording(stream);
    if (stream.bad()) {
        throw DataError("cannot read " + inQuotes(file));
    }
    return scan;
}

}  // namespace kovtools
