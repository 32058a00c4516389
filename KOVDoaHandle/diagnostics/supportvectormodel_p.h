// A two-way classifier read from a text file.
#ifndef KOVDOA_SUPPORTVECTORMODEL_P_H
#define KOVDOA_SUPPORTVECTORMODEL_P_H

#include <iosfwd>
#include <string>
#include <vector>

namespace KOVPrivate {

// exp(-gamma * sum over dim of (sv[k] - x[k])^2). The differences are single precision, their squares double,
// the sum is rounded to single precision after each; the exponent is single precision, its power double and
// then rounded, so that the last bit does not depend on the machine's mathematics library.
float radialBasis(const float* x, const float* sv, float gamma, int dim);

// A support-vector machine with radial basis functions (C. Cortes and V. Vapnik, Support-vector networks,
// Machine Learning 20, 1995). An empty one has no vectors and decides for -rho.
//
// The file is a stream of numbers between white space, in the classic locale: dimension, number of vectors n,
// gamma, rho, n coefficients, then the vectors one after the other.
class SupportVectorModel
{
public:
    // Coefficients and vectors beyond these are read over.
    static constexpr int mostVectors = 1024;
    // Of the vectors, which is the length of what decision() is given.
    static constexpr int mostDimensions = 4;

    // Reads a model. Numbers that are missing are zero, numbers after the last vector change nothing. When
    // the dimension is not 0 ... 4 or the number of vectors is negative, or either is no number that fits an
    // int, nothing of the file is used and the model is empty. `problem` gets a sentence for the log, or is
    // left empty.
    static SupportVectorModel read(std::istream& numbers, std::string& problem);

    // The same from a file. One that cannot be opened gives an empty model, which is no problem: hosts
    // without a classifier have no model files. A problem is one line in the log.
    static SupportVectorModel load(const std::string& path);

    // Sum of coefficient * radialBasis over the vectors, added up in single precision, minus rho. `x` has
    // dimension() elements.
    float decision(const float* x) const;

    int dimension() const { return m_dimension; }
    int vectorCount() const { return static_cast<int>(m_coefficients.size()); }

private:
    bool readCoefficients(std::istream& numbers, int count);
    bool readVectors(std::istream& numbers);

    int m_dimension = 0;
    float m_gamma = 0.0F;
    float m_rho = 0.0F;
    std::vector<float> m_coefficients;
    std::vector<float> m_vectors;  // row by row, m_dimension each
};

}  // namespace KOVPrivate

#endif
