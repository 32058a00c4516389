// A read position in the bytes of a result file. It never leaves them: every step ends at the end of the data
// at the latest, and a search that finds nothing ends there too.
#ifndef KOVDOA_RESULTCURSOR_P_H
#define KOVDOA_RESULTCURSOR_P_H

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

#include <KOVDoaHandle/result/resultformat_p.h>

namespace KOVResult {

// Views into the bytes; the caller keeps them alive and unchanged.
class ByteCursor
{
public:
    ByteCursor(std::string_view data, std::size_t position)
        : m_data(data), m_position(std::min(position, data.size()))
    {
    }

    std::size_t position() const { return m_position; }
    bool atEnd() const { return m_position == m_data.size(); }
    std::size_t size() const { return m_data.size(); }

    // The text up to the next line end, which is skipped; without one, all that is left. At the end a view
    // whose data() is null, unlike that of an empty line.
    std::string_view line()
    {
        if (atEnd()) {
            return {};
        }
        const std::size_t start = m_position;
        const std::size_t end = findLineEnd();
        m_position = std::min(end + lineEnd.size(), m_data.size());
        return m_data.substr(start, end - start);
    }

    // `count` raw bytes, or as many as are left; then skips to behind the next line end, because the bytes
    // may themselves look like one.
    std::string_view bytes(std::size_t count)
    {
        const std::string_view result = m_data.substr(m_position, count);
        m_position += result.size();
        m_position = std::min(findLineEnd() + lineEnd.size(), m_data.size());
        return result;
    }

private:
    // Offset of the next line end, or the size of the data.
    std::size_t findLineEnd() const
    {
        if (m_data.substr(m_position, lineEnd.size()) == lineEnd) {
            return m_position;  // behind every binary block of a sound file
        }
        std::size_t from = m_position;
        while (from < m_data.size()) {
            const void* const found = std::memchr(m_data.data() + from, lineEnd[0], m_data.size() - from);
            if (found == nullptr) {
                break;
            }
            const auto at = static_cast<std::size_t>(static_cast<const char*>(found) - m_data.data());
            if (at + 1 < m_data.size() && m_data[at + 1] == lineEnd[1]) {
                return at;
            }
            from = at + 1;
        }
        return m_data.size();
    }

    std::string_view m_data;
    std::size_t m_position;
};

}  // namespace KOVResult

#endif
