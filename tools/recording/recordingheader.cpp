#include "tools/recording/recordingheader.h"

#include <optional>
#include <string_view>
#include <utility>

#include "tools/recording/recordcursor.h"

namespace kovtools {

namespace {

bool contains(std::string_view text, std::string_view part)
{
    return text.find(part) != std::string_view::npos;
}

int headerNumber(std::string_view name, std::string_view text)
{
    const std::optional<int> value = wholeNumber(text);
    if (!value || *value < 0) {
        throw Damaged{"its header gives no usable " + std::string(name)};
    }
    return *value;
}

// A line of the header. The first line of a record is none: what should end the header is missing.
std::string_view headerLine(RecordCursor& cursor)
{
    const std::string_view line = cursor.line();
    if (contains(line, "--start--")) {
        throw Damaged{"its header has no end"};
    }
    return line;
}

// Keys are found by what they contain, as the library finds them.
void readSizeLine(std::string_view key, std::string_view value, RecordingHeader& header)
{
    if (contains(key, "VERSION")) {
        header.version = value;
    }
    const std::pair<std::string_view, int*> numbers[] = {
        {"RESROW", &header.resRows}, {"RESCOL", &header.resCols}, {"IMGROW", &header.imgRows},
        {"IMGCOL", &header.imgCols}, {"FFTLEN", &header.fftLen},
    };
    for (const auto& [name, number] : numbers) {
        if (contains(key, name)) {
            *number = headerNumber(name, value);
        }
    }
}

void readFileInfo(RecordCursor& cursor, RecordingHeader& header)
{
    cursor.line();
    for (std::string_view line = headerLine(cursor); !contains(line, "FILE_INFO_END");
         line = headerLine(cursor)) {
        const std::size_t colon = line.find(':');
        if (colon != std::string_view::npos) {
            readSizeLine(line.substr(0, colon), line.substr(colon + 1), header);
        }
    }
}

void checkSizes(const RecordingHeader& header)
{
    const std::int64_t cells = static_cast<std::int64_t>(header.resRows) * header.resCols;  // 62 bits at most
    if (cells > largestBlock / 4 || 2LL * header.fftLen > largestBlock) {
        throw Damaged{"its header claims maps or spectra of an absurd size"};
    }
}

void skipStructInfo(RecordCursor& cursor)
{
    if (!contains(headerLine(cursor), "STRUCT_INFO_START")) {
        throw Damaged{"its list of fields is missing"};
    }
    while (!contains(headerLine(cursor), "STRUCT_INFO_END")) {
    }
}

}  // namespace

HeaderFinding readRecordingHeader(FileWindow& window)
{
    HeaderFinding finding;
    RecordCursor cursor(window, 0, window.size());
    finding.isRecording = cursor.startsWith("==FILE_INFO_START==");
    if (!finding.isRecording) {
        finding.reason = "it does not begin with a recording's header";
        return finding;
    }
    try {
        readFileInfo(cursor, finding.header);
        checkSizes(finding.header);
        skipStructInfo(cursor);
        finding.verdict = Verdict::Complete;
        finding.end = cursor.position();
    } catch (const CutOff&) {
        finding.verdict = Verdict::Torn;
        finding.reason = "the file ends inside it";
    } catch (const Damaged& damaged) {
        finding.reason = damaged.what;
    }
    return finding;
}

std::string headerDamage(const HeaderFinding& finding)
{
    if (!finding.isRecording) {
        return "is not a recording: " + finding.reason;
    }
    return finding.verdict == Verdict::Torn ? "is truncated: it ends inside its header"
                                            : "is damaged: " + finding.reason;
}

}  // namespace kovtools
