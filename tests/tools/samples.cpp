#include "tests/tools/samples.h"

#include <KOVDoaHandle/api/results.h>
#include <KOVDoaHandle/result/kovdoaresultserialize.h>
#include <QtCore/QTemporaryDir>

#include <KOVDoaHandle/imaging/engmapresult.h>

#include <cmath>
#include <opencv2/core.hpp>

#include "tests/tools/program.h"
#include "tools/pictures/picturecodec.h"

namespace kovtools::tests {

void writeRecording(const std::filesystem::path& file, int frames, int rows, int cols,
                    const std::function<float(int, int, int)>& level)
{
    constexpr int fftLength = 64;
    const QTemporaryDir cache;
    KOVDoaResultSerialize writer(cache.path());
    writer.startSave(QString::fromStdString(file.string()), rows, cols, 240, 320, fftLength);
    EngMapResult* const record = createResultHandle(rows, cols, 240, 320, fftLength);
    for (int frame = 0; frame < frames; ++frame) {
        for (int row = 0; row < rows; ++row) {
            for (int col = 0; col < cols; ++col) {
                record->ResEngMap->data[row][col] = level(frame, row, col);
            }
        }
        writer.Save(record);
    }
    releaseResultHandle(record);
}

float hill(int atRow, int atCol, int row, int col)
{
    const double distance = std::hypot(row - atRow, col - atCol);
    return static_cast<float>(0.1 + 0.9 * std::exp(-0.08 * distance * distance));
}

cv::Mat readPicture(const std::filesystem::path& file)
{
    return pictureCodec().decode(readFile(file));
}

cv::Point2d brightestPlace(const std::filesystem::path& picture)
{
    cv::Mat grey;
    cv::extractChannel(readPicture(picture), grey, 0);
    double brightest = 0.0;
    cv::minMaxLoc(grey, nullptr, &brightest);
    cv::Point2d sum(0.0, 0.0);
    int count = 0;
    for (int y = 0; y < grey.rows; ++y) {
        for (int x = 0; x < grey.cols; ++x) {
            if (grey.at<unsigned char>(y, x) >= brightest - 2.0) {
                sum += cv::Point2d(x + 0.5, y + 0.5);
                ++count;
            }
        }
    }
    return sum / std::max(count, 1);
}

}  // namespace kovtools::tests
