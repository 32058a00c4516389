// Any bytes as the arguments of the program: one in each line, in which a vertical tab stands for a line feed. Nothing
// is run. The answer is either a command to run and no word; or help, on stdout; or one sentence on stderr. Read a
// second time, the same arguments give the same answer.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "tools/cli/commandline.h"

namespace {

[[noreturn]] void fail(const char* what, const std::string& text)
{
    std::fprintf(stderr, "relation broken: %s: '%s'\n", what, text.c_str());
    std::abort();
}

std::vector<std::string> argumentsIn(const std::uint8_t* bytes, std::size_t size)
{
    std::vector<std::string> arguments{"kovdoa"};
    std::istringstream lines(std::string(reinterpret_cast<const char*>(bytes), size));
    for (std::string line; std::getline(lines, line);) {
        std::replace(line.begin(), line.end(), '\v', '\n');
        arguments.push_back(line);
    }
    return arguments;
}

// While it lives, what goes to a standard stream is kept here.
class Captured
{
public:
    explicit Captured(std::ostream& stream) : m_stream(stream), m_before(stream.rdbuf(m_text.rdbuf())) {}
    ~Captured() { m_stream.rdbuf(m_before); }
    Captured(const Captured&) = delete;
    Captured& operator=(const Captured&) = delete;

    std::string text() const { return m_text.str(); }

private:
    std::ostream& m_stream;
    std::ostringstream m_text;
    std::streambuf* m_before;
};

struct Answer
{
    bool isToRun;
    int status;
    std::string out;
    std::string err;

    bool operator==(const Answer&) const = default;
};

Answer answerTo(const std::vector<std::string>& arguments)
{
    std::vector<const char*> argv;
    for (const std::string& argument : arguments) {
        argv.push_back(argument.c_str());
    }
    const Captured out(std::cout);
    const Captured err(std::cerr);
    const kovtools::Request request = kovtools::readArguments(static_cast<int>(argv.size()), argv.data());
    return {request.action != nullptr, request.status, out.text(), err.text()};
}

// Nothing in it moves a terminal's cursor, and nothing is cut off.
bool isOneSentence(const std::string& text)
{
    return text.starts_with("kovdoa: ") && text.find('\n') == text.size() - 1 &&
           std::none_of(text.begin(), text.end() - 1,
                        [](unsigned char letter) { return letter < 0x20 || letter == 0x7F; });
}

void check(const Answer& answer)
{
    if (answer.isToRun) {
        if (!answer.out.empty() || !answer.err.empty()) {
            fail("there are words besides a command to run", answer.out + answer.err);
        }
    } else if (answer.status == kovtools::EXIT_GOOD) {
        if (answer.out.empty() || !answer.err.empty()) {
            fail("neither a command nor help", answer.err);
        }
    } else if (answer.status != kovtools::EXIT_BAD_USAGE || !answer.out.empty() ||
               !isOneSentence(answer.err)) {
        fail("not one sentence", answer.out + answer.err);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const std::vector<std::string> arguments = argumentsIn(bytes, size);
    const Answer answer = answerTo(arguments);
    check(answer);
    if (!(answerTo(arguments) == answer)) {
        fail("another answer the second time", answer.out + answer.err);
    }
    return 0;
}
