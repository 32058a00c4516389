#include "tools/support/interrupt.h"

#include <csignal>
#include <initializer_list>

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
    for (const int signalNumber : {SIGINT, SIGTERM, SIGHUP}) {
        // What nohup or a shell in the background had ignored stays ignored.
        if (std::signal(signalNumber, rememberInterrupt) == SIG_IGN) {
            std::signal(signalNumber, SIG_IGN);
        }
    }
    // Then the write itself fails, which ends a command in order.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

void throwIfInterrupted()
{
    if (interrupted != 0) {
        throw Interrupted{};
    }
}

}  // namespace kovtools
