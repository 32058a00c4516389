// Numbers as the result file spells them.
#ifndef KOVDOA_RESULTNUMBERS_P_H
#define KOVDOA_RESULTNUMBERS_P_H

#include <string>
#include <string_view>

namespace KOVResult {

// Append a number. Floats have six significant digits at most and a '.', whatever the locale: the bytes are
// those of QString::arg(value). Neither a NaN nor a zero has a sign.
void appendNumber(std::string& text, float value);
void appendNumber(std::string& text, int value);

// Read a number; white space around it is skipped, and what is no number, or an integer outside 32 bits, is
// 0. The values are those of QByteArray::toFloat() and toInt().
float readFloat(std::string_view text);
int readInt(std::string_view text);

// Cuts the next part off a text whose parts are separated by one or more blanks; empty when there is none
// left.
std::string_view takePart(std::string_view& text);

}  // namespace KOVResult

#endif
