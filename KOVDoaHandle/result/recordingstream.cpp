#include <KOVDoaHandle/result/recordingstream_p.h>

#include <QtCore/QFileInfo>

#include <algorithm>
#include <cstring>

#include <KOVDoaHandle/result/filename_p.h>

namespace KOVResult {

namespace {

// Small enough to stay in the second-level cache while it is parsed, large enough for a read to be a small part of it.
constexpr std::size_t chunkBytes = std::size_t{128} * 1024;

}  // namespace

RecordingStream::RecordingStream(const QString& path) : m_file(path)
{
    if (isFileName(path) && QFileInfo(m_file).isFile() &&
        m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        m_fileSize = static_cast<std::uint64_t>(m_file.size());
    }
}

std::string_view RecordingStream::advance(std::size_t consumed)
{
    m_begin += consumed;
    const std::size_t kept = m_end - m_begin;
    if (m_capacity < kept + chunkBytes) {
        // Only a line longer than a chunk gets here twice.
        const std::size_t capacity = 2 * (kept + chunkBytes);
        auto buffer = std::make_unique_for_overwrite<char[]>(capacity);
        std::copy_n(m_buffer.get() + m_begin, kept, buffer.get());
        m_buffer = std::move(buffer);
        m_capacity = capacity;
    } else if (m_begin > 0) {
        std::memmove(m_buffer.get(), m_buffer.get() + m_begin, kept);
    }
    m_begin = 0;
    m_end = kept;
    if (m_file.isOpen()) {
        const qint64 count = m_file.read(m_buffer.get() + kept, static_cast<qint64>(chunkBytes));
        m_end += static_cast<std::size_t>(std::max<qint64>(count, 0));
    }
    return {m_buffer.get(), m_end};
}

}  // namespace KOVResult
