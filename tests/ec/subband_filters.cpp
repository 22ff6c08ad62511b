// The sub-band filters against their definitions.
#include <complex>

#include "ec/band_vectors.h"
#include "support/level_test.h"
#include "support/upper_halves.h"

namespace vsp::test {

namespace {

__extension__ typedef __int128 Wide;
constexpr Wide kTwo63 = Wide(1) << 63;

Wide saturated(Wide a, Wide limit) { return a >= limit ? limit - 1 : a < -limit ? -limit : a; }

Vsp32fc filtered(const BandVectors<Vsp32fc>& src, const BandVectors<Vsp32fc>& coef, int len, int k) {
    std::complex<Vsp32f> sum = 0;
    for (int t = 0; t < len; t++) {
        const Vsp64f xr = src.at(t, k).re, xi = src.at(t, k).im, cr = coef.at(t, k).re, ci = coef.at(t, k).im;
        sum += std::complex<Vsp32f>(Vsp32f(xr * cr - xi * ci), Vsp32f(xr * ci + xi * cr));
    }
    return {sum.real(), sum.imag()};
}

Vsp32fc filteredFast(const BandVectors<Vsp32fc>& src, const BandVectors<Vsp32fc>& coef, int len, int k) {
    Vsp32fc a{}, b{};
    for (int t = 0; t < len; t++) {
        const Vsp32fc x = src.at(t, k), c = coef.at(t, k);
        a = {a.re + x.re * c.re, a.im + x.im * c.re};
        b = {b.re + x.re * c.im, b.im + x.im * c.im};
    }
    return {a.re - b.im, a.im + b.re};
}

Vsp32sc filtered(const BandVectors<Vsp32sc>& src, const BandVectors<Vsp32sc>& coef, int len, int k, int scaleFactor) {
    Wide re = 0, im = 0;
    for (int t = 0; t < len; t++) {
        const Wide xr = src.at(t, k).re, xi = src.at(t, k).im, cr = coef.at(t, k).re, ci = coef.at(t, k).im;
        re = saturated(re + saturated(xr * cr - xi * ci, kTwo63), kTwo63);
        im = saturated(im + saturated(xr * ci + xi * cr, kTwo63), kTwo63);
    }
    const auto scaled = [=](Wide sum) {  // the division rounds towards zero
        return Vsp32s(
            saturated(scaleFactor > 0 ? sum / (Wide(1) << scaleFactor) : sum * (Wide(1) << -scaleFactor), 1LL << 31));
    };
    return {scaled(re), scaled(im)};
}

Vsp32sc filteredFast(const BandVectors<Vsp32sc>& src, const BandVectors<Vsp32sc>& coef, int len, int k, int scaleFactor) {
    const auto inFloats = [=](const BandVectors<Vsp32sc>& words) {
        std::vector<Vsp32fc> column;
        for (int t = 0; t < len; t++) column.push_back({Vsp32f(words.at(t, k).re), Vsp32f(words.at(t, k).im)});
        return BandVectors<Vsp32fc>(column, 1);
    };
    const Vsp32fc sum = filteredFast(inFloats(src), inFloats(coef), len, 0);
    return {roundedWord(std::ldexp(sum.re, -scaleFactor)), roundedWord(std::ldexp(sum.im, -scaleFactor))};
}

Vsp32sc filteredLow(const BandVectors<Vsp32sc>& src, const BandVectors<Vsp32sc>& coef, int len, int k, int scaleFactor) {
    Wide re = 0, im = 0;
    for (int t = 0; t < len; t++) {
        const Wide xr = src.at(t, k).re, xi = src.at(t, k).im, cr = coef.at(t, k).re, ci = coef.at(t, k).im;
        re += xr * cr - xi * ci;
        im += xr * ci + xi * cr;
    }
    return {Vsp32s(Vsp32u(Vsp64s(re) >> scaleFactor)), Vsp32s(Vsp32u(Vsp64s(im) >> scaleFactor))};
}

}  // namespace

class SubbandFilters : public LevelTest {
  protected:
    void expectFloat(const Shape& s, const std::vector<Vsp32fc>& x, const std::vector<Vsp32fc>& c) {
        expectFloat(s, x, c, &Api::vspsFIRSubband_EC_32fc, filtered);
        expectFloat(s, x, c, &Api::vspsFIRSubbandFast_EC_32fc, filteredFast);
    }

    void expectFloat(const Shape& s, const std::vector<Vsp32fc>& x, const std::vector<Vsp32fc>& c, auto member,
                     Vsp32fc (*definition)(const BandVectors<Vsp32fc>&, const BandVectors<Vsp32fc>&, int, int)) {
        const std::size_t bands = std::size_t(s.numSubbands);
        const BandVectors<Vsp32fc> src(x, bands, s.guard, s.gap), coef(c, bands, s.guard, s.gap);
        Guarded<Vsp32fc> dst(bands, s.guard, s.gap), baseline(bands);
        ASSERT_EQ(vspStsNoErr, (api.*member)(src.data(), coef.data(), dst.data(), s.len, s.numSubbands));
        EXPECT_FALSE(upperHalvesInUse());
        std::vector<Vsp32fc> expected;
        for (int k = 0; k < s.numSubbands; k++) expected.push_back(definition(src, coef, s.len, k));
        expectSameBands(expected, dst.values());
        (kApi_y8.*member)(src.data(), coef.data(), baseline.data(), s.len, s.numSubbands);
        ASSERT_EQ(0, std::memcmp(dst.data(), baseline.data(), bands * sizeof(Vsp32fc)));
    }

    void expectFixed(const Shape& s, const std::vector<Vsp32sc>& x, const std::vector<Vsp32sc>& c,
                     std::initializer_list<int> scaleFactors) {
        const std::size_t bands = std::size_t(s.numSubbands);
        const BandVectors<Vsp32sc> src(x, bands, s.guard, s.gap), coef(c, bands, s.guard, s.gap);
        Guarded<Vsp32sc> dst(bands, s.guard, s.gap);
        for (const int sf : scaleFactors) {
            SCOPED_TRACE(testing::Message() << s.len << " taps, " << bands << " bands, scale factor " << sf);
            std::vector<Vsp32sc> expected;
            const auto expectOf = [&](auto member, auto definition) {
                ASSERT_EQ(vspStsNoErr, (api.*member)(src.data(), coef.data(), dst.data(), s.len, s.numSubbands, sf));
                EXPECT_FALSE(upperHalvesInUse());
                expected.clear();
                for (int k = 0; k < s.numSubbands; k++) expected.push_back(definition(k));
                expectSameBands(expected, dst.values());
            };
            expectOf(&Api::vspsFIRSubbandFast_EC_32sc_Sfs, [&](int k) { return filteredFast(src, coef, s.len, k, sf); });
            expectOf(&Api::vspsFIRSubband_EC_32sc_Sfs, [&](int k) { return filtered(src, coef, s.len, k, sf); });
            if (sf < 0) continue;
            const int first = s.numSubbands * (sf % 3) / 2;  // none, half, all of them left out
            const std::vector<Vsp32sc> before = dst.values();
            ASSERT_EQ(vspStsNoErr, api.vspsFIRSubbandLow_EC_32sc_Sfs(src.data(), coef.data(), s.len, dst.data(), first,
                                                                     s.numSubbands, sf));
            EXPECT_FALSE(upperHalvesInUse());
            for (int k = 0; k < s.numSubbands; k++)
                expected[std::size_t(k)] = k < first ? before[std::size_t(k)] : filteredLow(src, coef, s.len, k, sf);
            expectSameBands(expected, dst.values());
        }
    }
};
VSPSC_EVERY_LEVEL(SubbandFilters);

TEST_P(SubbandFilters, FloatMatchesTheDefinition) {
    for (const Shape& s : shapes()) {
        const int n = s.len * s.numSubbands;
        SCOPED_TRACE(testing::Message() << s.len << " taps, " << s.numSubbands << " bands");
        expectFloat(s, complexSamples<Vsp32fc>(n, 1), complexSamples<Vsp32fc>(n, 2));
        expectFloat(s, hardFloats(n, 3), hardFloats(n, 4));
        if (HasFatalFailure()) return;
    }
}

TEST_P(SubbandFilters, FixedMatchesTheDefinition) {
    int i = 0;
    for (const Shape& s : shapes()) {
        const int n = s.len * s.numSubbands, sf = i++ % 32;
        expectFixed(s, complexSamples<Vsp32sc>(n, 1), complexSamples<Vsp32sc>(n, 2), {0, 12, 31, sf, -sf, -31});
        if (HasFatalFailure()) return;
    }
}

// Terms of one sign and of every size, so that the sums come close to 64 bits and beyond from either side.
TEST_P(SubbandFilters, SumsSaturateOnlyBeyond64Bits) {
    for (const int len : {1, 2, 3, 4, 127, 128, 129, 255})
        for (int size = 20; size <= 31; size++)
            for (const Vsp32s sign : {1, -1}) {
                const Vsp32s a = Vsp32s(((1LL << size) - 1) * sign), b = size < 31 ? 0x7FFFFFFF : kLowest;
                const std::size_t n = std::size_t(len) * 19;
                std::vector<Vsp32sc> x(n, {a, Vsp32s(-a)}), c(n, {b, b});
                c[n / 2] = {b, Vsp32s(b / 3)};
                expectFixed({len, 19, Guard::end, 0}, x, c, {31, 0, -1});
                if (HasFatalFailure()) return;
            }
    const std::vector<Vsp32sc> lowest(10 * 19, {kLowest, kLowest});  // imaginary terms of 2^63
    for (const int len : {1, 2, 10}) expectFixed({len, 19, Guard::end, 0}, lowest, lowest, {31, 30, 1, 0, -31});
}

TEST_P(SubbandFilters, AcceptTheLargestCounts) {
    const int n = 255 * 4097;
    const auto x = complexSamples<Vsp32fc>(n, 1), c = complexSamples<Vsp32fc>(n, 2);
    expectFloat({255, 4097, Guard::end, 0}, x, c);
    expectFixed({255, 4097, Guard::end, 0}, complexSamples<Vsp32sc>(n, 1), complexSamples<Vsp32sc>(n, 2), {24});
}

}  // namespace vsp::test
