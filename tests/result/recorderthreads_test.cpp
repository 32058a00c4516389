// Several recorders at once, each an object of its own.
#include <gtest/gtest.h>

#include <latch>
#include <memory>
#include <thread>
#include <vector>

#include "resulttesting.h"

namespace {

using ResultTesting::Folder;
using ResultTesting::Loaded;
using ResultTesting::makeResult;
using ResultTesting::mapValues;
using ResultTesting::Messages;
using ResultTesting::waitUntilComplete;

constexpr int fftLen = 16;

// Recorder r has maps of its own size, so that a byte in the wrong file would not go unnoticed.
int rowsOf(int recorder)
{
    return 4 + recorder;
}

int colsOf(int recorder)
{
    return 9 - recorder;
}

void expectRecording(Loaded& loaded, int recorder, int frames)
{
    ASSERT_EQ(loaded.frames(), frames);
    EXPECT_EQ(loaded->getResRows(), rowsOf(recorder));
    for (int i = 0; i < frames; ++i) {
        const auto saved = makeResult(rowsOf(recorder), colsOf(recorder), fftLen, i + recorder);
        ASSERT_EQ(mapValues(loaded.frame(i)), mapValues(*saved));
        ASSERT_EQ(loaded.frame(i).median, saved->median);
    }
}

void startRecorder(KOVDoaResultSerialize& recorder, const Folder& folder, int number)
{
    recorder.startSave(folder.path(QString::number(number)), rowsOf(number), colsOf(number), 480, 640,
                       fftLen);
}

TEST(Recorders, KeepTheirFilesApartOnThreadsOfTheirOwn)
{
    constexpr int recorders = 2;
    constexpr int frames = 300;
    const Messages messages;
    const Folder folder;
    std::latch begin(recorders);
    std::vector<std::thread> threads;
    for (int number = 0; number < recorders; ++number) {
        threads.emplace_back([&, number] {
            KOVDoaResultSerialize recorder(folder.cache());
            startRecorder(recorder, folder, number);
            begin.arrive_and_wait();
            for (int i = 0; i < frames; ++i) {
                recorder.Save(makeResult(rowsOf(number), colsOf(number), fftLen, i + number).get());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    for (int number = 0; number < recorders; ++number) {
        Loaded loaded(folder.path(QString::number(number)), folder.cache());
        expectRecording(loaded, number, frames);
    }
}

TEST(Recorders, KeepTheirFilesApartWhenTheyTakeTurns)
{
    constexpr int recorders = 3;
    constexpr int frames = 100;
    const Messages messages;
    const Folder folder;
    std::vector<std::unique_ptr<KOVDoaResultSerialize>> objects;
    for (int number = 0; number < recorders; ++number) {
        objects.push_back(std::make_unique<KOVDoaResultSerialize>(folder.cache()));
        startRecorder(*objects.back(), folder, number);
    }

    for (int i = 0; i < frames; ++i) {
        for (int number = 0; number < recorders; ++number) {
            objects[static_cast<std::size_t>(number)]->Save(
                makeResult(rowsOf(number), colsOf(number), fftLen, i + number).get());
        }
    }

    for (int number = 0; number < recorders; ++number) {
        Loaded loaded(folder.path(QString::number(number)), folder.cache());
        expectRecording(loaded, number, frames);
    }
}

// Whole frames only: a record reaches the file in one write. (Where the file ends in between, the reader would see a
// frame with zeros behind the cut.)
TEST(Recorders, MayBeReadByAnotherObjectWhileTheyRecord)
{
    constexpr int frames = 300;
    const Messages messages;
    const Folder folder;
    KOVDoaResultSerialize recorder(folder.cache());
    startRecorder(recorder, folder, 0);
    const std::jthread recording([&] {
        for (int i = 0; i < frames; ++i) {
            recorder.Save(makeResult(rowsOf(0), colsOf(0), fftLen, i).get());
        }
    });

    int seen = 0;
    while (seen < frames) {
        Loaded loaded(folder.path("0"), folder.cache());
        ASSERT_GE(loaded.frames(), seen);
        seen = loaded.frames();
        for (int i = 0; i + 1 < seen; ++i) {
            ASSERT_EQ(loaded.frame(i).median, makeResult(rowsOf(0), colsOf(0), fftLen, i)->median);
        }
    }
}

TEST(Recorders, MayBeMadeLoadedAndDestroyedInATightLoop)
{
    constexpr int rounds = 300;
    const Messages messages;
    const Folder folder;
    {
        KOVDoaResultSerialize recorder(folder.cache());
        startRecorder(recorder, folder, 0);
        for (int i = 0; i < 20; ++i) {
            recorder.Save(makeResult(rowsOf(0), colsOf(0), fftLen, i).get());
        }
    }

    for (int round = 0; round < rounds; ++round) {
        KOVDoaResultSerialize player(folder.cache());
        player.openResultFile(folder.path("0"));
        if (round % 3 == 1) {
            player.openResultFile(folder.path("0"));
        } else if (round % 3 == 2) {
            waitUntilComplete(player);
            EXPECT_EQ(player.getResultFrame(), 20);
        }
    }

    EXPECT_EQ(folder.cacheFiles(), 0);
}

}  // namespace
