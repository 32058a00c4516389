// The parts of the program that are loaded when a picture or a video is needed.
#include "tools/pictures/picturecodec.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "tests/tools/program.h"
#include "tools/pictures/loadmodule.h"
#include "tools/pictures/videocodec.h"
#include "tools/support/errors.h"
#include "tools/support/silence.h"

namespace {

using kovtools::DataError;
using kovtools::moduleSymbol;
using kovtools::pictureCodec;
using kovtools::videoCodec;

std::string complaintAbout(const std::string& module, const std::string& symbol)
{
    try {
        moduleSymbol(module, symbol);
    } catch (const DataError& error) {
        return error.what();
    }
    return "";
}

TEST(Modules, AreNamedWhenTheyCannotBeLoaded)
{
    const std::string complaint = complaintAbout("kovdoa_nothing.so", "kovdoaNothing");

    EXPECT_EQ(complaint.find("cannot load 'kovdoa_nothing.so', a part of this program: "), 0U) << complaint;
    EXPECT_NE(complaint.find("No such file"), std::string::npos) << complaint;
}

TEST(Modules, AreNamedWhenTheyLackWhatIsWanted)
{
    const std::string complaint = complaintAbout("kovdoa_pictures.so", "kovdoaNothing");

    EXPECT_EQ(complaint.find("cannot load 'kovdoa_pictures.so', a part of this program: "), 0U) << complaint;
    EXPECT_NE(complaint.find("kovdoaNothing"), std::string::npos) << complaint;
}

TEST(Modules, AreFoundWhereTheLibraryIsWhateverTheWorkingDirectory)
{
    const kovtools::tests::Sandbox sandbox;

    const kovtools::tests::Outcome outcome = sandbox.runScript(
        "ln -s \"$(dirname \"$0\")/../lib\" lib && "
        "LD_LIBRARY_PATH=lib \"$0\" simulate scene a.kov --frames 1 --camera-picture a.png");

    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_FALSE(pictureCodec().decode(kovtools::tests::readFile(sandbox / "a.png")).empty());
}

TEST(PictureCodec, ReadsBackEveryPixelThatItWrote)
{
    cv::Mat picture(37, 53, CV_8UC3);
    cv::randu(picture, 0, 256);

    const std::vector<unsigned char> bytes = pictureCodec().encodePng(picture);
    const cv::Mat read = pictureCodec().decode(std::string(bytes.begin(), bytes.end()));

    ASSERT_EQ(read.size(), picture.size());
    EXPECT_EQ(cv::norm(read, picture, cv::NORM_INF), 0.0);
}

TEST(PictureCodec, HasNoPictureForBytesThatAreNone)
{
    EXPECT_TRUE(pictureCodec().decode("").empty());
    EXPECT_TRUE(pictureCodec().decode("this is no picture").empty());
}

TEST(VideoCodec, CountsThePicturesOfAVideo)
{
    const kovtools::tests::Sandbox sandbox;
    const std::filesystem::path file = sandbox / "a.avi";
    {
        const auto encoder = videoCodec().begin(file, cv::Size(64, 48), 10.0);
        ASSERT_NE(encoder, nullptr);
        for (int i = 0; i < 3; ++i) {
            encoder->add(cv::Mat(48, 64, CV_8UC3, cv::Scalar::all(80 * i)));
        }
    }

    EXPECT_EQ(videoCodec().picturesIn(file), 3);
}

TEST(VideoCodec, FindsNoPicturesInAFileThatIsNoVideo)
{
    const kovtools::tests::Sandbox sandbox;
    kovtools::tests::writeFile(sandbox / "a.avi", "nothing of the kind");
    const kovtools::SilencedStderr silenced;

    EXPECT_EQ(videoCodec().picturesIn(sandbox / "a.avi"), 0);
    EXPECT_EQ(videoCodec().begin(sandbox / "no/a.avi", cv::Size(64, 48), 10.0), nullptr);
}

}  // namespace
