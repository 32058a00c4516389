// Any bytes as a recording that the program reads by its own means; the first byte says which kind. It is either taken
// or refused with one of the program's own errors. A sound has the same samples in whatever steps it is read, none of
// them unusable; a file of array audio never gives more than it says; and of a recording that was cut off no more is
// counted than of the whole, and the library loads as many records as are counted, also of those that were recovered
// from between damaged ones.
#include <QtCore/QByteArray>
#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <KOVDoaHandle/result/kovdoaresultserialize.h>

#include "tools/arrayaudio/arrayrecording.h"
#include "tools/audio/soundreader.h"
#include "tools/recording/recordingpieces.h"
#include "tools/recording/recordingscan.h"
#include "tools/support/errors.h"

namespace {

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "relation broken: %s\n", what);
    std::abort();
}

void require(bool holds, const char* what)
{
    if (!holds) {
        fail(what);
    }
}

// A folder that lives as long as the process; it is also where the library puts its cache.
const std::filesystem::path& workingFolder()
{
    static const QTemporaryDir folder;
    static const std::filesystem::path path = [] {
        QDir::setCurrent(folder.path());
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
        return std::filesystem::path(folder.path().toStdString());
    }();
    return path;
}

std::filesystem::path fileWith(std::string_view bytes, const char* name)
{
    std::filesystem::path file = workingFolder() / name;
    std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return file;
}

// ---- Sounds ----

constexpr long long mostSamples = 200'000;  // of all channels; beyond them an input is only slow

std::vector<float> samplesOf(const std::filesystem::path& file, int step, std::string& complaint)
{
    kovtools::SoundReader reader(file);
    require(reader.channels() > 0 && reader.sampleRate() > 0 && reader.samples() > 0,
            "a sound without samples");
    std::vector<float> all;
    std::vector<float> block;
    for (reader.read(step, block); !block.empty() && static_cast<long long>(all.size()) < mostSamples;
         reader.read(step, block)) {
        require(block.size() % static_cast<std::size_t>(reader.channels()) == 0, "a channel ends early");
        all.insert(all.end(), block.begin(), block.end());
    }
    complaint = reader.complaint();
    return all;
}

void readSound(std::string_view bytes)
{
    const std::filesystem::path file = fileWith(bytes, "sound.wav");
    std::string complaint;
    std::string complaintAgain;
    const std::vector<float> samples = samplesOf(file, 1000, complaint);
    const std::vector<float> again = samplesOf(file, 77, complaintAgain);
    require(std::all_of(samples.begin(), samples.end(), [](float value) { return std::abs(value) <= 1e6F; }),
            "a sample is unusable");
    const std::size_t compared = std::min(samples.size(), again.size());
    require(
        std::equal(samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(compared), again.begin()),
        "the samples depend on the steps that they are read in");
}

void readArrayFile(std::string_view bytes)
{
    fileWith(bytes, "data-0.wav");
    constexpr int channels = 5;
    constexpr int step = 5000;
    kovtools::ArrayRecording recording(workingFolder(), channels);
    require(recording.sampleRate() > 0 && recording.samples() >= 0, "an array without a shape");
    std::vector<std::vector<float>> rows(channels, std::vector<float>(step));
    std::vector<float*> pointers;
    for (std::vector<float>& row : rows) {
        pointers.push_back(row.data());
    }
    const auto count = static_cast<int>(std::min<std::int64_t>(step, recording.samples()));
    const std::int64_t first = recording.samples() - count;
    recording.read(first, count, pointers.data());
    for (const std::vector<float>& row : rows) {
        require(std::all_of(row.begin(), row.end(), [](float value) { return std::isfinite(value); }),
                "a sample is no number");
    }
}

// ---- Recordings of energy maps ----

kovtools::RecordingScan scanOf(std::string_view bytes)
{
    std::istringstream stream{std::string(bytes)};
    return kovtools::scanRecording(stream);
}

int loadedRecords(std::string_view bytes)
{
    KOVDoaResultSerialize reader(QStringLiteral("cache"));
    QByteArray data(bytes.data(), static_cast<int>(bytes.size()));
    reader.unpackVersion(data);
    reader.unpackHeader(data);
    while (reader.unpackResult(data)) {
    }
    return reader.getResultFrame();
}

void scanEnergyMaps(std::string_view bytes)
{
    const kovtools::RecordingScan scan = scanOf(bytes);
    require(scan.bytes == bytes.size(), "another size");
    require(scan.isWhole() == (scan.isRecording && scan.damage.empty()), "whole and damaged at once");
    for (const std::size_t missing : {1U, 100U}) {
        const std::string_view cut = bytes.substr(0, bytes.size() - std::min(missing, bytes.size()));
        require(scanOf(cut).completeRecords <= scan.completeRecords, "a cut makes more records");
    }
    if (scan.isWhole()) {
        require(loadedRecords(bytes) == scan.completeRecords, "the library loads another number of records");
    }
}

// What `kovdoa check` walks over and `kovdoa recover` copies.
void walkPieces(std::string_view bytes)
{
    std::istringstream stream{std::string(bytes)};
    kovtools::RecordingPieces pieces(stream);
    std::string recovered;
    int complete = 0;
    std::uint64_t at = 0;
    while (const std::optional<kovtools::RecordingPiece> piece = pieces.next()) {
        if (at == 0) {
            at = piece->offset;
            recovered = bytes.substr(0, at);
        }
        require(piece->offset == at && piece->bytes > 0, "there is a gap between pieces");
        at += piece->bytes;
        const bool isComplete = piece->verdict == kovtools::Verdict::Complete;
        require(isComplete == piece->reason.empty(), "a fault without a reason");
        if (isComplete) {
            recovered += bytes.substr(piece->offset, piece->bytes);
            ++complete;
        }
    }
    require(at == 0 || at == bytes.size(), "the pieces do not reach the end");
    if (complete > 0) {
        const kovtools::RecordingScan scan = scanOf(recovered);
        require(scan.isWhole() && scan.completeRecords == complete, "what was recovered is not whole");
        require(loadedRecords(recovered) == complete,
                "the library loads another number of recovered records");
    }
}

void readAs(char kind, std::string_view bytes)
{
    switch (kind) {
        case 'a':
            return readArrayFile(bytes);
        case 'm':
            return scanEnergyMaps(bytes);
        case 'p':
            return walkPieces(bytes);
        case 's':
            return readSound(bytes);
        default:
            break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    workingFolder();
    std::string complaint = "accepted";
    try {
        readAs(static_cast<char>(bytes[0]), {reinterpret_cast<const char*>(bytes) + 1, size - 1});
    } catch (const kovtools::DataError& error) {
        complaint = error.what();
    }
    require(!complaint.empty(), "refused without a word");
    return 0;
}
