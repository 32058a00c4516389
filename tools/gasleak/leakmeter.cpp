#include "tools/gasleak/leakmeter.h"

#include <KOVDoaHandle/api/gasleak.h>
#include <KOVDoaHandle/diagnostics/kovgasleakprocess.h>

#include <chrono>
#include <cmath>
#include <filesystem>
#include <memory>
#include <numbers>
#include <thread>

#include "tools/support/errors.h"
#include "tools/support/interrupt.h"
#include "tools/support/partialfile.h"

namespace kovtools {

namespace {

using Table = KOVGasleakProcessPrivate;

constexpr const char* tableName = "leaktable.txt";
constexpr std::chrono::seconds longestLoad{60};
constexpr std::chrono::milliseconds pollInterval{1};  // the library signals the end of a load by a flag only

struct Release
{
    void operator()(KOVGasleakProcess* meter) const { ReleaseGasLeakHandle(meter); }
};
using Handle = std::unique_ptr<KOVGasleakProcess, Release>;

void waitForTable()
{
    const auto deadline = std::chrono::steady_clock::now() + longestLoad;
    while (!Table::g_isInited) {
        throwIfInterrupted();
        if (std::chrono::steady_clock::now() > deadline) {
            throw DataError("the calibration table was not loaded within a minute");
        }
        std::this_thread::sleep_for(pollInterval);
    }
}

float powerLevelOf(const LeakMeasurement& measurement)
{
    const auto metres = static_cast<double>(measurement.distance);
    return static_cast<float>(10.0 * std::log10(4.0 * std::numbers::pi * (metres * metres)) +
                              static_cast<double>(measurement.level));
}

// Whether the table itself has the measured tenths. Both lie well inside the integers.
bool hasEntry(float distance, float powerLevel)
{
    const auto& rates = Table::g_leakList;
    const auto atDistance = rates.constFind(static_cast<int>(distance * 10.0F));
    return atDistance != rates.constEnd() && atDistance->contains(static_cast<int>(powerLevel * 10.0F));
}

}  // namespace

std::string leakEntryName(LeakEntry entry)
{
    switch (entry) {
        case LeakEntry::Exact:
            return "exact";
        case LeakEntry::Clamped:
            return "clamped";
        case LeakEntry::None:
            break;
    }
    return "none";
}

LeakMeter::LeakMeter(const std::string& table, int mode) : m_mode(mode)
{
    writeWholeFile(std::filesystem::absolute(tableName), table);
    const Handle first(CreateGasLeakHandle(tableName));
    waitForTable();
}

LeakAnswer LeakMeter::measure(const LeakMeasurement& measurement) const
{
    // A handle keeps its results when the table has no entry; a fresh one shows 0 for both. No entry does: a rate of 0
    // has the logarithm of minus infinity.
    const Handle handle(CreateGasLeakHandle(tableName));
    GasLeakSetGasLeakMode(handle.get(), m_mode);
    GasLeakFeedData(handle.get(), measurement.distance, 0.0F, measurement.level);
    LeakAnswer answer;
    answer.powerLevel = powerLevelOf(measurement);
    answer.rate = GasLeakGetLRQ(handle.get());
    answer.leak = GasLeakGetGetLeak(handle.get());
    if (answer.rate != 0.0F || answer.leak != 0.0F) {
        answer.entry =
            hasEntry(measurement.distance, answer.powerLevel) ? LeakEntry::Exact : LeakEntry::Clamped;
    }
    return answer;
}

int LeakMeter::lowestLevel() const
{
    return Table::g_minSpl;
}

int LeakMeter::highestLevel() const
{
    return Table::g_maxSpl;
}

}  // namespace kovtools
