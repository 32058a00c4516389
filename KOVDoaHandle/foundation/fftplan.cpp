#include <KOVDoaHandle/foundation/fftplan_p.h>

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <new>

namespace KOVPrivate {

namespace {

// Guards the planner, which is one for the whole process. Never destroyed: plans may go after main() has
// ended.
std::mutex& plannerLock()
{
    static std::mutex* const lock = new std::mutex;
    return *lock;
}

fftwf_complex* allocatePairs(int size)
{
    if (size == 0) {
        return nullptr;
    }
    const auto count = static_cast<std::size_t>(size);
    auto* pairs = static_cast<fftwf_complex*>(fftwf_malloc(count * sizeof(fftwf_complex)));
    if (pairs == nullptr) {
        throw std::bad_alloc();
    }
    std::fill_n(pairs[0], 2 * count, 0.0F);
    return pairs;
}

}  // namespace

FFTArray::FFTArray(int size) : m_size(std::max(size, 0)), m_pairs(allocatePairs(m_size)) {}

FFTPlan::FFTPlan(FFTArray& from, FFTArray& to, FFTDirection direction)
{
    const int size = std::min(from.size(), to.size());
    if (size == 0) {
        return;
    }
    const int sign = direction == FFTDirection::Forward ? FFTW_FORWARD : FFTW_BACKWARD;
    const std::lock_guard lock(plannerLock());
    m_plan = fftwf_plan_dft_1d(size, from.data(), to.data(), sign, FFTW_ESTIMATE);
    if (m_plan == nullptr) {
        throw std::bad_alloc();
    }
}

FFTPlan::~FFTPlan()
{
    if (m_plan != nullptr) {
        const std::lock_guard lock(plannerLock());
        fftwf_destroy_plan(m_plan);
    }
}

void FFTPlan::execute()
{
    if (m_plan != nullptr) {
        fftwf_execute(m_plan);
    }
}

}  // namespace KOVPrivate
