// The library as a whole. What initLogging() does is seen in the tests of the log files.
#include <KOVDoaHandle/api/library.h>

#include <gtest/gtest.h>

namespace {

TEST(Version, IsTheTextOfThisRelease)
{
    EXPECT_STREQ(Version(), "0019");
}

TEST(Version, IsTheSameTextOnEveryCall)
{
    const char* first = Version();

    EXPECT_EQ(Version(), first);
    EXPECT_STREQ(first, "0019");
}

}  // namespace
