// How a command says what may stand behind its name. A thin front of the library that reads the arguments: all of that
// one is in headers, and only the files that walk its tree should have to compile them.
#ifndef KOVTOOLS_COMMANDSYNTAX_H
#define KOVTOOLS_COMMANDSYNTAX_H

#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace kovtools {

// An option, or an argument that stands by itself. A handle, to be copied; good as long as the tree of commands lives.
class OptionSyntax
{
public:
    explicit OptionSyntax(CLI::Option* option) : m_option(option) {}

    // Each returns the same option, so that calls can be chained.
    OptionSyntax required() const;
    // What the help calls the value, such as "FILE".
    OptionSyntax kind(const std::string& name) const;
    // What the help shows as the value when none is given; empty shows none.
    OptionSyntax shownDefault(const std::string& text) const;

private:
    CLI::Option* m_option;
};

// A command. A handle, to be copied; good as long as the tree of commands lives. What is passed as a target must live
// that long too. Names are as in "-o,--output", or without dashes for arguments that stand by themselves.
class CommandSyntax
{
public:
    explicit CommandSyntax(CLI::App* app) : m_app(app) {}

    CommandSyntax addCommand(const std::string& name, const std::string& help) const;

    // One value, given once. `read` stores it, or refuses it.
    OptionSyntax addOption(const std::string& name, std::function<void(const std::string&)> read,
                           const std::string& help) const;
    // As many values behind it as there are; all of them are read at once.
    OptionSyntax addOptionOfMany(const std::string& name,
                                 std::function<void(const std::vector<std::string>&)> read,
                                 const std::string& help) const;
    OptionSyntax addOptionOfMany(const std::string& name, std::vector<std::string>& target,
                                 const std::string& help) const;
    // May be given several times, with one value each time.
    OptionSyntax addRepeatedOption(const std::string& name, std::vector<std::string>& target,
                                   const std::string& help) const;
    void addFlag(const std::string& name, bool& target, const std::string& help) const;

    // One of the commands below this one must be given.
    void requireCommand() const;
    // Text below the help: examples.
    void setFooter(const std::string& text) const;
    // `action` is called when the command was given and all of its options have been read; it may refuse.
    void whenChosen(std::function<void()> action) const;

    // What the user gave; to be asked from an action.
    bool hasChosenCommand() const;
    std::vector<std::string> givenOptions() const;

private:
    CLI::App* m_app;
};

// Ends the reading of the arguments: says what is wrong with what was given for `option`.
[[noreturn]] void refuse(const std::string& option, const std::string& why);

}  // namespace kovtools

#endif
