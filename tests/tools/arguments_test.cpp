// What the program answers to wrong arguments and to a cry for help.
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "tests/tools/program.h"

namespace {

using kovtools::tests::isOneSentence;
using kovtools::tests::Outcome;
using kovtools::tests::Sandbox;

using Arguments = std::vector<std::string>;

class Help : public testing::TestWithParam<Arguments>
{
};

TEST_P(Help, GoesToStdoutWithAnExampleAndStatusZero)
{
    const Sandbox sandbox;
    Arguments arguments = GetParam();
    arguments.emplace_back("--help");

    const Outcome outcome = sandbox.run(arguments);

    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_NE(outcome.out.find("Usage:"), std::string::npos);
    EXPECT_NE(outcome.out.find("Example:\n  kovdoa "), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(EveryLevel, Help, testing::Values(Arguments{}, Arguments{"simulate"}));

struct WrongUse
{
    Arguments arguments;
    std::string mentions;
};

void PrintTo(const WrongUse& wrong, std::ostream* out)
{
    *out << "kovdoa";
    for (const std::string& argument : wrong.arguments) {
        *out << ' ' << argument;
    }
}

class WrongArguments : public testing::TestWithParam<WrongUse>
{
};

TEST_P(WrongArguments, GetOneSentenceOnStderrAndStatusTwo)
{
    const Sandbox sandbox;

    const Outcome outcome = sandbox.run(GetParam().arguments);

    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_NE(outcome.err.find(GetParam().mentions), std::string::npos) << outcome.err;
    EXPECT_TRUE(sandbox.contents().empty());
}

INSTANTIATE_TEST_SUITE_P(
    OfTheProgram, WrongArguments,
    testing::Values(WrongUse{{}, "simulate, beamform, info, render"}, WrongUse{{"frobnicate"}, "frobnicate"},
                    WrongUse{{"--frobnicate"}, "--frobnicate"}, WrongUse{{"info"}, "FILE"},
                    WrongUse{{"info", "--jsn"}, "--jsn"}, WrongUse{{"info", "a.kov", "b.kov"}, "b.kov"},
                    WrongUse{{"check"}, "FILE"}, WrongUse{{"recover", "a.kov"}, "--output"},
                    WrongUse{{"info", ""}, "file name"}, WrongUse{{"info", "a.kov", "--fps", "0"}, "--fps"},
                    WrongUse{{"info", "a.kov", "--fps", "1", "--fps", "2"}, "--fps may be given only once"},
                    WrongUse{{"info", "a.kov", "--log"}, "--log needs a value"}));

INSTANTIATE_TEST_SUITE_P(
    OfSimulate, WrongArguments,
    testing::Values(WrongUse{{"simulate"}, "'kovdoa simulate': scene"},
                    WrongUse{{"simulate", "scene"}, "OUT"},
                    WrongUse{{"simulate", "scene", "a", "--frames", "0"}, "whole number from 1"},
                    WrongUse{{"simulate", "scene", "a", "--frames", "-3"}, "-3"},
                    WrongUse{{"simulate", "scene", "a", "--frames", "ten"}, "'ten'"},
                    WrongUse{{"simulate", "scene", "a", "--frames", "1e3"}, "'1e3'"},
                    WrongUse{{"simulate", "scene", "a", "--frames", "99999999999"}, "99999999999"},
                    WrongUse{{"simulate", "scene", "a", "--map", "48"}, "ROWSxCOLS"},
                    WrongUse{{"simulate", "scene", "a", "--map", "48x"}, "48x"},
                    WrongUse{{"simulate", "scene", "a", "--map", "3x64"}, "from 4x4"},
                    WrongUse{{"simulate", "scene", "a", "--map", "4x513"}, "to 512x512"},
                    WrongUse{{"simulate", "scene", "a", "--sources", "27"}, "--sources"},
                    WrongUse{{"simulate", "scene", "a", "--seed", "-1"}, "--seed"},
                    WrongUse{{"simulate", "scene", "a", "--seed", "12x"}, "12x"},
                    WrongUse{{"simulate", "scene", "a", "--noise", "nan"}, "--noise"},
                    WrongUse{{"simulate", "scene", "a", "--noise", "-0.1"}, "--noise"},
                    WrongUse{{"simulate", "scene", "a", "--picture", "100x100"}, "160x120"},
                    WrongUse{{"simulate", "scene", "a", "--camera-picture", "c.jpg"}, ".png"},
                    WrongUse{{"simulate", "scene", "a", "--fft-length", "63"}, "--fft-length"},
                    WrongUse{{"simulate", "scene", "a", "--fps", "inf"}, "--fps"}));

INSTANTIATE_TEST_SUITE_P(
    OfRender, WrongArguments,
    testing::Values(WrongUse{{"render", "a.kov"}, "--output"}, WrongUse{{"render", "-o", "x"}, "FILE"},
                    WrongUse{{"render", "a.kov", "-o", "x", "--palette", "blue"}, "rainbow"},
                    WrongUse{{"render", "a.kov", "-o", "x", "--palette", "3"}, "'3'"},
                    WrongUse{{"render", "a.kov", "-o", "x", "--dynamic", "0"}, "--dynamic"},
                    WrongUse{{"render", "a.kov", "-o", "x", "--dynamic", "inf"}, "--dynamic"},
                    WrongUse{{"render", "a.kov", "-o", "x", "--min-level", "-1"}, "--min-level"},
                    WrongUse{{"render", "a.kov", "-o", "x", "--reference", "0"}, "--reference"},
                    WrongUse{{"render", "a.kov", "-o", "x", "--blend", "1.5"}, "--blend"},
                    WrongUse{{"render", "a.kov", "-o", "x", "--radius", "-1"}, "--radius"},
                    WrongUse{{"render", "a.kov", "-o", "x", "--radius", "9", "--radius-size", "0x4"}, "PxQ"},
                    WrongUse{{"render", "a.kov", "-o", "x", "--radius-size", "4x4"}, "--radius"},
                    WrongUse{{"render", "a.kov", "-o", "x", "--outside"}, "--radius"},
                    WrongUse{{"render", "a.kov", "-o", "x", "--cursors", "-1"}, "--cursors"},
                    WrongUse{{"render", "a.kov", "-o", "x", "--image-scale", "0"}, "--image-scale"},
                    WrongUse{{"render", "a.kov", "-o", "x", "--picture", "640"}, "WIDTHxHEIGHT"},
                    WrongUse{{"render", "a.kov", "-o", "x", "--picture", "99999x99999"}, "7680x4320"},
                    WrongUse{{"render", "a.kov", "-o", "x", "--frames", "5:3"}, "5:3"},
                    WrongUse{{"render", "a.kov", "-o", "x", "--frames", "0"}, "from 1"},
                    WrongUse{{"render", "a.kov", "-o", "x", "--frames", ""}, "range"},
                    WrongUse{{"render", "a.kov", "-o", "x", "--fps", "nan"}, "--fps"},
                    WrongUse{{"render", "a.kov", "-o", "x", "--dynamic"}, "--dynamic needs a value"},
                    WrongUse{{"render", "a.kov", "-o", "x", "--contact-sheet", "s.jpg"}, ".png"},
                    WrongUse{{"render", "a.kov", "-o", "x.gif"}, ".mp4 or .avi"}));

INSTANTIATE_TEST_SUITE_P(
    OfListen, WrongArguments,
    testing::Values(WrongUse{{"listen", "-o", "x.wav"}, "IN"}, WrongUse{{"listen", "a.wav"}, "--output"},
                    WrongUse{{"listen", "a.wav", "-o", "x.mp3"}, "must end in .wav"},
                    WrongUse{{"listen", "a.wav", "-o", "x.wav", "--base", "19999"}, "from 20000 to 43000"},
                    WrongUse{{"listen", "a.wav", "-o", "x.wav", "--base", "43001"}, "from 20000 to 43000"},
                    WrongUse{{"listen", "a.wav", "-o", "x.wav", "--base", "nan"}, "--base"},
                    WrongUse{{"listen", "a.wav", "-o", "x.wav", "--volume", "61"}, "--volume"},
                    WrongUse{{"listen", "a.wav", "-o", "x.wav", "--channel", "0"}, "--channel"},
                    WrongUse{{"listen", "a.wav", "-o", "x.wav", "--microphone", "208"}, "from 0 to 207"},
                    WrongUse{{"listen", "a.wav", "-o", "a.wav"}, "both IN and -o"}));

INSTANTIATE_TEST_SUITE_P(
    OfResample, WrongArguments,
    testing::Values(
        WrongUse{{"resample", "a.wav", "-o", "x.wav"}, "--rate"},
        WrongUse{{"resample", "a.wav", "--rate", "48000"}, "--output"},
        WrongUse{{"resample", "a.wav", "-o", "x.wav", "--rate", "999"}, "from 1000 to 768000"},
        WrongUse{{"resample", "a.wav", "-o", "x.wav", "--rate", "48000.5"}, "'48000.5'"},
        WrongUse{{"resample", "a.wav", "-o", "x.wav", "--rate", "48000", "--gain", "inf"}, "--gain"},
        WrongUse{{"resample", "a.wav", "-o", "x.wav", "--rate", "48000", "--format", "8"}, "16, 24, float"},
        WrongUse{{"resample", "a.wav", "-o", "x", "--rate", "48000"}, "must end in .wav"}));

INSTANTIATE_TEST_SUITE_P(OfMix, WrongArguments,
                         testing::Values(WrongUse{{"mix", "-o", "x.wav"}, "IN"},
                                         WrongUse{{"mix", "a.wav", "b.wav"}, "--output"},
                                         WrongUse{{"mix", "a.wav", "", "-o", "x.wav"}, "file name"},
                                         WrongUse{{"mix", "a.wav", "b.wav", "-o", "b.wav"}, "both IN and -o"},
                                         WrongUse{{"mix", "a.wav", "-o", "x.flac"}, "must end in .wav"}));

INSTANTIATE_TEST_SUITE_P(
    OfMicCheck, WrongArguments,
    testing::Values(WrongUse{{"miccheck"}, "DIR"}, WrongUse{{"miccheck", "a", "b"}, "not expected: b"},
                    WrongUse{{"miccheck", "a", "--plot", "x.jpg"}, ".png"},
                    WrongUse{{"miccheck", "a", "--plot", "a/data-3.wav"}, "both DIR and"}));

TEST(Version, NamesTheProgramTheLibraryAndWhatBothWereBuiltWith)
{
    const Sandbox sandbox;

    const Outcome outcome = sandbox.run({"--version"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    for (const char* const part : {"kovdoa 0.", "library 0019", "built with ", "OpenCV 4.", "Qt 5."}) {
        EXPECT_NE(outcome.out.find(part), std::string::npos) << part;
    }
}

}  // namespace
