// Fourier transforms of real signals.
#ifndef KOVTOOLS_REALTRANSFORM_H
#define KOVTOOLS_REALTRANSFORM_H

#include <complex>
#include <cstddef>
#include <memory>
#include <new>
#include <vector>

namespace kovtools {

// Memory as the transforms want it, for vectors.
template <typename T>
struct TransformAllocator
{
    using value_type = T;
    static constexpr std::align_val_t alignment{64};

    TransformAllocator() = default;
    template <typename U>
    explicit TransformAllocator(const TransformAllocator<U>&)
    {
    }
    T* allocate(std::size_t n) { return static_cast<T*>(::operator new(n * sizeof(T), alignment)); }
    void deallocate(T* p, std::size_t) { ::operator delete(p, alignment); }
    bool operator==(const TransformAllocator&) const { return true; }
};

using RealSignal = std::vector<float, TransformAllocator<float>>;
using HalfSpectrum = std::vector<std::complex<float>, TransformAllocator<std::complex<float>>>;

// Both directions for one length. Objects are made and destroyed on one thread of the program; after that any number
// of threads may transform with the same object.
class RealTransform
{
public:
    explicit RealTransform(int length);
    ~RealTransform();
    RealTransform(const RealTransform&) = delete;
    RealTransform& operator=(const RealTransform&) = delete;

    int length() const { return m_length; }
    int bins() const { return m_length / 2 + 1; }

    // X[k] = sum over n of x[n] exp(-2 pi i k n / N), for k up to N / 2. `spectrum` gets bins() values.
    void forward(const RealSignal& signal, HalfSpectrum& spectrum) const;

    // The sum without any factor: forward and then backward gives N times the signal. Destroys `spectrum`.
    void backward(HalfSpectrum& spectrum, RealSignal& signal) const;

private:
    struct Plans;

    int m_length;
    std::unique_ptr<Plans> m_plans;
};

}  // namespace kovtools

#endif
