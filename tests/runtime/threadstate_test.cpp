#include <KOVDoaHandle/runtime/threadstate_p.h>

#include <gtest/gtest.h>

#include <ostream>

namespace {

struct State
{
    const char* name;
    bool isRunning;
    quintptr id;
    bool isBusy;
    const char* line;
};

void PrintTo(const State& state, std::ostream* stream)
{
    *stream << state.name;
}

class ThreadStateLine : public ::testing::TestWithParam<State>
{
};

TEST_P(ThreadStateLine, SaysTheState)
{
    const State state = GetParam();

    EXPECT_EQ(KOVPrivate::threadStateLine(state.isRunning, state.id, state.isBusy), state.line);
}

INSTANTIATE_TEST_SUITE_P(
    ThreadState, ThreadStateLine,
    ::testing::Values(
        State{"Working", true, 7, true, "\tKOVrThread id=7 state='is do work'\n"},
        State{"WorkingBeforeItsIdIsKnown", true, 0, true, "\tKOVrThread id=0 state='is do work'\n"},
        State{"Idle", true, 7, false, "\tKOVrThread id=7 state='is in idle'\n"},
        State{"IdleBeforeItsIdIsKnown", true, 0, false, "\tKOVrThread id=0 state='is in idle'\n"},
        State{"TornOut", false, 7, true, "\tKOVThread id=7 state='is error'\n"},
        State{"TornOutWithoutId", false, 0, true, "\tKOVThread id=0 state='is error'\n"},
        State{"Ended", false, 140737353875200U, false, "\tKOVThread id=140737353875200 state='is stoped'\n"},
        State{"LargestId", false, ~quintptr{0}, false,
              "\tKOVThread id=18446744073709551615 state='is stoped'\n"},
        State{"NeverStarted", false, 0, false, "\tKOVThread id=0 state='is ready to start'\n"}),
    [](const auto& test) { return test.param.name; });

}  // namespace
