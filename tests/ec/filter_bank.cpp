// The filter bank against its definition, with the transform as a sum in double precision, and the errors it reports.
#include <cmath>
#include <complex>
#include <memory>
#include <numbers>
#include <type_traits>

#include "support/guarded.h"
#include "support/level_test.h"
#include "support/samples.h"
#include "support/status_order.h"

namespace vsp::test {

namespace {

template <class Sample>
struct Types;
template <>
struct Types<Vsp32f> {
    using Band = Vsp32fc;
    using State = VspSubbandProcessState_32f;
    static constexpr auto getSize = &Api::vspsSubbandProcessGetSize_32f;
    static constexpr auto init = &Api::vspsSubbandProcessInit_32f;
};
template <>
struct Types<Vsp16s> {
    using Band = Vsp32sc;
    using State = VspSubbandProcessState_16s;
    static constexpr auto getSize = &Api::vspsSubbandProcessGetSize_16s;
    static constexpr auto init = &Api::vspsSubbandProcessInit_16s;
};

// A filter bank in memory of exactly the sizes asked for, at some address, with what was there before in it.
template <class Sample>
class Bank {
    using T = Types<Sample>;

  public:
    Bank(const Api& api, int order, int frameSize, const std::vector<Sample>& window, std::size_t away)
        : Bank(api, order, frameSize, int(window.size()), Guarded<Sample>(window).data(), away) {}

    // Without a window the built-in one.
    Bank(const Api& api, int order, int frameSize, int windowLen, const Sample* window, std::size_t away)
        : api_(api),
          order_(order),
          frameSize_(frameSize),
          sizes_(api, order, windowLen),
          state_(std::size_t(sizes_.state), Guard::end, away),
          buffer_(std::size_t(sizes_.buffer), Guard::end, away) {
        Guarded<Vsp8u> initBuffer{std::size_t(sizes_.init)};
        EXPECT_EQ(vspStsNoErr, (api.*T::init)(state(), order, frameSize, windowLen, window, initBuffer.data()));
    }

    std::vector<typename T::Band> analyse(const std::vector<Sample>& frame, int scaleFactor = 0) {
        const Guarded<Sample> src(frame);
        Guarded<typename T::Band> dst((std::size_t(1) << order_) / 2 + 1);
        if constexpr (std::is_same_v<Sample, Vsp32f>) {
            EXPECT_EQ(vspStsNoErr, api_.vspsSubbandAnalysis_32f32fc(src.data(), dst.data(), state(), buffer_.data()));
        } else {
            EXPECT_EQ(vspStsNoErr,
                      api_.vspsSubbandAnalysis_16s32sc_Sfs(src.data(), dst.data(), state(), scaleFactor, buffer_.data()));
        }
        return dst.values();
    }

    std::vector<Sample> synthesise(const std::vector<typename T::Band>& bands, int scaleFactor = 0) {
        const Guarded<typename T::Band> src(bands);
        Guarded<Sample> dst{std::size_t(frameSize_)};
        if constexpr (std::is_same_v<Sample, Vsp32f>) {
            EXPECT_EQ(vspStsNoErr, api_.vspsSubbandSynthesis_32fc32f(src.data(), dst.data(), state(), buffer_.data()));
        } else {
            EXPECT_EQ(vspStsNoErr,
                      api_.vspsSubbandSynthesis_32sc16s_Sfs(src.data(), dst.data(), state(), scaleFactor, buffer_.data()));
        }
        return dst.values();
    }

  private:
    struct Sizes {
        Sizes(const Api& api, int order, int windowLen) {
            EXPECT_EQ(vspStsNoErr, (api.*T::getSize)(order, windowLen, &state, &init, &buffer));
        }
        Vsp32s state = 0, init = 0, buffer = 0;
    };
    typename T::State* state() { return reinterpret_cast<typename T::State*>(state_.data()); }

    const Api& api_;
    int order_, frameSize_;
    Sizes sizes_;
    Guarded<Vsp8u> state_, buffer_;
};

std::complex<double> turn(int n, long long k) { return std::polar(1.0, 2 * std::numbers::pi * double(k % n) / n); }

// Bins 0 to N/2, and the real signal with such bins divided by its length.
std::vector<std::complex<double>> dft(const std::vector<double>& x) {
    const int n = int(x.size());
    std::vector<std::complex<double>> bins(x.size() / 2 + 1);
    for (int k = 0; k <= n / 2; k++)
        for (int i = 0; i < n; i++) bins[std::size_t(k)] += x[std::size_t(i)] * std::conj(turn(n, 1LL * k * i));
    return bins;
}

template <class Band>
std::vector<double> inverseDft(const std::vector<Band>& bins) {
    const int n = 2 * (int(bins.size()) - 1);
    std::vector<double> x(static_cast<std::size_t>(n));
    for (int i = 0; i < n; i++)
        for (int k = 0; k <= n / 2; k++) {
            const auto bin = bins[std::size_t(k)];
            const bool real = k == 0 || k == n / 2;
            const std::complex<double> value(double(bin.re), real ? 0 : double(bin.im));
            x[std::size_t(i)] += (real ? 1 : 2) * (value * turn(n, 1LL * k * i)).real() / n;
        }
    return x;
}

double norm(const std::vector<double>& x) {
    double sum = 0;
    for (const double value : x) sum += value * value;
    return std::sqrt(sum);
}

template <class Sample>
std::vector<Sample> window(int len) {
    std::vector<Sample> w(static_cast<std::size_t>(len));
    constexpr double kOne = std::is_same_v<Sample, Vsp16s> ? 8192 : 1;
    for (int i = 0; i < len; i++)
        w[std::size_t(i)] = Sample(kOne * (1.2 * std::sin(std::numbers::pi * (i + 0.5) / len) - 0.1));
    return w;
}

Vsp16s saturated(long long x) { return Vsp16s(std::clamp(x, -32768LL, 32767LL)); }
Vsp16s added(Vsp16s sum, Vsp16s a, Vsp16s b) { return saturated(sum + ((1LL * a * b + 4096) >> 13)); }
Vsp32f added(Vsp32f sum, Vsp32f a, Vsp32f b) {
    const volatile Vsp32f product = a * b;  // rounded before it is added
    return sum + product;
}

struct Shape {
    int order, frameSize, windowLen;
};
const std::vector<Shape> kShapes = {{1, 1, 2},    {1, 2, 6},    {2, 3, 4},    {3, 5, 24},   {4, 16, 16},
                                    {5, 24, 128}, {6, 44, 256}, {7, 64, 512}, {8, 255, 768}};

}  // namespace

class FilterBank : public LevelTest {
  protected:
    // Within a unit of the exact value, and on average within half a unit.
    template <class Sample>
    void analysisIsAsDefined() {
        for (const Shape& shape : kShapes)
            for (const int scaleFactor : std::is_same_v<Sample, Vsp16s> ? std::vector{0, 3, -4} : std::vector{0}) {
                const auto w = window<Sample>(shape.windowLen);
                const int n = 1 << shape.order;
                Bank<Sample> bank(api, shape.order, shape.frameSize, w, std::size_t(shape.order) % 16);
                std::vector<Sample> line(w.size());
                for (unsigned frame = 0; frame < 12; frame++) {
                    const auto input = samples<Sample>(std::size_t(shape.frameSize), frame + 1);
                    line.erase(line.begin(), line.begin() + shape.frameSize);
                    line.insert(line.end(), input.begin(), input.end());
                    std::vector<double> folded(static_cast<std::size_t>(n));
                    for (int i = 0; i < n; i++) {
                        Sample sum = 0;
                        for (std::size_t at = std::size_t(i); at < w.size(); at += std::size_t(n))
                            sum = added(sum, line[at], w[at]);
                        folded[std::size_t(i)] = double(sum);
                    }
                    const auto expected = dft(folded);
                    const auto bands = bank.analyse(input, scaleFactor);
                    const double factor = std::ldexp(1, -scaleFactor);
                    const double bound = std::is_same_v<Sample, Vsp16s> ? 1 : 4e-7 * (shape.order + 2) * norm(folded);
                    double total = 0;
                    for (std::size_t k = 0; k < bands.size(); k++) {
                        const double re = std::abs(double(bands[k].re) - expected[k].real() * factor);
                        const double im = std::abs(double(bands[k].im) - expected[k].imag() * factor);
                        ASSERT_LE(std::max(re, im), bound) << "band " << k << " of order " << shape.order;
                        total += re + im;
                    }
                    ASSERT_LE(total, bound * double(bands.size()));
                    ASSERT_EQ(0, bands.front().im);
                    ASSERT_EQ(0, bands.back().im);
                }
            }
    }

    template <class Sample>
    void synthesisIsAsDefined() {
        using Value = std::conditional_t<std::is_same_v<Sample, Vsp32f>, Vsp32f, Vsp32s>;
        for (const Shape& shape : kShapes) {
            const auto w = window<Sample>(shape.windowLen);
            Bank<Sample> bank(api, shape.order, shape.frameSize, w, std::size_t(shape.order) % 16);
            std::vector<double> line(w.size());
            double largest = 0;
            for (unsigned frame = 0; frame < 12; frame++) {
                std::vector<typename Types<Sample>::Band> bands((std::size_t(1) << shape.order) / 2 + 1);
                const auto values = samples<Vsp16s>(2 * bands.size(), frame + 1);
                for (std::size_t k = 0; k < bands.size(); k++) bands[k] = {Value(values[2 * k]), Value(values[2 * k + 1])};
                const auto output = bank.synthesise(bands);
                const auto y = inverseDft(bands);
                largest = std::max(largest, norm(y));
                line.erase(line.begin(), line.begin() + shape.frameSize);
                line.resize(w.size());
                const double unit = std::is_same_v<Sample, Vsp16s> ? 8192 : 1;
                for (std::size_t i = 0; i < line.size(); i++)
                    line[i] += y[i % y.size()] * double(w[line.size() - 1 - i]) / unit;
                // Each of the terms that make up a sample: the transform within a unit, its window up to 1.1, half a unit.
                const double terms = std::ceil(double(shape.windowLen) / shape.frameSize);
                const double bound = std::is_same_v<Sample, Vsp16s> ? 1.7 * terms : 1e-6 * largest * terms;
                for (int i = 0; i < shape.frameSize; i++)
                    ASSERT_NEAR(line[std::size_t(i)], double(output[std::size_t(i)]), bound) << "order " << shape.order;
            }
        }
    }

    template <class Sample>
    void levelsAgree() {
        for (int order = 1; order <= 13; order++) {
            const int n = 1 << order, frameSize = n - n / 4;
            const auto w = window<Sample>(2 * n);
            Bank<Sample> analysis(api, order, frameSize, w, 3), analysisY8(kApi_y8, order, frameSize, w, 0);
            Bank<Sample> synthesis(api, order, frameSize, w, 5), synthesisY8(kApi_y8, order, frameSize, w, 0);
            for (unsigned frame = 0; frame < 3; frame++) {
                const auto input = samples<Sample>(std::size_t(frameSize), frame);
                const auto bands = analysis.analyse(input, 1), expectedBands = analysisY8.analyse(input, 1);
                ASSERT_EQ(0, std::memcmp(bands.data(), expectedBands.data(), bands.size() * sizeof bands[0])) << order;
                const auto output = synthesis.synthesise(bands, -1), expected = synthesisY8.synthesise(bands, -1);
                ASSERT_EQ(0, std::memcmp(output.data(), expected.data(), output.size() * sizeof output[0])) << order;
            }
        }
    }

    // Signal to error, in dB, of noise through analysis and synthesis with a built-in window.
    template <class Sample>
    double reconstruction(int order, int frameSize, int windowLen, int scaleFactor) {
        Bank<Sample> analysis(api, order, frameSize, windowLen, nullptr, 1);
        Bank<Sample> synthesis(api, order, frameSize, windowLen, nullptr, 2);
        const auto words = samples<Vsp32s>(40000);
        std::vector<double> in, out;
        for (const Vsp32s word : words) in.push_back(double(word % 8192));
        for (std::size_t at = 0; at + std::size_t(frameSize) <= in.size(); at += std::size_t(frameSize)) {
            const auto begin = in.begin() + std::ptrdiff_t(at);
            const std::vector<Sample> frame(begin, begin + frameSize);
            for (const Sample x : synthesis.synthesise(analysis.analyse(frame, scaleFactor), -scaleFactor))
                out.push_back(double(x));
        }
        double signal = 0, error = 0;
        const auto delay = std::size_t(windowLen - frameSize);
        for (std::size_t i = 2 * delay; i < out.size(); i++) {
            signal += in[i - delay] * in[i - delay];
            error += (out[i] - in[i - delay]) * (out[i] - in[i - delay]);
        }
        return 10 * std::log10(signal / error);
    }

    template <class Sample>
    void setUpReportsErrorsInOrder() {
        const auto getSize = [&](auto... a) { return (api.*Types<Sample>::getSize)(a...); };
        const Guarded<Vsp32s> none(0);  // a write faults
        Vsp32s* const p = reinterpret_cast<Vsp32s*>(const_cast<Vsp32s*>(none.data()));
        for (const auto& [order, windowLen] : {std::pair{0, 128}, {kLowest, 128}, {5, 0}, {5, kLowest}})
            EXPECT_EQ(vspStsBadArgErr, getSize(order, windowLen, nullptr, nullptr, nullptr));
        for (int i = 0; i < 3; i++)
            EXPECT_EQ(vspStsNullPtrErr, getSize(5, 100, i == 0 ? nullptr : p, i == 1 ? nullptr : p, i == 2 ? nullptr : p));
        constexpr Vsp32s kHighest = 0x7FFFFFFF;
        for (const auto& [order, windowLen] : {std::pair{5, 100},
                                               {6, 32},
                                               {31, 128},
                                               {32, 1},
                                               {37, 32},
                                               {kHighest, 128},
                                               {kHighest, kHighest},
                                               {30, 1 << 30},
                                               {5, 1 << 30},
                                               {13, 1 << 30}})
            EXPECT_EQ(vspStsBadArgErr, getSize(order, windowLen, p, p, p)) << order << ", " << windowLen;

        const auto init = [&](void* state, int order, int frameSize, int windowLen, const Sample* w) {
            return (api.*Types<Sample>::init)(static_cast<typename Types<Sample>::State*>(state), order, frameSize,
                                              windowLen, w, nullptr);
        };
        const Guarded<Sample> noWindow(0);
        const Sample* const w = noWindow.data();
        for (const Shape& bad :
             std::vector<Shape>{{0, 1, 128}, {-1, 1, 128}, {5, 0, 128}, {5, 33, 128}, {5, 24, 0}, {5, 24, -32}})
            EXPECT_EQ(vspStsBadArgErr, init(nullptr, bad.order, bad.frameSize, bad.windowLen, w));
        EXPECT_EQ(vspStsNullPtrErr, init(nullptr, 5, 24, 100, w));
        for (const Shape& bad : std::vector<Shape>{{5, 24, 100}, {31, 24, 128}, {37, 32, 32}, {kHighest, 1, kHighest}})
            EXPECT_EQ(vspStsBadArgErr, init(p, bad.order, bad.frameSize, bad.windowLen, w));
        for (const Shape& bad :
             std::vector<Shape>{{5, 24, 256}, {5, 25, 128}, {6, 44, 128}, {6, 24, 256}, {20, 1, 1 << 20}})
            EXPECT_EQ(vspStsBadArgErr, init(p, bad.order, bad.frameSize, bad.windowLen, nullptr));
        EXPECT_EQ(vspStsTransformErr, init(p, 20, 1, 1 << 20, w));
        EXPECT_EQ(vspStsTransformErr, init(p, 30, 1, 1 << 30, w));
    }
};
VSPSC_EVERY_LEVEL(FilterBank);

TEST_P(FilterBank, AnalysisIsAsDefined) {
    analysisIsAsDefined<Vsp32f>();
    analysisIsAsDefined<Vsp16s>();
}

TEST_P(FilterBank, SynthesisIsAsDefined) {
    synthesisIsAsDefined<Vsp32f>();
    synthesisIsAsDefined<Vsp16s>();
}

TEST_P(FilterBank, EveryLevelGivesTheSameBits) {
    levelsAgree<Vsp32f>();
    levelsAgree<Vsp16s>();
}

TEST_P(FilterBank, BuiltInWindowsReconstruct) {
    EXPECT_GT(reconstruction<Vsp32f>(5, 24, 128, 0), 22);
    EXPECT_GT(reconstruction<Vsp32f>(6, 44, 256, 0), 34);
    EXPECT_GT(reconstruction<Vsp16s>(5, 24, 128, 0), 22);
    EXPECT_GT(reconstruction<Vsp16s>(6, 44, 256, 0), 34);
    EXPECT_GT(reconstruction<Vsp16s>(6, 44, 256, -3), 34);
}

TEST_P(FilterBank, SetUpReportsErrorsInOrder) {
    setUpReportsErrorsInOrder<Vsp32f>();
    setUpReportsErrorsInOrder<Vsp16s>();
}

TEST_P(FilterBank, NullPointersAreReported) {
    expectStatusOrder(api.vspsSubbandAnalysis_32f32fc, {vspStsNullPtrErr}, pointer, pointer, pointer, pointer);
    expectStatusOrder(api.vspsSubbandAnalysis_16s32sc_Sfs, {vspStsNullPtrErr}, pointer, pointer, pointer, value, pointer);
    expectStatusOrder(api.vspsSubbandSynthesis_32fc32f, {vspStsNullPtrErr}, pointer, pointer, pointer, pointer);
    expectStatusOrder(api.vspsSubbandSynthesis_32sc16s_Sfs, {vspStsNullPtrErr}, pointer, pointer, pointer, value, pointer);
}

TEST_P(FilterBank, SizesGrowWithTheWindowAsDocumented) {
    const auto size = [&](auto getSize, int windowLen) {
        Vsp32s state = 0, init = 0, buffer = 0;
        EXPECT_EQ(vspStsNoErr, getSize(5, windowLen, &state, &init, &buffer));
        EXPECT_GE(buffer, 4 * 32 + 16);
        return state;
    };
    EXPECT_EQ(8 * 96, size(api.vspsSubbandProcessGetSize_32f, 128) - size(api.vspsSubbandProcessGetSize_32f, 32));
    EXPECT_EQ(4 * 96, size(api.vspsSubbandProcessGetSize_16s, 128) - size(api.vspsSubbandProcessGetSize_16s, 32));
    EXPECT_EQ(0, size(api.vspsSubbandProcessGetSize_16s, 32) % 16);
}

}  // namespace vsp::test
