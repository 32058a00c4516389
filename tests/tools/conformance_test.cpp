// The recordings in tests/data/recordings: whole ones, torn ones, malformed ones. Beside each lies what is to be said
// of it.
#include <KOVDoaHandle/api/resultfile.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <thread>

#include <KOVDoaHandle/imaging/engmapresult.h>

#include "tests/tools/program.h"

namespace {

using kovtools::tests::isOneSentence;
using kovtools::tests::Outcome;
using kovtools::tests::readFile;
using kovtools::tests::Sandbox;
using kovtools::tests::writeFile;
using nlohmann::json;
namespace fs = std::filesystem;

using Names = std::vector<std::string>;

const fs::path folder = KOVDOA_RECORDINGS_DIR;

std::set<std::string> stemsOf(const std::string& extension)
{
    std::set<std::string> stems;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        if (entry.path().extension() == extension) {
            stems.insert(entry.path().stem().string());
        }
    }
    return stems;
}

// "torn-in-its-map" is TornInItsMap.
std::string testName(const std::string& stem)
{
    std::string name;
    bool atWord = true;
    for (const char letter : stem) {
        if (letter != '-') {
            name += atWord ? static_cast<char>(std::toupper(static_cast<unsigned char>(letter))) : letter;
        }
        atWord = letter == '-';
    }
    return name;
}

// A file loaded by the library's reader.
class Loaded
{
public:
    explicit Loaded(const fs::path& file)
        : m_handle(createResultSerializeHandle(file.c_str(), (m_cache / "cache").c_str()))
    {
        while (!getIsOpenFileComplete(m_handle.get())) {
            std::this_thread::yield();
        }
    }

    int frames() const { return getResultFrame(m_handle.get()); }
    const EngMapResult& frame(int index) const { return *getResultHandleFromIndex(m_handle.get(), index); }

private:
    struct Close
    {
        void operator()(KOVDoaResultSerialize* handle) const { destoryResultSerializeHandle(handle); }
    };

    Sandbox m_cache;
    std::unique_ptr<KOVDoaResultSerialize, Close> m_handle;
};

bool isSamePoint(const fpoint2d& first, const fpoint2d& second)
{
    return std::memcmp(&first, &second, sizeof first) == 0;
}

bool isSamePeak(const TargetPoint& first, const TargetPoint& second)
{
    return first.value == second.value && first.row == second.row && first.col == second.col &&
           first.id == second.id && first.life == second.life && first.matched == second.matched;
}

bool isSameMap(const mat2d_fp32& first, const mat2d_fp32& second)
{
    if (first.rows != second.rows || first.cols != second.cols) {
        return false;
    }
    const auto rowBytes = static_cast<std::size_t>(first.cols) * sizeof(float);
    for (int row = 0; row < first.rows && rowBytes > 0; ++row) {
        if (std::memcmp(first.data[row], second.data[row], rowBytes) != 0) {
            return false;
        }
    }
    return true;
}

// Bit for bit; the values in text are finite in all of these files.
bool isSameFrame(const EngMapResult& first, const EngMapResult& second)
{
    const auto spectrumBytes = static_cast<std::size_t>(first.PowerSpec->len) * sizeof(float);
    return isSameMap(*first.ResEngMap, *second.ResEngMap) && first.PowerSpec->len == second.PowerSpec->len &&
           std::memcmp(first.PowerSpec->data, second.PowerSpec->data, spectrumBytes) == 0 &&
           first.PowerBandsFFTSpec == second.PowerBandsFFTSpec && isSamePoint(first.maxSpl, second.maxSpl) &&
           isSamePoint(first.minSpl, second.minSpl) && isSamePoint(first.maxSplExtern, second.maxSplExtern) &&
           isSamePoint(first.minSplExtern, second.minSplExtern) &&
           isSamePoint(first.maxSplView, second.maxSplView) &&
           isSamePoint(first.minSplView, second.minSplView) &&
           isSamePoint(first.maxSplExternView, second.maxSplExternView) &&
           isSamePoint(first.minSplExternView, second.minSplExternView) && first.median == second.median &&
           first.distance == second.distance && first.firstPointInRadius == second.firstPointInRadius &&
           std::equal(first.peaks.begin(), first.peaks.end(), second.peaks.begin(), second.peaks.end(),
                      isSamePeak);
}

json verdictsOn(const std::string& stem)
{
    return json::parse(readFile(folder / (stem + ".json")));
}

// Of these `recover` makes a file; of the others there is nothing to be had.
std::set<std::string> recoverableStems(bool wanted)
{
    std::set<std::string> stems;
    for (const std::string& stem : stemsOf(".json")) {
        const json verdicts = verdictsOn(stem);
        const bool isRecoverable = verdicts["header"]["verdict"] == "complete" &&
                                   (verdicts["complete"] > 0 || verdicts["records"].empty());
        if (isRecoverable == wanted) {
            stems.insert(stem);
        }
    }
    return stems;
}

std::string nameOf(const testing::TestParamInfo<std::string>& chosen)
{
    return testName(chosen.param);
}

class Conformance : public testing::TestWithParam<std::string>
{
protected:
    static fs::path recording() { return folder / (GetParam() + ".kov"); }
    static json expected() { return verdictsOn(GetParam()); }
};

class RecoverableRecording : public Conformance
{
};

class UnrecoverableRecording : public Conformance
{
};

TEST_P(Conformance, GetsTheVerdictBesideIt)
{
    const Sandbox sandbox;

    const Outcome outcome = sandbox.run({"check", "--json", recording().string()});

    json verdicts = json::parse(outcome.out);
    EXPECT_EQ(verdicts["file"], recording().string());
    verdicts.erase("file");
    EXPECT_EQ(verdicts, expected()) << json::diff(expected(), verdicts).dump(1);
    EXPECT_EQ(outcome.status, expected()["whole"] == true ? 0 : 1);
    EXPECT_EQ(outcome.err.empty(), expected()["whole"] == true) << outcome.err;
    EXPECT_TRUE(outcome.err.empty() || isOneSentence(outcome.err)) << outcome.err;
}

TEST_P(Conformance, IsUsedByTheOtherCommandsAsFarAsTheVerdictSays)
{
    const Sandbox sandbox;

    const Outcome outcome = sandbox.run({"info", "--json", recording().string()});

    EXPECT_EQ(outcome.status, expected()["whole"] == true ? 0 : 1);
    if (!outcome.out.empty()) {
        const json info = json::parse(outcome.out);
        EXPECT_EQ(info["complete"], expected()["whole"]);
        EXPECT_EQ(info["records"], expected()["used"]);
        EXPECT_EQ(info["frames"], expected()["used"]);
    }
}

TEST_P(Conformance, IsLoadedByTheLibraryWithoutHarm)
{
    const Loaded loaded(recording());

    EXPECT_GE(loaded.frames(), expected()["used"].get<int>());
    for (int i = 0; i < loaded.frames(); ++i) {
        EXPECT_NE(loaded.frame(i).ResEngMap, nullptr);
    }
}

TEST_P(RecoverableRecording, GivesExactlyItsCompleteRecordsBitForBit)
{
    const Sandbox sandbox;
    const json verdicts = expected();
    const std::string bytes = readFile(recording());
    std::string complete = bytes.substr(0, verdicts["header"]["bytes"]);
    for (const json& record : verdicts["records"]) {
        if (record["verdict"] == "complete") {
            complete += bytes.substr(record["offset"], record["bytes"]);
        }
    }

    const Outcome outcome = sandbox.run({"recover", recording().string(), "-o", "out.kov"});

    EXPECT_EQ(outcome.status, verdicts["whole"] == true ? 0 : 1) << outcome.err;
    EXPECT_EQ(readFile(sandbox / "out.kov"), complete);
    EXPECT_EQ(readFile(recording()), bytes);
    EXPECT_EQ(sandbox.run({"check", "out.kov"}).status, 0);
}

TEST_P(RecoverableRecording, GivesTheSameFramesAsEachRecordAlone)
{
    const Sandbox sandbox;
    const json verdicts = expected();
    const std::string bytes = readFile(recording());
    const std::string header = bytes.substr(0, verdicts["header"]["bytes"]);
    sandbox.run({"recover", recording().string(), "-o", "out.kov"});

    const Loaded recovered(sandbox / "out.kov");

    ASSERT_EQ(recovered.frames(), verdicts["complete"]);
    int frame = 0;
    for (const json& record : verdicts["records"]) {
        if (record["verdict"] == "complete") {
            writeFile(sandbox / "alone.kov", header + bytes.substr(record["offset"], record["bytes"]));
            const Loaded alone(sandbox / "alone.kov");
            ASSERT_EQ(alone.frames(), 1);
            EXPECT_TRUE(isSameFrame(recovered.frame(frame), alone.frame(0))) << record;
            ++frame;
        }
    }
}

TEST_P(UnrecoverableRecording, GivesOneSentenceAndNoFile)
{
    const Sandbox sandbox;

    const Outcome outcome = sandbox.run({"recover", recording().string(), "-o", "out.kov"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_EQ(sandbox.contents(), Names());
}

INSTANTIATE_TEST_SUITE_P(Recordings, Conformance, testing::ValuesIn(stemsOf(".kov")), nameOf);
INSTANTIATE_TEST_SUITE_P(Recordings, RecoverableRecording, testing::ValuesIn(recoverableStems(true)), nameOf);
INSTANTIATE_TEST_SUITE_P(Recordings, UnrecoverableRecording, testing::ValuesIn(recoverableStems(false)),
                         nameOf);

TEST(ConformanceSet, HasAVerdictBesideEachRecording)
{
    EXPECT_EQ(stemsOf(".kov"), stemsOf(".json"));
}

TEST(ConformanceSet, HasEveryKindOfVerdict)
{
    std::set<std::string> ofHeaders;
    std::set<std::string> ofRecords;
    for (const std::string& stem : stemsOf(".json")) {
        const json verdicts = verdictsOn(stem);
        ofHeaders.insert(verdicts["header"]["verdict"]);
        for (const json& record : verdicts["records"]) {
            ofRecords.insert(record["verdict"]);
        }
    }

    EXPECT_EQ(ofHeaders, (std::set<std::string>{"complete", "malformed", "torn"}));
    EXPECT_EQ(ofRecords, (std::set<std::string>{"complete", "header disagreeing", "malformed", "torn"}));
}

}  // namespace
