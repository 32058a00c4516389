// Runs the kovdoa program as a child process, in a temporary directory of its own.
#ifndef KOVTOOLS_TESTS_PROGRAM_H
#define KOVTOOLS_TESTS_PROGRAM_H

#include <QtCore/QTemporaryDir>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace kovtools::tests {

struct Outcome
{
    int status = -1;  // of exit; 1000 + the signal when one killed it
    std::string out;
    std::string err;
};

// A working directory for the program, removed afterwards.
class Sandbox
{
public:
    Sandbox() : m_path(m_directory.path().toStdString()) {}
    ~Sandbox();
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    const std::filesystem::path& path() const { return m_path; }
    std::filesystem::path operator/(const std::string& name) const { return m_path / name; }

    // Runs the program here and waits. stdout and stderr go to files.
    Outcome run(const std::vector<std::string>& arguments) const;

    // The same with stdout in a file outside this directory, such as a device.
    Outcome runInto(const std::string& outFile, const std::vector<std::string>& arguments) const;

    // Runs a script for /bin/sh here, in which "$0" is the program. For what only a shell can set up: closed
    // descriptors, broken pipes, limits.
    Outcome runScript(const std::string& script) const;

    // The same with stderr on a terminal.
    Outcome runOnTerminal(const std::vector<std::string>& arguments) const;

    // Starts the program, sends it `signalNumber` once `isReady` says so, and waits.
    Outcome runAndSignal(const std::vector<std::string>& arguments, int signalNumber,
                         const std::function<bool()>& isReady) const;

    // Names of everything here, hidden files included, sorted.
    std::vector<std::string> contents() const;

private:
    Outcome finish(const std::vector<std::string>& command, int signalNumber,
                   const std::function<bool()>& isReady) const;

    QTemporaryDir m_directory;
    std::filesystem::path m_path;
};

std::string readFile(const std::filesystem::path& file);
void writeFile(const std::filesystem::path& file, const std::string& bytes);
int countFiles(const std::filesystem::path& folder, const std::string& extension);

// True for exactly one sentence of the program on one line.
bool isOneSentence(const std::string& text);

}  // namespace kovtools::tests

#endif
