// Gas leaks: the leak rate that belongs to a measured level and distance, from a calibration table.
#ifndef KOVDOA_KOVGASLEAKPROCESS_H
#define KOVDOA_KOVGASLEAKPROCESS_H

#include <QtCore/QHash>
#include <QtCore/QString>

#include <atomic>
#include <memory>

#include <KOVDoaHandle/foundation/kovdoaexport.h>

// Acts on the table's value: 0, 1 and 5 times 1, 2 times 4, 3 times 2, 4 times 3.
enum GASLEAK_MODE : int {
    GASLEAK_MODE_0 = 0,
    GASLEAK_MODE_1 = 1,
    GASLEAK_MODE_2 = 2,
    GASLEAK_MODE_3 = 3,
    GASLEAK_MODE_4 = 4,
    GASLEAK_MODE_5 = 5
};

// The calibration table, one for the process: loaded by the first KOVGasleakProcess, never unloaded.
//
// The file holds a line for each point: sound level in dB, distance in m, leak rate, divided by blanks. A line without
// exactly three fields is skipped; a field that is no number is 0; of two lines for one point the later one counts. A
// file that cannot be read gives an empty table.
//
// Threads: a worker writes everything here, g_isInited last. Read the rest only once that is true; write nothing.
class KOVDOA_EXPORT KOVGasleakProcessPrivate
{
public:
    // Starts loading g_leakTestResFile on a worker thread and returns. A table that is ready is not loaded again.
    static void initTest();

    static QHash<int, QHash<int, float>> g_leakList;  // by distance x 10, then by level x 10, both truncated
    static QString g_leakTestResFile;
    static std::atomic<bool> g_isIniting;  // a load has begun and not ended
    static std::atomic<bool> g_isInited;   // the table is ready, empty or not
    // Range of the table in whole dB and m, truncated toward zero.
    static int g_minSpl;
    static int g_maxSpl;
    static int g_minDistance;
    static int g_maxDistance;
};

// One measuring point. Threads: one feeds (FeedData), others may poll getLRQ() and getLeak() and set the mode
// meanwhile; avgSpl() belongs to one thread. Timing: FeedData looks up twice and neither allocates nor locks.
class KOVDOA_EXPORT KOVGasleakProcess
{
public:
    // The first object of the process starts loading `tableFile` (a path in UTF-8; null counts as empty) on a worker
    // thread; those after it use the same table, whatever they name. Mode 5.
    explicit KOVGasleakProcess(const char* tableFile);
    // The table stays.
    ~KOVGasleakProcess();
    KOVGasleakProcess(const KOVGasleakProcess&) = delete;
    KOVGasleakProcess& operator=(const KOVGasleakProcess&) = delete;

    // One measurement.
    //   distance  to the source, m
    //   reserved  not used
    //   spl       sound pressure level at the instrument, dB
    // The sound power level Lw = 10 log10(4 pi distance^2) + spl and the distance, both truncated to tenths, are looked
    // up. A distance that the table does not have is replaced by the table's largest (smallest) when the number of
    // metres lies beyond ten times that; a level likewise, by comparing spl, not Lw. Ten times, because raw values are
    // compared with bounds in tenths: hosts rely on what comes out of it. When the table is not ready, or has no such
    // entry, the results stay as they are.
    void FeedData(float distance, float reserved, float spl);

    // Leak-rate quantity: the table's value times the factor of the mode; 0 before the first result. With a mode that
    // is none of the six it stays as it is.
    float getLRQ();
    // log10(LRQ) - 1, from the same measurement; 0 before the first result. Minus infinity for an LRQ of 0, a NaN for a
    // negative one.
    float getLeak();

    GASLEAK_MODE getGasLeakMode();
    // Acts from the next measurement on. Any value is kept, also one that is none of the six.
    void setGasLeakMode(GASLEAK_MODE mode);

    // Running mean of the levels given to it, at most the last 25. It has nothing to do with FeedData.
    float avgSpl(float spl);

private:
    class KOVDOA_LOCAL Private;
    std::unique_ptr<Private> d;
};

#endif
