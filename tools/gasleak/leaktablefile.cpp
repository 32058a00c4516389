#include "tools/gasleak/leaktablefile.h"

#include <QtCore/QByteArray>

#include <cmath>
#include <string_view>

#include "tools/csv/csvlines.h"
#include "tools/support/errors.h"
#include "tools/support/inquotes.h"
#include "tools/support/partialfile.h"

namespace kovtools {

namespace {

constexpr const char* skippedLine = "-";  // one field only
constexpr int fieldsOfLine = 3;

bool isNumber(std::string_view field)
{
    bool isRead = false;
    const float value =
        QByteArray::fromRawData(field.data(), static_cast<int>(field.size())).toFloat(&isRead);
    return isRead && std::isfinite(value);
}

// Only blanks divide fields; a tab is part of one.
bool parses(std::string_view line)
{
    int fields = 0;
    while (!line.empty()) {
        const std::size_t begin = line.find_first_not_of(' ');
        if (begin == std::string_view::npos) {
            break;
        }
        line.remove_prefix(begin);
        const std::string_view field = line.substr(0, line.find(' '));
        line.remove_prefix(field.size());
        if (++fields > fieldsOfLine || !isNumber(field)) {
            return false;
        }
    }
    return fields == fieldsOfLine;
}

void takeLine(std::string_view line, int number, LeakTableFile& table)
{
    if (line.empty()) {
        return;
    }
    if (parses(line)) {
        ++table.points;
        table.usable += line;
    } else {
        table.badLines.push_back(number);
        table.usable += skippedLine;
    }
    table.usable += '\n';
}

}  // namespace

LeakTableFile readLeakTableFile(const std::filesystem::path& file)
{
    const std::string bytes = readWholeFile(file);
    std::string_view rest = withoutByteOrderMark(bytes);
    LeakTableFile table;
    table.usable.reserve(rest.size());
    for (int number = 1; !rest.empty(); ++number) {
        const std::size_t end = std::min(rest.find_first_of("\r\n"), rest.size());
        takeLine(rest.substr(0, end), number, table);
        const bool isPair = rest.substr(end).starts_with("\r\n");
        rest.remove_prefix(std::min(end + (isPair ? 2 : 1), rest.size()));
    }
    if (table.points == 0) {
        throw DataError(inQuotes(file) +
                        " is no calibration table: it has no line of three numbers divided by blanks (level "
                        "in dB, distance in m, leak rate)");
    }
    return table;
}

}  // namespace kovtools
