#include "tests/tools/program.h"

#include <fcntl.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>
#include <system_error>
#include <thread>

namespace kovtools::tests {

namespace fs = std::filesystem;

namespace {

constexpr const char* outName = "/stdout.txt";
constexpr const char* errName = "/stderr.txt";
constexpr std::chrono::seconds patience{60};

int openForWriting(const std::string& file)
{
    return open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
}

std::vector<std::string> programWith(const std::vector<std::string>& arguments)
{
    std::vector<std::string> command{KOVDOA_PROGRAM};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

// Becomes the command. Only async-signal-safe calls stand between fork and exec. Signals that whoever started the
// tests ignores are not ignored by the child.
pid_t start(const fs::path& workingDirectory, const std::vector<std::string>& command, int out, int err)
{
    std::vector<char*> argv;
    for (const std::string& word : command) {
        argv.push_back(const_cast<char*>(word.c_str()));
    }
    argv.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        for (const int signalNumber : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGXFSZ}) {
            signal(signalNumber, SIG_DFL);
        }
        dup2(out, STDOUT_FILENO);
        dup2(err, STDERR_FILENO);
        if (chdir(workingDirectory.c_str()) == 0) {
            execv(argv[0], argv.data());
        }
        _exit(127);
    }
    return child;
}

int waitFor(pid_t child)
{
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

std::string readUntilClosed(int terminal)
{
    std::string text;
    char buffer[4096];
    for (ssize_t n = read(terminal, buffer, sizeof buffer); n > 0;
         n = read(terminal, buffer, sizeof buffer)) {
        text.append(buffer, static_cast<std::size_t>(n));
    }
    return text;
}

}  // namespace

Sandbox::~Sandbox()
{
    // Qt cannot name, and so not remove, files whose names are not in the locale's encoding.
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

Outcome Sandbox::run(const std::vector<std::string>& arguments) const
{
    return finish(programWith(arguments), 0, [] { return true; });
}

Outcome Sandbox::runScript(const std::string& script) const
{
    return finish({"/bin/sh", "-c", script, KOVDOA_PROGRAM}, 0, [] { return true; });
}

Outcome Sandbox::runAndSignal(const std::vector<std::string>& arguments, int signalNumber,
                              const std::function<bool()>& isReady) const
{
    return finish(programWith(arguments), signalNumber, isReady);
}

Outcome Sandbox::finish(const std::vector<std::string>& command, int signalNumber,
                        const std::function<bool()>& isReady) const
{
    // The files of the output lie outside the working directory, so that its contents are the program's alone.
    const QTemporaryDir side;
    const std::string folder = side.path().toStdString();
    const int out = openForWriting(folder + outName);
    const int err = openForWriting(folder + errName);
    const pid_t child = start(m_path, command, out, err);
    close(out);
    close(err);
    if (signalNumber != 0) {
        const auto deadline = std::chrono::steady_clock::now() + patience;
        while (!isReady() && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        kill(child, signalNumber);
    }
    Outcome outcome;
    outcome.status = waitFor(child);
    outcome.out = readFile(folder + outName);
    outcome.err = readFile(folder + errName);
    return outcome;
}

Outcome Sandbox::runInto(const std::string& outFile, const std::vector<std::string>& arguments) const
{
    const QTemporaryDir side;
    const std::string errFile = side.path().toStdString() + errName;
    const int out = openForWriting(outFile);
    const int err = openForWriting(errFile);
    const pid_t child = start(m_path, programWith(arguments), out, err);
    close(out);
    close(err);
    Outcome outcome;
    outcome.status = waitFor(child);
    outcome.err = readFile(errFile);
    return outcome;
}

Outcome Sandbox::runOnTerminal(const std::vector<std::string>& arguments) const
{
    int master = -1;
    int terminal = -1;
    if (openpty(&master, &terminal, nullptr, nullptr, nullptr) != 0) {
        throw std::system_error(errno, std::generic_category(), "openpty");
    }
    const QTemporaryDir side;
    const std::string folder = side.path().toStdString();
    const int out = openForWriting(folder + outName);
    const pid_t child = start(m_path, programWith(arguments), out, terminal);
    close(out);
    close(terminal);
    Outcome outcome;
    outcome.err = readUntilClosed(master);
    close(master);
    outcome.status = waitFor(child);
    outcome.out = readFile(folder + outName);
    return outcome;
}

std::vector<std::string> Sandbox::contents() const
{
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(m_path)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string readFile(const fs::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

void writeFile(const fs::path& file, const std::string& bytes)
{
    std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

int countFiles(const fs::path& folder, const std::string& extension)
{
    int count = 0;
    std::error_code missing;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, missing)) {
        count += entry.path().extension() == extension ? 1 : 0;
    }
    return count;
}

bool isOneSentence(const std::string& text)
{
    return text.starts_with("kovdoa: ") && text.size() > 20 && text.find('\n') == text.size() - 1;
}

}  // namespace kovtools::tests
