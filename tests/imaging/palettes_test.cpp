// The palettes pass through the entries agreed with the hosts, have their exact lengths and look smooth. That
// the table is what scripts/palettes.py writes is a test of its own, beside the tests of the tree's
// structure.
#include <KOVDoaHandle/imaging/palettes_p.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <ostream>
#include <set>
#include <string>

namespace {

using KOVPrivate::blackRedYellowPalette;
using KOVPrivate::greyPalette;
using KOVPrivate::Palette;
using KOVPrivate::PaletteEntry;
using KOVPrivate::rainbowPalette;

// As numbers, for comparing and printing.
std::array<int, 3> blueGreenRed(const PaletteEntry& entry)
{
    return {entry.blue, entry.green, entry.red};
}

struct Agreed
{
    std::string name;
    const Palette* palette;
    int index;
    PaletteEntry entry;
};

void PrintTo(const Agreed& agreed, std::ostream* out)
{
    *out << agreed.name;
}

class AgreedEntries : public ::testing::TestWithParam<Agreed>
{
};

TEST_P(AgreedEntries, AreKeptExactly)
{
    const Agreed& agreed = GetParam();

    EXPECT_EQ(blueGreenRed(agreed.palette->entries[agreed.index]), blueGreenRed(agreed.entry));
}

INSTANTIATE_TEST_SUITE_P(
    Palettes, AgreedEntries,
    ::testing::Values(Agreed{"Rainbow0", &rainbowPalette, 0, {123, 3, 2}},
                      Agreed{"Rainbow1", &rainbowPalette, 1, {123, 3, 2}},
                      Agreed{"Rainbow132", &rainbowPalette, 132, {177, 249, 54}},
                      Agreed{"Rainbow133", &rainbowPalette, 133, {174, 250, 55}},
                      Agreed{"Rainbow265", &rainbowPalette, 265, {47, 18, 62}},
                      Agreed{"BlackRedYellow0", &blackRedYellowPalette, 0, {0, 0, 0}},
                      Agreed{"BlackRedYellow1", &blackRedYellowPalette, 1, {2, 1, 1}},
                      Agreed{"BlackRedYellow2", &blackRedYellowPalette, 2, {9, 2, 4}},
                      Agreed{"BlackRedYellow221", &blackRedYellowPalette, 221, {73, 58, 195}},
                      Agreed{"BlackRedYellow443", &blackRedYellowPalette, 443, {255, 255, 255}},
                      Agreed{"Grey0", &greyPalette, 0, {0, 0, 0}},
                      Agreed{"Grey1", &greyPalette, 1, {1, 1, 1}},
                      Agreed{"Grey2", &greyPalette, 2, {2, 2, 2}},
                      Agreed{"Grey122", &greyPalette, 122, {112, 123, 143}},
                      Agreed{"Grey245", &greyPalette, 245, {255, 255, 255}}),
    [](const auto& test) { return test.param.name; });

TEST(Palettes, HaveTheLengthsThatTheScaleFactorsAreTiedTo)
{
    EXPECT_EQ(rainbowPalette.size, 266);
    EXPECT_EQ(blackRedYellowPalette.size, 444);
    EXPECT_EQ(greyPalette.size, 246);
    EXPECT_EQ(rainbowPalette.lastIndex(), 265);
}

// CIELAB under the daylight white of sRGB.
struct Lab
{
    double lightness;
    double a;
    double b;
};

double linear(std::uint8_t byte)
{
    const double v = byte / 255.0;
    return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}

double compressed(double t)
{
    constexpr double knee = 6.0 / 29.0;
    return t > knee * knee * knee ? std::cbrt(t) : t / (3.0 * knee * knee) + 4.0 / 29.0;
}

Lab labOf(const PaletteEntry& entry)
{
    const double r = linear(entry.red);
    const double g = linear(entry.green);
    const double b = linear(entry.blue);
    const double fx = compressed((0.4124 * r + 0.3576 * g + 0.1805 * b) / 0.9505);
    const double fy = compressed(0.2126 * r + 0.7152 * g + 0.0722 * b);
    const double fz = compressed((0.0193 * r + 0.1192 * g + 0.9505 * b) / 1.0890);
    return {116.0 * fy - 16.0, 500.0 * (fx - fy), 200.0 * (fy - fz)};
}

double difference(const PaletteEntry& first, const PaletteEntry& second)
{
    const Lab p = labOf(first);
    const Lab q = labOf(second);
    return std::hypot(p.lightness - q.lightness, p.a - q.a, p.b - q.b);
}

// The entry after which the widest step lies, among those from `first` on.
int widestStep(const Palette& palette, int first)
{
    int widest = first;
    for (int i = first; i < palette.lastIndex(); ++i) {
        if (difference(palette.entries[i], palette.entries[i + 1]) >
            difference(palette.entries[widest], palette.entries[widest + 1])) {
            widest = i;
        }
    }
    return widest;
}

struct Smooth
{
    std::string name;
    const Palette* palette;
    int firstOwnStep;  // the steps before lie between agreed entries
};

void PrintTo(const Smooth& smooth, std::ostream* out)
{
    *out << smooth.name;
}

class SmoothPalettes : public ::testing::TestWithParam<Smooth>
{
};

// 2.3 in CIE 1976 colour difference is where an eye begins to tell two touching patches apart.
TEST_P(SmoothPalettes, HaveNoStepThatAnEyeWouldNotice)
{
    const Palette& palette = *GetParam().palette;
    const int widest = widestStep(palette, GetParam().firstOwnStep);

    EXPECT_LT(difference(palette.entries[widest], palette.entries[widest + 1]), 2.3)
        << "after entry " << widest;
}

INSTANTIATE_TEST_SUITE_P(Palettes, SmoothPalettes,
                         ::testing::Values(Smooth{"Rainbow", &rainbowPalette, 0},
                                           Smooth{"BlackRedYellow", &blackRedYellowPalette, 2},
                                           Smooth{"Grey", &greyPalette, 0}),
                         [](const auto& test) { return test.param.name; });

class ReadablePalettes : public ::testing::TestWithParam<Smooth>
{
};

TEST_P(ReadablePalettes, GetLighterFromEveryEntryToTheNext)
{
    const Palette& palette = *GetParam().palette;
    for (int i = 0; i < palette.lastIndex(); ++i) {
        ASSERT_LT(labOf(palette.entries[i]).lightness, labOf(palette.entries[i + 1]).lightness)
            << "entry " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Palettes, ReadablePalettes,
                         ::testing::Values(Smooth{"BlackRedYellow", &blackRedYellowPalette, 2},
                                           Smooth{"Grey", &greyPalette, 0}),
                         [](const auto& test) { return test.param.name; });

// Rounding to bytes may turn it by a few tenths of L*, which no eye sees.
TEST(Palettes, LetTheRainbowGetLighterToItsMiddleAndDarkerFromThere)
{
    const int middle = 133;
    for (int i = 0; i < rainbowPalette.lastIndex(); ++i) {
        const double here = labOf(rainbowPalette.entries[i]).lightness;
        const double next = labOf(rainbowPalette.entries[i + 1]).lightness;
        const double rise = i < middle ? next - here : here - next;
        ASSERT_GT(rise, -0.3) << "entry " << i;
    }
}

TEST(Palettes, LeadTheRainbowThroughBlueCyanGreenYellowAndRed)
{
    const auto blue = rainbowPalette.entries[40];
    const auto cyan = rainbowPalette.entries[100];
    const auto green = rainbowPalette.entries[145];
    const auto yellow = rainbowPalette.entries[175];
    const auto red = rainbowPalette.entries[225];

    EXPECT_TRUE(blue.blue > 2 * blue.green && blue.blue > 2 * blue.red);
    EXPECT_TRUE(cyan.blue > 3 * cyan.red && cyan.green > 3 * cyan.red);
    EXPECT_TRUE(green.green > green.red + 80 && green.green > green.blue + 80);
    EXPECT_TRUE(yellow.red > 2 * yellow.blue && yellow.green > 2 * yellow.blue);
    EXPECT_TRUE(red.red > 3 * red.green && red.red > 3 * red.blue);
}

TEST(Palettes, GiveEveryEntryButTheLowestOnesOfTheRainbowAColourOfItsOwn)
{
    const auto distinct = [](const Palette& palette) {
        std::set<std::array<int, 3>> colours;
        for (int i = 0; i < palette.size; ++i) {
            colours.insert(blueGreenRed(palette.entries[i]));
        }
        return static_cast<int>(colours.size());
    };

    EXPECT_EQ(distinct(rainbowPalette), 264);
    EXPECT_EQ(distinct(blackRedYellowPalette), 444);
    EXPECT_EQ(distinct(greyPalette), 246);
}

}  // namespace
