// What can go wrong in a command, by the exit status it ends with.
#ifndef KOVTOOLS_ERRORS_H
#define KOVTOOLS_ERRORS_H

#include <stdexcept>

namespace kovtools {

enum ExitStatus : int { EXIT_GOOD = 0, EXIT_BAD_DATA = 1, EXIT_BAD_USAGE = 2, EXIT_INTERRUPTED = 130 };

// A file that is missing, unreadable, damaged or cannot be written. The text is one sentence for the user.
class DataError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// Arguments that do not make sense, also in the light of the file they are for. One sentence for the user.
class UsageError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

}  // namespace kovtools

#endif
