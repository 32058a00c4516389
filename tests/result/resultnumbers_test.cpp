#include <KOVDoaHandle/result/resultnumbers_p.h>

#include <gtest/gtest.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>

namespace {

std::string number(float value)
{
    std::string text;
    KOVResult::appendNumber(text, value);
    return text;
}

std::string qtNumber(float value)
{
    return QStringLiteral("%1").arg(static_cast<double>(value)).toStdString();
}

TEST(ResultNumbers, WriteSixSignificantDigitsAndNoTrailingZeros)
{
    EXPECT_EQ(number(65.5F), "65.5");
    EXPECT_EQ(number(1e8F), "1e+08");
    EXPECT_EQ(number(0.000123456789F), "0.000123457");
    EXPECT_EQ(number(0.0F), "0");
    EXPECT_EQ(number(-2.5F), "-2.5");
    EXPECT_EQ(number(999999.5F), "1e+06");
    EXPECT_EQ(number(0.00001F), "1e-05");
    EXPECT_EQ(number(1e30F), "1e+30");
}

TEST(ResultNumbers, WriteInfinityAndNotANumberWithoutTheirOddSpellings)
{
    EXPECT_EQ(number(std::numeric_limits<float>::infinity()), "inf");
    EXPECT_EQ(number(-std::numeric_limits<float>::infinity()), "-inf");
    EXPECT_EQ(number(std::numeric_limits<float>::quiet_NaN()), "nan");
    EXPECT_EQ(number(-std::numeric_limits<float>::quiet_NaN()), "nan");
}

TEST(ResultNumbers, WriteEverySpecialFloatLikeQString)
{
    using Limits = std::numeric_limits<float>;
    for (const float value : {0.0F,
                              -0.0F,
                              1.0F,
                              -1.0F,
                              Limits::min(),
                              Limits::denorm_min(),
                              -Limits::denorm_min(),
                              Limits::max(),
                              Limits::lowest(),
                              Limits::epsilon(),
                              Limits::infinity(),
                              -Limits::infinity(),
                              Limits::quiet_NaN(),
                              -Limits::quiet_NaN(),
                              0.5F,
                              0.1F,
                              123456.0F,
                              1234567.0F,
                              999999.4F,
                              999999.6F,
                              99999.95F,
                              0.0001F,
                              0.00009999995F,
                              1e-4F,
                              1e-5F,
                              1e5F,
                              1e6F,
                              1e10F,
                              16777216.0F}) {
        EXPECT_EQ(number(value), qtNumber(value));
    }
}

TEST(ResultNumbers, WriteNumbersHalfWayBetweenTwoTextsLikeQString)
{
    EXPECT_EQ(number(43915.25F), "43915.3");
    EXPECT_EQ(number(-2832905.0F), "-2.83291e+06");
    EXPECT_EQ(number(0.0009765625F), "0.000976563");
    int halfWay = 0;
    for (int numerator = 1; numerator < 200'000; ++numerator) {
        for (float value = static_cast<float>(numerator); value > 1e-4F; value /= 8.0F) {
            ASSERT_EQ(number(value), qtNumber(value)) << value;
        }
        char printed[32];
        std::snprintf(printed, sizeof printed, "%g", static_cast<double>(numerator) / 16.0);
        halfWay += number(static_cast<float>(numerator) / 16.0F) != printed ? 1 : 0;
    }
    EXPECT_GT(halfWay, 100);
}

TEST(ResultNumbers, WriteRandomFloatsLikeQString)
{
    std::mt19937 random(20240102);
    for (int i = 0; i < 100'000; ++i) {
        const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        ASSERT_EQ(number(value), qtNumber(value));
    }
}

TEST(ResultNumbers, WriteRandomLevelsLikeQString)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> exponent(-8.0, 8.0);
    for (int i = 0; i < 100'000; ++i) {
        const auto value = static_cast<float>(std::pow(10.0, exponent(random)));
        ASSERT_EQ(number(value), qtNumber(value));
    }
}

TEST(ResultNumbers, WriteIntegersInPlainDecimal)
{
    std::string text;
    for (const int value : {0, -1, 2147483647, -2147483647 - 1}) {
        KOVResult::appendNumber(text, value);
        text += ' ';
    }

    EXPECT_EQ(text, "0 -1 2147483647 -2147483648 ");
}

const char* const someTexts[] = {"",
                                 " ",
                                 "0",
                                 "-0",
                                 "1",
                                 "-1",
                                 "+1",
                                 "12",
                                 " 12",
                                 "12 ",
                                 "\t12",
                                 "12\r",
                                 "1 2",
                                 "1.5",
                                 "-1.5",
                                 "1.",
                                 ".5",
                                 "-.5",
                                 "1e5",
                                 "1E5",
                                 "1e+05",
                                 "1e-05",
                                 "1e",
                                 "e5",
                                 "1e999",
                                 "-1e999",
                                 "1e-999",
                                 "1e39",
                                 "3.4028236e38",
                                 "1e-46",
                                 "1e-40",
                                 "inf",
                                 "-inf",
                                 "+inf",
                                 "nan",
                                 "-nan",
                                 "Inf",
                                 "NaN",
                                 "abc",
                                 "12abc",
                                 "abc12",
                                 "0x10",
                                 "010",
                                 "--1",
                                 "-",
                                 "+",
                                 ".",
                                 "1,5",
                                 "1 000",
                                 "1_000",
                                 "2147483647",
                                 "2147483648",
                                 "-2147483648",
                                 "-2147483649",
                                 "4294967297",
                                 "99999999999999999999",
                                 "-99999999999999999999",
                                 "0.1f",
                                 "1.0.0",
                                 "\xff",
                                 "1\xc2\xa0"};

TEST(ResultNumbers, ReadFloatsLikeQByteArray)
{
    for (const char* const text : someTexts) {
        const float expected = QByteArray(text).toFloat();
        const float read = KOVResult::readFloat(text);
        EXPECT_EQ(std::isnan(read), std::isnan(expected)) << '"' << text << '"';
        if (!std::isnan(expected)) {
            EXPECT_EQ(read, expected) << '"' << text << '"';
        }
    }
}

TEST(ResultNumbers, ReadIntegersLikeQByteArray)
{
    for (const char* const text : someTexts) {
        EXPECT_EQ(KOVResult::readInt(text), QByteArray(text).toInt()) << '"' << text << '"';
    }
}

TEST(ResultNumbers, ReadMalformedTextAsZero)
{
    EXPECT_EQ(KOVResult::readFloat("abc"), 0.0F);
    EXPECT_EQ(KOVResult::readFloat("12abc"), 0.0F);
    EXPECT_EQ(KOVResult::readFloat(""), 0.0F);
    EXPECT_EQ(KOVResult::readInt("abc"), 0);
    EXPECT_EQ(KOVResult::readInt("1.5"), 0);
    EXPECT_EQ(KOVResult::readInt("4294967297"), 0);
}

TEST(ResultNumbers, ReadBackTheSixDigitsThatWereWritten)
{
    std::mt19937 random(11);
    for (int i = 0; i < 100'000; ++i) {
        const float value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (!std::isfinite(value)) {
            continue;
        }
        const std::string text = number(value);
        const float read = KOVResult::readFloat(text);
        ASSERT_EQ(read, QByteArray::fromStdString(text).toFloat()) << text;
        if (std::isfinite(read)) {
            ASSERT_EQ(number(read), text);
        }
    }
}

TEST(ResultNumbers, AreSeparatedByOneOrMoreBlanks)
{
    std::string_view text = "  1.5 2   x ";

    EXPECT_EQ(KOVResult::takePart(text), "1.5");
    EXPECT_EQ(KOVResult::takePart(text), "2");
    EXPECT_EQ(KOVResult::takePart(text), "x");
    EXPECT_EQ(KOVResult::takePart(text), "");
    EXPECT_EQ(KOVResult::takePart(text), "");
}

}  // namespace
