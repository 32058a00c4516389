// A host may end while the calibration table is still loading.
#include <KOVDoaHandle/diagnostics/kovgasleakprocess.h>

#include <gtest/gtest.h>

#include <QtCore/QByteArray>

#include <cstdlib>
#include <string>
#include <thread>

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
                    for (int turn = 0; turn < run * 3; ++turn) {
                        std::this_thread::yield();
                    }
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
