// The progress bar of long commands.
#ifndef KOVTOOLS_PROGRESS_H
#define KOVTOOLS_PROGRESS_H

#include <chrono>
#include <string>

namespace kovtools {

// Draws on stderr, and only when that is a terminal: log files and pipes get nothing. The line is wiped when
// the object goes, so what the command says next stands on a line of its own.
class Progress
{
public:
    // `wanted` false switches the bar off on a terminal too.
    Progress(std::string title, int total, bool wanted);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // One of the `total` steps is done. Throws Interrupted after Ctrl-C.
    void step();

private:
    void draw();
    void wipe();

    std::string m_title;
    int m_total;
    int m_done = 0;
    bool m_visible;
    std::chrono::steady_clock::time_point m_nextDraw;
};

}  // namespace kovtools

#endif
