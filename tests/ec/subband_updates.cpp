// The adaptation of the sub-band filters against its definitions.
#include <limits>

#include "ec/band_vectors.h"
#include "support/level_test.h"
#include "support/status_order.h"
#include "support/upper_halves.h"

namespace vsp::test {

namespace {

__extension__ typedef __int128 Wide;

Wide clamped(Wide a, Wide lowest, Wide highest) { return a < lowest ? lowest : a > highest ? highest : a; }
Vsp32s saturated(Wide a) { return Vsp32s(clamped(a, std::numeric_limits<Vsp32s>::min(), 0x7FFFFFFF)); }

// delta / 2^31 * 2^(31 - s'), s' = x - scaleFactor
Wide scaled(Wide delta, Wide s) {
    if (s < 31) {
        const int left = int(clamped(31 - s, 1, 63));
        const Wide limit = std::numeric_limits<Vsp64s>::max();
        return clamped(delta * (Wide(1) << left), -limit, limit);
    }
    const int right = int(clamped(s - 31, 0, 100));
    return (delta + (right >= 2 ? Wide(1) << (right - 1) : 0)) >> right;
}

Wide roundedQ31(Wide e, Wide m) { return (e * m + (1 << 30)) >> 31; }

Vsp32sc updated(Vsp32sc c, Vsp32sc x, Vsp32sc e, Vsp32sc step, int scaleFactor) {
    const Wide re = roundedQ31(e.re, step.re), im = roundedQ31(e.im, step.re), s = Wide(step.im) - scaleFactor;
    const Wide xr = x.re, conj = saturated(-Wide(x.im));
    return {saturated(c.re + scaled(xr * re - conj * im, s)), saturated(c.im + scaled(xr * im + conj * re, s))};
}

Vsp32sc lowScratch(Vsp32sc e, Vsp32sc step) {
    return {Vsp32s(Vsp32u(roundedQ31(e.re, step.re))), Vsp32s(Vsp32u(roundedQ31(e.im, step.re)))};
}

Vsp32sc updatedLow(Vsp32sc c, Vsp32sc x, Vsp32sc e, Vsp32sc step, int scaleFactor) {
    const Vsp32sc me = lowScratch(e, step);
    const Wide xr = x.re, conj = Vsp32s(0u - Vsp32u(x.im)), s = Wide(step.im) - scaleFactor;
    const Wide re = scaled(Vsp64s(xr * me.re - conj * me.im), s), im = scaled(Vsp64s(xr * me.im + conj * me.re), s);
    if (s < 31) return {saturated(c.re + re), saturated(c.im + im)};
    return {Vsp32s(Vsp32u(c.re + re)), Vsp32s(Vsp32u(c.im + im))};
}

Vsp32fc updated(Vsp32fc c, Vsp32fc x, Vsp32fc e, Vsp64f step) {
    const Vsp64f a = e.re * step, b = e.im * step;
    return {c.re + Vsp32f(x.re * a + x.im * b), c.im + Vsp32f(x.re * b - x.im * a)};
}

Vsp32fc updatedFast(Vsp32fc c, Vsp32fc x, Vsp32fc e, Vsp64f step) {
    const Vsp32f re = e.re * Vsp32f(step), im = e.im * Vsp32f(step);
    return {c.re + (x.re * re + x.im * im), c.im + (x.re * im + x.im * (0 - re))};
}

Vsp32sc updatedFast(Vsp32sc c, Vsp32sc x, Vsp32sc e, Vsp32sc step, int scaleFactor) {
    const Vsp64s s = Vsp64s(step.im) - scaleFactor;
    const Vsp64f power = std::ldexp(Vsp32f(step.re), -int(s < -30 ? -30 : s > 126 ? 126 : s));
    const Vsp32fc change = updatedFast({0, 0}, {Vsp32f(x.re), Vsp32f(x.im)}, {Vsp32f(e.re), Vsp32f(e.im)}, power);
    return {saturated(Wide(c.re) + roundedWord(change.re)), saturated(Wide(c.im) + roundedWord(change.im))};
}

enum class Exponents { toTheRight, mixed, edges };

// Step sizes for a scale factor: mantissas of any sign, exponents by which all bands or some shift to the right, or at the
// limits of the rules.
std::vector<Vsp32sc> fixedSteps(int n, Exponents kind, int scaleFactor, unsigned seed) {
    static constexpr Vsp32s kEdges[] = {31, 32, 33, 34, 62, 63, 64, 93, 94, 95, 96, 97, 160, 30, 29, 0, -1, -2, -3, -33};
    std::mt19937 random(seed);
    std::vector<Vsp32sc> steps = complexSamples<Vsp32sc>(n, seed);
    for (Vsp32sc& step : steps) {
        switch (kind) {
            case Exponents::toTheRight: step.im = 31 + scaleFactor + Vsp32s(random() % 70); break;
            case Exponents::mixed: step.im = scaleFactor + Vsp32s(random() % 100) - 20; break;
            case Exponents::edges:
                if (random() % 4 != 0) step.im = scaleFactor + kEdges[random() % std::size(kEdges)];
                break;
        }
    }
    return steps;
}

}  // namespace

class SubbandUpdates : public LevelTest {
  protected:
    void expectFloat(const Shape& s, const std::vector<Vsp32fc>& x, const std::vector<Vsp32fc>& e,
                     const std::vector<Vsp64f>& steps) {
        expectFloat(s, x, e, steps, &Api::vspsFIRSubbandCoeffUpdate_EC_32fc_I, updated);
        expectFloat(s, x, e, steps, &Api::vspsFIRSubbandFastCoeffUpdate_EC_32fc_I, updatedFast);
    }

    void expectFloat(const Shape& s, const std::vector<Vsp32fc>& x, const std::vector<Vsp32fc>& e,
                     const std::vector<Vsp64f>& steps, auto member,
                     Vsp32fc (*definition)(Vsp32fc, Vsp32fc, Vsp32fc, Vsp64f)) {
        SCOPED_TRACE(testing::Message() << s.len << " taps, " << s.numSubbands << " bands");
        const std::size_t bands = std::size_t(s.numSubbands);
        const BandVectors<Vsp32fc> src(x, bands, s.guard, s.gap);
        const Guarded<Vsp32fc> err(e, s.guard, s.gap);
        const Guarded<Vsp64f> step(steps, s.guard, s.gap);
        const auto before = complexSamples<Vsp32fc>(s.len * s.numSubbands, 9);
        const BandVectors<Vsp32fc> coef(before, bands, s.guard, s.gap), baseline(before, bands);
        ASSERT_EQ(vspStsNoErr, (api.*member)(step.data(), src.data(), err.data(), coef.data(), s.len, s.numSubbands));
        EXPECT_FALSE(upperHalvesInUse());
        std::vector<Vsp32fc> expected;
        for (std::size_t i = 0; i < before.size(); i++)
            expected.push_back(definition(before[i], x[i], e[i % bands], steps[i % bands]));
        expectSameBands(expected, coef.values());
        (kApi_y8.*member)(step.data(), src.data(), err.data(), baseline.data(), s.len, s.numSubbands);
        expectSameBits(baseline, coef);
    }

    void expectProjection(const Shape& s, int order, const std::vector<Vsp32fc>& x, const std::vector<Vsp32fc>& e) {
        SCOPED_TRACE(testing::Message() << s.len << " taps, " << s.numSubbands << " bands, order " << order);
        const std::size_t bands = std::size_t(s.numSubbands);
        const BandVectors<Vsp32fc> src(x, bands, s.guard, s.gap), err(e, bands, s.guard, s.gap);
        const BandVectors<Vsp64f> steps(samples<Vsp64f>(std::size_t(order) * bands, 8), bands, s.guard, s.gap);
        const auto before = complexSamples<Vsp32fc>(s.len * s.numSubbands, 9);
        const BandVectors<Vsp32fc> coef(before, bands, s.guard, s.gap), baseline(before, bands);
        ASSERT_EQ(vspStsNoErr,
                  api.vspsFIRSubbandAPCoeffUpdate_EC_32fc_I(steps.data(), src.data(), err.data(), coef.data(),
                                                            Vsp32u(s.len), Vsp32u(s.numSubbands), Vsp32u(order)));
        EXPECT_FALSE(upperHalvesInUse());
        std::vector<Vsp32fc> expected;
        const Vsp64f g = 1.0f / Vsp32f(order);
        for (int t = 0; t < s.len; t++)
            for (int k = 0; k < s.numSubbands; k++) {
                Vsp64f re = 0, im = 0;
                for (int j = 0; j < order; j++) {
                    const Vsp64f xr = src.at(t + j, k).re, xi = src.at(t + j, k).im;
                    const Vsp64f er = err.at(j, k).re, ei = err.at(j, k).im;
                    re += (er * xr + ei * xi) * steps.at(j, k);
                    im += (ei * xr - er * xi) * steps.at(j, k);
                }
                const Vsp32fc c = before[expected.size()];
                expected.push_back({c.re + Vsp32f(re * g), c.im + Vsp32f(im * g)});
            }
        expectSameBands(expected, coef.values());
        kApi_y8.vspsFIRSubbandAPCoeffUpdate_EC_32fc_I(steps.data(), src.data(), err.data(), baseline.data(), Vsp32u(s.len),
                                                      Vsp32u(s.numSubbands), Vsp32u(order));
        expectSameBits(baseline, coef);
    }

    void expectFixed(const Shape& s, Exponents kind, int scaleFactor, const std::vector<Vsp32sc>& x) {
        SCOPED_TRACE(testing::Message() << s.len << " taps, " << s.numSubbands << " bands, scale factor " << scaleFactor
                                        << ", exponents " << int(kind));
        const std::size_t bands = std::size_t(s.numSubbands);
        const BandVectors<Vsp32sc> src(x, bands, s.guard, s.gap);
        const Guarded<Vsp32sc> err(complexSamples<Vsp32sc>(s.numSubbands, 5), s.guard, s.gap);
        const Guarded<Vsp32sc> lowSteps(fixedSteps(s.numSubbands, kind, scaleFactor, 6), s.guard, s.gap);
        Guarded<Vsp32sc> steps(lowSteps.values(), s.guard, s.gap), scratch(bands, s.guard, s.gap);
        for (Vsp32sc& step : steps) step.re &= 0x7FFFFFFF;
        const auto before = complexSamples<Vsp32sc>(s.len * s.numSubbands, 7);
        const BandVectors<Vsp32sc> coef(before, bands, s.guard, s.gap), lowCoef(before, bands, s.guard, s.gap),
            fastCoef(before, bands, s.guard, s.gap);
        ASSERT_EQ(vspStsNoErr, api.vspsFIRSubbandCoeffUpdate_EC_32sc_I(steps.data(), src.data(), err.data(), coef.data(),
                                                                       s.len, s.numSubbands, scaleFactor));
        EXPECT_FALSE(upperHalvesInUse());
        ASSERT_EQ(vspStsNoErr,
                  api.vspsFIRSubbandFastCoeffUpdate_EC_32sc_I(steps.data(), src.data(), err.data(), fastCoef.data(), s.len,
                                                              s.numSubbands, scaleFactor));
        EXPECT_FALSE(upperHalvesInUse());
        const int first = s.numSubbands * (scaleFactor % 3) / 2;
        std::vector<Vsp32sc> expected, lowExpected, fastExpected, expectedScratch = scratch.values();
        ASSERT_EQ(vspStsNoErr,
                  api.vspsFIRSubbandLowCoeffUpdate_EC_32sc_I(src.data(), err.data(), lowCoef.data(), s.len, scratch.data(),
                                                             lowSteps.data(), first, s.numSubbands, scaleFactor));
        EXPECT_FALSE(upperHalvesInUse());
        for (std::size_t i = 0; i < before.size(); i++) {
            const std::size_t k = i % bands;
            expected.push_back(updated(before[i], x[i], err[k], steps[k], scaleFactor));
            fastExpected.push_back(updatedFast(before[i], x[i], err[k], steps[k], scaleFactor));
            lowExpected.push_back(int(k) < first ? before[i]
                                                 : updatedLow(before[i], x[i], err[k], lowSteps[k], scaleFactor));
        }
        for (std::size_t k = std::size_t(first); k < bands; k++) expectedScratch[k] = lowScratch(err[k], lowSteps[k]);
        expectSameBands(expected, coef.values());
        expectSameBands(fastExpected, fastCoef.values());
        expectSameBands(lowExpected, lowCoef.values());
        expectSameBands(expectedScratch, scratch.values());
    }

  private:
    static void expectSameBits(const BandVectors<Vsp32fc>& a, const BandVectors<Vsp32fc>& b) {
        const auto x = a.values(), y = b.values();
        ASSERT_EQ(0, std::memcmp(x.data(), y.data(), x.size() * sizeof x[0])) << "the levels differ";
    }
};
VSPSC_EVERY_LEVEL(SubbandUpdates);

TEST_P(SubbandUpdates, FloatMatchesTheDefinition) {
    const auto positive = [](int n) {
        auto steps = samples<Vsp64f>(std::size_t(n), 3);
        for (Vsp64f& step : steps) step = std::fabs(step) * 1e-3;
        return steps;
    };
    for (const Shape& s : shapes()) {
        const int n = s.numSubbands;
        expectFloat(s, complexSamples<Vsp32fc>(s.len * n, 1), complexSamples<Vsp32fc>(n, 2), positive(n));
        auto steps = positive(n);
        for (std::size_t k = 0; k < steps.size(); k += 3) steps[k] = std::ldexp(1.0, int(k * 37 % 2000) - 1022);
        expectFloat(s, hardFloats(s.len * n, 1), hardFloats(n, 2), steps);
        if (HasFatalFailure()) return;
    }
}

TEST_P(SubbandUpdates, ProjectionMatchesTheDefinition) {
    int order = 1;
    for (const Shape& s : shapes()) {
        const int n = s.numSubbands;
        expectProjection(s, order, complexSamples<Vsp32fc>((s.len + order - 1) * n, 1),
                         complexSamples<Vsp32fc>(order * n, 2));
        expectProjection(s, order, hardFloats((s.len + order - 1) * n, 3), hardFloats(order * n, 4));
        order = order % 7 + 1;
        if (HasFatalFailure()) return;
    }
}

TEST_P(SubbandUpdates, FixedMatchesTheDefinition) {
    int i = 0;
    for (const Shape& s : shapes()) {
        const auto x = complexSamples<Vsp32sc>(s.len * s.numSubbands, 1);
        for (const Exponents kind : {Exponents::toTheRight, Exponents::mixed, Exponents::edges})
            expectFixed(s, kind, i % 32, x);
        i++;
        if (HasFatalFailure()) return;
    }
    const std::vector<Vsp32sc> lowest(10 * 64, {kLowest, kLowest});
    for (int sf = 0; sf <= 31; sf++)
        for (const Exponents kind : {Exponents::toTheRight, Exponents::edges})
            expectFixed({10, 64, Guard::end, 0}, kind, sf, lowest);
}

TEST_P(SubbandUpdates, AcceptTheLargestCounts) {
    const Shape s{255, 4097, Guard::end, 0};
    const int n = s.len * s.numSubbands;
    expectFloat(s, complexSamples<Vsp32fc>(n, 1), complexSamples<Vsp32fc>(4097, 2), std::vector<Vsp64f>(4097, 1e-6));
    expectFixed(s, Exponents::toTheRight, 12, complexSamples<Vsp32sc>(n, 1));
    expectProjection(s, 2, complexSamples<Vsp32fc>(n + 4097, 1), complexSamples<Vsp32fc>(2 * 4097, 2));
}

TEST_P(SubbandUpdates, RefuseANegativeStepInAnyBand) {
    for (int bands = 1; bands <= 70; bands++)
        for (int bad = 0; bad < bands; bad++) {
            const std::size_t n = std::size_t(bands);
            const auto values = complexSamples<Vsp32fc>(bands, 1);
            const auto words = complexSamples<Vsp32sc>(bands, 1);
            const Guarded<Vsp32fc> x(values), e(values);
            const Guarded<Vsp32sc> ix(words), ie(words);
            Guarded<Vsp32fc> c(values);
            Guarded<Vsp32sc> ic(words);
            const Vsp32fc* const src[] = {x.data()};
            const Vsp32sc* const isrc[] = {ix.data()};
            Vsp32fc* const coef[] = {c.data()};
            Vsp32sc* const icoef[] = {ic.data()};
            Guarded<Vsp64f> steps(std::vector<Vsp64f>(n, 1.0));
            Guarded<Vsp32sc> isteps(std::vector<Vsp32sc>(n, {1, -1}));
            const auto update = [&] {
                return api.vspsFIRSubbandCoeffUpdate_EC_32fc_I(steps.data(), src, e.data(), coef, 1, bands);
            };
            for (const Vsp64f step : {-1.0, -std::numeric_limits<Vsp64f>::denorm_min(), -HUGE_VAL}) {
                steps[std::size_t(bad)] = step;
                ASSERT_EQ(vspStsSizeErr, update()) << bad << " of " << bands;
            }
            for (const Vsp32s step : {-1, kLowest}) {
                isteps[std::size_t(bad)].re = step;
                for (const auto update32sc :
                     {api.vspsFIRSubbandCoeffUpdate_EC_32sc_I, api.vspsFIRSubbandFastCoeffUpdate_EC_32sc_I})
                    ASSERT_EQ(vspStsSizeErr, update32sc(isteps.data(), isrc, ie.data(), icoef, 1, bands, 0));
            }
            expectSameBands(values, c.values());
            expectSameBands(words, ic.values());
            for (const Vsp64f step : {-0.0, std::nan(""), -std::nan("")}) {
                steps[std::size_t(bad)] = step;
                ASSERT_EQ(vspStsNoErr, update());
            }
            if (HasFatalFailure()) return;
        }
}

}  // namespace vsp::test
