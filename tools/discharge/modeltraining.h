// Models of what surface and suspension discharges look like, learned from recordings.
#ifndef KOVTOOLS_MODELTRAINING_H
#define KOVTOOLS_MODELTRAINING_H

#include <functional>
#include <vector>

#include "tools/discharge/dischargefeatures.h"
#include "tools/discharge/modelfile.h"

namespace kovtools {

constexpr int fewestRecordings = 2;  // of each kind: one to learn from, one to test with

// The patterns of one recording that the classifier would be asked about.
struct TrainingRecording
{
    bool isSuspension;
    std::vector<DischargeFeatures> patterns;
};

enum class FeatureSet { Halves, Variance };

struct TrainedModel
{
    SupportVectors vectors;
    // Share of patterns told right by models that had not seen any pattern of the same recording.
    double accuracy;
    double cost;   // C of the support-vector machine
    int patterns;  // learned from
};

// Fits a support-vector machine with a radial basis function (Cortes and Vapnik, Support-vector networks,
// 1995; by libsvm). Its width and its cost are those of a grid that do best in cross-validation, which leaves
// out whole recordings: the patterns of one overlap, so that a part of them would give the rest away. Among
// equals the one with the fewest vectors is taken. At least `fewestRecordings` of each kind have patterns.
// Where there are more patterns than the library has room for vectors, evenly spread ones are learned from.
// `step` is called for each of trainingSteps points of the grid and may throw to stop. Throws DataError when
// there is no model.
TrainedModel trainModel(const std::vector<TrainingRecording>& recordings, FeatureSet features,
                        const std::function<void()>& step);

extern const int trainingSteps;

}  // namespace kovtools

#endif
