// Dot products, inverse square root, lag window and noise generator.
#include <cmath>
#include <numeric>

#include "common/definitions.h"
#include "common/tables.h"
#include "support/guarded.h"
#include "support/level_test.h"
#include "support/samples.h"

namespace vsp::test {

namespace {

using Vector = std::vector<Vsp16s>;

// The inverse square root of G.729 with its table made from its formula.
Vsp32s invSqrt(Vsp32s x) {
    if (x <= 0) return 0x3FFFFFFF;
    int n = 0;
    Vsp64s y = x;
    for (; y < 0x40000000; y *= 2) n++;
    const int e = 32 - n;
    if (e % 2 == 0) y >>= 1;
    const auto table = [](Vsp64s i) { return std::min(32767LL, std::llround(32768 / std::sqrt(1 + double(i) / 16))); };
    const Vsp64s i = (y >> 25) - 16, a = (y >> 10) & 0x7FFF;
    return Vsp32s((table(i) * 65536 - a * 2 * (table(i) - table(i + 1))) >> (e / 2));
}

Vsp16s nextRandom(Vsp16s seed) { return Vsp16s(seed * 31821LL + 13849); }

}  // namespace

class Sums : public LevelTest {
  protected:
    void expectDotProducts(const Vector& a, const Vector& b) {
        const int len = int(a.size());
        Vsp64s sum = 0, shifted = 0;
        for (int i = 0; i < len; i++) sum += 2LL * a[i] * b[i];
        Vsp32s s1 = 0, s2 = 0;
        for (;; (s1 < s2 ? s1 : s2)++) {
            shifted = -Vsp64s(a[0] >> s1) * (b[0] >> s2);
            for (int i = 0; i < len; i++) shifted += 2LL * (a[i] >> s1) * (b[i] >> s2);
            if (shifted == saturate32(shifted)) break;
        }
        for (const auto& [guard, gap] : {std::pair(Guard::end, 0), std::pair(Guard::begin, 1)}) {
            const Guarded<const Vsp16s> src1(a, guard), src2(b, guard, gap);
            Guarded<Vsp32s> result(1), scaleOut(1);
            ASSERT_EQ(sum == saturate32(sum) ? vspStsNoErr : vspStsOverflow,
                      api.vspsDotProd_G729A_16s32s(src1.data(), src2.data(), len, result.data()));
            ASSERT_EQ(saturate32(sum), result[0]) << "length " << len;
            ASSERT_EQ(vspStsNoErr,
                      api.vspsDotProdAutoScale_16s32s_Sfs(src1.data(), src2.data(), len, result.data(), scaleOut.data()));
            ASSERT_EQ(shifted, result[0]) << "length " << len;
            ASSERT_EQ(s1 + s2, scaleOut[0]) << "length " << len;
        }
    }
};
VSPSC_EVERY_LEVEL(Sums);

TEST_P(Sums, DotProductsMatchTheDefinition) {
    std::vector<std::size_t> sizes(100);
    std::iota(sizes.begin(), sizes.end(), 1);
    sizes.insert(sizes.end(), {240, 1023, 5000});
    for (const std::size_t n : sizes) {
        const Vector a = samples(n, unsigned(n)), b = samples(n, unsigned(n) + 1);
        Vector quiet(n);
        std::transform(a.begin(), a.end(), quiet.begin(), [](Vsp16s x) { return Vsp16s(x >> 8); });
        const Vector low(n, -32768), high(n, 32767);
        for (const auto& [x, y] :
             {std::pair(&a, &b), {&a, &quiet}, {&quiet, &quiet}, {&low, &low}, {&low, &high}, {&high, &high}})
            expectDotProducts(*x, *y);
        ASSERT_FALSE(HasFailure());
    }
}

// One product of 2^30 more or less decides.
TEST_P(Sums, DotProductSaturatesExactlyAtTheLimits) {
    expectDotProducts({-32768, 32767, 1}, {-32768, 1, 1});       // 2^31 + 2^16
    expectDotProducts({-32768, -1}, {-32768, 1});                // 2^31 - 2
    expectDotProducts({-32768, -32768}, {16384, 16384});         // -2^31
    expectDotProducts({-32768, -32768, -1}, {16384, 16384, 1});  // -2^31 - 2
}

TEST_P(Sums, InvSqrtMatchesTheDefinition) {
    std::vector<Vsp32s> x = samples<Vsp32s>(20000);
    for (int i = -70000; i < 70000; i++) x.push_back(i);
    for (int k = 0; k < 31; k++)
        for (const Vsp64s d : {-1, 0, 1}) x.push_back(Vsp32s((1LL << k) + d));
    x.insert(x.end(), {0x7FFFFFFF, kLowest, 0x3FFFFFFF});
    Guarded<Vsp32s> result(x);
    ASSERT_EQ(vspStsNoErr, api.vspsInvSqrt_32s_I(result.data(), Vsp32s(x.size())));
    for (std::size_t i = 0; i < x.size(); i++) {
        ASSERT_EQ(invSqrt(x[i]), result[i]) << "of " << x[i];
        if (x[i] > 0) {
            ASSERT_NEAR(1, result[i] / (0x1p30 / std::sqrt(double(x[i]))), 7e-4) << "of " << x[i];
        }
    }
    for (std::size_t n = 1; n <= 100; n++) {
        Guarded<Vsp32s> few(std::vector<Vsp32s>(x.begin(), x.begin() + std::ptrdiff_t(n)),
                            n % 2 == 0 ? Guard::end : Guard::begin);
        ASSERT_EQ(vspStsNoErr, api.vspsInvSqrt_32s_I(few.data(), Vsp32s(n)));
        ASSERT_TRUE(std::equal(few.begin(), few.end(), result.begin())) << "length " << n;
    }
}

TEST_P(Sums, LagWindowIsTheGaussianOfSixtyHertzInSplitArithmetic) {
    for (int k = 1; k <= 12; k++) {  // 60 Hz at 8 kHz, with white noise of 1/10000 added to lag 0
        const double x = 2 * M_PI * 60 * k / 8000;
        ASSERT_NEAR(std::exp(-x * x / 2) / 1.0001, wlag[k - 1] * 0x1p-31, 2.5e-8) << "lag " << k;
    }
    for (Vsp32s len = 1; len <= 12; len++)
        for (unsigned seed = 0; seed < 200; seed++) {
            const auto lags = samples<Vsp32s>(std::size_t(len), seed);
            Guarded<Vsp32s> windowed(lags, seed % 2 == 0 ? Guard::end : Guard::begin);
            ASSERT_EQ(vspStsNoErr, api.vspsLagWindow_G729_32s_I(windowed.data(), len));
            for (std::size_t k = 0; k < lags.size(); k++) {
                const Vsp64s h1 = lags[k] >> 16, l1 = lags[k] >> 1 & 0x7FFF, h2 = wlag[k] >> 16, l2 = wlag[k] >> 1 & 0x7FFF;
                ASSERT_EQ(wrap32(2 * (h1 * h2 + (h1 * l2 >> 15) + (l1 * h2 >> 15))), windowed[k]) << lags[k];
            }
        }
}

TEST_P(Sums, NoiseMatchesTheGeneratorForEverySeedAndLength) {
    const auto expectNoise = [&](Vsp16s first, int len) {
        Guarded<Vsp16s> seed(Vector{first}), dst(std::size_t(len), len % 2 == 0 ? Guard::end : Guard::begin);
        ASSERT_EQ(vspStsNoErr, api.vspsRandomNoiseExcitation_G729B_16s(seed.data(), dst.data(), len));
        Vsp16s random = first;
        for (const Vsp16s element : dst) {
            Vsp64s sum = 0;
            for (int k = 0; k < 12; k++) sum += random = nextRandom(random);
            ASSERT_EQ(Vsp16s(sum >> 7), element) << "seed " << first << ", length " << len;
        }
        ASSERT_EQ(random, seed[0]) << "seed " << first << ", length " << len;
    };
    for (int seed = -32768; seed <= 32767; seed++) expectNoise(Vsp16s(seed), 1 + (seed & 1) + (seed & 2) / 2);
    for (int len = 1; len <= 100; len++) expectNoise(Vsp16s(len * 321), len);
    expectNoise(11111, 5000);
}

}  // namespace vsp::test
