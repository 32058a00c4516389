// What the system says about the memory of this process.
#ifndef KOVDOA_TESTS_SUPPORT_RESIDENTMEMORY_H
#define KOVDOA_TESTS_SUPPORT_RESIDENTMEMORY_H

#include <cstdint>
#include <fstream>
#include <string>

namespace testsupport {

// Sanitizers keep shadows of the memory and quarantine what is freed, so that sizes say nothing there.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool canMeasureMemory = false;
#else
constexpr bool canMeasureMemory = true;
#endif

// A line of /proc/self/status, in KiB: "VmRSS" (all resident memory), "RssAnon" (what no file stands behind),
// "RssFile", "RssShmem". -1 when there is no such line.
inline std::int64_t memoryKib(const std::string& key)
{
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.starts_with(key + ":")) {
            return std::stoll(line.substr(key.size() + 1));
        }
    }
    return -1;
}

}  // namespace testsupport

#endif
