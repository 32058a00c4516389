#include "tools/discharge/modeltraining.h"

#include <libsvm/svm.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <optional>

#include "tools/support/errors.h"

namespace kovtools {

namespace {

constexpr int mostFolds = 5;
constexpr int mostOfAKind = mostSupportVectors / 2;
constexpr double suspensionLabel = 1.0;
constexpr double surfaceLabel = -1.0;

// Powers of two. The features are not scaled, as the library does not scale them: kurtosis is of the order of
// ten, the variance of a tenth. So widths from far above to far below the former are tried.
constexpr std::array gammaExponents{-10.0, -8.0, -6.0, -4.0, -2.0, 0.0, 2.0, 4.0};
constexpr std::array costExponents{-2.0, 0.0, 2.0, 4.0, 6.0, 8.0};

struct Sample
{
    FeatureVector features;
    double label;
    int fold;
};

// The nodes of a sample for libsvm: index and value, closed by an index of -1.
using Nodes = std::array<svm_node, dischargeFeatureCount + 1>;

Nodes nodesOf(const FeatureVector& features)
{
    Nodes nodes{};
    for (std::size_t k = 0; k < features.size(); ++k) {
        nodes[k] = {static_cast<int>(k) + 1, static_cast<double>(features[k])};
    }
    nodes.back() = {-1, 0.0};
    return nodes;
}

void beSilent(const char*) {}

svm_parameter parametersOf(double gamma, double cost)
{
    svm_parameter parameters{};
    parameters.svm_type = C_SVC;
    parameters.kernel_type = RBF;
    parameters.gamma = gamma;
    parameters.C = cost;
    parameters.cache_size = 50.0;  // MB
    parameters.eps = 1e-3;
    parameters.shrinking = 1;
    return parameters;
}

struct FreeModel
{
    void operator()(svm_model* model) const { svm_free_and_destroy_model(&model); }
};

// A fitted machine together with the samples that its vectors lie in.
class Machine
{
public:
    Machine(const std::vector<Sample>& samples, double gamma, double cost);
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    bool isRight(const Sample& sample) const
    {
        const Nodes nodes = nodesOf(sample.features);
        return svm_predict(m_model.get(), nodes.data()) == sample.label;
    }

    int vectors() const { return m_model->l; }
    SupportVectors supportVectors(double gamma) const;

private:
    std::vector<Nodes> m_nodes;
    std::unique_ptr<svm_model, FreeModel> m_model;
};

Machine::Machine(const std::vector<Sample>& samples, double gamma, double cost)
{
    svm_set_print_string_function(beSilent);
    std::vector<double> labels;
    for (const Sample& sample : samples) {
        m_nodes.push_back(nodesOf(sample.features));
        labels.push_back(sample.label);
    }
    std::vector<svm_node*> rows;
    for (Nodes& nodes : m_nodes) {
        rows.push_back(nodes.data());
    }
    svm_problem problem{static_cast<int>(rows.size()), labels.data(), rows.data()};
    const svm_parameter parameters = parametersOf(gamma, cost);
    m_model.reset(svm_train(&problem, &parameters));
}

// libsvm's decision is positive for the label it saw first.
SupportVectors Machine::supportVectors(double gamma) const
{
    const double sign = m_model->label[0] > 0 ? 1.0 : -1.0;
    SupportVectors result;
    result.gamma = static_cast<float>(gamma);
    result.rho = static_cast<float>(sign * m_model->rho[0]);
    for (int i = 0; i < m_model->l; ++i) {
        result.coefficients.push_back(static_cast<float>(sign * m_model->sv_coef[0][i]));
        FeatureVector vector{};
        for (std::size_t k = 0; k < vector.size(); ++k) {
            vector[k] = static_cast<float>(m_model->SV[i][k].value);
        }
        result.vectors.push_back(vector);
    }
    return result;
}

bool isUsable(const FeatureVector& features)
{
    return std::all_of(features.begin(), features.end(), [](float value) { return std::isfinite(value); });
}

// The samples of one kind; recordings take turns in the folds.
std::vector<Sample> samplesOf(const std::vector<TrainingRecording>& recordings, bool suspension,
                              FeatureSet set, int folds)
{
    std::vector<Sample> samples;
    int number = 0;
    for (const TrainingRecording& recording : recordings) {
        if (recording.isSuspension != suspension) {
            continue;
        }
        for (const DischargeFeatures& pattern : recording.patterns) {
            const FeatureVector& features = set == FeatureSet::Halves ? pattern.halves : pattern.variance;
            if (isUsable(features)) {
                samples.push_back({features, suspension ? suspensionLabel : surfaceLabel, number % folds});
            }
        }
        ++number;
    }
    return samples;
}

std::vector<Sample> thinned(const std::vector<Sample>& samples)
{
    const std::size_t wanted = std::min<std::size_t>(samples.size(), mostOfAKind);
    std::vector<Sample> kept;
    for (std::size_t i = 0; i < wanted; ++i) {
        kept.push_back(samples[i * samples.size() / wanted]);
    }
    return kept;
}

int foldsFor(const std::vector<TrainingRecording>& recordings)
{
    const auto suspensions = std::count_if(recordings.begin(), recordings.end(),
                                           [](const TrainingRecording& one) { return one.isSuspension; });
    const auto surfaces = static_cast<std::ptrdiff_t>(recordings.size()) - suspensions;
    return static_cast<int>(std::min<std::ptrdiff_t>({mostFolds, suspensions, surfaces}));
}

bool hasBothKinds(const std::vector<Sample>& samples)
{
    const auto isSuspension = [](const Sample& sample) { return sample.label > 0.0; };
    return std::any_of(samples.begin(), samples.end(), isSuspension) &&
           !std::all_of(samples.begin(), samples.end(), isSuspension);
}

// Share told right, each fold by a machine that learned from the others.
double crossValidated(const std::vector<Sample>& samples, int folds, double gamma, double cost)
{
    int right = 0;
    for (int fold = 0; fold < folds; ++fold) {
        std::vector<Sample> others;
        std::copy_if(samples.begin(), samples.end(), std::back_inserter(others),
                     [fold](const Sample& sample) { return sample.fold != fold; });
        if (!hasBothKinds(others)) {
            throw DataError("too few patterns can be told from noise and corona to learn from");
        }
        const Machine machine(others, gamma, cost);
        for (const Sample& sample : samples) {
            right += sample.fold == fold && machine.isRight(sample) ? 1 : 0;
        }
    }
    return right / static_cast<double>(samples.size());
}

}  // namespace

const int trainingSteps = static_cast<int>(gammaExponents.size() * costExponents.size());

TrainedModel trainModel(const std::vector<TrainingRecording>& recordings, FeatureSet features,
                        const std::function<void()>& step)
{
    const int folds = foldsFor(recordings);
    std::vector<Sample> samples = thinned(samplesOf(recordings, true, features, folds));
    const std::vector<Sample> surfaces = thinned(samplesOf(recordings, false, features, folds));
    samples.insert(samples.end(), surfaces.begin(), surfaces.end());

    std::optional<TrainedModel> best;
    for (const double gammaExponent : gammaExponents) {
        for (const double costExponent : costExponents) {
            const double gamma = std::exp2(gammaExponent);
            const double cost = std::exp2(costExponent);
            const double accuracy = crossValidated(samples, folds, gamma, cost);
            const Machine machine(samples, gamma, cost);
            if (!best || accuracy > best->accuracy ||
                (accuracy == best->accuracy &&
                 machine.vectors() < static_cast<int>(best->vectors.vectors.size()))) {
                best = {machine.supportVectors(gamma), accuracy, cost, static_cast<int>(samples.size())};
            }
            step();
        }
    }
    return *best;
}

}  // namespace kovtools
