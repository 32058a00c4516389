// The fields of one record, read into a frame.
#ifndef KOVDOA_RESULTRECORD_P_H
#define KOVDOA_RESULTRECORD_P_H

#include <cstddef>

#include <KOVDoaHandle/result/resultcursor_p.h>

struct EngMapResult;

namespace KOVResult {

// Reads the lines behind a record's first one, up to and including its last, into `frame`, whose map and
// spectrum have the sizes to be read. At most `maxPeaks` peaks are taken; what a cut record lacks keeps its
// value. Returns false when there were more peaks than that, and reading stopped at them.
bool readFields(ByteCursor& cursor, EngMapResult& frame, std::size_t maxPeaks);

}  // namespace KOVResult

#endif
