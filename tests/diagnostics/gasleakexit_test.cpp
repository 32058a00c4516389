// A host may end while the calibration table is still loading.
#include <KOVDoaHandle/diagnostics/kovgasleakprocess.h>

#include <gtest/gtest.h>

#include <QtCore/QByteArray>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string>

#include "tests/support/gasleak.h"

namespace {

QByteArray largeTable()
{
    QByteArray text;
    for (int line = 0; line < 100'000; ++line) {
        text += QByteArray::number(40 + (line % 1000) / 10.0) + ' ' +
                QByteArray::number(1 + line / 1000 / 10.0) + " 0.125\n";
    }
    return text;
}

// Without sleeping, which would be too coarse.
void waitFor(std::chrono::microseconds time)
{
    const auto end = std::chrono::steady_clock::now() + time;
    while (std::chrono::steady_clock::now() < end) {
    }
}

// The loader's; it may have come and gone unseen.
void awaitAnotherThread(std::chrono::microseconds patience)
{
    const auto end = std::chrono::steady_clock::now() + patience;
    const std::filesystem::path threads = "/proc/self/task";
    while (std::chrono::steady_clock::now() < end) {
        if (std::distance(std::filesystem::directory_iterator(threads), {}) > 1) {
            return;
        }
    }
}

// Each exit happens in a child process, in which the loader has got as far as chance lets it.
class GasLeakExit : public testsupport::GasLeakProcessOfItsOwn
{
protected:
    static void expectAnOrderlyEnd(const std::string& name, int runs)
    {
        for (int run = 0; run < runs; ++run) {
            ASSERT_EXIT(
                {
                    const auto* const kept = new KOVGasleakProcess(name.c_str());
                    awaitAnotherThread(std::chrono::milliseconds(5));
                    waitFor(std::chrono::microseconds(8 * run));
                    std::exit(kept != nullptr ? 0 : 1);
                },
                ::testing::ExitedWithCode(0), "");
        }
    }
};

TEST_F(GasLeakExit, IsOrderlyWhileALargeTableLoads)
{
    expectAnOrderlyEnd(table(largeTable()), 30);
}

TEST_F(GasLeakExit, IsOrderlyWhileASmallTableLoads)
{
    expectAnOrderlyEnd(table("60 1 0.5\n"), 30);
}

// A table that cannot be opened is reported, for which Qt makes objects of its own.
TEST_F(GasLeakExit, IsOrderlyWhileItIsReportedThatThereIsNoTable)
{
    expectAnOrderlyEnd(std::string(), 100);
    expectAnOrderlyEnd("no such table", 100);
}

TEST_F(GasLeakExit, IsNotHeldUpByAPipeThatNobodyWrites)
{
    expectAnOrderlyEnd(pipe(), 1);
}

}  // namespace
