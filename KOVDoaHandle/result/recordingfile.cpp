#include <KOVDoaHandle/result/recordingfile_p.h>

#include <QtCore/QFile>

#include <KOVDoaHandle/result/filename_p.h>

namespace KOVResult {

bool startFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (!isFileName(path) || !file.open(QIODevice::ReadWrite | QIODevice::Truncate | QIODevice::Unbuffered)) {
        return true;
    }
    const bool isWhole = file.write(bytes) == bytes.size();
    if (!isWhole) {
        file.resize(0);
    }
    file.close();
    return isWhole;
}

void appendToFile(const QString& path, const std::string& bytes)
{
    QFile file(path);
    // Unbuffered, because the bytes come in one piece.
    if (!isFileName(path) || !file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered)) {
        return;
    }
    const qint64 sizeBefore = file.pos();
    const auto length = static_cast<qint64>(bytes.size());
    if (file.write(bytes.data(), length) != length) {
        file.resize(sizeBefore);  // the disk is full
    }
    file.flush();
    file.close();
}

}  // namespace KOVResult
