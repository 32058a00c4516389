#include <KOVDoaHandle/api/resultfile.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <algorithm>
#include <cstring>
#include <memory>

#include <KOVDoaHandle/result/kovdoaresultserialize.h>

KOVDoaResultSerialize* createResultSerializeHandle(const char* filePath, const char* cachePath)
{
    auto recording = std::make_unique<KOVDoaResultSerialize>(QString::fromLatin1(cachePath));
    recording->openResultFile(QString::fromLatin1(filePath));
    return recording.release();
}

bool getIsOpenFileComplete(KOVDoaResultSerialize* recording)
{
    return recording->IsOpenFileComplete();
}

void destoryResultSerializeHandle(KOVDoaResultSerialize* recording)
{
    delete recording;
}

int getResultFrame(KOVDoaResultSerialize* recording)
{
    return recording->getResultFrame();
}

int getResRows(KOVDoaResultSerialize* recording)
{
    return recording->getResRows();
}

int getResCols(KOVDoaResultSerialize* recording)
{
    return recording->getResCols();
}

int getImgRows(KOVDoaResultSerialize* recording)
{
    return recording->getImgRows();
}

int getImgCols(KOVDoaResultSerialize* recording)
{
    return recording->getImgCols();
}

int getFFTLen(KOVDoaResultSerialize* recording)
{
    return recording->getFFTLen();
}

EngMapResult* getResultHandleFromIndex(KOVDoaResultSerialize* recording, int index)
{
    return recording->getResultFromIndex(index);
}

const char* getResultFileVersion(KOVDoaResultSerialize* recording)
{
    static char buffer[32];
    std::memset(buffer, 0, sizeof buffer);
    const QByteArray version = recording->getFileVersion().toUtf8();
    std::memcpy(buffer, version.constData(),
                std::min(static_cast<std::size_t>(version.size()), sizeof buffer - 1));
    return buffer;
}
