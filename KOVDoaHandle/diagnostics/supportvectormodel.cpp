#include <KOVDoaHandle/diagnostics/supportvectormodel_p.h>

#include <cmath>
#include <cstddef>
#include <fstream>
#include <istream>
#include <locale>
#include <optional>

#include <KOVDoaHandle/diagnostics/prpdfeatures_p.h>
#include <KOVDoaHandle/foundation/kovlog_p.h>

namespace KOVPrivate {

static_assert(SupportVectorModel::mostDimensions == featureCount);

namespace {

// The number without its fraction, where an int can hold it.
std::optional<int> wholeNumber(float value)
{
    constexpr float limit = 2147483648.0F;
    return value > -limit && value < limit ? std::optional<int>(static_cast<int>(value)) : std::nullopt;
}

// The next number, 0 when there is none.
float nextNumber(std::istream& numbers)
{
    float value = 0.0F;
    return numbers >> value ? value : 0.0F;
}

}  // namespace

float radialBasis(const float* x, const float* sv, float gamma, int dim)
{
    float sum = 0.0F;
    for (int k = 0; k < dim; ++k) {
        const auto difference = static_cast<double>(sv[k] - x[k]);
        sum = static_cast<float>(static_cast<double>(sum) + difference * difference);
    }
    return static_cast<float>(std::exp(static_cast<double>(-gamma * sum)));
}

SupportVectorModel SupportVectorModel::read(std::istream& numbers, std::string& problem)
{
    numbers.imbue(std::locale::classic());
    const std::optional<int> dimension = wholeNumber(nextNumber(numbers));
    const std::optional<int> count = wholeNumber(nextNumber(numbers));
    SupportVectorModel model;
    model.m_gamma = nextNumber(numbers);
    model.m_rho = nextNumber(numbers);
    if (!numbers) {
        problem = "breaks off before its four leading numbers";
        return {};
    }
    if (!dimension || *dimension < 0 || *dimension > mostDimensions) {
        problem = "has a dimension other than 0 to 4";
        return {};
    }
    if (!count || *count < 0) {
        problem = "has a number of vectors that is none";
        return {};
    }
    model.m_dimension = *dimension;
    if (!model.readCoefficients(numbers, *count)) {
        problem = "breaks off inside its coefficients";
    } else if (*count > mostVectors) {
        problem = "has more than 1024 vectors; the first 1024 are used";
    }
    if (!model.readVectors(numbers) && problem.empty()) {
        problem = "breaks off inside its vectors; what is missing is taken as 0";
    }
    return model;
}

// False when a coefficient is missing. Its vector, which would have no weight, is left out.
bool SupportVectorModel::readCoefficients(std::istream& numbers, int count)
{
    for (int i = 0; i < count; ++i) {
        float coefficient = 0.0F;
        if (!(numbers >> coefficient)) {
            return false;
        }
        if (i < mostVectors) {
            m_coefficients.push_back(coefficient);
        }
    }
    return true;
}

// False when a number is missing.
bool SupportVectorModel::readVectors(std::istream& numbers)
{
    m_vectors.assign(m_coefficients.size() * static_cast<std::size_t>(m_dimension), 0.0F);
    for (float& element : m_vectors) {
        element = nextNumber(numbers);
    }
    return !numbers.fail();
}

SupportVectorModel SupportVectorModel::load(const std::string& path)
{
    std::ifstream file(path);
    if (!file) {
        return {};
    }
    std::string problem;
    SupportVectorModel model = read(file, problem);
    if (!problem.empty()) {
        KOVDOA_DEBUG("supportvectormodel") << "model file" << path.c_str() << problem.c_str();
    }
    return model;
}

float SupportVectorModel::decision(const float* x) const
{
    float sum = 0.0F;
    const float* vector = m_vectors.data();
    for (const float coefficient : m_coefficients) {
        sum += coefficient * radialBasis(x, vector, m_gamma, m_dimension);
        vector += m_dimension;
    }
    return sum - m_rho;
}

}  // namespace KOVPrivate
