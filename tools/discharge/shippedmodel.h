// The models that the program brings along.
#ifndef KOVTOOLS_SHIPPEDMODEL_H
#define KOVTOOLS_SHIPPEDMODEL_H

#include <filesystem>

namespace kovtools {

// Writes them into `folder`, which is created, for the library to load. They were learned from simulated
// signals; how is told beside them, in models/prpd. Throws DataError.
void writeShippedModels(const std::filesystem::path& folder);

}  // namespace kovtools

#endif
