#include "tools/arrayaudio/geometryfile.h"

#include <gtest/gtest.h>

#include "tests/tools/program.h"
#include "tools/support/errors.h"

namespace {

using kovtools::Microphone;
using kovtools::readGeometry;
using kovtools::tests::Sandbox;
using kovtools::tests::writeFile;

TEST(GeometryFile, HoldsOnePositionALineAndComments)
{
    const Sandbox sandbox;
    writeFile(sandbox / "g.txt", "# x y z, m\r\n0.1 -0.2 0.05\r\n\n  +1e-2,\t0 , 3  # the third\n-1 2 -3");

    const std::vector<Microphone> array = readGeometry(sandbox / "g.txt");

    ASSERT_EQ(array.size(), 3U);
    EXPECT_EQ(array[0].y, -0.2);
    EXPECT_EQ(array[0].z, 0.05);
    EXPECT_EQ(array[1].x, 0.01);
    EXPECT_EQ(array[2].z, -3.0);
}

TEST(GeometryFile, MayBeginWithAByteOrderMark)
{
    const Sandbox sandbox;
    writeFile(sandbox / "g.txt",
              "\xEF\xBB\xBF"
              "1 2 3\n");

    const std::vector<Microphone> array = readGeometry(sandbox / "g.txt");

    ASSERT_EQ(array.size(), 1U);
    EXPECT_EQ(array[0].x, 1.0);
}

TEST(GeometryFile, NamesTheLineThatIsWrong)
{
    const Sandbox sandbox;
    const std::string file = (sandbox / "g.txt").string();
    const std::string shape = "' is not a position: three numbers, x y z in metres, are needed";
    std::string many;
    for (int i = 0; i < 1025; ++i) {
        many += "0 0 0\n";
    }
    const std::pair<std::string, std::string> table[] = {
        {"0 0 0\n1 2\n", "line 2 of '" + file + shape},
        {"#\n0 0 0\n\n1 2 3 4\n", "line 4 of '" + file + shape},
        {"a b c", "line 1 of '" + file + shape},
        {"0 0 0x", "line 1 of '" + file + shape},
        {"0 nan 0", "line 1 of '" + file + shape},
        {"inf 0 0", "line 1 of '" + file + shape},
        {std::string("0 0 0\n\0\0\xFF\n", 10), "line 2 of '" + file + shape},
        {"0 0 0\n0 0 11", "line 2 of '" + file + "' is farther than 10 m from the middle of the array"},
        {many, "line 1025 of '" + file + "' is one too many: an array has at most 1024 channels"},
        {"# nothing\n", "'" + file + "' holds no positions"},
        {"", "'" + file + "' holds no positions"},
    };
    for (const auto& [text, complaint] : table) {
        writeFile(file, text);
        try {
            readGeometry(file);
            ADD_FAILURE() << "no complaint about: " << text.substr(0, 40);
        } catch (const kovtools::DataError& error) {
            EXPECT_EQ(error.what(), complaint);
        }
    }
}

}  // namespace
