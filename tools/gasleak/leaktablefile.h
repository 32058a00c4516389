// A calibration table as a user hands it over.
#ifndef KOVTOOLS_LEAKTABLEFILE_H
#define KOVTOOLS_LEAKTABLEFILE_H

#include <filesystem>
#include <string>
#include <vector>

namespace kovtools {

// What the library is going to load. It skips lines without exactly three fields silently, and takes a field that is no
// number for 0; here every line is looked at before. A line that is not three finite numbers is replaced by one that
// the library skips, so that nothing is measured against it, and the others keep their places.
struct LeakTableFile
{
    std::string usable;         // the table without what does not parse
    int points = 0;             // lines that parse
    std::vector<int> badLines;  // numbers of those that do not, from 1; empty lines are none
};

// Throws DataError when the file is missing or unreadable, or when no line of it parses.
LeakTableFile readLeakTableFile(const std::filesystem::path& file);

}  // namespace kovtools

#endif
