// The words of the result file, which the writer and the reader share. docs/result-file.md describes the
// format.
#ifndef KOVDOA_RESULTFORMAT_P_H
#define KOVDOA_RESULTFORMAT_P_H

#include <bit>
#include <string_view>

namespace KOVResult {

// Binary blocks are the floats as they lie in memory.
static_assert(std::endian::native == std::endian::little && sizeof(float) == 4);

inline constexpr std::string_view lineEnd = "\r\n";

inline constexpr std::string_view fileInfoStart = "FILE_INFO_START";
inline constexpr std::string_view fileInfoEnd = "FILE_INFO_END";
inline constexpr std::string_view structInfoStart = "STRUCT_INFO_START";
inline constexpr std::string_view structInfoEnd = "STRUCT_INFO_END";

inline constexpr std::string_view recordStart = "--start--";
inline constexpr std::string_view recordEnd = "--end--";
inline constexpr std::string_view fieldMark = "**";  // begins every line of a record that names a field

// Keys of the fields, named like the members of EngMapResult.
inline constexpr std::string_view keyPowerBands = "PowerBandsFFTSpec";
inline constexpr std::string_view keyMaxSpl = "maxSpl";
inline constexpr std::string_view keyMinSpl = "minSpl";
inline constexpr std::string_view keyMaxSplExtern = "maxSplExtern";
inline constexpr std::string_view keyMinSplExtern = "minSplExtern";
inline constexpr std::string_view keyMaxSplView = "maxSplView";
inline constexpr std::string_view keyMinSplView = "minSplView";
inline constexpr std::string_view keyMaxSplExternView = "maxSplExternView";
inline constexpr std::string_view keyMinSplExternView = "minSplExternView";
inline constexpr std::string_view keyFirstPointInRadius = "firstPointInRadius";
inline constexpr std::string_view keyMedian = "median";
inline constexpr std::string_view keyDistance = "distance";
inline constexpr std::string_view keyPeaks = "peaks";
inline constexpr std::string_view keyPowerSpec = "PowerSpec";
inline constexpr std::string_view keyEngMap = "ResEngMap";

}  // namespace KOVResult

#endif
