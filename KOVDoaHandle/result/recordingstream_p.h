// Brings a recording's bytes in, a window at a time. The bytes are parsed while they are still in the processor's
// cache, and a recording of any length takes about a megabyte of memory besides its frames.
#ifndef KOVDOA_RECORDINGSTREAM_P_H
#define KOVDOA_RECORDINGSTREAM_P_H

#include <QtCore/QFile>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace KOVResult {

class RecordingStream
{
public:
    // Opens the file at `path`. One that is missing, unreadable or no regular file (a pipe may never end) is empty.
    explicit RecordingStream(const QString& path);

    // Size of the whole file, bytes.
    std::uint64_t fileSize() const { return m_fileSize; }

    // Drops the first `consumed` bytes of the window and reads on behind the others. Returns the new window, which
    // replaces the former one; it has no new bytes when the file has ended.
    std::string_view advance(std::size_t consumed);

private:
    QFile m_file;
    std::uint64_t m_fileSize = 0;
    std::unique_ptr<char[]> m_buffer;
    std::size_t m_capacity = 0;
    std::size_t m_begin = 0;  // of the window in the buffer
    std::size_t m_end = 0;
};

}  // namespace KOVResult

#endif
