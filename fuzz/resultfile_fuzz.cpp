// Any bytes as a recording. Two relations must hold besides "nothing breaks": a file read through the loader's window
// gives the same frames as the same bytes parsed in memory, and every frame that was loaded can be rendered.
#include <QtCore/QByteArray>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

#include <KOVDoaHandle/imaging/engmapresult.h>
#include <KOVDoaHandle/imaging/kovdoaobject.h>
#include <KOVDoaHandle/result/kovdoaresultserialize.h>

namespace {

constexpr int pictureWidth = 32;
constexpr int pictureHeight = 24;

// Lives as long as the process: a folder for the file and the cache, and an imager.
struct Surroundings
{
    Surroundings()
    {
        QDir::setCurrent(folder.path());
        imager.init(8, 8, pictureWidth, pictureHeight);
        imager.setRadius(10.0F, pictureWidth, pictureHeight);
        imager.setIsImagerOutSideRadiusShow(true);
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    }
    ~Surroundings() { destroy_mat1d_uint8(image); }

    QTemporaryDir folder;
    KOVOFFLineDoaObject imager;
    mat1d_uint8* image = create_mat1d_uint8(pictureHeight, pictureWidth * 3);
};

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "relation broken: %s\n", what);
    std::abort();
}

bool sameFloats(const float* a, const float* b, int count)
{
    return count <= 0 || std::memcmp(a, b, static_cast<std::size_t>(count) * sizeof(float)) == 0;
}

bool sameFrame(const EngMapResult& a, const EngMapResult& b)
{
    const mat2d_fp32& mapA = *a.ResEngMap;
    const mat2d_fp32& mapB = *b.ResEngMap;
    if (mapA.rows != mapB.rows || mapA.cols != mapB.cols ||
        (mapA.data == nullptr) != (mapB.data == nullptr) || a.PowerSpec->len != b.PowerSpec->len ||
        a.peaks.size() != b.peaks.size()) {
        return false;
    }
    for (int row = 0; mapA.data != nullptr && row < mapA.rows; ++row) {
        if (!sameFloats(mapA.data[row], mapB.data[row], mapA.cols)) {
            return false;
        }
    }
    return sameFloats(a.PowerSpec->data, b.PowerSpec->data, a.PowerSpec->len) &&
           sameFloats(&a.maxSpl.value, &b.maxSpl.value, 1) && sameFloats(&a.distance, &b.distance, 1) &&
           a.firstPointInRadius == b.firstPointInRadius;
}

void parseInMemory(KOVDoaResultSerialize& reader, QByteArray& data)
{
    reader.unpackVersion(data);
    reader.unpackHeader(data);
    while (reader.unpackResult(data)) {
    }
}

void load(KOVDoaResultSerialize& reader, const QByteArray& data)
{
    QFile file(QStringLiteral("recording.kov"));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(data) != data.size()) {
        return;
    }
    file.close();
    reader.openResultFile(file.fileName());
    while (!reader.IsOpenFileComplete()) {
        std::this_thread::yield();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    static Surroundings surroundings;
    QByteArray data(reinterpret_cast<const char*>(bytes), static_cast<int>(size));

    KOVDoaResultSerialize inMemory(QStringLiteral("cache"));
    parseInMemory(inMemory, data);
    KOVDoaResultSerialize loaded(QStringLiteral("cache"));
    load(loaded, data);

    if (inMemory.getResultFrame() != loaded.getResultFrame() ||
        inMemory.getFileVersion() != loaded.getFileVersion()) {
        fail("the window and the memory give different frames");
    }
    constexpr int mostRendered = 4;
    for (int i = 0; i < loaded.getResultFrame(); ++i) {
        EngMapResult* const frame = loaded.getResultFromIndex(i);
        if (!sameFrame(*inMemory.getResultFromIndex(i), *frame)) {
            fail("a frame differs");
        }
        if (i < mostRendered) {
            surroundings.imager.updateImagerRGB(frame, surroundings.image);
        }
    }
    return 0;
}
