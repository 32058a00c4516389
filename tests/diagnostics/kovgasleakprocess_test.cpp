#include <KOVDoaHandle/diagnostics/kovgasleakprocess.h>

#include <gtest/gtest.h>

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <atomic>
#include <cmath>
#include <fstream>
#include <latch>
#include <limits>
#include <memory>
#include <thread>
#include <vector>

#include "tests/support/gasleak.h"

namespace {

using Table = KOVGasleakProcessPrivate;

static_assert(sizeof(KOVGasleakProcess) == sizeof(void*));

class KOVGasleakProcessTest : public testsupport::GasLeakProcessOfItsOwn
{
};

// ---- Loading ----

TEST_F(KOVGasleakProcessTest, ChangesNothingBeforeTheTableIsReady)
{
    const std::string name = pipe();
    KOVGasleakProcess process(name.c_str());
    const float level = pressureLevel(60.0F, 1.5F);

    process.FeedData(1.5F, 0.0F, level);
    EXPECT_FALSE(Table::g_isInited);
    EXPECT_TRUE(Table::g_isIniting);
    EXPECT_EQ(process.getLRQ(), 0.0F);
    EXPECT_EQ(process.getLeak(), 0.0F);
    std::ofstream(name) << "60 1.5 0.02\n";
    waitForTable();
    process.FeedData(1.5F, 0.0F, level);

    EXPECT_EQ(process.getLRQ(), 0.02F);
}

TEST_F(KOVGasleakProcessTest, StoresALineByTheTenthsOfDistanceAndLevel)
{
    const std::string name = table("60 1.5 0.02\r\n61 2.5 0.03\r\n");
    const KOVGasleakProcess process(name.c_str());
    waitForTable();

    ASSERT_TRUE(Table::g_leakList.contains(15));
    EXPECT_EQ(Table::g_leakList[15].value(600), 0.02F);
    EXPECT_EQ(Table::g_leakList.size(), 2);
    EXPECT_EQ(Table::g_minSpl, 60);
    EXPECT_EQ(Table::g_maxSpl, 61);
    EXPECT_EQ(Table::g_minDistance, 1);
    EXPECT_EQ(Table::g_maxDistance, 2);
    EXPECT_EQ(Table::g_leakTestResFile.toStdString(), name);
    EXPECT_FALSE(Table::g_isIniting);
}

TEST_F(KOVGasleakProcessTest, UsesTheFirstTableWhateverALaterObjectNames)
{
    const std::string first = table("60 1 0.5\n", "first.txt");
    const std::string second = table("60 1 0.75\n", "second.txt");
    const KOVGasleakProcess opener(first.c_str());
    KOVGasleakProcess early(second.c_str());
    waitForTable();
    KOVGasleakProcess late(second.c_str());

    early.FeedData(1.0F, 0.0F, pressureLevel(60.0F, 1.0F));
    late.FeedData(1.0F, 0.0F, pressureLevel(60.0F, 1.0F));

    EXPECT_EQ(early.getLRQ(), 0.5F);
    EXPECT_EQ(late.getLRQ(), 0.5F);
    EXPECT_EQ(Table::g_leakTestResFile.toStdString(), first);
}

TEST_F(KOVGasleakProcessTest, KeepsTheTableWhenItsFirstObjectGoes)
{
    const std::string name = table("60 1 0.5\n");
    {
        const KOVGasleakProcess opener(name.c_str());
    }
    waitForTable();
    KOVGasleakProcess process("");

    process.FeedData(1.0F, 0.0F, pressureLevel(60.0F, 1.0F));

    EXPECT_EQ(process.getLRQ(), 0.5F);
}

TEST_F(KOVGasleakProcessTest, LoadsOnceWhenSeveralThreadsMakeTheFirstObject)
{
    constexpr int threadCount = 4;
    std::vector<std::string> names;
    for (int i = 0; i < threadCount; ++i) {
        names.push_back(table("60 1 " + QByteArray::number(i + 1) + "\n", std::to_string(i).c_str()));
    }
    std::latch start(threadCount);
    std::vector<std::thread> threads;
    for (const std::string& name : names) {
        threads.emplace_back([&start, &name] {
            start.arrive_and_wait();
            const KOVGasleakProcess process(name.c_str());
            waitForTable();
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    KOVGasleakProcess process("");
    process.FeedData(1.0F, 0.0F, pressureLevel(60.0F, 1.0F));

    const std::string used = Table::g_leakTestResFile.toStdString();
    const auto index = std::find(names.begin(), names.end(), used) - names.begin();
    EXPECT_EQ(process.getLRQ(), static_cast<float>(index + 1));
}

TEST_F(KOVGasleakProcessTest, DoesNotLoadAReadyTableAgain)
{
    const std::string name = table("60 1 0.5\n");
    KOVGasleakProcess process(name.c_str());
    waitForTable();
    table("60 1 0.75\n");

    Table::g_isIniting = true;
    Table::initTest();
    while (Table::g_isIniting) {
        std::this_thread::yield();
    }
    process.FeedData(1.0F, 0.0F, pressureLevel(60.0F, 1.0F));

    EXPECT_EQ(process.getLRQ(), 0.5F);
}

#ifdef __linux__
TEST_F(KOVGasleakProcessTest, LoadsOnAThreadOfTheAgreedName)
{
    const std::string name = pipe();
    const KOVGasleakProcess process(name.c_str());

    const auto threadNames = [] {
        QList<QByteArray> names;
        const QDir tasks("/proc/self/task");
        for (const QString& task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            QFile file(tasks.filePath(task + "/comm"));
            if (file.open(QIODevice::ReadOnly)) {
                names << file.readAll().trimmed();
            }
        }
        return names;
    };
    while (!threadNames().contains("KOVThread")) {
        std::this_thread::yield();
    }

    std::ofstream(name) << "60 1 0.5\n";
    waitForTable();
    EXPECT_EQ(Table::g_leakList.size(), 1);
}
#endif

// ---- Tables that are none ----

TEST_F(KOVGasleakProcessTest, HasAnEmptyTableWhenThereIsNoFile)
{
    KOVGasleakProcess process(path("missing.txt").c_str());
    waitForTable();

    process.FeedData(1.0F, 0.0F, 60.0F);

    EXPECT_TRUE(Table::g_leakList.isEmpty());
    EXPECT_FALSE(Table::g_isIniting);
    EXPECT_EQ(process.getLRQ(), 0.0F);
    EXPECT_EQ(process.getLeak(), 0.0F);
}

TEST_F(KOVGasleakProcessTest, HasAnEmptyTableForAFolder)
{
    KOVGasleakProcess process(path("").c_str());
    waitForTable();

    process.FeedData(1.0F, 0.0F, 60.0F);

    EXPECT_TRUE(Table::g_leakList.isEmpty());
    EXPECT_EQ(process.getLRQ(), 0.0F);
}

TEST_F(KOVGasleakProcessTest, HasAnEmptyTableForANullPath)
{
    KOVGasleakProcess process(nullptr);
    waitForTable();

    process.FeedData(1.0F, 0.0F, 60.0F);

    EXPECT_TRUE(Table::g_leakList.isEmpty());
    EXPECT_EQ(process.getLRQ(), 0.0F);
}

TEST_F(KOVGasleakProcessTest, LosesOnlyTheGarbageOfATable)
{
    QByteArray text = "60 1 0.5\n";
    text += QByteArray(100'000, '\0') + "\n" + QByteArray(100'000, 'x') + "\n\xFF\xFE\n 1 2 3 4 5\n";
    text += "61 1 0.75";
    const std::string name = table(text);
    const KOVGasleakProcess process(name.c_str());
    waitForTable();

    ASSERT_EQ(Table::g_leakList.size(), 1);
    EXPECT_EQ(Table::g_leakList[10].size(), 2);
    EXPECT_EQ(Table::g_leakList[10].value(610), 0.75F);
}

TEST_F(KOVGasleakProcessTest, OpensATableWhoseNameIsNotAscii)
{
    const std::string name = path(
        "l\xC3\xA9"
        "ak.txt");
    std::ofstream(name) << "60 1 0.5\n";
    const KOVGasleakProcess process(name.c_str());
    waitForTable();

    EXPECT_EQ(Table::g_leakList.size(), 1);
}

// ---- Measurements ----

// Levels 60 and 70 at 1 m and 3 m; the rate tells the entry: level + distance / 10.
constexpr char fourPoints[] = "60 1 60.1\n70 1 70.1\n60 3 60.3\n70 3 70.3\n";

class GasLeakMeasurements : public KOVGasleakProcessTest
{
protected:
    void SetUp() override
    {
        KOVGasleakProcessTest::SetUp();
        process = std::make_unique<KOVGasleakProcess>(table(fourPoints).c_str());
        waitForTable();
    }

    float lrqAfter(float distance, float spl)
    {
        process->FeedData(distance, 0.0F, spl);
        return process->getLRQ();
    }

    std::unique_ptr<KOVGasleakProcess> process;
};

TEST_F(GasLeakMeasurements, FindTheRateBySoundPowerLevelAndDistance)
{
    EXPECT_EQ(lrqAfter(1.0F, pressureLevel(70.0F, 1.0F)), 70.1F);
    EXPECT_EQ(process->getLeak(), std::log10(70.1F) - 1.0F);
    EXPECT_EQ(lrqAfter(3.0F, pressureLevel(60.0F, 3.0F)), 60.3F);
}

TEST_F(GasLeakMeasurements, DoNotUseTheReservedValue)
{
    process->FeedData(1.0F, std::nanf(""), pressureLevel(70.0F, 1.0F));

    EXPECT_EQ(process->getLRQ(), 70.1F);
}

TEST_F(GasLeakMeasurements, ReplaceALevelThatIsNotInTheTable)
{
    // Below ten times the smallest level, which every plausible level is: the smallest.
    EXPECT_EQ(lrqAfter(3.0F, pressureLevel(65.0F, 3.0F)), 60.3F);
    EXPECT_EQ(lrqAfter(3.0F, 99.0F), 60.3F);
    EXPECT_EQ(lrqAfter(3.0F, -400.0F), 60.3F);
    // Above ten times the largest: the largest.
    EXPECT_EQ(lrqAfter(3.0F, 700.5F), 70.3F);
}

TEST_F(GasLeakMeasurements, KeepTheResultBetweenTenTimesTheLevelBounds)
{
    lrqAfter(3.0F, pressureLevel(70.0F, 3.0F));

    EXPECT_EQ(lrqAfter(3.0F, 650.0F), 70.3F);
    EXPECT_EQ(lrqAfter(1.0F, 600.0F), 70.3F);  // exactly ten times is not below
    EXPECT_EQ(lrqAfter(1.0F, 700.0F), 70.3F);
}

TEST_F(GasLeakMeasurements, ReplaceADistanceThatIsNotInTheTable)
{
    // Below ten times the smallest distance: the smallest.
    EXPECT_EQ(lrqAfter(0.5F, pressureLevel(70.0F, 0.5F)), 70.1F);
    EXPECT_EQ(lrqAfter(2.0F, pressureLevel(60.0F, 2.0F)), 60.1F);
    EXPECT_EQ(lrqAfter(9.5F, pressureLevel(70.0F, 9.5F)), 70.1F);
    // Above ten times the largest: the largest.
    EXPECT_EQ(lrqAfter(30.5F, pressureLevel(70.0F, 30.5F)), 70.3F);
}

TEST_F(GasLeakMeasurements, KeepTheResultBetweenTenTimesTheDistanceBounds)
{
    lrqAfter(3.0F, pressureLevel(70.0F, 3.0F));

    EXPECT_EQ(lrqAfter(10.0F, pressureLevel(60.0F, 10.0F)), 70.3F);
    EXPECT_EQ(lrqAfter(20.0F, pressureLevel(60.0F, 20.0F)), 70.3F);
    EXPECT_EQ(lrqAfter(30.0F, pressureLevel(60.0F, 30.0F)), 70.3F);
}

TEST_F(GasLeakMeasurements, TakeNumbersOfAnyKind)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    for (const float distance : {0.0F, -1.0F, 1e-40F, 1e38F, infinity, -infinity, std::nanf("")}) {
        for (const float spl : {0.0F, -1e38F, 1e38F, infinity, -infinity, std::nanf("")}) {
            process->FeedData(distance, 0.0F, spl);
            const float lrq = process->getLRQ();
            EXPECT_TRUE(lrq == 0.0F || lrq == 60.1F || lrq == 70.1F || lrq == 60.3F || lrq == 70.3F)
                << distance << ", " << spl << ": " << lrq;
        }
    }
    EXPECT_EQ(lrqAfter(infinity, infinity), 70.3F);
    EXPECT_EQ(lrqAfter(-infinity, -infinity), 60.1F);
}

TEST_F(GasLeakMeasurements, MayBePolledByAnotherThread)
{
    std::atomic<bool> isOver{false};
    std::thread poller([&] {
        while (!isOver) {
            const float lrq = process->getLRQ();
            EXPECT_TRUE(lrq == 0.0F || lrq == 60.1F || lrq == 4.0F * 60.1F) << lrq;
            process->getLeak();
            process->setGasLeakMode(process->getGasLeakMode() == GASLEAK_MODE_2 ? GASLEAK_MODE_0
                                                                                : GASLEAK_MODE_2);
        }
    });

    for (int i = 0; i < 5000; ++i) {
        process->FeedData(1.0F, 0.0F, pressureLevel(60.0F, 1.0F));
    }
    isOver = true;
    poller.join();

    EXPECT_GT(process->getLRQ(), 0.0F);
}

// ---- Modes ----

class GasLeakModes : public KOVGasleakProcessTest
{
protected:
    void SetUp() override
    {
        KOVGasleakProcessTest::SetUp();
        process = std::make_unique<KOVGasleakProcess>(table("60 1 0.5\n61 1 0.25\n").c_str());
        waitForTable();
    }

    void measure(GASLEAK_MODE mode, float level = 60.0F)
    {
        process->setGasLeakMode(mode);
        process->FeedData(1.0F, 0.0F, pressureLevel(level, 1.0F));
    }

    std::unique_ptr<KOVGasleakProcess> process;
};

TEST_F(GasLeakModes, StartWithTheFifth)
{
    EXPECT_EQ(process->getGasLeakMode(), GASLEAK_MODE_5);
}

TEST_F(GasLeakModes, MultiplyTheRate)
{
    const struct
    {
        GASLEAK_MODE mode;
        float lrq;
    } expected[] = {{GASLEAK_MODE_0, 0.5F}, {GASLEAK_MODE_1, 0.5F}, {GASLEAK_MODE_2, 2.0F},
                    {GASLEAK_MODE_3, 1.0F}, {GASLEAK_MODE_4, 1.5F}, {GASLEAK_MODE_5, 0.5F}};
    for (const auto& [mode, lrq] : expected) {
        measure(mode);

        EXPECT_EQ(process->getLRQ(), lrq) << "mode " << mode;
        EXPECT_EQ(process->getLeak(), std::log10(lrq) - 1.0F) << "mode " << mode;
    }
}

TEST_F(GasLeakModes, GiveALeakOfLogTwoLessOneForAHalfInTheSecond)
{
    measure(GASLEAK_MODE_2);

    EXPECT_EQ(process->getLRQ(), 2.0F);
    EXPECT_FLOAT_EQ(process->getLeak(), -0.69897F);
}

TEST_F(GasLeakModes, KeepTheQuantityWhenTheModeIsNoneOfTheSix)
{
    measure(GASLEAK_MODE_2);

    for (const int mode : {7, 6, -1, std::numeric_limits<int>::min()}) {
        measure(static_cast<GASLEAK_MODE>(mode), 61.0F);
        EXPECT_EQ(process->getGasLeakMode(), static_cast<GASLEAK_MODE>(mode));
        EXPECT_EQ(process->getLRQ(), 2.0F);
        EXPECT_EQ(process->getLeak(), std::log10(2.0F) - 1.0F);
    }
}

TEST_F(GasLeakModes, RecomputeTheLeakWhenTheModeIsNoneOfTheSix)
{
    EXPECT_EQ(process->getLeak(), 0.0F);

    measure(static_cast<GASLEAK_MODE>(7));

    // From the quantity as it was, which is 0 here.
    EXPECT_EQ(process->getLRQ(), 0.0F);
    EXPECT_EQ(process->getLeak(), -std::numeric_limits<float>::infinity());
}

TEST_F(GasLeakModes, BelongToOneObject)
{
    KOVGasleakProcess other(nullptr);

    process->setGasLeakMode(GASLEAK_MODE_2);

    EXPECT_EQ(other.getGasLeakMode(), GASLEAK_MODE_5);
}

// ---- Running average ----

TEST_F(KOVGasleakProcessTest, AveragesTheLastTwentyFiveLevels)
{
    KOVGasleakProcess process(nullptr);
    float average = 0.0F;

    for (int level = 1; level <= 30; ++level) {
        average = process.avgSpl(static_cast<float>(level));
        if (level == 25) {
            EXPECT_EQ(average, 13.0F);  // 1 ... 25
        }
    }

    EXPECT_EQ(average, 18.0F);  // 6 ... 30
}

TEST_F(KOVGasleakProcessTest, AveragesWhatThereIsAtFirst)
{
    KOVGasleakProcess process(nullptr);

    EXPECT_EQ(process.avgSpl(60.0F), 60.0F);
    EXPECT_EQ(process.avgSpl(61.0F), 60.5F);
}

}  // namespace
