#include "tools/recording/recording.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <thread>

#include <KOVDoaHandle/imaging/engmapresult.h>

#include "tools/support/errors.h"
#include "tools/support/inquotes.h"
#include "tools/support/interrupt.h"
#include "tools/support/workspace.h"

namespace kovtools {

namespace {

constexpr std::chrono::milliseconds pollInterval{1};  // the library signals the end of a load by a flag only

}  // namespace

Recording::Recording(const std::filesystem::path& path) : m_path(path), m_scan(scanRecordingFile(path))
{
    if (!m_scan.isRecording) {
        throw DataError(inQuotes(m_path) + " " + m_scan.damage);
    }
    if (m_scan.completeRecords == 0) {
        return;  // and nothing is handed to the library that has nothing to load from it
    }
    static int serial = 0;
    const std::string name = "recording-" + std::to_string(++serial) + ".kov";
    Workspace::link(m_path, name);
    m_handle.reset(createResultSerializeHandle(name.c_str(), "cache"));
    while (!getIsOpenFileComplete(m_handle.get())) {
        std::this_thread::sleep_for(pollInterval);
    }
    throwIfInterrupted();
    m_frames = std::min(m_scan.completeRecords, getResultFrame(m_handle.get()));
}

std::string Recording::complaint() const
{
    const std::string damage = m_scan.damage.empty() ? std::string() : inQuotes(m_path) + " " + m_scan.damage;
    if (m_frames == m_scan.completeRecords) {
        return damage;
    }
    // The file is not to blame: the library found no room for more.
    return "of the " + std::to_string(m_scan.completeRecords) + " complete records of " + inQuotes(m_path) +
           " only " + std::to_string(m_frames) + " could be loaded (is the temporary folder full?)" +
           (damage.empty() ? "" : "; besides, " + damage);
}

EngMapResult& Recording::frame(int index) const
{
    EngMapResult* const frame = getResultHandleFromIndex(m_handle.get(), index);
    const bool usable = frame != nullptr && frame->ResEngMap != nullptr && frame->PowerSpec != nullptr &&
                        (frame->ResEngMap->data != nullptr || m_scan.resRows == 0 || m_scan.resCols == 0) &&
                        frame->PowerSpec->data != nullptr;
    if (!usable) {
        throw DataError("there is no room for frame " + std::to_string(index + 1) +
                        " in the temporary folder");
    }
    return *frame;
}

}  // namespace kovtools
