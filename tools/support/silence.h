// Keeps other people's libraries from writing into the program's own output.
#ifndef KOVTOOLS_SILENCE_H
#define KOVTOOLS_SILENCE_H

namespace kovtools {

// Drops Qt's messages (the library's go through them) and OpenCV's. The library's log files, once they are
// switched on, take Qt's messages over; they never reach the terminal.
void silenceLibraries();

// While it lives, whatever is written to the standard error descriptor is dropped: codecs and picture
// decoders print there from C code, with no switch to stop them all. The program says nothing itself
// meanwhile.
class SilencedStderr
{
public:
    SilencedStderr();
    ~SilencedStderr();
    SilencedStderr(const SilencedStderr&) = delete;
    SilencedStderr& operator=(const SilencedStderr&) = delete;

private:
    int m_saved = -1;  // duplicate of the real descriptor; -1 when nothing was redirected
};

}  // namespace kovtools

#endif
