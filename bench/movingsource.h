// Energy maps for the benchmarks that render, and the imager for them.
#ifndef KOVDOA_BENCH_MOVINGSOURCE_H
#define KOVDOA_BENCH_MOVINGSOURCE_H

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>

#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include <KOVDoaHandle/api/results.h>
#include <KOVDoaHandle/imaging/engmapresult.h>
#include <KOVDoaHandle/imaging/kovdoaobject.h>

namespace bench {

constexpr int mapRows = 48;
constexpr int mapCols = 64;
constexpr int frameCount = 8;  // inputs vary between iterations

struct ReleaseFrame
{
    void operator()(EngMapResult* frame) const { releaseResultHandle(frame); }
};
using Frame = std::unique_ptr<EngMapResult, ReleaseFrame>;

struct DestroyImage
{
    void operator()(mat1d_uint8* image) const { destroy_mat1d_uint8(image); }
};
using Picture = std::unique_ptr<mat1d_uint8, DestroyImage>;

// Moving sources over a noisy floor, with their peaks stored as a beamformer with tracking delivers them.
inline std::vector<Frame> makeFrames()
{
    std::mt19937 random(1);
    std::uniform_real_distribution<float> noise(0.05F, 0.08F);
    std::vector<Frame> frames;
    for (int i = 0; i < frameCount; ++i) {
        Frame frame(createResultHandle(mapRows, mapCols, 480, 640, 1024));
        const float sourceRow = 20.0F + static_cast<float>(i);
        const float sourceCol = 30.0F - static_cast<float>(i);
        for (int row = 0; row < mapRows; ++row) {
            for (int col = 0; col < mapCols; ++col) {
                const float down = static_cast<float>(row) - sourceRow;
                const float right = static_cast<float>(col) - sourceCol;
                frame->ResEngMap->data[row][col] =
                    noise(random) + std::exp(-(down * down + right * right) / 60.0F);
            }
        }
        frame->peaks.push_back({1.06F, static_cast<int>(sourceRow), static_cast<int>(sourceCol)});
        frames.push_back(std::move(frame));
    }
    return frames;
}

// init() creates a log folder in the working directory.
inline void initInOwnFolder(KOVOFFLineDoaObject& imager, int width, int height)
{
    const QString former = QDir::currentPath();
    const QTemporaryDir folder;
    QDir::setCurrent(folder.path());
    imager.init(mapRows, mapCols, width, height);
    QDir::setCurrent(former);
    qInstallMessageHandler(nullptr);
}

}  // namespace bench

#endif
