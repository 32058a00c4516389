#include <KOVDoaHandle/diagnostics/leaktable_p.h>

#include <gtest/gtest.h>

#include <QtCore/QByteArray>
#include <QtCore/QRegularExpression>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <algorithm>
#include <climits>
#include <cmath>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <string_view>

#include "tests/support/bits.h"

using KOVPrivate::LeakTable;
using KOVPrivate::LeakTableReader;
using KOVPrivate::tenths;

namespace {

LeakTable read(std::string_view text)
{
    LeakTableReader reader;
    reader.feed(text);
    return reader.finish();
}

float rate(const LeakTable& table, int distanceKey, int levelKey)
{
    return table.rates.value(distanceKey).value(levelKey, -1.0F);
}

int entryCount(const LeakTable& table)
{
    int count = 0;
    for (const auto& rates : table.rates) {
        count += rates.size();
    }
    return count;
}

// ---- Keys ----

TEST(LeakTableKeys, AreTenthsTruncatedTowardZero)
{
    EXPECT_EQ(tenths(1.5F), 15);
    EXPECT_EQ(tenths(0.0999F), 0);
    EXPECT_EQ(tenths(-0.0999F), 0);
    EXPECT_EQ(tenths(-1.99F), -19);
    // 0.7 is a little less than seven tenths, but its product with 10 is 7 in single precision.
    EXPECT_EQ(tenths(0.7F), 7);
}

TEST(LeakTableKeys, AreTheNearestIntegerForWhatLiesBeyondThem)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();

    EXPECT_EQ(tenths(3e8F), INT_MAX);
    EXPECT_EQ(tenths(infinity), INT_MAX);
    EXPECT_EQ(tenths(3e38F), INT_MAX);
    EXPECT_EQ(tenths(-3e8F), INT_MIN);
    EXPECT_EQ(tenths(-infinity), INT_MIN);
    EXPECT_EQ(tenths(std::nanf("")), 0);
}

// ---- Lines ----

TEST(LeakTable, StoresARateByTheTenthsOfDistanceAndLevel)
{
    const LeakTable table = read("60 1.5 0.02\n");

    EXPECT_EQ(rate(table, 15, 600), 0.02F);
    EXPECT_EQ(entryCount(table), 1);
}

TEST(LeakTable, KnowsItsRangeInWholeUnits)
{
    const LeakTable table = read("60.9 1.5 1\n75.2 2.9 1\n58.7 0.6 1\n");

    EXPECT_EQ(table.minSpl, 58);
    EXPECT_EQ(table.maxSpl, 75);
    EXPECT_EQ(table.minDistance, 0);
    EXPECT_EQ(table.maxDistance, 2);
}

TEST(LeakTable, TakesItsRangeFromTheFirstLine)
{
    const LeakTable table = read("60 3 1\n");

    EXPECT_EQ(table.minSpl, 60);
    EXPECT_EQ(table.minDistance, 3);
}

TEST(LeakTable, StartsItsRangeFromZeroWhenTheFirstLineIsSkipped)
{
    const LeakTable table = read("level distance rate of leak\n60 3 1\n");

    EXPECT_EQ(table.minSpl, 0);
    EXPECT_EQ(table.maxSpl, 60);
    EXPECT_EQ(table.minDistance, 0);
    EXPECT_EQ(table.maxDistance, 3);
}

TEST(LeakTable, CountsALineOfBlanksAsTheFirstOne)
{
    EXPECT_EQ(read("  \n60 3 1\n").minSpl, 0);
}

TEST(LeakTable, DoesNotCountEmptyLines)
{
    EXPECT_EQ(read("\r\n\n\r60 3 1\n").minSpl, 60);
}

TEST(LeakTable, KeepsTheLaterOfTwoLinesForOnePoint)
{
    const LeakTable table = read("60 1.5 1\n61 1.5 2\n60.02 1.51 3\n");

    EXPECT_EQ(rate(table, 15, 600), 3.0F);
    EXPECT_EQ(rate(table, 15, 610), 2.0F);
}

TEST(LeakTable, LosesNothingButTheLinesThatHaveNotThreeFields)
{
    using namespace std::string_view_literals;

    const LeakTable table = read(
        "60 1 0.5\n"
        "garbage\n"
        "60 2\n"
        "60 2 3 4\n"
        "\0\0\xFF\xFE one\n"
        "# a comment of many words\n"
        "61,1,0.5\n"
        "61 1 0.75"sv);

    EXPECT_EQ(entryCount(table), 2);
    EXPECT_EQ(rate(table, 10, 600), 0.5F);
    EXPECT_EQ(rate(table, 10, 610), 0.75F);
}

TEST(LeakTable, TakesFieldsThatAreNoNumbersForZero)
{
    const LeakTable table = read("60 1 0.5\nlevel distance rate\n");

    EXPECT_EQ(rate(table, 0, 0), 0.0F);
    EXPECT_EQ(table.minSpl, 0);
}

TEST(LeakTable, SkipsALineOfMoreThanAMebibyte)
{
    const std::string padding((1U << 20) - 10, ' ');

    const LeakTable tooLong = read("60 1 " + padding + "      2\n61 1 3\n");
    const LeakTable longest = read("60 1 " + padding + "    2\n61 1 3\n");

    EXPECT_EQ(entryCount(tooLong), 1);
    EXPECT_EQ(rate(tooLong, 10, 610), 3.0F);
    EXPECT_EQ(entryCount(longest), 2);
}

TEST(LeakTable, IsEmptyWithoutText)
{
    const LeakTable table = LeakTableReader().finish();

    EXPECT_TRUE(table.rates.isEmpty());
    EXPECT_EQ(table.maxSpl, 0);
}

// ---- Against Qt's own splitting and numbers ----

int plainTruncated(float value)
{
    if (std::isnan(value)) {
        return 0;
    }
    const double whole = std::trunc(static_cast<double>(value));
    return static_cast<int>(std::clamp(whole, static_cast<double>(INT_MIN), static_cast<double>(INT_MAX)));
}

// The whole text at once, with regular expressions.
LeakTable plainRead(const std::string& text)
{
    LeakTable table;
    const QString decoded = QString::fromUtf8(text.data(), static_cast<int>(text.size()));
    const QStringList lines = decoded.split(QRegularExpression("[\r\n]"), Qt::SkipEmptyParts);
    for (int i = 0; i < lines.size(); ++i) {
        const QStringList fields = lines[i].split(QRegularExpression("[ ]"), Qt::SkipEmptyParts);
        if (fields.size() != 3) {
            continue;
        }
        const float s = fields[0].toFloat();
        const float d = fields[1].toFloat();
        if (i == 0) {
            table.minSpl = table.maxSpl = plainTruncated(s);
            table.minDistance = table.maxDistance = plainTruncated(d);
        }
        if (d > static_cast<float>(table.maxDistance)) {
            table.maxDistance = plainTruncated(d);
        }
        if (d < static_cast<float>(table.minDistance)) {
            table.minDistance = plainTruncated(d);
        }
        if (s > static_cast<float>(table.maxSpl)) {
            table.maxSpl = plainTruncated(s);
        }
        if (s < static_cast<float>(table.minSpl)) {
            table.minSpl = plainTruncated(s);
        }
        table.rates[plainTruncated(d * 10.0F)][plainTruncated(s * 10.0F)] = fields[2].toFloat();
    }
    return table;
}

::testing::AssertionResult sameTable(const LeakTable& expected, const LeakTable& found)
{
    if (expected.minSpl != found.minSpl || expected.maxSpl != found.maxSpl ||
        expected.minDistance != found.minDistance || expected.maxDistance != found.maxDistance) {
        return ::testing::AssertionFailure()
               << "expected levels " << expected.minSpl << " to " << expected.maxSpl << ", distances "
               << expected.minDistance << " to " << expected.maxDistance << ", found " << found.minSpl
               << " to " << found.maxSpl << ", " << found.minDistance << " to " << found.maxDistance;
    }
    if (expected.rates.size() != found.rates.size()) {
        return ::testing::AssertionFailure() << "the numbers of distances differ";
    }
    for (auto distance = expected.rates.begin(); distance != expected.rates.end(); ++distance) {
        const QHash<int, float> rates = found.rates[distance.key()];
        if (distance->size() != rates.size()) {
            return ::testing::AssertionFailure() << "the levels at distance " << distance.key() << " differ";
        }
        for (auto level = distance->begin(); level != distance->end(); ++level) {
            if (!rates.contains(level.key())) {
                return ::testing::AssertionFailure() << "no level " << level.key();
            }
            const float expectedRate = level.value();
            const float foundRate = rates[level.key()];
            const bool bothNan = std::isnan(expectedRate) && std::isnan(foundRate);
            if (!bothNan && !testsupport::sameBits(expectedRate, foundRate)) {
                return ::testing::AssertionFailure()
                       << "at distance " << distance.key() << ", level " << level.key() << ": expected "
                       << expectedRate << ", found " << foundRate;
            }
        }
    }
    return ::testing::AssertionSuccess();
}

// Tables as hostile as they come: numbers in every spelling, words, broken UTF-8, odd blanks.
class HostileText
{
public:
    explicit HostileText(unsigned int seed) : m_random(seed) {}

    std::string table()
    {
        std::string text = chance(20) ? "\xEF\xBB\xBF" : "";
        for (int line = upTo(12); line >= 0; --line) {
            const int fields = chance(5) ? upTo(5) : 3;
            for (int i = 0; i < fields; ++i) {
                text += chance(6) ? "  " : i > 0 ? " " : "";
                text += field();
            }
            text += chance(8) ? " " : "";
            text += lineEnd();
        }
        return text;
    }

    int upTo(int highest) { return std::uniform_int_distribution<int>(0, highest)(m_random); }

private:
    bool chance(int oneIn) { return upTo(oneIn - 1) == 0; }

    std::string lineEnd()
    {
        static const char* const ends[] = {"\n", "\r\n", "\r", "\n\n", "\r\r\n", " \n", ""};
        return ends[upTo(chance(2) ? 6 : 1)];
    }

    std::string digits(int most)
    {
        std::string text;
        for (int count = upTo(most); count > 0; --count) {
            text += static_cast<char>('0' + upTo(9));
        }
        return text;
    }

    std::string decimal(int oneNegativeIn, const std::string& whole, const std::string& fraction)
    {
        std::string text;
        text += chance(oneNegativeIn) ? "-" : "";
        text += whole;
        text += fraction.empty() && !chance(4) ? "" : ".";
        return text.append(fraction);
    }

    std::string field()
    {
        static const char* const odd[] = {"-",
                                          "+",
                                          ".",
                                          "-.",
                                          "5.",
                                          ".5",
                                          "-.5",
                                          "+5",
                                          "-0",
                                          "-0.0",
                                          "0x10",
                                          "1e3",
                                          "1e-3",
                                          "1E+2",
                                          "1e",
                                          "1e400",
                                          "1e-400",
                                          "-1e400",
                                          "1e38",
                                          "4e38",
                                          "1e-46",
                                          "nan",
                                          "-nan",
                                          "NaN",
                                          "inf",
                                          "-inf",
                                          "+inf",
                                          "Inf",
                                          "infinity",
                                          "1,000",
                                          "1,5",
                                          "1.2.3",
                                          "--1",
                                          "1-",
                                          "1f",
                                          "1d",
                                          "\t60",
                                          "60\t",
                                          "\v1\f",
                                          "\xC2\xA0"
                                          "7",
                                          "7\xE2\x80\x83",
                                          "\xEF\xBB\xBF"
                                          "60",
                                          "60\xEF\xBB\xBF",
                                          "\xD9\xA1",
                                          "\xEF\xBC\x91",
                                          "\xFF",
                                          "\xC2",
                                          "\xE2\x82",
                                          "\xF0\x9F\x92\xA8",
                                          "(1)",
                                          "1_0",
                                          "1'000",
                                          "2147483647",
                                          "2147483648",
                                          "-2147483649",
                                          "214748364.75",
                                          "1e9",
                                          "0.1",
                                          "0.30000001192092896",
                                          "9007199254740993",
                                          "123456789012345",
                                          "1234567890123456",
                                          "0.123456789012345678901234567890",
                                          "00000000000000000000060",
                                          "1.000000059604644775390625",
                                          "1.0000000596046448"};
        switch (upTo(9)) {
            case 0:
                return odd[static_cast<std::size_t>(upTo(static_cast<int>(std::size(odd)) - 1))];
            case 1:
                return decimal(2, digits(20), digits(20));
            case 2: {
                std::string bytes;
                for (int count = upTo(5); count >= 0; --count) {
                    bytes += static_cast<char>(upTo(255));
                }
                return bytes;
            }
            default:
                return decimal(8, std::to_string(upTo(120)), chance(3) ? "" : digits(6));
        }
    }

    std::mt19937 m_random;
};

TEST(LeakTable, AgreesWithQtOnHostileTables)
{
    HostileText hostile(1);
    int entries = 0;
    for (int run = 0; run < 6000; ++run) {
        const std::string text = hostile.table();

        const LeakTable expected = plainRead(text);

        ASSERT_TRUE(sameTable(expected, read(text)))
            << "run " << run << ": " << QByteArray::fromStdString(text).toPercentEncoding(" .").toStdString();
        entries += entryCount(expected);
    }
    EXPECT_GT(entries, 20'000);
}

TEST(LeakTable, IsTheSameHoweverTheTextIsCut)
{
    HostileText hostile(2);
    for (int run = 0; run < 2000; ++run) {
        const std::string text = hostile.table() + hostile.table();

        LeakTableReader reader;
        for (std::size_t at = 0; at < text.size();) {
            const auto length = static_cast<std::size_t>(hostile.upTo(9));
            reader.feed(std::string_view(text).substr(at, length));
            at += length;
        }

        ASSERT_TRUE(sameTable(read(text), reader.finish())) << "run " << run;
    }
}

TEST(LeakTable, SkipsALineThatIsTooLongHoweverItIsCut)
{
    const std::string text = "60 1 " + std::string(3U << 20, '5') + "\n61 1 3\n";
    for (const std::size_t length : {std::size_t{1} << 18, std::size_t{1} << 20, text.size() - 3}) {
        LeakTableReader reader;
        for (std::size_t at = 0; at < text.size(); at += length) {
            reader.feed(std::string_view(text).substr(at, length));
        }

        const LeakTable table = reader.finish();

        EXPECT_EQ(entryCount(table), 1);
        EXPECT_EQ(rate(table, 10, 610), 3.0F);
        EXPECT_EQ(table.minSpl, 0);  // the long line was the first
    }
}

}  // namespace
