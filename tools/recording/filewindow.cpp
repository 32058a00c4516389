#include "tools/recording/filewindow.h"

#include <algorithm>

namespace kovtools {

namespace {

// Whoever jumps about in a file reads little of it at a time; whoever goes on reads more with each step.
constexpr std::size_t firstStep = 16UL * 1024;     // bytes
constexpr std::size_t largestStep = 256UL * 1024;  // bytes

}  // namespace

FileWindow::FileWindow(std::istream& stream) : m_stream(stream), m_step(firstStep)
{
    m_stream.seekg(0, std::ios::end);
    m_size = static_cast<std::uint64_t>(std::max<std::streamoff>(m_stream.tellg(), 0));
}

std::string_view FileWindow::at(std::uint64_t from, std::size_t count)
{
    if (from < m_begin || from > m_begin + m_bytes.size()) {
        m_bytes.clear();
        m_begin = from;
        m_step = firstStep;
    }
    if (m_begin + m_bytes.size() - from < count) {
        m_bytes.erase(0, static_cast<std::size_t>(from - m_begin));
        m_begin = from;
        while (m_bytes.size() < count && readMore()) {
        }
    }
    return std::string_view(m_bytes).substr(static_cast<std::size_t>(from - m_begin));
}

// False at the end of the file, and when it cannot be read.
bool FileWindow::readMore()
{
    const std::uint64_t end = m_begin + m_bytes.size();
    if (end >= m_size || m_stream.bad()) {
        return false;
    }
    const std::size_t kept = m_bytes.size();
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(m_step, m_size - end));
    m_bytes.resize(kept + wanted);
    m_stream.clear();
    m_stream.seekg(static_cast<std::streamoff>(end));
    m_stream.read(m_bytes.data() + kept, static_cast<std::streamsize>(wanted));
    m_bytes.resize(kept + static_cast<std::size_t>(m_stream.gcount()));
    m_step = std::min(2 * m_step, largestStep);
    return m_bytes.size() > kept;
}

}  // namespace kovtools
