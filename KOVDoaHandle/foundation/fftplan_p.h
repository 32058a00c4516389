// Single-precision complex transforms: their arrays and their plans, owned.
#ifndef KOVDOA_FFTPLAN_P_H
#define KOVDOA_FFTPLAN_P_H

#include <fftw3.h>

#include <memory>

namespace KOVPrivate {

// `size` complex numbers as (real, imaginary) pairs, zero at first, aligned for the fastest transforms. Any
// two arrays of one size are aligned alike, so plans on them are alike too. Size 0 or less: an empty array.
class FFTArray
{
public:
    explicit FFTArray(int size);

    float (*data())[2] { return m_pairs.get(); }
    int size() const { return m_size; }

private:
    struct Release
    {
        void operator()(fftwf_complex* pairs) const { fftwf_free(pairs); }
    };

    int m_size;
    std::unique_ptr<fftwf_complex[], Release> m_pairs;
};

// exp(-2 pi i j k / n) and exp(+2 pi i j k / n); neither divides by n.
enum class FFTDirection { Forward, Backward };

// An estimated plan (nothing is measured, so the same sizes give the same plan and the same bits in every
// run) from one array to another of the same size. The arrays must outlive it and keep what they hold while
// it is made.
// Threads: plans may be made and destroyed at any time from any thread, since all of them go through one
// process-wide lock: the planner is not re-entrant. Executing takes no lock; one plan, one thread at a time.
class FFTPlan
{
public:
    FFTPlan(FFTArray& from, FFTArray& to, FFTDirection direction);
    ~FFTPlan();
    FFTPlan(const FFTPlan&) = delete;
    FFTPlan& operator=(const FFTPlan&) = delete;

    // Transforms what `from` holds now; the contents of `from` are kept. Nothing happens for empty arrays.
    void execute();

private:
    fftwf_plan m_plan = nullptr;
};

}  // namespace KOVPrivate

#endif
