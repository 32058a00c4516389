// The example host, run as a program of its own on a recording that the test writes.
#include <gtest/gtest.h>

#include <QtCore/QProcess>

#include "wavsets.h"

namespace {

using StreamTesting::WavFolder;

struct Outcome
{
    int exitCode = -1;
    QString output;
};

Outcome runExample(const QStringList& arguments)
{
    QProcess process;
    process.start(QStringLiteral(KOVDOA_EXAMPLE), arguments);
    if (!process.waitForFinished(60'000) || process.exitStatus() != QProcess::NormalExit) {
        return {};
    }
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput())};
}

TEST(ListenToRecording, PrintsTheTimeAndLevelOfEveryBlockThatWasAskedFor)
{
    const WavFolder folder;
    folder.writeSet(2, {.frames = 4 * 1024});

    const Outcome run =
        runExample({QString::fromUtf8(folder.path()), QStringLiteral("16"), QStringLiteral("3")});

    EXPECT_EQ(run.exitCode, 0);
    const QStringList lines = run.output.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 3);
    EXPECT_TRUE(lines[0].startsWith(QStringLiteral("0 ms: ")));
    EXPECT_TRUE(lines[1].startsWith(QStringLiteral("10.6667 ms: ")));
    EXPECT_TRUE(lines[2].startsWith(QStringLiteral("21.3333 ms: ")));
    // The same samples, so the same level.
    EXPECT_EQ(lines[1].section(QLatin1Char(' '), 2), lines[0].section(QLatin1Char(' '), 2));
}

TEST(ListenToRecording, FailsWhereTheRecordingCannotBeLoaded)
{
    const WavFolder folder;

    EXPECT_EQ(
        runExample({QString::fromUtf8(folder.path()), QStringLiteral("8"), QStringLiteral("1")}).exitCode, 1);
    EXPECT_EQ(runExample({}).exitCode, 2);
}

TEST(ListenToRecording, RefusesAnArrayThatNobodyHas)
{
    const WavFolder folder;

    for (const char* const channels : {"2000000000", "1025", "7", "-8", "many"}) {
        const Outcome run =
            runExample({QString::fromUtf8(folder.path()), QString::fromUtf8(channels), QStringLiteral("1")});
        EXPECT_EQ(run.exitCode, 2) << channels;
    }
}

TEST(ListenToRecording, FailsWhereTheRecordingIsSilent)
{
    const WavFolder folder;
    folder.writeSet(1, {.bits = 16, .frames = 4096});

    EXPECT_EQ(
        runExample({QString::fromUtf8(folder.path()), QStringLiteral("8"), QStringLiteral("1")}).exitCode, 1);
}

}  // namespace
