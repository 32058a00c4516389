#include "tools/integrity/recordingverdicts.h"

#include <iomanip>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string_view>

#include "tools/support/wording.h"

namespace kovtools {

using nlohmann::ordered_json;

namespace {

constexpr int numberWidth = 10;  // letters of a table's columns
constexpr int offsetWidth = 14;
constexpr int bytesWidth = 12;

std::string reasonBehind(std::string_view reason)
{
    return reason.empty() ? std::string() : ": " + std::string(reason);
}

std::string headerText(const HeaderFinding& finding)
{
    std::ostringstream text;
    text << verdictName(finding.verdict) << reasonBehind(finding.reason);
    if (finding.verdict == Verdict::Complete) {
        const RecordingHeader& header = finding.header;
        text << ", version " << printable(header.version) << ", maps of " << header.resRows << " x "
             << header.resCols << " cells, spectra of " << header.bins() << " bins";
    }
    return text.str();
}

void writeRow(std::ostream& out, const std::string& number, const std::string& offset,
              const std::string& bytes, const std::string& verdict)
{
    out << std::setw(numberWidth) << number << std::setw(offsetWidth) << offset << std::setw(bytesWidth)
        << bytes << "  " << verdict << '\n';
}

void writeRow(std::ostream& out, const RecordingPiece& piece)
{
    writeRow(out, piece.number ? std::to_string(*piece.number) : "-", std::to_string(piece.offset),
             std::to_string(piece.bytes), verdictName(piece.verdict) + reasonBehind(piece.reason));
}

ordered_json reasonJson(const std::string& reason)
{
    return reason.empty() ? ordered_json(nullptr) : ordered_json(reason);
}

ordered_json headerJson(const HeaderFinding& finding)
{
    ordered_json json{{"verdict", verdictName(finding.verdict)}, {"reason", reasonJson(finding.reason)}};
    if (finding.verdict == Verdict::Complete) {
        const RecordingHeader& header = finding.header;
        json["bytes"] = finding.end;
        json["version"] = header.version;
        json["map"] = {{"rows", header.resRows}, {"cols", header.resCols}};
        json["picture"] = {{"width", header.imgCols}, {"height", header.imgRows}};
        json["fft_length"] = header.fftLen;
    }
    return json;
}

ordered_json pieceJson(const RecordingPiece& piece)
{
    return {{"number", piece.number ? ordered_json(*piece.number) : ordered_json(nullptr)},
            {"offset", piece.offset},
            {"bytes", piece.bytes},
            {"verdict", verdictName(piece.verdict)},
            {"reason", reasonJson(piece.reason)}};
}

// Names and versions from files may be any bytes; JSON is UTF-8.
std::string onOneLine(const ordered_json& json)
{
    return json.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

// Counts every piece and hands those that are wanted to `show`.
template <typename Show>
VerdictCounts countPieces(RecordingPieces& pieces, bool faultsOnly, Show show)
{
    VerdictCounts counts;
    while (const std::optional<RecordingPiece> piece = pieces.next()) {
        counts.add(piece->verdict);
        if (!faultsOnly || piece->verdict != Verdict::Complete) {
            show(*piece);
        }
    }
    return counts;
}

}  // namespace

void VerdictCounts::add(Verdict verdict)
{
    switch (verdict) {
        case Verdict::Complete:
            used += faults() == 0 ? 1 : 0;
            ++complete;
            break;
        case Verdict::Torn:
            ++torn;
            break;
        case Verdict::Malformed:
            ++malformed;
            break;
        case Verdict::HeaderDisagreeing:
            ++headerDisagreeing;
            break;
    }
}

std::string verdictName(Verdict verdict)
{
    switch (verdict) {
        case Verdict::Complete:
            return "complete";
        case Verdict::Torn:
            return "torn";
        case Verdict::HeaderDisagreeing:
            return "header disagreeing";
        case Verdict::Malformed:
            break;
    }
    return "malformed";
}

std::string pieceName(const RecordingPiece& piece)
{
    return piece.number ? "record " + std::to_string(*piece.number)
                        : "what lies at byte " + std::to_string(piece.offset);
}

VerdictCounts writeVerdictTable(std::ostream& out, const std::filesystem::path& file, RecordingPieces& pieces,
                                bool faultsOnly)
{
    out << "file       " << printable(file.string()) << '\n'
        << "size       " << pieces.fileBytes() << " bytes\n"
        << "header     " << headerText(pieces.header()) << '\n';
    bool hasHead = false;
    const VerdictCounts counts = countPieces(pieces, faultsOnly, [&](const RecordingPiece& piece) {
        if (!hasHead) {
            writeRow(out, "record", "at byte", "bytes", "verdict");
            hasHead = true;
        }
        writeRow(out, piece);
    });
    out << "summary    " << counts.complete << " complete, " << counts.torn << " torn, " << counts.malformed
        << " malformed, " << counts.headerDisagreeing << " header disagreeing";
    if (counts.used != counts.complete) {
        out << "; " << counts.used << " before the first fault";
    }
    out << '\n';
    return counts;
}

VerdictCounts writeVerdictJson(std::ostream& out, const std::filesystem::path& file, RecordingPieces& pieces,
                               bool faultsOnly)
{
    out << "{\n \"file\": " << onOneLine(file.string()) << ",\n \"bytes\": " << pieces.fileBytes()
        << ",\n \"header\": " << onOneLine(headerJson(pieces.header())) << ",\n \"records\": [";
    std::string_view separator = "\n  ";
    const VerdictCounts counts = countPieces(pieces, faultsOnly, [&](const RecordingPiece& piece) {
        out << separator << onOneLine(pieceJson(piece));
        separator = ",\n  ";
    });
    const bool isWhole = pieces.header().verdict == Verdict::Complete && counts.faults() == 0;
    out << "\n ],\n \"complete\": " << counts.complete << ",\n \"torn\": " << counts.torn
        << ",\n \"malformed\": " << counts.malformed
        << ",\n \"header_disagreeing\": " << counts.headerDisagreeing << ",\n \"used\": " << counts.used
        << ",\n \"whole\": " << onOneLine(isWhole) << "\n}\n";
    return counts;
}

}  // namespace kovtools
