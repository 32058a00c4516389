// Any bytes as a calibration table of the gas-leak mode. Besides that nothing breaks: the table is what the plainest
// reading of the text gives, however the bytes come in pieces; a line of garbage loses nothing but itself; and every
// measurement against it gives an entry of the table, multiplied, or leaves the results alone.
#include <QtCore/QHash>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include <KOVDoaHandle/diagnostics/kovgasleakprocess.h>
#include <KOVDoaHandle/diagnostics/leaktable_p.h>

namespace {

using KOVPrivate::LeakTable;
using KOVPrivate::LeakTableReader;
using Table = KOVGasleakProcessPrivate;

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "relation broken: %s\n", what);
    std::abort();
}

bool same(float a, float b)
{
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b) ||
           (std::isnan(a) && std::isnan(b));
}

// Without QHash's own comparison, for which a NaN differs from itself.
bool sameTable(const LeakTable& a, const LeakTable& b)
{
    if (a.minSpl != b.minSpl || a.maxSpl != b.maxSpl || a.minDistance != b.minDistance ||
        a.maxDistance != b.maxDistance || a.rates.size() != b.rates.size()) {
        return false;
    }
    for (auto row = a.rates.constBegin(); row != a.rates.constEnd(); ++row) {
        const auto other = b.rates.constFind(row.key());
        if (other == b.rates.constEnd() || other->size() != row->size()) {
            return false;
        }
        for (auto rate = row->constBegin(); rate != row->constEnd(); ++rate) {
            const auto twin = other->constFind(rate.key());
            if (twin == other->constEnd() || !same(*twin, *rate)) {
                return false;
            }
        }
    }
    return true;
}

LeakTable inPieces(std::string_view text, std::size_t piece)
{
    LeakTableReader reader;
    for (; !text.empty(); text.remove_prefix(std::min(piece, text.size()))) {
        reader.feed(text.substr(0, piece));
    }
    return reader.finish();
}

LeakTable whole(std::string_view text)
{
    return inPieces(text, std::max<std::size_t>(text.size(), 1));
}

// ---- The plainest reading ----

int towardZero(float value)
{
    constexpr double low = std::numeric_limits<int>::min();
    constexpr double high = std::numeric_limits<int>::max();
    return std::isnan(value) ? 0 : static_cast<int>(std::clamp(static_cast<double>(value), low, high));
}

void take(const QStringList& fields, bool isFirst, LeakTable& table)
{
    const float level = fields[0].toFloat();
    const float distance = fields[1].toFloat();
    if (isFirst) {
        table.minSpl = table.maxSpl = towardZero(level);
        table.minDistance = table.maxDistance = towardZero(distance);
    }
    table.maxSpl = level > static_cast<float>(table.maxSpl) ? towardZero(level) : table.maxSpl;
    table.minSpl = level < static_cast<float>(table.minSpl) ? towardZero(level) : table.minSpl;
    table.maxDistance =
        distance > static_cast<float>(table.maxDistance) ? towardZero(distance) : table.maxDistance;
    table.minDistance =
        distance < static_cast<float>(table.minDistance) ? towardZero(distance) : table.minDistance;
    table.rates[towardZero(distance * 10.0F)][towardZero(level * 10.0F)] = fields[2].toFloat();
}

LeakTable plainly(std::string_view text)
{
    QString all = QString::fromUtf8(text.data(), static_cast<int>(text.size()));
    all.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    LeakTable table;
    bool isFirst = true;
    for (const QString& line : all.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const QStringList fields = line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        if (fields.size() == 3) {
            take(fields, isFirst, table);
        }
        isFirst = false;
    }
    return table;
}

// ---- Garbage ----

// Begin of a line behind which garbage changes nothing: some line stands before it, so that the first line stays the
// first.
std::size_t placeForGarbage(std::string_view text)
{
    const std::size_t begun = text.find_first_not_of("\r\n", text.starts_with("\xEF\xBB\xBF") ? 3 : 0);
    const std::size_t end = text.find_first_of("\r\n", std::max(begun, text.size() / 2));
    return begun == std::string_view::npos || end == std::string_view::npos ? text.size() : end + 1;
}

void checkGarbage(const std::string& text, const LeakTable& table)
{
    const std::size_t at = placeForGarbage(text);
    if (at == text.size()) {
        return;
    }
    for (const char* const garbage : {"\n", "60 1.5\n", "60 1.5 0.1 7\n", "\xFF\xFE{}\r\n", "  \n"}) {
        std::string spoilt = text;
        spoilt.insert(at, garbage);
        if (!sameTable(whole(spoilt), table)) {
            fail("a line of garbage changes the others");
        }
    }
}

// ---- Measuring ----

int keyBeyond(int key, float value, int lowest, int highest)
{
    constexpr double low = std::numeric_limits<int>::min();
    constexpr double high = std::numeric_limits<int>::max();
    if (value > static_cast<float>(std::int64_t{highest} * 10)) {
        key = static_cast<int>(std::clamp(highest * 10.0, low, high));
    }
    if (static_cast<float>(std::int64_t{lowest} * 10) > value) {
        key = static_cast<int>(std::clamp(lowest * 10.0, low, high));
    }
    return key;
}

std::optional<float> plainRate(const LeakTable& table, float distance, float spl)
{
    const double area = 12.566370614359172 * (static_cast<double>(distance) * static_cast<double>(distance));
    const auto power = static_cast<float>(10.0 * std::log10(area) + static_cast<double>(spl));
    int distanceKey = towardZero(distance * 10.0F);
    if (!table.rates.contains(distanceKey)) {
        distanceKey = keyBeyond(distanceKey, distance, table.minDistance, table.maxDistance);
    }
    if (!table.rates.contains(distanceKey)) {
        return std::nullopt;
    }
    const QHash<int, float> row = table.rates.value(distanceKey);
    int levelKey = towardZero(power * 10.0F);
    if (!row.contains(levelKey)) {
        levelKey = keyBeyond(levelKey, spl, table.minSpl, table.maxSpl);
    }
    return row.contains(levelKey) ? std::optional(row.value(levelKey)) : std::nullopt;
}

void checkMeasurement(const LeakTable& table, float distance, float spl)
{
    KOVGasleakProcess meter(nullptr);
    meter.setGasLeakMode(GASLEAK_MODE_4);
    meter.FeedData(distance, 0.0F, spl);
    const std::optional<float> rate = plainRate(table, distance, spl);
    if (!same(meter.getLRQ(), rate ? *rate * 3.0F : 0.0F)) {
        fail("a measurement gives another rate than the table's");
    }
    if (!same(meter.getLeak(), rate ? std::log10(*rate * 3.0F) - 1.0F : 0.0F)) {
        fail("the leak value is not the logarithm of the rate");
    }
}

// The process has one table; here every input becomes it in turn, as if it had been loaded.
void checkMeasurements(const LeakTable& table)
{
    Table::g_leakList = table.rates;
    Table::g_minSpl = table.minSpl;
    Table::g_maxSpl = table.maxSpl;
    Table::g_minDistance = table.minDistance;
    Table::g_maxDistance = table.maxDistance;
    Table::g_isInited = true;

    for (const float distance : {0.0F, 0.3F, 1.5F, 1e4F, 1e30F, -2.0F}) {
        for (const float spl : {-1e9F, 47.0F, 60.0F, 1e9F}) {
            checkMeasurement(table, distance, spl);
        }
    }
    constexpr int mostDistances = 4;
    int used = 0;
    for (auto row = table.rates.constBegin(); row != table.rates.constEnd() && used < mostDistances;
         ++row, ++used) {
        const float distance = static_cast<float>(row.key()) / 10.0F + 0.05F;
        const double area =
            12.566370614359172 * (static_cast<double>(distance) * static_cast<double>(distance));
        const double level = row->constBegin().key() / 10.0 + 0.05;
        checkMeasurement(table, distance, static_cast<float>(level - 10.0 * std::log10(area)));
        checkMeasurement(table, distance, static_cast<float>(table.maxSpl) * 11.0F);
        checkMeasurement(table, distance, static_cast<float>(table.minSpl) * 9.0F);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(bytes), size);
    const LeakTable table = whole(text);
    for (const std::size_t piece : {1U, 3U, 64U}) {
        if (!sameTable(inPieces(text, piece), table)) {
            fail("the table depends on the pieces that it comes in");
        }
    }
    if (!sameTable(plainly(text), table)) {
        fail("the table is not what its text says");
    }
    checkGarbage(text, table);
    checkMeasurements(table);
    return 0;
}
