// What --version says.
#ifndef KOVTOOLS_VERSIONTEXT_H
#define KOVTOOLS_VERSIONTEXT_H

#include <string>

namespace kovtools {

// The program's and the library's version, and what both were built with; made to be pasted into a report.
std::string versionText();

}  // namespace kovtools

#endif
