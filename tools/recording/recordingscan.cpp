#include "tools/recording/recordingscan.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <optional>
#include <string_view>

#include "tools/support/errors.h"
#include "tools/support/inquotes.h"
#include "tools/support/partialfile.h"

namespace kovtools {

namespace {

constexpr std::string_view lineEnd = "\r\n";
constexpr std::int64_t largestBlock =
    16LL * 1024 * 1024;                                  // bytes; the library loads no larger map or spectrum
constexpr std::size_t longestLine = 16UL * 1024 * 1024;  // bytes; far beyond what any writer makes
constexpr std::size_t windowStep = 256UL * 1024;         // bytes

// Thrown inside this file: the data ends too early, or says something impossible.
struct CutOff
{
};
struct Damaged
{
    std::string what;
};

// Goes through a file of any size with a window of a few megabytes: not the whole of it need fit into memory.
class Walker
{
public:
    explicit Walker(std::istream& stream) : m_stream(stream) {}

    bool atEnd() { return m_from == m_window.size() && !readMore(); }

    bool startsWith(std::string_view text)
    {
        while (rest().size() < text.size() && readMore()) {
        }
        return rest().starts_with(text);
    }

    // Valid until the next call of anything here.
    std::string_view line()
    {
        std::size_t searched = 0;
        std::size_t end = rest().find(lineEnd);
        while (end == std::string_view::npos) {
            if (rest().size() > longestLine) {
                throw Damaged{"a line has no end"};
            }
            // The window may end between the two letters of a line end.
            searched = rest().empty() ? 0 : rest().size() - 1;
            if (!readMore()) {
                throw CutOff{};
            }
            end = rest().find(lineEnd, searched);
        }
        const std::string_view text = rest().substr(0, end);
        m_from += end + lineEnd.size();
        return text;
    }

    // Skips `count` raw bytes and the line end behind them.
    void block(std::int64_t count)
    {
        auto left = static_cast<std::size_t>(count);
        while (left > rest().size()) {
            left -= rest().size();
            m_from = m_window.size();
            if (!readMore()) {
                throw CutOff{};
            }
        }
        m_from += left;
        while (rest().size() < lineEnd.size()) {
            if (!readMore()) {
                throw CutOff{};
            }
        }
        if (!rest().starts_with(lineEnd)) {
            throw Damaged{"a block of binary data does not end where it should"};
        }
        m_from += lineEnd.size();
    }

private:
    std::string_view rest() const { return std::string_view(m_window).substr(m_from); }

    // False at the end of the file.
    bool readMore()
    {
        m_window.erase(0, m_from);
        m_from = 0;
        const std::size_t kept = m_window.size();
        m_window.resize(kept + windowStep);
        m_stream.read(m_window.data() + kept, static_cast<std::streamsize>(windowStep));
        m_window.resize(kept + static_cast<std::size_t>(m_stream.gcount()));
        return m_window.size() > kept;
    }

    std::istream& m_stream;
    std::string m_window;
    std::size_t m_from = 0;  // what has not been walked over begins here
};

std::optional<int> number(std::string_view text)
{
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return value;
}

int headerNumber(std::string_view key, std::string_view text)
{
    const std::optional<int> value = number(text);
    if (!value || *value < 0) {
        throw Damaged{"its header gives no usable " + std::string(key)};
    }
    return *value;
}

void readFileInfo(Walker& walker, RecordingScan& scan)
{
    for (std::string_view line = walker.line(); line.find("FILE_INFO_END") == std::string_view::npos;
         line = walker.line()) {
        const std::size_t colon = line.find(':');
        if (colon == std::string_view::npos) {
            continue;
        }
        const std::string_view key = line.substr(0, colon);
        const std::string_view value = line.substr(colon + 1);
        if (key == "VERSION") {
            scan.version = value;
        } else if (key == "RESROW") {
            scan.resRows = headerNumber(key, value);
        } else if (key == "RESCOL") {
            scan.resCols = headerNumber(key, value);
        } else if (key == "IMGROW") {
            scan.imgRows = headerNumber(key, value);
        } else if (key == "IMGCOL") {
            scan.imgCols = headerNumber(key, value);
        } else if (key == "FFTLEN") {
            scan.fftLen = headerNumber(key, value);
        }
    }
}

void checkSizes(const RecordingScan& scan)
{
    const std::int64_t cells = static_cast<std::int64_t>(scan.resRows) * scan.resCols;  // 62 bits at most
    if (cells > largestBlock / 4 || 2LL * scan.fftLen > largestBlock) {
        throw Damaged{"its header claims maps or spectra of an absurd size"};
    }
}

void skipStructInfo(Walker& walker)
{
    if (walker.line().find("STRUCT_INFO_START") == std::string_view::npos) {
        throw Damaged{"its list of fields is missing"};
    }
    while (walker.line().find("STRUCT_INFO_END") == std::string_view::npos) {
    }
}

void skipPeaks(Walker& walker, std::string_view count)
{
    const std::optional<int> peaks = number(count);
    if (!peaks || *peaks < 0) {
        throw Damaged{"a number of peaks is no number"};
    }
    for (int i = 0; i < *peaks; ++i) {
        walker.line();
    }
}

void skipMap(Walker& walker, std::string_view size, const RecordingScan& scan)
{
    if (size != std::to_string(scan.resRows) + "x" + std::to_string(scan.resCols)) {
        throw Damaged{"a map is not of the size that the header gives"};
    }
    for (int row = 0; row < scan.resRows && scan.resCols > 0; ++row) {
        walker.block(4LL * scan.resCols);
    }
}

void skipSpectrum(Walker& walker, std::string_view length, const RecordingScan& scan)
{
    const int bins = scan.fftLen / 2 + 1;
    if (number(length) != bins) {
        throw Damaged{"a spectrum is not of the length that the header gives"};
    }
    walker.block(4LL * bins);
}

void skipRecord(Walker& walker, const RecordingScan& scan)
{
    if (!walker.line().starts_with("--start--")) {
        throw Damaged{"something else stands where a record should begin"};
    }
    bool hasMap = false;
    bool hasSpectrum = false;
    for (std::string_view line = walker.line(); line.find("--end--") == std::string_view::npos;
         line = walker.line()) {
        if (line.starts_with("--start--")) {
            throw Damaged{"it has no end"};
        }
        const std::size_t colon = line.find(':');
        if (!line.starts_with("**") || colon == std::string_view::npos) {
            continue;
        }
        const std::string_view key = line.substr(2, colon - 2);
        const std::string_view value = line.substr(colon + 1);
        if (key == "peaks") {
            skipPeaks(walker, value);
        } else if (key == "PowerSpec") {
            skipSpectrum(walker, value, scan);
            hasSpectrum = true;
        } else if (key == "ResEngMap") {
            skipMap(walker, value, scan);
            hasMap = true;
        }
    }
    if (!hasMap || !hasSpectrum) {
        throw Damaged{"a record lacks its map or its spectrum"};
    }
}

std::string recordsBefore(int records)
{
    if (records == 0) {
        return "no record before that is complete";
    }
    return records == 1 ? "the one complete record before that is used"
                        : "the " + std::to_string(records) + " complete records before that are used";
}

}  // namespace

RecordingScan scanRecording(std::istream& stream)
{
    RecordingScan scan;
    stream.seekg(0, std::ios::end);
    scan.bytes = static_cast<std::uint64_t>(std::max<std::streamoff>(stream.tellg(), 0));
    stream.seekg(0);
    Walker walker(stream);
    bool inHeader = true;
    try {
        scan.isRecording = walker.startsWith("==FILE_INFO_START==");
        if (!scan.isRecording) {
            scan.damage = "is not a recording";
            return scan;
        }
        walker.line();
        readFileInfo(walker, scan);
        checkSizes(scan);
        skipStructInfo(walker);
        inHeader = false;
        while (!walker.atEnd()) {
            skipRecord(walker, scan);
            ++scan.completeRecords;
        }
    } catch (const CutOff&) {
        scan.damage = inHeader ? "is truncated: it ends inside its header"
                               : "is truncated: it ends inside record " +
                                     std::to_string(scan.completeRecords + 1) + "; " +
                                     recordsBefore(scan.completeRecords);
    } catch (const Damaged& damaged) {
        scan.damage = inHeader ? "is damaged: " + damaged.what
                               : "is damaged in record " + std::to_string(scan.completeRecords + 1) + " (" +
                                     damaged.what + "); " + recordsBefore(scan.completeRecords);
    }
    return scan;
}

RecordingScan scanRecordingFile(const std::filesystem::path& file)
{
    std::ifstream stream = openForReading(file);
    RecordingScan scan = scanRecording(stream);
    if (stream.bad()) {
        throw DataError("cannot read " + inQuotes(file));
    }
    return scan;
}

}  // namespace kovtools
