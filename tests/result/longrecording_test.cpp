// An hour of frames in one file.
#include <gtest/gtest.h>

#include <QtCore/QFileInfo>

#include <chrono>
#include <iostream>

#include "resulttesting.h"
#include "tests/support/residentmemory.h"

namespace {

using ResultTesting::Folder;
using testsupport::memoryKib;

constexpr int frames = 100'000;
constexpr int rows = 8;
constexpr int cols = 6;
constexpr int fftLen = 16;

void discard(QtMsgType, const QMessageLogContext&, const QString&) {}

double secondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST(LongRecording, LoadsAHundredThousandFramesInBoundedMemory)
{
    const QtMessageHandler before = qInstallMessageHandler(discard);
    const Folder folder;
    const auto start = std::chrono::steady_clock::now();
    {
        KOVDoaResultSerialize writer(folder.cache());
        writer.startSave(folder.file(), rows, cols, 480, 640, fftLen);
        const auto result = ResultTesting::makeResult(rows, cols, fftLen);
        for (int i = 0; i < frames; ++i) {
            result->ResEngMap->data[0][0] = static_cast<float>(i);
            result->distance = static_cast<float>(i);
            writer.Save(result.get());
        }
    }
    const double writeSeconds = secondsSince(start);
    const std::int64_t anonymousBefore = memoryKib("RssAnon");
    const std::int64_t residentBefore = memoryKib("VmRSS");

    const auto loadStart = std::chrono::steady_clock::now();
    KOVDoaResultSerialize reader(folder.cache());
    reader.openResultFile(folder.file());
    ResultTesting::waitUntilComplete(reader);
    const double loadSeconds = secondsSince(loadStart);
    const std::int64_t anonymous = memoryKib("RssAnon") - anonymousBefore;
    const std::int64_t resident = memoryKib("VmRSS") - residentBefore;

    ASSERT_EQ(reader.getResultFrame(), frames);
    for (int i = 0; i < frames; ++i) {
        const EngMapResult& frame = *reader.getResultFromIndex(i);
        ASSERT_EQ(frame.ResEngMap->data[0][0], static_cast<float>(i));
        ASSERT_EQ(frame.distance, static_cast<float>(i));
    }
    std::cout << frames << " frames in " << QFileInfo(folder.file()).size() / 1024 << " KiB: saved in "
              << writeSeconds << " s, loaded in " << loadSeconds << " s; resident memory grew by " << resident
              << " KiB, of which " << resident - anonymous << " KiB lie in the cache's files\n";
    if (testsupport::canMeasureMemory) {
        // A record, its containers' heads, its peaks and the cache's table entries; the file itself never.
        EXPECT_LE(anonymous, frames * 2LL);
        EXPECT_LE(resident - anonymous, folder.cacheBytes() / 1024 + 4096);
    }
    qInstallMessageHandler(before);
}

}  // namespace
