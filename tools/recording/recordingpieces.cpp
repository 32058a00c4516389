#include "tools/recording/recordingpieces.h"

#include "tools/recording/recordreading.h"
#include "tools/support/interrupt.h"

namespace kovtools {

namespace {

bool isReadable(Verdict verdict)
{
    return verdict == Verdict::Complete || verdict == Verdict::HeaderDisagreeing;
}

}  // namespace

RecordingPieces::RecordingPieces(std::istream& stream)
    : m_window(stream), m_header(readRecordingHeader(m_window)), m_position(m_header.end)
{
    if (m_header.verdict != Verdict::Complete) {
        m_position = m_window.size();
    }
}

std::optional<RecordingPiece> RecordingPieces::next()
{
    throwIfInterrupted();
    const std::uint64_t from = m_position;
    const std::uint64_t fileEnd = m_window.size();
    if (from >= fileEnd) {
        return std::nullopt;
    }
    RecordFinding finding = readRecord(m_window, from, fileEnd, m_header.header);
    if (!isReadable(finding.verdict)) {
        // Its lengths may have led beyond the next record, so that one is looked for from the beginning; and with it
        // as the end, a record that was cut off is told from one with something wrong in it.
        const std::uint64_t end = findRecordStart(m_window, from + 1, fileEnd);
        if (end < fileEnd) {
            finding = readRecord(m_window, from, end, m_header.header);
            if (finding.verdict == Verdict::Torn) {
                finding.reason = "another record begins before its end";
            }
        }
        finding.end = end;
    }
    m_position = finding.end;
    return RecordingPiece{finding.verdict, finding.number, from, finding.end - from, finding.reason};
}

}  // namespace kovtools
