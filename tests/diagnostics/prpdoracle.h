// The discharge analysis once more, as plainly as it can be written: no mirrored ring but indices modulo the
// memory, one statement a rounding, nothing shared with the library. The library must agree with it bit for
// bit.
#ifndef KOVDOA_TESTS_PRPDORACLE_H
#define KOVDOA_TESTS_PRPDORACLE_H

#include <cstdint>
#include <memory>
#include <vector>

#include <KOVDoaHandle/diagnostics/kovprpdprocess.h>
#include <KOVDoaHandle/foundation/engine/kovfilter.h>

namespace prpdoracle {

struct Model
{
    int dimension = 0;
    float gamma = 0.0F;
    float rho = 0.0F;
    std::vector<float> coefficients;
    std::vector<std::vector<float>> vectors;
};

struct Votes
{
    int corona = 0;
    int alongSurface = 0;
    int suspension = 0;
    int noise = 0;
};

class Oracle
{
public:
    explicit Oracle(Model model);

    void feed(const std::vector<float>& samples);
    bool poll(bool sixtyHertz);
    void reset();

    PRPDResult result{};
    std::vector<float> frame;
    Votes votes;
    int searches = 0;  // how often a reference was looked for

private:
    float at(std::int64_t index) const;
    void build(bool sixtyHertz);
    void track(const std::vector<float>& envelope, bool accepted, bool sixtyHertz);
    void classify();

    Model m_model;
    std::vector<float> m_memory;
    std::int64_t m_total = 0;
    float m_reference = 0.0F;
    float m_displayed = 0.0F;
    float m_average = 0.0F;
    int m_hold = 0;
    std::vector<std::unique_ptr<KOVFilter>> m_filters;
};

// What the classifier sees of a frame.
std::vector<float> features(const std::vector<float>& frame);

float decision(const Model& model, const std::vector<float>& x);

}  // namespace prpdoracle

#endif
