// What every command keeps to, whatever it is given: one sentence when something is wrong, a status that says so, and
// outputs that are whole or untouched.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "tests/tools/commandtable.h"
#include "tests/tools/samples.h"
#include "tools/recording/recordingscan.h"

namespace {

using namespace kovtools::tests;

namespace fs = std::filesystem;

using Contents = std::map<std::string, std::string>;

class EveryCommand : public testing::TestWithParam<CommandRow>
{
protected:
    EveryCommand() { writeInputs(GetParam(), sandbox); }

    Outcome run() const { return sandbox.run(GetParam().line()); }

    // As if an earlier run had made them.
    void writeOldOutputs() const
    {
        for (const std::string& output : GetParam().outputs) {
            writeFile(sandbox / output, "the old " + output);
        }
    }

    // Everything in the sandbox, by its path in it.
    Contents contents() const
    {
        Contents all;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(sandbox.path())) {
            all[fs::relative(entry.path(), sandbox.path()).string()] =
                entry.is_regular_file() ? readFile(entry.path()) : "";
        }
        return all;
    }

    void expectRefusal(const Outcome& outcome) const
    {
        EXPECT_TRUE(outcome.status == 1 || outcome.status == 2) << outcome.status;
        EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    }

    const Sandbox sandbox;
};

class CommandThatSucceeds : public EveryCommand
{
};

class CommandThatReads : public EveryCommand
{
};

class CommandThatWrites : public EveryCommand
{
};

class CommandThatWritesAtOnce : public EveryCommand
{
};

bool succeeds(const CommandRow& row)
{
    return row.succeeds;
}

bool reads(const CommandRow& row)
{
    return !row.inputs.empty();
}

bool writes(const CommandRow& row)
{
    return !row.outputs.empty();
}

bool writesAtOnce(const CommandRow& row)
{
    return succeeds(row) && writes(row);
}

std::vector<CommandRow> commandsOf(bool (*kind)(const CommandRow&))
{
    std::vector<CommandRow> rows;
    std::ranges::copy_if(everyCommand(), std::back_inserter(rows), kind);
    return rows;
}

std::string labelOf(const testing::TestParamInfo<CommandRow>& row)
{
    return row.param.label;
}

INSTANTIATE_TEST_SUITE_P(Each, EveryCommand, testing::ValuesIn(everyCommand()), labelOf);
INSTANTIATE_TEST_SUITE_P(Each, CommandThatSucceeds, testing::ValuesIn(commandsOf(succeeds)), labelOf);
INSTANTIATE_TEST_SUITE_P(Each, CommandThatReads, testing::ValuesIn(commandsOf(reads)), labelOf);
INSTANTIATE_TEST_SUITE_P(Each, CommandThatWrites, testing::ValuesIn(commandsOf(writes)), labelOf);
INSTANTIATE_TEST_SUITE_P(Each, CommandThatWritesAtOnce, testing::ValuesIn(commandsOf(writesAtOnce)), labelOf);

TEST_P(CommandThatSucceeds, ReplacesItsOutputs)
{
    writeOldOutputs();

    const Outcome outcome = run();

    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    for (const std::string& output : GetParam().outputs) {
        EXPECT_NE(readFile(sandbox / output), "the old " + output);
    }
}

TEST_P(EveryCommand, TouchesNothingWhenItDoesNotKnowAnOption)
{
    writeOldOutputs();
    const Contents before = contents();
    std::vector<std::string> line = GetParam().line();
    line.emplace_back("--frobnicate");

    const Outcome outcome = sandbox.run(line);

    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_TRUE(contents() == before);
}

TEST_P(EveryCommand, HelpsOnStdoutWithAnExample)
{
    std::vector<std::string> line = GetParam().command;
    line.emplace_back("--help");

    const Outcome outcome = sandbox.run(line);

    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_NE(outcome.out.find("Usage: kovdoa " + GetParam().command.front()), std::string::npos);
    EXPECT_NE(outcome.out.find("Example:\n  kovdoa "), std::string::npos);
}

TEST_P(EveryCommand, AsksForItsArguments)
{
    const Contents before = contents();

    const Outcome outcome = sandbox.run(GetParam().command);

    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_TRUE(contents() == before);
}

// The options that take a value, by this help, each with whether any text will do, as for a file's name.
std::map<std::string, bool> optionsWithValues(const std::string& help)
{
    const std::regex form("\n +(?:-[a-z],)?(--[a-z0-9-]+) ([A-Z][^ \n]*)");
    const std::regex path("(FILE|DIR|OUT|IN).*");
    std::map<std::string, bool> options;
    for (std::sregex_iterator match(help.begin(), help.end(), form), end; match != end; ++match) {
        options[(*match)[1]] = std::regex_match((*match)[2].str(), path);
    }
    return options;
}

TEST_P(EveryCommand, RefusesNonsenseAsTheValueOfAnyOptionAndNoValueAtAll)
{
    writeOldOutputs();
    const Contents before = contents();
    std::vector<std::string> help = GetParam().command;
    help.emplace_back("--help");
    const std::map<std::string, bool> options =
        optionsWithValues(sandbox.run({"--help"}).out + sandbox.run(help).out);
    EXPECT_TRUE(options.contains("--log"));
    for (const auto& [option, takesAnyText] : options) {
        std::vector<std::string> line = GetParam().line();
        line.push_back(option);
        std::vector<Outcome> outcomes{sandbox.run(line)};
        if (!takesAnyText) {
            line.emplace_back("1\n!");
            outcomes.push_back(sandbox.run(line));
        }

        for (const Outcome& outcome : outcomes) {
            EXPECT_EQ(outcome.status, 2) << option;
            EXPECT_EQ(outcome.out, "") << option;
            EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
            EXPECT_NE(outcome.err.find(option.substr(2)), std::string::npos) << outcome.err;
        }
        EXPECT_TRUE(contents() == before) << option;
    }
}

TEST_P(CommandThatReads, NamesAnInputThatIsMissingAndTouchesNothing)
{
    writeOldOutputs();
    for (const std::string& input : GetParam().inputs) {
        fs::rename(sandbox / input, sandbox / "hidden");
        const Contents before = contents();

        const Outcome outcome = run();

        EXPECT_EQ(outcome.status, 1);
        EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
        EXPECT_NE(outcome.err.find(fs::path(input).filename().string()), std::string::npos) << outcome.err;
        EXPECT_TRUE(contents() == before);
        fs::rename(sandbox / "hidden", sandbox / input);
    }
}

std::string binaryNoise()
{
    std::string bytes;
    unsigned state = 12345;
    for (int i = 0; i < 30'000; ++i) {
        state = state * 1664525U + 1013904223U;
        bytes += static_cast<char>(state >> 24U);
    }
    return bytes;
}

TEST_P(CommandThatReads, TouchesNothingWhenAnInputIsSomethingElse)
{
    writeOldOutputs();
    for (const std::string& input : GetParam().inputs) {
        if (std::ranges::count(GetParam().streams, input) != 0) {
            continue;
        }
        const std::string usable = readFile(sandbox / input);
        for (const std::string& bytes :
             {std::string(), std::string("only words in here, and,more,of,them\n"), binaryNoise()}) {
            writeFile(sandbox / input, bytes);
            const Contents before = contents();

            const Outcome outcome = run();

            expectRefusal(outcome);
            EXPECT_TRUE(contents() == before) << input << " of " << bytes.size() << " bytes";
        }
        writeFile(sandbox / input, usable);
    }
}

TEST_P(CommandThatReads, TouchesNothingWhenAnInputIsAFolderOrAPipe)
{
    writeOldOutputs();
    for (const std::string& input : GetParam().inputs) {
        const std::string usable = readFile(sandbox / input);
        for (const bool isPipe : {false, true}) {
            fs::remove(sandbox / input);
            if (isPipe) {
                ASSERT_EQ(mkfifo((sandbox / input).c_str(), 0600), 0);
            } else {
                fs::create_directory(sandbox / input);
            }
            const Contents before = contents();

            const Outcome outcome = run();

            expectRefusal(outcome);
            EXPECT_TRUE(contents() == before) << input;
        }
        fs::remove(sandbox / input);
        writeFile(sandbox / input, usable);
    }
}

// By the file's own account of its length.
bool isWhole(const fs::path& file)
{
    const std::string bytes = readFile(file);
    const std::string extension = file.extension().string();
    if (extension == ".png") {
        return !readPicture(file).empty() && bytes.find("IEND") == bytes.size() - 8;
    }
    if (extension == ".wav" || extension == ".avi") {
        std::uint32_t behind = 0;
        std::memcpy(&behind, bytes.data() + 4, bytes.size() < 8 ? 0 : sizeof behind);
        return bytes.size() > 8 && behind == bytes.size() - 8;
    }
    if (extension == ".kov") {
        return kovtools::scanRecordingFile(file).isWhole();
    }
    return bytes.ends_with('\n');
}

// What is left of a file may be of use, then it is used: outputs are the old ones or whole new ones.
TEST_P(CommandThatReads, LeavesNothingHalfDoneWhenAnInputIsCutOff)
{
    for (const std::string& input : GetParam().inputs) {
        const std::string whole = readFile(sandbox / input);
        for (const std::size_t tenths : {1U, 5U, 9U}) {
            writeFile(sandbox / input, whole.substr(0, whole.size() * tenths / 10));
            writeOldOutputs();

            const Outcome outcome = run();

            if (outcome.status != 0) {
                expectRefusal(outcome);
            }
            for (const std::string& output : GetParam().outputs) {
                EXPECT_TRUE(readFile(sandbox / output) == "the old " + output || isWhole(sandbox / output))
                    << output << " after " << input << " was cut to " << tenths << " tenths";
            }
            for (const auto& [name, bytes] : contents()) {
                EXPECT_EQ(name.find(".kovdoa-partial"), std::string::npos) << name;
            }
        }
        writeFile(sandbox / input, whole);
    }
}

TEST_P(CommandThatWrites, TouchesNothingWhenTheDiskIsFull)
{
    writeOldOutputs();
    const Contents before = contents();
    // A limit on the size of files, 512 bytes, makes writing fail as a full disk does.
    std::string script = "ulimit -f 1; exec \"$0\"";
    for (const std::string& word : GetParam().line()) {
        script += " " + word;
    }

    const Outcome outcome = sandbox.runScript(script);

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_TRUE(contents() == before);
}

TEST_P(CommandThatWritesAtOnce, WritesIntoPipesWhatItWritesIntoFiles)
{
    const std::vector<std::string>& outputs = GetParam().outputs;
    ASSERT_EQ(run().status, 0);
    std::string script;
    Contents expected;
    for (const std::string& output : outputs) {
        expected[output] = readFile(sandbox / output);
        fs::remove(sandbox / output);
        ASSERT_EQ(mkfifo((sandbox / output).c_str(), 0600), 0);
        script += "timeout 60 cat " + output + " > " + output + ".copy & ";
    }
    script += "timeout 60 \"$0\"";
    for (const std::string& word : GetParam().line()) {
        script += " " + word;
    }

    const Outcome outcome = sandbox.runScript(script + "; status=$?; wait; exit $status");

    EXPECT_EQ(outcome.status, 0) << outcome.err;
    for (const std::string& output : outputs) {
        EXPECT_TRUE(readFile(sandbox / (output + ".copy")) == expected[output]) << output;
        EXPECT_TRUE(fs::is_fifo(sandbox / output)) << output;
    }
}

// ---- The table itself ----

// The names that the program gives when a command is missing behind these words.
std::vector<std::string> commandsBehind(const std::vector<std::string>& words)
{
    const Sandbox sandbox;
    const std::string sentence = sandbox.run(words).err;
    const std::size_t begin = sentence.find("a command is needed");
    if (begin == std::string::npos) {
        return {};
    }
    std::string names = sentence.substr(sentence.find("': ", begin) + 3);
    names.erase(names.find(" (see"));
    std::vector<std::string> all;
    std::istringstream stream(names);
    for (std::string name; std::getline(stream >> std::ws, name, ',');) {
        all.push_back(name);
    }
    return all;
}

TEST(CommandTable, HasEveryCommandOfTheProgram)
{
    std::set<std::string> known;
    for (const CommandRow& row : everyCommand()) {
        known.insert(row.command.back());
    }
    const std::vector<std::string> commands = commandsBehind({});

    ASSERT_FALSE(commands.empty());
    for (const std::string& command : commands) {
        const std::vector<std::string> deeper = commandsBehind({command});
        for (const std::string& name : deeper.empty() ? std::vector{command} : deeper) {
            EXPECT_TRUE(known.contains(name)) << name;
        }
    }
}

}  // namespace
