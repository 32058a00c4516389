// Saves what is whole in a damaged recording.
#ifndef KOVTOOLS_RECORDINGRECOVERY_H
#define KOVTOOLS_RECORDINGRECOVERY_H

#include <filesystem>
#include <functional>
#include <string>

#include "tools/integrity/recordingverdicts.h"

namespace kovtools {

// Copies the header and every complete record of the recording at `source` bit for bit, in their order, into a new
// file at `target` (both absolute, and not the same file). Tells `lost` one sentence for each piece that is left out.
// `target` appears when it is whole, and stays as it was when nothing could be recovered: then, and when a file
// cannot be read or written, throws DataError.
VerdictCounts recoverRecording(const std::filesystem::path& source, const std::filesystem::path& target,
                               const std::function<void(const std::string&)>& lost);

}  // namespace kovtools

#endif
