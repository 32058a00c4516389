#include "tools/support/interrupt.h"

#include <csignal>

namespace kovtools {

namespace {

volatile std::sig_atomic_t interrupted = 0;

extern "C" void rememberInterrupt(int signalNumber)
{
    interrupted = 1;
    std::signal(signalNumber, SIG_DFL);
}

}  // namespace

void watchForInterrupts()
{
    std::signal(SIGINT, rememberInterrupt);
    std::signal(SIGTERM, rememberInterrupt);
}

void throwIfInterrupted()
{
    if (interrupted != 0) {
        throw Interrupted{};
    }
}

}  // namespace kovtools
