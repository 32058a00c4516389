#include "tools/recording/recordingwriter.h"

#include <QtCore/QString>

#include "tools/recording/recordingscan.h"
#include "tools/support/errors.h"
#include "tools/support/workspace.h"

namespace kovtools {

namespace {

constexpr const char* linkName = "written.kov";

}  // namespace

RecordingWriter::RecordingWriter(const std::filesystem::path& target, const RecordingSizes& sizes)
    : m_file(target), m_writer(QStringLiteral("cache"))
{
    m_frame.reset(
        createResultHandle(sizes.rows, sizes.cols, sizes.pictureHeight, sizes.pictureWidth, sizes.fftLength));
    Workspace::link(m_file.path(), linkName);
    m_writer.startSave(QString::fromLatin1(linkName), sizes.rows, sizes.cols, sizes.pictureHeight,
                       sizes.pictureWidth, sizes.fftLength);
}

void RecordingWriter::save()
{
    m_writer.Save(m_frame.get());
    ++m_saved;
}

std::uint64_t RecordingWriter::finish()
{
    const RecordingScan scan = scanRecordingFile(m_file.path());
    if (!scan.isWhole() || scan.completeRecords != m_saved) {
        throw DataError("the recording could not be written completely (is the disk full?)");
    }
    m_file.commit();
    return scan.bytes;
}

}  // namespace kovtools
