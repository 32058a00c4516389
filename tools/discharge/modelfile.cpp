#include "tools/discharge/modelfile.h"

#include <charconv>
#include <cmath>
#include <locale>
#include <optional>
#include <sstream>
#include <system_error>

#include "tools/support/errors.h"
#include "tools/support/inquotes.h"
#include "tools/support/partialfile.h"

namespace kovtools {

namespace fs = std::filesystem;

namespace {

constexpr std::uintmax_t largestFile = 1 << 20;  // bytes; 1024 vectors take a tenth of it

std::string plain(float value)
{
    char digits[32];
    return {digits, std::to_chars(digits, digits + sizeof digits, value).ptr};
}

std::optional<float> nextNumber(std::istream& numbers)
{
    float value = 0.0F;
    return numbers >> value && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

bool isWhole(float value, int low, int high)
{
    return value == std::trunc(value) && value >= static_cast<float>(low) &&
           value <= static_cast<float>(high);
}

// What is wrong with the text of a model; empty when nothing is.
std::string faultOf(const std::string& text)
{
    std::istringstream numbers(text);
    numbers.imbue(std::locale::classic());
    const std::optional<float> dimension = nextNumber(numbers);
    if (!dimension || !isWhole(*dimension, dischargeFeatureCount, dischargeFeatureCount)) {
        return "does not begin with the dimension " + std::to_string(dischargeFeatureCount);
    }
    const std::optional<float> count = nextNumber(numbers);
    if (!count || !isWhole(*count, 1, mostSupportVectors)) {
        return "does not have 1 to " + std::to_string(mostSupportVectors) + " vectors";
    }
    const int wanted = 2 + static_cast<int>(*count) * (1 + dischargeFeatureCount);
    for (int i = 0; i < wanted; ++i) {
        if (!nextNumber(numbers)) {
            return "has " + std::to_string(2 + i) + " numbers instead of " + std::to_string(2 + wanted);
        }
    }
    return {};
}

void checkModel(const fs::path& file)
{
    std::error_code error;
    if (fs::file_size(file, error) > largestFile && !error) {
        throw DataError(inQuotes(file) + " is no model file: it is too large for one");
    }
    const std::string fault = faultOf(readWholeFile(file));
    if (!fault.empty()) {
        throw DataError(inQuotes(file) + " is no model file: it " + fault);
    }
}

}  // namespace

std::string modelText(const SupportVectors& model)
{
    std::string text = std::to_string(dischargeFeatureCount) + "\n" + std::to_string(model.vectors.size()) +
                       "\n" + plain(model.gamma) + "\n" + plain(model.rho) + "\n";
    for (const float coefficient : model.coefficients) {
        text += plain(coefficient) + "\n";
    }
    for (const FeatureVector& vector : model.vectors) {
        for (std::size_t k = 0; k < vector.size(); ++k) {
            text += plain(vector[k]) + (k + 1 < vector.size() ? " " : "\n");
        }
    }
    return text;
}

void checkModels(const fs::path& folder)
{
    checkModel(folder / varianceModelName);
    std::error_code error;
    if (fs::exists(folder / halvesModelName, error)) {
        checkModel(folder / halvesModelName);
    }
}

}  // namespace kovtools
