// The bytes of a result file: its header and its records, ready to be written.
#ifndef KOVDOA_RESULTWRITER_P_H
#define KOVDOA_RESULTWRITER_P_H

#include <QtCore/QString>

#include <string>

struct EngMapResult;

namespace KOVResult {

// What the header tells about every record of a file.
struct RecordingSizes
{
    int resRows = 0;  // energy map
    int resCols = 0;
    int imgRows = 0;  // camera picture
    int imgCols = 0;
    int fftLen = 0;
};

QString headerText(const RecordingSizes& sizes);

// Appends the whole record of `result` under the number `frameNumber`.
void appendRecord(std::string& bytes, int frameNumber, const EngMapResult& result);

}  // namespace KOVResult

#endif
