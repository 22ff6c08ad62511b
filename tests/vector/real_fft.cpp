// The real transforms against the sum in double precision that defines them.
#include "vector/real_fft_levels.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <complex>
#include <cstring>
#include <limits>
#include <memory>
#include <numbers>
#include <type_traits>

#include "support/guarded.h"
#include "support/samples.h"

namespace vsp::test {

namespace {

constexpr int kMaxOrder = 17;

// Values at any address, also one that is not a multiple of their size, that end at an unmapped page.
template <class T>
class Anywhere {
  public:
    Anywhere(std::size_t n, std::size_t gap) : n_(n), bytes_(n * sizeof(T), Guard::end, gap) {}
    Anywhere(const std::vector<T>& values, std::size_t gap) : Anywhere(values.size(), gap) {
        std::memcpy(bytes_.data(), values.data(), n_ * sizeof(T));
    }
    T* data() { return reinterpret_cast<T*>(bytes_.data()); }
    std::vector<T> values() const {
        std::vector<T> copy(n_);
        std::memcpy(copy.data(), bytes_.data(), n_ * sizeof(T));
        return copy;
    }

  private:
    std::size_t n_;
    Guarded<Vsp8u> bytes_;
};

template <class T>
bool sameBits(const std::vector<T>& a, const std::vector<T>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

// One transform in memory of exactly the sizes asked for, with what was there before in it.
template <class F>
class Transform {
  public:
    using Sample = typename F::Sample;
    using Bin = typename F::Bin;

    explicit Transform(int order, std::size_t gap = 0, Vsp8u before = 0) : n_(std::size_t(1) << order), gap_(gap) {
        Vsp32s specSize = 0, initSize = 0, workSize = 0;
        EXPECT_EQ(vspStsNoErr, F::getSize(order, &specSize, &initSize, &workSize));
        memory_ = std::make_unique<Guarded<Vsp8u>>(std::size_t(specSize), Guard::end, gap);
        work_ = std::make_unique<Guarded<Vsp8u>>(std::size_t(workSize), Guard::end, gap);
        Guarded<Vsp8u> init{std::size_t(initSize)};
        std::fill(work_->begin(), work_->end(), before);
        EXPECT_EQ(vspStsNoErr, F::init(&spec_, order, memory_->data(), init.data()));
    }

    std::vector<Bin> forward(const std::vector<Sample>& samples, int scaleFactor = 0) {
        Anywhere<Sample> src(samples, gap_);
        Anywhere<Bin> dst(n_ / 2 + 1, gap_);
        EXPECT_EQ(vspStsNoErr, F::forward(src.data(), dst.data(), spec_, scaleFactor, work_->data()));
        EXPECT_TRUE(sameBits(samples, src.values())) << "the source has changed";
        return dst.values();
    }
    std::vector<Sample> inverse(const std::vector<Bin>& bins, int scaleFactor = 0) {
        Anywhere<Bin> src(bins, gap_);
        Anywhere<Sample> dst(n_, gap_);
        EXPECT_EQ(vspStsNoErr, F::inverse(src.data(), dst.data(), spec_, scaleFactor, work_->data()));
        EXPECT_TRUE(sameBits(bins, src.values())) << "the source has changed";
        return dst.values();
    }

  private:
    std::size_t n_, gap_;
    std::unique_ptr<Guarded<Vsp8u>> memory_, work_;
    const typename F::Spec* spec_ = nullptr;
};

using Spectrum = std::vector<std::complex<double>>;

// All N values, by halves.
Spectrum dft(const Spectrum& x, int sign) {
    const std::size_t n = x.size();
    if (n == 1) return x;
    Spectrum even(n / 2), odd(n / 2), result(n);
    for (std::size_t i = 0; i < n / 2; i++) {
        even[i] = x[2 * i];
        odd[i] = x[2 * i + 1];
    }
    even = dft(even, sign);
    odd = dft(odd, sign);
    for (std::size_t k = 0; k < n / 2; k++) {
        const auto turned = odd[k] * std::polar(1.0, sign * 2 * std::numbers::pi * double(k) / double(n));
        result[k] = even[k] + turned;
        result[k + n / 2] = even[k] - turned;
    }
    return result;
}

template <class Sample>
Spectrum bins(const std::vector<Sample>& samples) {
    Spectrum all = dft(Spectrum(samples.begin(), samples.end()), -1);
    all.resize(samples.size() / 2 + 1);
    return all;
}

// The real signal, whatever the imaginary parts of the first and last bin.
template <class Bin>
std::vector<double> signal(const std::vector<Bin>& half) {
    const std::size_t n = 2 * (half.size() - 1);
    Spectrum all(n);
    all[0] = double(half.front().re);
    all[n / 2] = double(half.back().re);
    for (std::size_t k = 1; k < n / 2; k++) {
        all[k] = {double(half[k].re), double(half[k].im)};
        all[n - k] = std::conj(all[k]);
    }
    std::vector<double> x;
    for (const auto& value : dft(all, 1)) x.push_back(value.real() / double(n));
    return x;
}

double norm(const auto& values) {
    double sum = 0;
    for (const auto& value : values) sum += std::norm(value);
    return std::sqrt(sum);
}

// Random bins of every magnitude; what the inverse ignores would be seen.
template <class Bin>
std::vector<Bin> randomBins(std::size_t n, unsigned seed) {
    using Value = decltype(Bin::re);
    const auto values = samples<Value>(n + 2, seed);
    std::vector<Bin> half(n / 2 + 1);
    for (std::size_t k = 0; k < half.size(); k++) half[k] = {values[2 * k], values[2 * k + 1]};
    half.front().im = half.back().im = std::is_same_v<Value, Vsp32f> ? Value(NAN) : Value(0x7FFFFFFF);
    return half;
}

// The error of a result that saturates at the limits of T is that of the clamped value.
template <class T>
double error(T actual, double exact) {
    using Limits = std::numeric_limits<T>;
    return std::abs(double(actual) - std::clamp(exact, double(Limits::lowest()), double(Limits::max())));
}

}  // namespace

template <class F>
constexpr bool kFixed = std::is_same_v<typename F::Sample, Vsp16s>;

template <class F>
class RealFft : public ::testing::Test {
  protected:
    void SetUp() override {
        if (bestLevel(readCpuRegisters()) < F::kLevel) GTEST_SKIP() << "the processor lacks the level";
    }
};
using Kinds = ::testing::Types<SinglePrecision_y8, SinglePrecision_v3, SinglePrecision_v4, FixedPoint_y8, FixedPoint_v3,
                               FixedPoint_v4>;
TYPED_TEST_SUITE(RealFft, Kinds);

TYPED_TEST(RealFft, ForwardIsTheDft) {
    using Sample = typename TypeParam::Sample;
    for (int order = 1; order <= kMaxOrder; order++) {
        const std::size_t n = std::size_t(1) << order;
        Transform<TypeParam> transform(order, std::size_t(order) * 5);
        for (const auto& x : {samples<Sample>(n, unsigned(order)), std::vector<Sample>(n, Sample(-32768))}) {
            const auto exact = bins(x);
            for (const int scaleFactor : kFixed<TypeParam> ? std::vector{0, 1, order, 17, -1, -9} : std::vector{0}) {
                const auto actual = transform.forward(x, scaleFactor);
                const double factor = std::ldexp(1, -scaleFactor);
                double largest = 0;
                for (std::size_t k = 0; k <= n / 2; k++) {
                    largest = std::max(largest, error(actual[k].re, exact[k].real() * factor));
                    largest = std::max(largest, error(actual[k].im, exact[k].imag() * factor));
                }
                EXPECT_EQ(0, actual.front().im);
                EXPECT_EQ(0, actual.back().im);
                EXPECT_LT(largest, kFixed<TypeParam> ? 0.51 : 1e-7 * (order + 2) * norm(x)) << "order " << order;
            }
        }
    }
}

TYPED_TEST(RealFft, InverseIsTheDftBack) {
    using Bin = typename TypeParam::Bin;
    for (int order = 1; order <= kMaxOrder; order++) {
        const std::size_t n = std::size_t(1) << order;
        Transform<TypeParam> transform(order, std::size_t(order) * 7);
        const auto half = randomBins<Bin>(n, unsigned(order));
        const auto exact = signal(half);
        for (const int scaleFactor : kFixed<TypeParam> ? std::vector{0, 12, 16, 20, -3} : std::vector{0}) {
            const auto actual = transform.inverse(half, scaleFactor);
            const double factor = std::ldexp(1, -scaleFactor);
            double largest = 0;
            for (std::size_t i = 0; i < n; i++) largest = std::max(largest, error(actual[i], exact[i] * factor));
            EXPECT_LT(largest, kFixed<TypeParam> ? 0.51 : 1e-7 * (order + 2) * norm(exact)) << "order " << order;
        }
    }
}

TYPED_TEST(RealFft, LevelsAndWorkBuffersMakeNoDifference) {
    using Sample = typename TypeParam::Sample;
    using Bin = typename TypeParam::Bin;
    using Baseline = std::conditional_t<kFixed<TypeParam>, FixedPoint_y8, SinglePrecision_y8>;
    for (int order = 1; order <= kMaxOrder; order++)
        for (unsigned seed = 1; seed <= 3; seed++) {
            const std::size_t n = std::size_t(1) << order;
            Transform<TypeParam> transform(order, seed, 0xFF);
            Transform<Baseline> baseline(order);
            const auto x = samples<Sample>(n, seed);
            ASSERT_TRUE(sameBits(baseline.forward(x, 2), transform.forward(x, 2))) << "order " << order;
            const auto half = randomBins<Bin>(n, seed);
            ASSERT_TRUE(sameBits(baseline.inverse(half, 14), transform.inverse(half, 14))) << "order " << order;
        }
}

TYPED_TEST(RealFft, AnyScaleFactorIsTaken) {
    if constexpr (kFixed<TypeParam>) {
        for (const int order : {1, 2, 5, 7, 9}) {
            const std::size_t n = std::size_t(1) << order;
            Transform<TypeParam> transform(order);
            std::vector<Vsp16s> impulse(n), zero(n);
            impulse[0] = -3;
            std::vector<Vsp32sc> flat(n / 2 + 1, {5, 0}), none(n / 2 + 1);
            for (const int huge : {40, 1000, 1 << 30, INT_MAX}) {
                for (const auto& bin : transform.forward(impulse, huge)) ASSERT_TRUE(bin.re == 0 && bin.im == 0);
                for (const auto& bin : transform.forward(impulse, -huge)) ASSERT_TRUE(bin.re == INT_MIN && bin.im == 0);
                ASSERT_EQ(zero, transform.inverse(flat, huge));
                const auto saturated = transform.inverse(flat, -huge);
                ASSERT_EQ(32767, saturated[0]);
                ASSERT_EQ(0, saturated[n / 2]);
            }
            for (const auto& bin : transform.forward(impulse, INT_MIN)) ASSERT_TRUE(bin.re == INT_MIN && bin.im == 0);
            for (const auto& bin : transform.forward(zero, INT_MIN)) ASSERT_TRUE(bin.re == 0 && bin.im == 0);
            ASSERT_EQ(32767, transform.inverse(flat, INT_MIN)[0]);
            ASSERT_EQ(zero, transform.inverse(none, INT_MIN));
        }
    }
}

TYPED_TEST(RealFft, OtherOrdersAreRefused) {
    for (const int order : {0, -1, kMaxOrder + 1, 31, 32, 33, 37, 64, INT_MAX, INT_MIN}) {
        Vsp32s untouched = 77;
        EXPECT_NE(vspStsNoErr, TypeParam::getSize(order, &untouched, &untouched, &untouched));
        EXPECT_EQ(77, untouched);
        const typename TypeParam::Spec* spec = nullptr;
        Guarded<Vsp8u> memory(0);  // a write faults
        EXPECT_NE(vspStsNoErr, TypeParam::init(&spec, order, memory.data(), nullptr));
        EXPECT_EQ(nullptr, spec);
    }
}

}  // namespace vsp::test
