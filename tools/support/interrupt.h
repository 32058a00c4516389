// Ctrl-C, or a terminal that is closed, in the middle of a long command: the command ends by an exception, so
// that no half-written file stays.
#ifndef KOVTOOLS_INTERRUPT_H
#define KOVTOOLS_INTERRUPT_H

namespace kovtools {

// Thrown by throwIfInterrupted().
struct Interrupted
{
};

// From now on SIGINT, SIGTERM and SIGHUP are only remembered; a second one ends the process at once. A closed
// pipe and a file that has grown to its limit are errors of writing instead of signals.
void watchForInterrupts();

// Throws Interrupted when one of the signals has come. On any thread.
void throwIfInterrupted();

}  // namespace kovtools

#endif
