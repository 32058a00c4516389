// Leak rates from the library's gas-leak mode.
#ifndef KOVTOOLS_LEAKMETER_H
#define KOVTOOLS_LEAKMETER_H

#include <string>

namespace kovtools {

// Where an answer comes from.
enum class LeakEntry {
    None,     // the table has nothing for the measurement
    Clamped,  // the entry of a bound of the table stands in for a missing one
    Exact     // the table's entry for the measured tenths of a metre and a decibel
};

std::string leakEntryName(LeakEntry entry);  // "none", "clamped", "exact"

struct LeakMeasurement
{
    float distance;  // m
    float level;     // sound pressure level at the instrument, dB
};

struct LeakAnswer
{
    LeakEntry entry = LeakEntry::None;
    float powerLevel = 0.0F;  // sound power level of the source, dB; what the table is entered with
    float rate = 0.0F;        // leak-rate quantity in the unit of the table; 0 without an entry
    float leak = 0.0F;        // log10 of it, less 1; no finite number for a rate that is not above 0
};

class LeakMeter
{
public:
    // Has the library load the table, whose text this is, and waits for that. The library keeps one table for the
    // process, so there is one meter a process. The working directory must be a Workspace. Throws DataError when the
    // table is not loaded within a minute.
    LeakMeter(const std::string& table, int mode);

    LeakAnswer measure(const LeakMeasurement& measurement) const;

    // Range of the table's sound power levels, whole dB.
    int lowestLevel() const;
    int highestLevel() const;

private:
    int m_mode;
};

}  // namespace kovtools

#endif
