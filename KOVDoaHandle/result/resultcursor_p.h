// A read position in the bytes of a result file. It never leaves them: every step ends at the end of the data
// at the latest, and a search that finds nothing ends there too.
#ifndef KOVDOA_RESULTCURSOR_P_H
#define KOVDOA_RESULTCURSOR_P_H

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace KOVResult {

class RecordingStream;

// Reads bytes in memory, or a file through a window. What line() and bytes() return is valid until the next call
// of either or of atEnd().
class ByteCursor
{
public:
    // Bytes in memory, which the caller keeps alive and unchanged.
    ByteCursor(std::string_view data, std::size_t position);

    // A file from its beginning; `stream` must outlive the cursor.
    explicit ByteCursor(RecordingStream& stream);

    // Offset from the beginning of the data.
    std::size_t position();
    bool atEnd() { return (m_skipping || remaining() == 0) && atEndOfAll(); }

    // Number of bytes of all the data.
    std::uint64_t size() const { return m_size; }

    // The text up to the next line end, which is skipped; without one, all that is left (of a file, at least its
    // first megabyte). At the end a view whose data() is null, unlike that of an empty line.
    std::string_view line();

    // `count` raw bytes, or as many as are left; then skips to behind the next line end, because the bytes may
    // themselves look like one.
    std::string_view bytes(std::size_t count)
    {
        // A block of a sound file, inside the window: this runs for each row of each map.
        if (!m_skipping && remaining() > count + 1 && m_window[m_offset + count] == '\r' &&
            m_window[m_offset + count + 1] == '\n') {
            const std::string_view block = m_window.substr(m_offset, count);
            m_offset += count + 2;
            return block;
        }
        return bytesAcrossWindows(count);
    }

private:
    bool atEndOfAll();
    std::string_view bytesAcrossWindows(std::size_t count);
    std::size_t remaining() const { return m_window.size() - m_offset; }
    bool readOn();
    std::size_t findLineEnd();
    void skipLineEnd();
    void finishSkipping();

    std::string_view m_window;
    std::size_t m_offset = 0;   // of the position in the window
    std::size_t m_dropped = 0;  // bytes before the window
    std::uint64_t m_size;
    RecordingStream* m_stream = nullptr;
    bool m_skipping = false;  // the line end behind the bytes given out last is still to be found
};

}  // namespace KOVResult

#endif
