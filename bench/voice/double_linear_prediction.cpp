#include "voice/double_linear_prediction.h"

#include <cmath>
#include <numbers>

namespace {

using std::numbers::pi;

constexpr std::size_t kHalf = kLpOrder / 2;
using HalfPolynomial = std::array<double, kHalf + 1>;

// Half of a Hamming window, then a quarter of a cosine.
std::array<double, kLpWindow> makeWindow() {
    std::array<double, kLpWindow> window;
    for (std::size_t n = 0; n < 200; n++) window[n] = 0.54 - 0.46 * std::cos(2 * pi * double(n) / 399);
    for (std::size_t n = 200; n < kLpWindow; n++) window[n] = std::cos(2 * pi * double(n - 200) / 159);
    return window;
}

// A white-noise floor at -40 dB and a bandwidth of 60 Hz for every peak.
LpFilter makeLagWindow() {
    LpFilter window{1.0001};
    for (std::size_t k = 1; k < window.size(); k++) {
        const double x = 2 * pi * 60 * double(k) / 8000;
        window[k] = std::exp(-x * x / 2);
    }
    return window;
}

LpFilter autocorrelate(std::span<const double, kLpWindow> speech) {
    static const auto window = makeWindow();
    static const auto lagWindow = makeLagWindow();
    std::array<double, kLpWindow> x;
    for (std::size_t n = 0; n < kLpWindow; n++) x[n] = speech[n] * window[n];
    LpFilter r{};
    for (std::size_t k = 0; k < r.size(); k++)
        for (std::size_t n = k; n < kLpWindow; n++) r[k] += x[n] * x[n - k];
    if (r[0] < 1) r[0] = 1;  // silence
    for (std::size_t k = 0; k < r.size(); k++) r[k] *= lagWindow[k];
    return r;
}

// The symmetric (sign 1) and antisymmetric (sign -1) parts of A(z), G.729 §3.2.3, without their roots at -1 and 1.
HalfPolynomial symmetricPart(const LpFilter& a, double sign) {
    HalfPolynomial f{1};
    for (std::size_t i = 0; i < kHalf; i++) f[i + 1] = a[i + 1] + sign * (a[kLpOrder - i] - f[i]);
    return f;
}

// Its value at a frequency with the cosine x, without the factor 2 exp(-5j w): a sum of Chebyshev polynomials.
double valueAt(const HalfPolynomial& f, double x) {
    double b = 0, last = 0;
    for (std::size_t i = 0; i < kHalf; i++) {
        const double next = 2 * x * b - last + f[i];
        last = b;
        b = next;
    }
    return x * b - last + f[kHalf] / 2;
}

double bisect(const HalfPolynomial& f, double low, double high) {
    const bool sign = valueAt(f, low) > 0;
    for (int i = 0; i < 20; i++) {
        const double middle = (low + high) / 2;
        ((valueAt(f, middle) > 0) == sign ? low : high) = middle;
    }
    return (low + high) / 2;
}

// Cosines of equally spaced frequencies after 0, up to pi.
template <std::size_t N>
std::array<double, N> makeGrid() {
    std::array<double, N> grid;
    for (std::size_t i = 0; i < N; i++) grid[i] = std::cos(pi * double(i + 1) / double(N));
    return grid;
}

}  // namespace

Prediction predict(std::span<const double, kLpWindow> speech) {
    const LpFilter r = autocorrelate(speech);
    Prediction result{{1}, {}};
    LpFilter& a = result.filter;
    double error = r[0];
    for (std::size_t i = 1; i <= kLpOrder; i++) {
        double k = r[i];
        for (std::size_t j = 1; j < i; j++) k += a[j] * r[i - j];
        k /= -error;
        const LpFilter before = a;
        for (std::size_t j = 1; j <= i; j++) a[j] = before[j] + k * before[i - j];
        error *= 1 - k * k;
        if (i <= result.reflection.size()) result.reflection[i - 1] = k;
    }
    return result;
}

// The roots of the two parts alternate along the unit circle.
std::optional<Lsf> toLsf(const LpFilter& filter) {
    constexpr std::size_t kSteps = 256;
    static const auto grid = makeGrid<kSteps>();
    const std::array parts{symmetricPart(filter, 1), symmetricPart(filter, -1)};
    Lsf lsf;
    std::size_t found = 0;
    double low = 1;
    for (const double end : grid) {
        while (found < kLpOrder && valueAt(parts[found % 2], low) * valueAt(parts[found % 2], end) <= 0) {
            low = bisect(parts[found % 2], low, end);
            lsf[found++] = std::acos(low);
        }
        low = end;
    }
    if (found < kLpOrder) return {};
    return lsf;
}

LpFilter toFilter(const Lsf& lsf) {
    std::array<LpFilter, 2> parts{LpFilter{1}, LpFilter{1}};
    for (std::size_t i = 0; i < kLpOrder; i++) {
        LpFilter& f = parts[i % 2];
        const double b = -2 * std::cos(lsf[i]);
        for (std::size_t j = kLpOrder; j >= 2; j--) f[j] += b * f[j - 1] + f[j - 2];
        f[1] += b;
    }
    LpFilter a{1};
    for (std::size_t j = 1; j <= kLpOrder; j++) a[j] = (parts[0][j] + parts[0][j - 1] + parts[1][j] - parts[1][j - 1]) / 2;
    return a;
}

LpFilter expandBandwidth(const LpFilter& filter, double gamma) {
    LpFilter result = filter;
    double power = 1;
    for (double& a : result) {
        a *= power;
        power *= gamma;
    }
    return result;
}
