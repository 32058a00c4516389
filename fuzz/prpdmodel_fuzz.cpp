// Any bytes as a model file of the discharge classifier. Besides that nothing breaks: a model decides as the
// numbers of its file do when they are read in the plainest way, and reading leaves no doubt, twice gives the
// same.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <locale>
#include <sstream>
#include <string>
#include <vector>

#include <KOVDoaHandle/diagnostics/supportvectormodel_p.h>

namespace {

using KOVPrivate::SupportVectorModel;

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "relation broken: %s\n", what);
    std::abort();
}

// All numbers up to the first thing that is none.
std::vector<float> allNumbers(const std::string& text)
{
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    std::vector<float> numbers;
    for (float number = 0.0F; stream >> number;) {
        numbers.push_back(number);
    }
    return numbers;
}

// The decision by the description of the file alone; 0 where the file must be refused.
float plainDecision(const std::vector<float>& numbers, const float* x)
{
    const auto at = [&numbers](std::size_t i) { return i < numbers.size() ? numbers[i] : 0.0F; };
    // A fraction is cut off, so -0.5 is a dimension or a count of 0.
    if (numbers.size() < 4 || !(at(0) > -1.0F && at(0) < 5.0F && at(1) > -1.0F && at(1) < 2147483648.0F)) {
        return 0.0F;
    }
    const auto dimension = static_cast<std::size_t>(std::max(at(0), 0.0F));
    const auto count = static_cast<std::size_t>(std::max(at(1), 0.0F));
    const std::size_t given = std::min(count, numbers.size() - 4);
    float sum = 0.0F;
    for (std::size_t i = 0; i < given && i < 1024; ++i) {
        float distance = 0.0F;
        for (std::size_t k = 0; k < dimension; ++k) {
            const auto off = static_cast<double>(at(4 + count + i * dimension + k) - x[k]);
            distance = static_cast<float>(static_cast<double>(distance) + off * off);
        }
        sum += at(4 + i) * static_cast<float>(std::exp(static_cast<double>(-at(2) * distance)));
    }
    return sum - at(3);
}

float decisionOf(const std::string& text, const float* x)
{
    std::istringstream stream(text);
    std::string problem;
    return SupportVectorModel::read(stream, problem).decision(x);
}

bool same(float a, float b)
{
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b) ||
           (std::isnan(a) && std::isnan(b));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(bytes), size);
    const float vectors[][4] = {
        {0.0F, 0.0F, 0.0F, 0.0F}, {0.04F, 3.6F, 12.0F, 2.9F}, {1e20F, -1e30F, 1.0F, -0.0F}};
    const std::vector<float> numbers = allNumbers(text);
    for (const float* x : vectors) {
        const float decision = decisionOf(text, x);
        if (!same(decision, decisionOf(text, x))) {
            fail("the same file decides differently");
        }
        if (!same(decision, plainDecision(numbers, x))) {
            fail("a model decides otherwise than its numbers");
        }
    }
    return 0;
}
