// Any part of a file of any size, through a window of bounded memory.
#ifndef KOVTOOLS_FILEWINDOW_H
#define KOVTOOLS_FILEWINDOW_H

#include <cstddef>
#include <cstdint>
#include <istream>
#include <string>
#include <string_view>

namespace kovtools {

class FileWindow
{
public:
    // `stream`: binary, seekable; must outlive the window. What is appended to the file from now on is not seen.
    explicit FileWindow(std::istream& stream);

    std::uint64_t size() const { return m_size; }

    // The bytes from `from` on: at least `count` of them unless the file ends before, and what happens to lie in memory
    // behind them. Valid until the next call.
    std::string_view at(std::uint64_t from, std::size_t count);

private:
    bool readMore();

    std::istream& m_stream;
    std::uint64_t m_size = 0;
    std::uint64_t m_begin = 0;  // of the window in the file
    std::string m_bytes;
    std::size_t m_step = 0;  // bytes to read next
};

}  // namespace kovtools

#endif
