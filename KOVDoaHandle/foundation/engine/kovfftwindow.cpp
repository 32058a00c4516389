#include <KOVDoaHandle/foundation/engine/kovfftwindow.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <span>

namespace {

constexpr double pi = std::numbers::pi;

// Past this, I0 leaves the range of double precision, and the window is narrower than any use has for it.
constexpr double largestBeta = 500.0;

constexpr double hann[] = {0.5, 0.5};
constexpr double hamming[] = {0.54, 0.46};
constexpr double blackman[] = {0.42, 0.5, 0.08};
constexpr double blackmanHarris[] = {0.35875, 0.48829, 0.14128, 0.01168};
constexpr double nuttall[] = {0.3635819, 0.4891775, 0.1365995, 0.0106411};
constexpr double flatTop[] = {0.21557895, 0.41663158, 0.277263158, 0.083578947, 0.006947368};

// Sum of (-1)^k weights[k] cos(k u), u running once round from the first coefficient to the last.
double cosineSum(std::span<const double> weights, double position)
{
    double sum = 0.0;
    double sign = 1.0;
    for (std::size_t k = 0; k < weights.size(); ++k) {
        sum += sign * weights[k] * std::cos(2.0 * pi * static_cast<double>(k) * position);
        sign = -sign;
    }
    return sum;
}

// Modified Bessel function of the first kind, order 0, by its power series: all terms are positive.
double besselI0(double x)
{
    const double quarterSquare = x * x / 4.0;
    double term = 1.0;
    double sum = 1.0;
    for (double k = 1.0; term > sum * 1e-17; k += 1.0) {
        term *= quarterSquare / (k * k);
        sum += term;
    }
    return sum;
}

double kaiser(double beta, double fromMiddle)
{
    const double usable = std::min(beta, largestBeta);
    return besselI0(usable * std::sqrt(std::max(0.0, 1.0 - fromMiddle * fromMiddle))) / besselI0(usable);
}

double tukey(double flanks, double position)
{
    const double fromEnd = std::min(position, 1.0 - position);
    const double flank = std::min(flanks, 1.0) / 2.0;
    return fromEnd < flank ? 0.5 - 0.5 * std::cos(pi * fromEnd / flank) : 1.0;
}

double gaussian(double deviation, double fromMiddle)
{
    const double ratio = fromMiddle / deviation;
    return std::exp(-0.5 * ratio * ratio);
}

// The window at `position`, 0 (first coefficient) to 1 (last).
double valueAt(FFTWindowType type, double parameter, double position)
{
    const double fromMiddle = 2.0 * position - 1.0;
    switch (type) {
        case FFT_WINDOW_BARTLETT:
            return 1.0 - std::abs(fromMiddle);
        case FFT_WINDOW_HAMMING:
            return cosineSum(hamming, position);
        case FFT_WINDOW_BLACKMAN:
            return cosineSum(blackman, position);
        case FFT_WINDOW_BLACKMAN_HARRIS:
            return cosineSum(blackmanHarris, position);
        case FFT_WINDOW_NUTTALL:
            return cosineSum(nuttall, position);
        case FFT_WINDOW_FLAT_TOP:
            return cosineSum(flatTop, position);
        case FFT_WINDOW_KAISER:
            return parameter >= 0.0 ? kaiser(parameter, fromMiddle) : 1.0;
        case FFT_WINDOW_TUKEY:
            return parameter > 0.0 ? tukey(parameter, position) : 1.0;
        case FFT_WINDOW_GAUSSIAN:
            return parameter > 0.0 ? gaussian(parameter, fromMiddle) : 1.0;
        case FFT_WINDOW_HANN:
            return cosineSum(hann, position);
        case FFT_WINDOW_RECTANGULAR:
            break;
    }
    return 1.0;
}

// Owns a record.
struct Destroy
{
    void operator()(vec_fp32* record) const { destroy_vec_fp32(record); }
};

}  // namespace

class KOVFFTWindow::Private
{
public:
    explicit Private(int n) : coefficients(create_vec_fp32(std::max(n, 0))) {}

    std::unique_ptr<vec_fp32, Destroy> coefficients;
};

KOVFFTWindow::KOVFFTWindow(int n, FFTWindowType type, float a, float /*b*/, float /*c*/)
    : d(std::make_unique<Private>(n))
{
    float* values = d->coefficients->data;
    if (n == 1) {
        values[0] = 1.0F;
    }
    if (n <= 1) {
        return;
    }
    // Half of them: the other half is the same backwards, to the last bit.
    for (int i = 0; i <= (n - 1) / 2; ++i) {
        const double position = static_cast<double>(i) / static_cast<double>(n - 1);
        values[i] = static_cast<float>(valueAt(type, double{a}, position));
        values[n - 1 - i] = values[i];
    }
}

KOVFFTWindow::~KOVFFTWindow() = default;

vec_fp32* KOVFFTWindow::data()
{
    return d->coefficients.get();
}
