#include "tools/integrity/recordingrecovery.h"

#include <algorithm>
#include <array>
#include <fstream>

#include "tools/recording/recordingpieces.h"
#include "tools/recording/recordingscan.h"
#include "tools/support/errors.h"
#include "tools/support/inquotes.h"
#include "tools/support/partialfile.h"

namespace kovtools {

namespace {

namespace fs = std::filesystem;

// Copies stretches of one file to the end of another.
class StretchCopier
{
public:
    StretchCopier(const fs::path& source, const fs::path& target)
        : m_source(openForReading(source)), m_target(target, std::ios::binary | std::ios::trunc)
    {
    }

    void copy(std::uint64_t offset, std::uint64_t bytes)
    {
        m_source.seekg(static_cast<std::streamoff>(offset));
        while (bytes > 0 && m_source && m_target) {
            const auto count = static_cast<std::streamsize>(std::min<std::uint64_t>(bytes, m_buffer.size()));
            m_source.read(m_buffer.data(), count);
            m_target.write(m_buffer.data(), m_source.gcount());
            bytes -= static_cast<std::uint64_t>(m_source.gcount());
        }
    }

    // Whether everything was read and has been written.
    bool close()
    {
        m_target.close();
        return m_source.good() && m_target.good();
    }

private:
    std::ifstream m_source;
    std::ofstream m_target;
    std::array<char, 64 * 1024> m_buffer{};
};

std::string lossSentence(const RecordingPiece& piece)
{
    return "left out " + pieceName(piece) + ", " + std::to_string(piece.bytes) + " bytes from byte " +
           std::to_string(piece.offset) + " on, which is " + verdictName(piece.verdict) + ": " +
           piece.reason + ".";
}

}  // namespace

VerdictCounts recoverRecording(const fs::path& source, const fs::path& target,
                               const std::function<void(const std::string&)>& lost)
{
    std::ifstream stream = openForReading(source);
    RecordingPieces pieces(stream);
    if (pieces.header().verdict != Verdict::Complete) {
        throw DataError("nothing can be recovered, because " + inQuotes(source) + " " +
                        headerDamage(pieces.header()));
    }
    PartialFile file(target);
    StretchCopier copier(source, file.path());
    copier.copy(0, pieces.header().end);
    VerdictCounts counts;
    while (const std::optional<RecordingPiece> piece = pieces.next()) {
        counts.add(piece->verdict);
        if (piece->verdict == Verdict::Complete) {
            copier.copy(piece->offset, piece->bytes);
        } else {
            lost(lossSentence(*piece));
        }
    }
    if (counts.complete == 0 && counts.faults() > 0) {
        throw DataError("nothing can be recovered, because no record of " + inQuotes(source) +
                        " is complete");
    }
    // The copy is looked through once more: only what a reader will find in it has been recovered.
    const bool isCopied = copier.close();
    const RecordingScan scan = scanRecordingFile(file.path());
    if (!isCopied || stream.bad() || !scan.isWhole() || scan.completeRecords != counts.complete) {
        throw DataError(inQuotes(source) + " could not be copied completely (is the disk full?)");
    }
    file.commit();
    return counts;
}

}  // namespace kovtools
