// A record is put together in memory, so that it reaches the file in one write: a process that dies between
// two frames leaves no half record behind.
#include <KOVDoaHandle/result/resultwriter_p.h>

#include <cstddef>
#include <string_view>

#include <KOVDoaHandle/imaging/engmapresult.h>
#include <KOVDoaHandle/result/resultformat_p.h>
#include <KOVDoaHandle/result/resultnumbers_p.h>

namespace KOVResult {

namespace {

constexpr char formatVersion[] = "0015";

// Begins the line of a field.
void appendKey(std::string& bytes, std::string_view key)
{
    bytes += fieldMark;
    bytes += key;
    bytes += ':';
}

void appendLevel(std::string& bytes, std::string_view key, float level)
{
    appendKey(bytes, key);
    appendNumber(bytes, level);
    bytes += lineEnd;
}

void appendCount(std::string& bytes, std::string_view key, int count)
{
    appendKey(bytes, key);
    appendNumber(bytes, count);
    bytes += lineEnd;
}

void appendPoint(std::string& bytes, std::string_view key, const fpoint2d& point)
{
    appendKey(bytes, key);
    appendNumber(bytes, point.value);
    for (const int coordinate : {point.row, point.col}) {
        bytes += ' ';
        appendNumber(bytes, coordinate);
    }
    bytes += lineEnd;
}

void appendPeak(std::string& bytes, const TargetPoint& peak)
{
    appendNumber(bytes, peak.value);
    for (const int number : {peak.row, peak.col, peak.id, peak.life, peak.matched ? 1 : 0}) {
        bytes += ' ';
        appendNumber(bytes, number);
    }
    bytes += lineEnd;
}

// A binary block; the text line before it tells its length.
void appendFloats(std::string& bytes, const float* values, int count)
{
    if (count > 0) {
        bytes.append(reinterpret_cast<const char*>(values), static_cast<std::size_t>(count) * sizeof(float));
    }
    bytes += lineEnd;
}

void appendScalars(std::string& bytes, const EngMapResult& result)
{
    appendLevel(bytes, keyPowerBands, result.PowerBandsFFTSpec);
    appendPoint(bytes, keyMaxSpl, result.maxSpl);
    appendPoint(bytes, keyMinSpl, result.minSpl);
    appendPoint(bytes, keyMaxSplExtern, result.maxSplExtern);
    appendPoint(bytes, keyMinSplExtern, result.minSplExtern);
    appendPoint(bytes, keyMaxSplView, result.maxSplView);
    appendPoint(bytes, keyMinSplView, result.minSplView);
    appendPoint(bytes, keyMaxSplExternView, result.maxSplExternView);
    appendPoint(bytes, keyMinSplExternView, result.minSplExternView);
    appendKey(bytes, keyFirstPointInRadius);
    bytes += result.firstPointInRadius ? "true" : "false";
    bytes += lineEnd;
    appendLevel(bytes, keyMedian, result.median);
    appendLevel(bytes, keyDistance, result.distance);
}

void appendPeaks(std::string& bytes, const EngMapResult& result)
{
    appendCount(bytes, keyPeaks, static_cast<int>(result.peaks.size()));
    for (const TargetPoint& peak : result.peaks) {
        appendPeak(bytes, peak);
    }
}

void appendMap(std::string& bytes, const mat2d_fp32& map)
{
    appendKey(bytes, keyEngMap);
    appendNumber(bytes, map.rows);
    bytes += 'x';
    appendNumber(bytes, map.cols);
    bytes += lineEnd;
    for (int row = 0; row < map.rows; ++row) {
        // A map without columns may come without row pointers.
        appendFloats(bytes, map.cols > 0 ? map.data[row] : nullptr, map.cols);
    }
}

}  // namespace

QString headerText(const RecordingSizes& sizes)
{
    QString text = QStringLiteral("==FILE_INFO_START==\r\n");
    text += QLatin1String("VERSION:") + QLatin1String(formatVersion);
    text += QLatin1String("\r\nRESROW:") + QString::number(sizes.resRows);
    text += QLatin1String("\r\nRESCOL:") + QString::number(sizes.resCols);
    text += QLatin1String("\r\nIMGROW:") + QString::number(sizes.imgRows);
    text += QLatin1String("\r\nIMGCOL:") + QString::number(sizes.imgCols);
    text += QLatin1String("\r\nFFTLEN:") + QString::number(sizes.fftLen);
    // The two angle maps are in no record of this version; the list keeps their places.
    text += QLatin1String(
        "\r\n==FILE_INFO_END==\r\n"
        "==STRUCT_INFO_START==\r\n"
        "ResEngMap:ON\r\n"
        "ResAngleEng:OFF\r\n"
        "ResAngleEngBGR:OFF\r\n"
        "PowerSpec:ON\r\n"
        "PowerBandsFFTSpec:ON\r\n"
        "maxSpl:ON\r\n"
        "minSpl:ON\r\n"
        "maxSplExtern:ON\r\n"
        "minSplExtern:ON\r\n"
        "maxSplView:ON\r\n"
        "minSplView:ON\r\n"
        "maxSplExternView:ON\r\n"
        "minSplExternView:ON\r\n"
        "peaks:ON\r\n"
        "firstPointInRadius:ON\r\n"
        "median:ON\r\n"
        "distance:ON\r\n"
        "==STRUCT_INFO_END==\r\n");
    return text;
}

void appendRecord(std::string& bytes, int frameNumber, const EngMapResult& result)
{
    bytes += recordStart;
    appendNumber(bytes, frameNumber);
    bytes += lineEnd;

    appendScalars(bytes, result);
    appendPeaks(bytes, result);

    appendCount(bytes, keyPowerSpec, result.PowerSpec->len);
    appendFloats(bytes, result.PowerSpec->data, result.PowerSpec->len);

    appendMap(bytes, *result.ResEngMap);

    bytes += recordEnd;
    bytes += lineEnd;
}

}  // namespace KOVResult
