// Files of the support-vector models that the library classifies by.
#ifndef KOVTOOLS_MODELFILE_H
#define KOVTOOLS_MODELFILE_H

#include <filesystem>
#include <string>
#include <vector>

#include "tools/discharge/dischargefeatures.h"

namespace kovtools {

// Names that the library looks for. The second decides.
constexpr const char* halvesModelName = "SVM1.txt";
constexpr const char* varianceModelName = "SVM2.txt";

constexpr int mostSupportVectors = 1024;  // that the library uses

// Decides by  sum over i of coefficients[i] * exp(-gamma * |vectors[i] - x|^2)  -  rho: above 0 it is
// suspension.
struct SupportVectors
{
    float gamma = 0.0F;
    float rho = 0.0F;
    std::vector<float> coefficients;
    std::vector<FeatureVector> vectors;  // as many as coefficients
};

// The text of a model file; floats come out of it as they went in.
std::string modelText(const SupportVectors& model);

// Throws DataError when the folder of models at `folder` has no file by which the library can decide, or when
// a model file in it is anything but whole: the library would take a part of it, without a word.
void checkModels(const std::filesystem::path& folder);

}  // namespace kovtools

#endif
