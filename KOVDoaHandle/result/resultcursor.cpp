#include <KOVDoaHandle/result/resultcursor_p.h>

#include <algorithm>

#include <KOVDoaHandle/result/recordingstream_p.h>
#include <KOVDoaHandle/result/resultformat_p.h>

namespace KOVResult {

namespace {

// No text line of a recording comes near this. Of a longer one in a file, in truth no text at all, only the beginning
// is kept, so that it need not be held in memory as a whole.
constexpr std::size_t longestLine = std::size_t{1024} * 1024;

}  // namespace

ByteCursor::ByteCursor(std::string_view data, std::size_t position)
    : m_window(data), m_offset(std::min(position, data.size())), m_size(data.size())
{
}

ByteCursor::ByteCursor(RecordingStream& stream) : m_size(stream.fileSize()), m_stream(&stream) {}

std::size_t ByteCursor::position()
{
    finishSkipping();
    return m_dropped + m_offset;
}

bool ByteCursor::atEndOfAll()
{
    finishSkipping();
    return remaining() == 0 && !readOn();
}

std::string_view ByteCursor::line()
{
    if (atEnd()) {
        return {};
    }
    const std::size_t length = findLineEnd();
    const std::string_view text = m_window.substr(m_offset, length);
    m_offset += length;
    skipLineEnd();
    return text;
}

std::string_view ByteCursor::bytesAcrossWindows(std::size_t count)
{
    finishSkipping();
    while (remaining() < count + lineEnd.size() && readOn()) {
    }
    const std::string_view block = m_window.substr(m_offset, count);
    m_offset += block.size();
    skipLineEnd();
    return block;
}

// Skips the line end at the position. Where there is none, everything up to the next one will be skipped; but later,
// because reading on takes away what was given out before.
void ByteCursor::skipLineEnd()
{
    if (m_window.substr(m_offset, lineEnd.size()) == lineEnd) {
        m_offset += lineEnd.size();
    } else {
        m_skipping = true;
    }
}

// Moves the window on, keeping the position. False when there is nothing more to come.
bool ByteCursor::readOn()
{
    if (m_stream == nullptr) {
        return false;
    }
    const std::size_t before = remaining();
    m_window = m_stream->advance(m_offset);
    m_dropped += m_offset;
    m_offset = 0;
    return remaining() > before;
}

// Distance from the position to the next line end, to the end of the data, or to where the line becomes too long.
std::size_t ByteCursor::findLineEnd()
{
    std::size_t searched = 0;
    for (;;) {
        const std::size_t found = m_window.find(lineEnd, m_offset + searched);
        if (found != std::string_view::npos) {
            return found - m_offset;
        }
        // The last byte may be the first half of a line end.
        searched = remaining() > 0 ? remaining() - 1 : 0;
        if (searched >= longestLine && m_stream != nullptr) {
            return searched;
        }
        if (!readOn()) {
            return remaining();
        }
    }
}

void ByteCursor::finishSkipping()
{
    while (m_skipping) {
        const std::size_t found = m_window.find(lineEnd, m_offset);
        if (found != std::string_view::npos) {
            m_offset = found + lineEnd.size();
            m_skipping = false;
            return;
        }
        if (remaining() > 0) {
            m_offset = m_window.size() - 1;
        }
        if (!readOn()) {
            m_offset = m_window.size();
            m_skipping = false;
        }
    }
}

}  // namespace KOVResult
