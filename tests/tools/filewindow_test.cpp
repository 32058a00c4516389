#include "tools/recording/filewindow.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>
#include <string>

namespace {

using kovtools::FileWindow;

std::string noise(std::size_t length)
{
    std::mt19937 random(7);
    std::string bytes(length, '\0');
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
    return bytes;
}

TEST(FileWindow, ShowsTheBytesOfTheFileWhereverItIsAsked)
{
    const std::string bytes = noise(1'000'000);
    std::istringstream stream(bytes);
    FileWindow window(stream);
    std::mt19937 random(8);
    std::uint64_t place = 0;
    for (int i = 0; i < 2000; ++i) {
        // Small steps to both sides, and a jump now and then.
        place = i % 10 == 0 ? random() % bytes.size()
                            : std::min<std::uint64_t>(place + random() % 30'000, bytes.size()) -
                                  std::min<std::uint64_t>(place, random() % 10'000);
        const std::size_t count = random() % 50'000;

        const std::string_view seen = window.at(place, count);

        ASSERT_GE(seen.size(), std::min<std::size_t>(count, bytes.size() - place));
        ASSERT_EQ(seen, std::string_view(bytes).substr(place, seen.size()));
    }
}

TEST(FileWindow, ShowsNothingBehindTheEnd)
{
    std::istringstream stream("0123456789");
    FileWindow window(stream);

    EXPECT_EQ(window.size(), 10U);
    EXPECT_EQ(window.at(8, 5), "89");
    EXPECT_EQ(window.at(10, 5), "");
    EXPECT_EQ(window.at(100, 5), "");
    EXPECT_EQ(window.at(0, 3).substr(0, 3), "012");
}

TEST(FileWindow, DoesNotSeeWhatIsAppendedLater)
{
    std::stringstream stream("0123");
    FileWindow window(stream);
    stream.seekp(0, std::ios::end);
    stream << "4567";

    EXPECT_EQ(window.at(2, 6), "23");
}

}  // namespace
