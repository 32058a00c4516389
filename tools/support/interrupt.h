// Ctrl-C in the middle of a long command: the command ends by an exception, so that no half-written file
// stays.
#ifndef KOVTOOLS_INTERRUPT_H
#define KOVTOOLS_INTERRUPT_H

namespace kovtools {

// Thrown by throwIfInterrupted().
struct Interrupted
{
};

// From now on SIGINT and SIGTERM are only remembered. A second one ends the process at once.
void watchForInterrupts();

// Throws Interrupted when one of the signals has come.
void throwIfInterrupted();

}  // namespace kovtools

#endif
