#include "tools/support/standardstreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <initializer_list>

namespace kovtools {

void openStandardStreams()
{
    // In rising order: the system hands out the lowest number that is free.
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) == -1) {
            open("/dev/null", descriptor == STDERR_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

}  // namespace kovtools
