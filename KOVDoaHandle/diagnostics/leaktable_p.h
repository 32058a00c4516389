// Reads the calibration table of the gas-leak mode: lines of three fields, sound level, distance and leak rate, divided
// by blanks.
#ifndef KOVDOA_LEAKTABLE_P_H
#define KOVDOA_LEAKTABLE_P_H

#include <QtCore/QHash>

#include <string>
#include <string_view>

namespace KOVPrivate {

// Tenths, truncated toward zero: what levels and distances are looked up by. Beyond the integers the nearest of them;
// 0 for a NaN. The product is formed in single precision.
int tenths(float value);

struct LeakTable
{
    QHash<int, QHash<int, float>> rates;  // by tenths of the distance, then by tenths of the level
    // The range of the table in whole units, truncated toward zero.
    int minSpl = 0;
    int maxSpl = 0;
    int minDistance = 0;
    int maxDistance = 0;
};

// Takes the bytes of a table in pieces of any size. A line ends with a carriage return or a line feed; empty ones do
// not count. A line without exactly three fields is skipped, and so is one of more than a mebibyte, which no table has.
// A field that is no number is 0; numbers are those of QString::toFloat().
class LeakTableReader
{
public:
    void feed(std::string_view bytes);
    // Takes what follows the last line end as a line; the reader is used up.
    LeakTable finish();

private:
    static constexpr std::size_t longestLine = std::size_t{1} << 20;

    void keepUnfinished(std::string_view rest);
    void takeLine(std::string_view line);
    void store(float level, float distance, float rate);
    QHash<int, float>& ratesAt(int distanceKey);

    LeakTable m_table;
    std::string m_unfinished;  // begin of a line whose end has not come yet
    bool m_isUnfinishedTooLong = false;
    bool m_isFirstLine = true;
    bool m_isTextBegin = true;
    // Most tables go through the levels of one distance before the next, and have about as many for each.
    QHash<int, float>* m_lastRates = nullptr;
    int m_lastDistanceKey = 0;
    int m_linesInARow = 0;  // of the last distance
};

}  // namespace KOVPrivate

#endif
