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
class KOVDOA_EXPORT KOVGasleakProcessPrivate
{
public:
    static void initTest();

    static QHash<int, QHash<int, float>> g_leakList;
    static QString g_leakTestResFile;
    static std::atomic<bool> g_isIniting;
    static std::atomic<bool> g_isInited;
    static int g_minSpl;
    static int g_maxSpl;
    static int g_minDistance;
    static int g_maxDistance;
};

class KOVDOA_EXPORT KOVGasleakProcess
{
public:
    explicit KOVGasleakProcess(const char* tableFile);
    ~KOVGasleakProcess();
    KOVGasleakProcess(const KOVGasleakProcess&) = delete;
    KOVGasleakProcess& operator=(const KOVGasleakProcess&) = delete;

    void FeedData(float distance, float reserved, float spl);
    float getLRQ();
    float getLeak();
    GASLEAK_MODE getGasLeakMode();
    void setGasLeakMode(GASLEAK_MODE mode);
    float avgSpl(float spl);

private:
    class KOVDOA_LOCAL Private;
    std::unique_ptr<Private> d;
};

#endif
