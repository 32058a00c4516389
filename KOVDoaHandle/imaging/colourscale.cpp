#include <KOVDoaHandle/imaging/colourscale_p.h>

#include <cstring>
#include <limits>

namespace KOVPrivate {

std::vector<std::uint32_t> makeColourTable(const Palette& palette, std::uint8_t alpha)
{
    std::vector<std::uint32_t> table;
    table.reserve(static_cast<std::size_t>(palette.size) + 1);
    const auto append = [&](PaletteEntry entry) {
        const std::uint8_t bytes[4] = {entry.blue, entry.green, entry.red, alpha};
        std::memcpy(&table.emplace_back(), bytes, sizeof bytes);
    };
    append({0, 0, 0});
    for (int i = 0; i < palette.size; ++i) {
        append(palette.entries[i]);
    }
    return table;
}

IndexRule makeIndexRule(const Palette& palette, float min, float max)
{
    const auto top = static_cast<float>(palette.lastIndex());
    if (max > min) {
        return {min, top / (max - min), top};
    }
    return {max, std::numeric_limits<float>::infinity(), top};
}

}  // namespace KOVPrivate
