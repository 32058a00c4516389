// Processes that are killed while they record. Each is a fork of the test that saves frame after frame and reports
// every Save() that has returned through a pipe; what was reported must be in the file, to the bit.
#include <gtest/gtest.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <iostream>
#include <random>
#include <vector>

#include "resulttesting.h"

namespace {

using ResultTesting::Folder;
using ResultTesting::Loaded;
using ResultTesting::Messages;
using ResultTesting::Result;

constexpr int kills = 200;
constexpr int fftLen = 1024;

struct MapSize
{
    int rows;
    int cols;
};

// Frames of the larger maps take several pages of the file, so that some kills come in the middle of their write.
constexpr MapSize sizes[] = {{64, 48}, {128, 96}};

class Frames
{
public:
    explicit Frames(MapSize size) : m_size(size)
    {
        for (int i = 0; i < 8; ++i) {
            m_frames.push_back(ResultTesting::makeResult(size.rows, size.cols, fftLen, i));
        }
    }

    MapSize size() const { return m_size; }
    EngMapResult& operator[](int i) const { return *m_frames[static_cast<std::size_t>(i) % m_frames.size()]; }

private:
    MapSize m_size;
    std::vector<Result> m_frames;
};

// Ends by being killed; by itself only when the test has failed to do so.
[[noreturn]] void recordUntilKilled(const Folder& folder, const QString& file, const Frames& frames,
                                    int report)
{
    constexpr int farTooMany = 5000;
    KOVDoaResultSerialize recording(folder.cache());
    recording.startSave(file, frames.size().rows, frames.size().cols, 480, 640, fftLen);
    for (int i = 0; i < farTooMany; ++i) {
        recording.Save(&frames[i]);
        if (write(report, "s", 1) != 1) {
            break;
        }
    }
    _exit(1);
}

// Reads reports until there are `limit` of them or no more will come; returns how many.
int awaitReports(int pipe, int limit)
{
    int count = 0;
    char report = 0;
    while (count < limit && read(pipe, &report, 1) == 1) {
        ++count;
    }
    return count;
}

void spin(std::chrono::microseconds time)
{
    const auto end = std::chrono::steady_clock::now() + time;
    while (std::chrono::steady_clock::now() < end) {
    }
}

// Starts a recording, kills it at a random moment and returns how many calls of Save() had reported.
int recordAndKill(const Folder& folder, const QString& file, const Frames& frames, std::mt19937& random)
{
    int ends[2] = {};
    EXPECT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        recordUntilKilled(folder, file, frames, ends[1]);
    }
    close(ends[1]);
    // The moment: some frames later, and then anywhere within the time that a few Saves take.
    const int awaited = std::uniform_int_distribution(0, 12)(random);
    int reports = awaitReports(ends[0], awaited);
    spin(std::chrono::microseconds(std::uniform_int_distribution(0, 300)(random)));
    kill(child, SIGKILL);
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "it ended by itself";
    reports += awaitReports(ends[0], 1'000'000);
    close(ends[0]);
    return reports;
}

void expectFrame(const EngMapResult& frame, const EngMapResult& saved)
{
    EXPECT_EQ(ResultTesting::mapValues(frame), ResultTesting::mapValues(saved));
    EXPECT_EQ(ResultTesting::spectrumValues(frame), ResultTesting::spectrumValues(saved));
    EXPECT_EQ(frame.PowerBandsFFTSpec, saved.PowerBandsFFTSpec);
    EXPECT_EQ(frame.maxSpl, saved.maxSpl);
    EXPECT_EQ(frame.minSpl, saved.minSpl);
    // The outer levels come back as the View's, by agreement.
    EXPECT_EQ(frame.maxSplExtern, saved.maxSplExternView);
    EXPECT_EQ(frame.minSplExtern, saved.minSplExternView);
    EXPECT_EQ(frame.maxSplView, saved.maxSplView);
    EXPECT_EQ(frame.minSplView, saved.minSplView);
    EXPECT_EQ(frame.peaks, saved.peaks);
    EXPECT_EQ(frame.firstPointInRadius, saved.firstPointInRadius);
    EXPECT_EQ(frame.median, saved.median);
    EXPECT_EQ(frame.distance, saved.distance);
}

struct Killed
{
    QString file;
    const Frames* frames;
    int reported;
};

TEST(KilledRecording, KeepsEveryFrameWhoseSaveHadReturned)
{
    const Messages messages;
    const Folder folder;
    QDir().mkpath(folder.cache());
    const Frames frames[] = {Frames(sizes[0]), Frames(sizes[1])};
    std::mt19937 random(20'261'121);

    // All of them before the first load, whose thread a fork should not meet.
    std::vector<Killed> killed;
    for (int i = 0; i < kills && !HasFailure(); ++i) {
        const QString file = folder.path(QString("%1.kov").arg(i));
        const Frames& saved = frames[i % 2];
        killed.push_back({file, &saved, recordAndKill(folder, file, saved, random)});
    }

    int framesKept = 0;
    int tornTails = 0;
    for (const Killed& recording : killed) {
        SCOPED_TRACE(recording.file.toStdString());
        Loaded loaded(recording.file, folder.cache());
        ASSERT_GE(loaded.frames(), recording.reported);
        ASSERT_LE(loaded.frames(), recording.reported + 1);
        for (int i = 0; i < recording.reported; ++i) {
            expectFrame(loaded.frame(i), (*recording.frames)[i]);
        }
        if (HasFailure()) {
            return;
        }
        framesKept += recording.reported;
        const bool isTorn =
            loaded.frames() > 0 && !ResultTesting::readFile(recording.file).endsWith("--end--\r\n");
        tornTails += isTorn ? 1 : 0;
    }
    std::cout << "killed " << killed.size() << " times; " << framesKept << " frames saved and loaded, "
              << tornTails << " files with a torn tail\n";
    EXPECT_GT(framesKept, kills);
}

}  // namespace
