// This is the one place that says which records are complete. It is stricter than the library's reader, which makes
// the best of everything: a complete record is one from which the reader takes exactly what was written.
#include "tools/recording/recordreading.h"

#include <algorithm>
#include <string_view>

#include "tools/recording/recordcursor.h"
#include "tools/support/interrupt.h"

namespace kovtools {

namespace {

constexpr std::string_view recordStart = "--start--";
constexpr std::string_view recordEnd = "--end--";
constexpr const char* anotherBegins = "another record begins before its end";
constexpr const char* noRecordHere = "something else stands where a record should begin";
constexpr std::size_t longestStart = recordStart.size() + 10 + 2;  // bytes, with the number and the line end

bool contains(std::string_view text, std::string_view part)
{
    return text.find(part) != std::string_view::npos;
}

class RecordReader
{
public:
    RecordReader(RecordCursor& cursor, const RecordingHeader& header, RecordFinding& finding)
        : m_cursor(cursor), m_header(header), m_finding(finding)
    {
    }

    void read();

    // How the record's own sizes differ from the header's; empty when they do not.
    const std::string& disagreement() const { return m_disagreement; }

private:
    std::string_view textLine();
    void readField(std::string_view key, std::string_view value);
    void readPeaks(std::string_view count);
    void readSpectrum(std::string_view length);
    void readMap(std::string_view size);

    RecordCursor& m_cursor;
    const RecordingHeader& m_header;
    RecordFinding& m_finding;
    std::string m_disagreement;
    bool m_hasMap = false;
    bool m_hasSpectrum = false;
};

void RecordReader::read()
{
    const std::string_view head = m_cursor.line();
    if (!head.starts_with(recordStart)) {
        throw Damaged{noRecordHere};
    }
    if (contains(head.substr(recordStart.size()), recordStart)) {
        throw Damaged{anotherBegins};
    }
    m_finding.number = wholeNumber(head.substr(recordStart.size()));
    for (std::string_view line = textLine(); !contains(line, recordEnd); line = textLine()) {
        const std::size_t colon = line.find(':');
        if (line.starts_with("**") && colon != std::string_view::npos) {
            // The value is copied, because reading on takes the line away.
            const std::string value(line.substr(colon + 1));
            readField(line.substr(2, colon - 2), value);
        }
    }
    if (!m_hasMap || !m_hasSpectrum) {
        throw Damaged{"it lacks its map or its spectrum"};
    }
}

// A line of the record's text. The first line of another record, also behind half a line of this one, is none: the
// library would mix the two records into one frame.
std::string_view RecordReader::textLine()
{
    const std::string_view line = m_cursor.line();
    if (contains(line, recordStart)) {
        throw Damaged{anotherBegins};
    }
    return line;
}

// The fields that say how many bytes follow, found by what the key contains, as the library finds them. A block that
// was cut off may have swallowed the first lines of the record behind it and still be followed by a line end; that
// record's own blocks then give it away.
void RecordReader::readField(std::string_view key, std::string_view value)
{
    const bool isPeaks = contains(key, "peaks");
    const bool isSpectrum = contains(key, "PowerSpec");
    const bool isMap = contains(key, "ResEngMap");
    if (isPeaks) {
        readPeaks(value);
    }
    if (isSpectrum) {
        readSpectrum(value);
    }
    if (isMap) {
        readMap(value);
    }
}

void RecordReader::readPeaks(std::string_view count)
{
    const std::optional<int> peaks = wholeNumber(count);
    if (!peaks || *peaks < 0) {
        throw Damaged{"its number of peaks is no number"};
    }
    for (int i = 0; i < *peaks; ++i) {
        const std::string_view line = textLine();
        if (line.starts_with("**") || contains(line, recordEnd)) {
            throw Damaged{"it has fewer peaks than it says"};
        }
    }
}

void RecordReader::readSpectrum(std::string_view length)
{
    const std::optional<int> bins = wholeNumber(length);
    if (!bins || *bins < 0 || *bins > largestBlock / 4) {
        throw Damaged{"the length of its spectrum is no usable number"};
    }
    if (*bins != m_header.bins()) {
        m_disagreement = "its spectrum has " + std::to_string(*bins) + " bins, the header says " +
                         std::to_string(m_header.bins());
    }
    m_cursor.skipBlock(4ULL * static_cast<unsigned>(*bins));
    if (m_hasSpectrum) {
        throw Damaged{"it has two spectra"};
    }
    m_hasSpectrum = true;
}

void RecordReader::readMap(std::string_view size)
{
    const std::size_t cross = std::min(size.find('x'), size.size());
    const std::optional<int> rows = wholeNumber(size.substr(0, cross));
    const std::optional<int> cols = wholeNumber(size.substr(std::min(cross + 1, size.size())));
    if (!rows || !cols || *rows < 0 || *cols < 0 ||
        static_cast<std::int64_t>(*rows) * *cols > largestBlock / 4) {
        throw Damaged{"the size of its map is no usable one"};
    }
    if (*rows != m_header.resRows || *cols != m_header.resCols) {
        m_disagreement = "its map has " + std::to_string(*rows) + " x " + std::to_string(*cols) +
                         " cells, the header says " + std::to_string(m_header.resRows) + " x " +
                         std::to_string(m_header.resCols);
    }
    for (int row = 0; row < *rows; ++row) {
        m_cursor.skipBlock(4ULL * static_cast<unsigned>(*cols));
    }
    if (m_hasMap) {
        throw Damaged{"it has two maps"};
    }
    m_hasMap = true;
}

// As much of what lies from `from` to `end` as a record's first line can be long.
std::string_view firstLetters(FileWindow& window, std::uint64_t from, std::uint64_t end)
{
    const auto length = static_cast<std::size_t>(std::min<std::uint64_t>(longestStart, end - from));
    return window.at(from, length).substr(0, length);
}

// Whether that is a record's first line, or as much of one as there is room for.
bool beginsRecord(std::string_view letters)
{
    const bool isCut = letters.size() < longestStart;
    if (letters.size() < recordStart.size()) {
        return recordStart.starts_with(letters);
    }
    const std::size_t digitsEnd =
        std::min(letters.find_first_not_of("0123456789", recordStart.size()), letters.size());
    const std::string_view rest = letters.substr(digitsEnd);
    return letters.starts_with(recordStart) &&
           (rest.starts_with("\r\n") || (isCut && (rest.empty() || rest == "\r")));
}

}  // namespace

RecordFinding readRecord(FileWindow& window, std::uint64_t from, std::uint64_t end,
                         const RecordingHeader& header)
{
    RecordFinding finding;
    RecordCursor cursor(window, from, end);
    RecordReader reader(cursor, header, finding);
    try {
        reader.read();
        finding.reason = reader.disagreement();
        finding.verdict = finding.reason.empty() ? Verdict::Complete : Verdict::HeaderDisagreeing;
    } catch (const CutOff&) {
        const bool isTorn = beginsRecord(firstLetters(window, from, end));
        finding.verdict = isTorn ? Verdict::Torn : Verdict::Malformed;
        finding.reason = isTorn ? "the file ends inside it" : noRecordHere;
    } catch (const Damaged& damaged) {
        finding.verdict = Verdict::Malformed;
        finding.reason = damaged.what;
        if (!reader.disagreement().empty()) {
            finding.reason += "; " + reader.disagreement();
        }
    }
    finding.end = cursor.position();
    return finding;
}

std::uint64_t findRecordStart(FileWindow& window, std::uint64_t from, std::uint64_t end)
{
    while (from < end) {
        throwIfInterrupted();
        const std::uint64_t left = end - from;
        const std::string_view seen = window.at(from, recordStart.size());
        const std::string_view text =
            seen.substr(0, static_cast<std::size_t>(std::min<std::uint64_t>(left, seen.size())));
        const std::size_t found = text.find(recordStart);
        if (found != std::string_view::npos) {
            from += found;
            const std::string_view letters = firstLetters(window, from, end);
            if (beginsRecord(letters) &&
                letters.substr(recordStart.size()).find_first_of("0123456789") == 0) {
                return from;
            }
            ++from;
        } else if (text.size() < recordStart.size()) {
            return end;
        } else {
            from += text.size() - recordStart.size() + 1;  // the rest may be the beginning of one
        }
    }
    return end;
}

}  // namespace kovtools
