// The three streams that a program may rely on, and sometimes does not get.
#ifndef KOVTOOLS_STANDARDSTREAMS_H
#define KOVTOOLS_STANDARDSTREAMS_H

namespace kovtools {

// Opens the null device wherever standard input, output or error is closed. Otherwise the next file that the
// program opens would get the number, and what is meant for the terminal would end up in it. Writing to an
// output that was closed still fails. To be called before any file is opened.
void openStandardStreams();

}  // namespace kovtools

#endif
