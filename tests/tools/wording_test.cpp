#include "tools/support/wording.h"

#include <gtest/gtest.h>

namespace {

using kovtools::counted;
using kovtools::printable;

TEST(Wording, SpellsOutControlCharactersAndNothingElse)
{
    EXPECT_EQ(printable("Prüfstand утечка \xFF 'x' \\ y"), "Prüfstand утечка \xFF 'x' \\ y");
    EXPECT_EQ(printable("a\nb\rc\td"), "a\\nb\\rc\\td");
    EXPECT_EQ(printable("\x1B[2J\x7F"), "\\x1B[2J\\x7F");
    EXPECT_EQ(printable(std::string_view("\0", 1)), "\\x00");
    EXPECT_EQ(printable("\xC2\x9B"), "\\x9B");
    EXPECT_EQ(printable("\xC2\xB0 \xC2"), "\xC2\xB0 \xC2");
}

TEST(Wording, CountsOneInTheSingular)
{
    EXPECT_EQ(counted(0, "frame"), "0 frames");
    EXPECT_EQ(counted(1, "frame"), "1 frame");
    EXPECT_EQ(counted(2, "frame"), "2 frames");
}

}  // namespace
