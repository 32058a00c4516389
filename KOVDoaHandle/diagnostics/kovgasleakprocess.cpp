// The table is read into a record of its own and handed over whole, under a lock that the end of the process takes as
// well: a load that is still going on then finds the door closed and leaves the table alone.
#include <KOVDoaHandle/diagnostics/kovgasleakprocess.h>

#include <QtCore/QFile>
#include <QtCore/QLoggingCategory>
#include <QtCore/QVariant>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <limits>
#include <mutex>
#include <utility>
#include <vector>

#include <KOVDoaHandle/diagnostics/kovblas.h>
#include <KOVDoaHandle/diagnostics/leaktable_p.h>
#include <KOVDoaHandle/foundation/kovlog_p.h>
#include <KOVDoaHandle/runtime/kovthread.h>

using KOVPrivate::LeakTable;
using KOVPrivate::LeakTableReader;
using KOVPrivate::tenths;
using Table = KOVGasleakProcessPrivate;

QHash<int, QHash<int, float>> KOVGasleakProcessPrivate::g_leakList;
QString KOVGasleakProcessPrivate::g_leakTestResFile;
std::atomic<bool> KOVGasleakProcessPrivate::g_isIniting{false};
std::atomic<bool> KOVGasleakProcessPrivate::g_isInited{false};
int KOVGasleakProcessPrivate::g_minSpl = 0;
int KOVGasleakProcessPrivate::g_maxSpl = 0;
int KOVGasleakProcessPrivate::g_minDistance = 0;
int KOVGasleakProcessPrivate::g_maxDistance = 0;

namespace {

const char source[] = "kovgasleakprocess";

constexpr int pieceBytes = 1 << 18;
constexpr int averagedLevels = 25;

// ---- Loading ----

// Guards the writing of the table. Never destroyed, because a load may outlive every static object.
struct Loading
{
    std::mutex mutex;
    std::condition_variable hasChanged;
    int loaders = 0;  // begun, whether or not the system has started their threads
    std::atomic<bool> isClosed{false};
};

Loading& loading()
{
    static auto* const onlyOne = new Loading;
    return *onlyOne;
}

// Destroyed when the process ends: closes the door, and gives a load that is just going on the time to notice. Only one
// that hangs in a system call, opening a pipe that nobody writes, takes longer than that; it ends with the process.
struct CloseAtExit
{
    CloseAtExit()
    {
        // What Qt makes on first use, and a load uses to open a file and to report that it cannot, has to be there
        // before: what was made first is destroyed last.
        loading();
        QFile::encodeName(QStringLiteral("table"));
        QLoggingCategory::defaultCategory();
    }
    CloseAtExit(const CloseAtExit&) = delete;
    CloseAtExit& operator=(const CloseAtExit&) = delete;
    ~CloseAtExit()
    {
        constexpr auto longestWait = std::chrono::milliseconds(500);
        Loading& state = loading();
        std::unique_lock lock(state.mutex);
        state.isClosed = true;
        state.hasChanged.wait_for(lock, longestWait, [&state] { return state.loaders == 0; });
    }
};

// Everything up to the end of the file, the end of the process, or the memory.
LeakTable read(const QString& path)
{
    LeakTableReader reader;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        KOVDOA_DEBUG(source) << "no table in" << path;
        return reader.finish();
    }
    try {
        std::vector<char> piece(pieceBytes);
        for (;;) {
            const qint64 count = file.read(piece.data(), pieceBytes);
            if (count <= 0 || loading().isClosed) {
                break;
            }
            reader.feed({piece.data(), static_cast<std::size_t>(count)});
        }
    } catch (const std::exception& failure) {
        KOVDOA_DEBUG(source) << "the table in" << path << "is read in part only:" << failure.what();
    }
    return reader.finish();
}

void publish(LeakTable table)
{
    Table::g_leakList = std::move(table.rates);
    Table::g_minSpl = table.minSpl;
    Table::g_maxSpl = table.maxSpl;
    Table::g_minDistance = table.minDistance;
    Table::g_maxDistance = table.maxDistance;
}

// The last that a loader does, under the lock, because the waiting side ends the process.
void leave(Loading& state)
{
    --state.loaders;
    state.hasChanged.notify_all();
}

void load()
{
    Loading& state = loading();
    QString path;
    {
        const std::lock_guard lock(state.mutex);
        if (state.isClosed || Table::g_isInited) {
            Table::g_isIniting = false;
            leave(state);
            return;
        }
        path = Table::g_leakTestResFile;
    }
    LeakTable table = read(path);

    const std::lock_guard lock(state.mutex);
    if (!state.isClosed && !Table::g_isInited) {
        publish(std::move(table));
        Table::g_isIniting = false;
        // Last: whoever sees this sees the table.
        Table::g_isInited = true;
    }
    leave(state);
}

// ---- Looking up ----

// Ten times a bound, which need not be an integer of 32 bits any more.
std::int64_t boundInTenths(int bound)
{
    return std::int64_t{bound} * 10;
}

int asKey(std::int64_t value)
{
    return static_cast<int>(
        std::clamp<std::int64_t>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

// The key of a value that the table does not have. The value itself is compared with bounds in tenths; see the header.
int clampedKey(int key, float value, int lowest, int highest)
{
    const std::int64_t low = boundInTenths(lowest);
    const std::int64_t high = boundInTenths(highest);
    if (value > static_cast<float>(high)) {
        key = asKey(high);
    }
    if (static_cast<float>(low) > value) {
        key = asKey(low);
    }
    return key;
}

float soundPowerLevel(float distance, float spl)
{
    constexpr double fourPi = 12.566370614359172;
    const auto metres = static_cast<double>(distance);
    return static_cast<float>(10.0 * std::log10(fourPi * (metres * metres)) + static_cast<double>(spl));
}

// The table's value at a distance and a level; null when it has none.
const float* rateAt(float distance, float spl, float powerLevel)
{
    const auto& rates = std::as_const(Table::g_leakList);
    auto atDistance = rates.constFind(tenths(distance));
    if (atDistance == rates.constEnd()) {
        atDistance = rates.constFind(
            clampedKey(tenths(distance), distance, Table::g_minDistance, Table::g_maxDistance));
    }
    if (atDistance == rates.constEnd()) {
        return nullptr;
    }
    auto atLevel = atDistance->constFind(tenths(powerLevel));
    if (atLevel == atDistance->constEnd()) {
        atLevel =
            atDistance->constFind(clampedKey(tenths(powerLevel), spl, Table::g_minSpl, Table::g_maxSpl));
    }
    return atLevel == atDistance->constEnd() ? nullptr : &*atLevel;
}

// The factor of a mode; 0 for one that is none. (Not in the order of the modes.)
float factorOf(GASLEAK_MODE mode)
{
    switch (mode) {
        case GASLEAK_MODE_0:
        case GASLEAK_MODE_1:
        case GASLEAK_MODE_5:
            return 1.0F;
        case GASLEAK_MODE_2:
            return 4.0F;
        case GASLEAK_MODE_3:
            return 2.0F;
        case GASLEAK_MODE_4:
            return 3.0F;
    }
    return 0.0F;
}

}  // namespace

void KOVGasleakProcessPrivate::initTest()
{
    static const CloseAtExit closeAtExit;
    {
        // From here on, not from the thread's first step: Qt's own work before that needs a living process too.
        const std::lock_guard lock(loading().mutex);
        ++loading().loaders;
    }
    KOVThread* const thread = KOVThread::run(
        [](KOVThreadInfo* info) {
            info->Thread()->setLabel(QStringLiteral("gasLeakInit"));
            load();
        },
        QVariant(), true, QStringLiteral("KOVThread"));
    // Never read. Where the thread that made the first object has no event loop, or ends, nobody deletes the loader's
    // object; one small object a process is accepted, and this shows leak checkers that it is meant.
    static std::atomic<const KOVThread*> lastLoader;
    lastLoader = thread;
    if (!thread->isRunning() && !thread->isFinished()) {
        KOVDOA_DEBUG(source) << "no thread to load the table";
        delete thread;
        load();
    }
}

class KOVGasleakProcess::Private
{
public:
    std::atomic<GASLEAK_MODE> mode{GASLEAK_MODE_5};
    std::vector<float> levels;  // of avgSpl(), oldest first
    float distance = 0.0F;      // of the last measurement, m
    float spl = 0.0F;           // dB
    float powerLevel = 0.0F;    // dB
    std::atomic<float> lrq{0.0F};
    std::atomic<float> leak{0.0F};
};

KOVGasleakProcess::KOVGasleakProcess(const char* tableFile) : d(std::make_unique<Private>())
{
    {
        const std::lock_guard lock(loading().mutex);
        if (Table::g_isInited || Table::g_isIniting) {
            return;
        }
        Table::g_isIniting = true;
        Table::g_leakTestResFile = QString::fromUtf8(tableFile);
    }
    Table::initTest();
}

KOVGasleakProcess::~KOVGasleakProcess() = default;

void KOVGasleakProcess::FeedData(float distance, [[maybe_unused]] float reserved, float spl)
{
    if (!Table::g_isInited) {
        return;
    }
    d->distance = distance;
    d->spl = spl;
    d->powerLevel = soundPowerLevel(distance, spl);
    const float* const rate = rateAt(distance, spl, d->powerLevel);
    if (rate == nullptr) {
        return;
    }
    const float factor = factorOf(d->mode);
    if (factor != 0.0F) {
        d->lrq = *rate * factor;
    }
    d->leak = std::log10(d->lrq.load()) - 1.0F;
}

float KOVGasleakProcess::getLRQ()
{
    return d->lrq;
}

float KOVGasleakProcess::getLeak()
{
    return d->leak;
}

GASLEAK_MODE KOVGasleakProcess::getGasLeakMode()
{
    return d->mode;
}

void KOVGasleakProcess::setGasLeakMode(GASLEAK_MODE mode)
{
    d->mode = mode;
}

float KOVGasleakProcess::avgSpl(float spl)
{
    d->levels.push_back(spl);
    const float mean = KOVBlas::Mean(d->levels.data(), static_cast<int>(d->levels.size()));
    if (d->levels.size() >= averagedLevels) {
        d->levels.erase(d->levels.begin());
    }
    return mean;
}
