// Lag scan, back filtering, convolution and synthesis filter against the standard's definition.
#include "g729/signals.h"
#include "support/guarded.h"
#include "support/level_test.h"

namespace vsp::test::g729 {

class Correlation : public LevelTest {};
VSPSC_EVERY_LEVEL(Correlation);

// One kernel each, under names of its own.
TEST_P(Correlation, RecordedResults) {
    const auto cases = [](const char* kernel) { return readVectorCases(std::string("common/kernel_") + kernel + ".vec"); };
    const auto input = [](const VectorCase& c, std::size_t i) { return c.arguments[i].inputs<Vsp16s>(); };
    Guarded<Vsp16s> out(40);
    for (const VectorCase& c : cases("convolve")) {
        api.vspsConvPartial_16s_Sfs(input(c, 0).data(), input(c, 1).data(), out.data(), 40, 12);
        EXPECT_EQ(c.arguments[2].outputs<Vsp16s>(), out.values()) << c.label;
    }
    for (const VectorCase& c : cases("back_filter")) {
        api.vspsCrossCorr_NormM_16s(input(c, 1).data(), input(c, 0).data(), 40, out.data());
        EXPECT_EQ(c.arguments[2].outputs<Vsp16s>(), out.values()) << c.label;
    }
    for (const VectorCase& c : cases("synthesis")) {
        const Signal zeros(10);
        EXPECT_LE(0, api.vspsSynthesisFilter_NR_16s_Sfs(input(c, 0).data(), input(c, 1).data(), out.data(), 40, 12,
                                                        zeros.data()));
        EXPECT_EQ(c.arguments[2].outputs<Vsp16s>(), out.values()) << c.label;
    }
    for (const VectorCase& c : cases("lag_scan")) {
        const Signal signal = input(c, 0);
        Vsp32s max = 0, lag = 0;
        api.vspsAutoCorrLagMax_Inv_16s(signal.data() + c.arguments[0].offset, 80, c.arguments[1].inputs<Vsp32s>()[0],
                                       c.arguments[2].inputs<Vsp32s>()[0], &max, &lag);
        EXPECT_EQ(c.arguments[3].outputs<Vsp32s>()[0], max) << c.label;
        EXPECT_EQ(c.arguments[4].outputs<Vsp32s>()[0], lag) << c.label;
    }
}

TEST_P(Correlation, LagScanFollowsTheDefinition) {
    const auto check = [&](const Signal& signal, int len, int lagMin, int lagMax) {
        const Guarded<Vsp16s> guarded(Signal(signal.begin(), signal.begin() + len + lagMax));
        Vsp32s max = 0, lag = 0;
        ASSERT_EQ(vspStsNoErr, api.vspsAutoCorrLagMax_Inv_16s(guarded.data() + lagMax, len, lagMin, lagMax, &max, &lag));
        EXPECT_EQ(Lag_max(guarded.data() + lagMax, len, lagMin, lagMax), std::pair(max, lag))
            << len << " samples, lags " << lagMin << " to " << lagMax;
    };
    for (const Signal& signal : synthetic(223, 1)) check(signal, 80, 20, 143);
    Signal quiet = samples(700);
    for (Vsp16s& s : quiet) s = Vsp16s(s >> 4);
    for (const Signal& signal : {quiet, samples(700)})
        for (int lags = 1; lags <= 140; lags++) {
            check(signal, 1 + lags % 3, 1, lags);
            check(signal, 40 + lags % 7, 18, 17 + lags);
        }
    check(quiet, 100, 1, 600);

    // The sum at lag 20 leaves 32 bits after three products and is back after four.
    Signal signal(24, 0);
    std::fill(signal.begin() + 20, signal.end(), Vsp16s(22000));
    signal[0] = signal[1] = 22000, signal[2] = 5000, signal[3] = -5000;
    check(signal, 4, 5, 20);
}

TEST_P(Correlation, BackFilteringAndConvolutionFollowTheDefinition) {
    const auto check = [&](const Signal& x, const Signal& h) {
        const int len = int(x.size());
        const Guarded<Vsp16s> target(x), impulse(h);
        Guarded<Vsp16s> out(x.size());
        ASSERT_EQ(vspStsNoErr, api.vspsCrossCorr_NormM_16s(target.data(), impulse.data(), len, out.data()));
        ASSERT_EQ(Cor_h_X(x.data(), h.data(), len), out.values()) << len;
        for (const int scaleFactor : {0, 1, 12, 15, 31, 40}) {
            ASSERT_EQ(vspStsNoErr,
                      api.vspsConvPartial_16s_Sfs(target.data(), impulse.data(), out.data(), len, scaleFactor));
            ASSERT_EQ(Convolve(x.data(), h.data(), len, scaleFactor), out.values()) << len << ", " << scaleFactor;
        }
        Guarded<Vsp16s> inPlace(x);
        api.vspsCrossCorr_NormM_16s(inPlace.data(), impulse.data(), len, inPlace.data());
        EXPECT_EQ(Cor_h_X(x.data(), h.data(), len), inPlace.values());
        for (Guarded<Vsp16s>* source : {&inPlace, &out}) {
            std::copy(source == &out ? h.begin() : x.begin(), source == &out ? h.end() : x.end(), source->begin());
            api.vspsConvPartial_16s_Sfs(source == &out ? x.data() : source->data(),
                                        source == &out ? source->data() : h.data(), source->data(), len, 12);
            EXPECT_EQ(Convolve(x.data(), h.data(), len, 12), source->values());
        }
    };
    const auto signals = synthetic(40, 2), others = synthetic(40, 3);
    for (std::size_t i = 0; i < signals.size(); i++) check(signals[i], others[i * 7 % others.size()]);
    for (std::size_t len = 1; len <= 300; len += len < 80 ? 1 : 37)
        for (const int shift : {0, 4}) {
            Signal x = samples(len, 4), h = samples(len, 5);
            for (Vsp16s& s : x) s = Vsp16s(s >> shift);
            for (Vsp16s& s : h) s = Vsp16s(s >> shift);
            check(x, h);
        }
}

TEST_P(Correlation, SynthesisFilterFollowsTheDefinitionAndTellsOfOverflow) {
    std::size_t overflows = 0, calls = 0;
    const auto check = [&](const Signal& a, const Signal& x, const Signal& memory, int scaleFactor) {
        const Guarded<Vsp16s> lpc(a), source(x), guardedMemory(memory);
        Guarded<Vsp16s> out(x.size()), inPlace(x);
        bool overflow = false;
        const Signal expected = Syn_filt(a.data(), x, memory, scaleFactor, overflow);
        for (Guarded<Vsp16s>* dst : {&out, &inPlace}) {
            const Vsp16s* from = dst == &inPlace ? inPlace.data() : source.data();
            ASSERT_EQ(overflow ? vspStsOverflow : vspStsNoErr,
                      api.vspsSynthesisFilter_NR_16s_Sfs(lpc.data(), from, dst->data(), int(x.size()), scaleFactor,
                                                         guardedMemory.data()));
            ASSERT_EQ(expected, dst->values()) << x.size() << " samples, scale factor " << scaleFactor;
        }
        overflows += overflow;
        calls++;
    };
    // Filters of speech, their signals at every level; then loud ones of any length.
    const auto filters = recorded("vspsAdaptiveCodebookGain_G729A_16s", "lpc");
    const auto vectors = recorded("vspsAdaptiveCodebookGain_G729A_16s", "vector");
    for (std::size_t i = 0; i < std::min(filters.size(), vectors.size()); i++)
        for (const int shift : {0, 3}) {
            Signal x = vectors[i];
            for (Vsp16s& s : x) s = Vsp16s(s >> shift);
            check(filters[i], x, Signal(10, Vsp16s(100 - shift)), 12);
        }
    for (std::size_t len = 1; len <= 130; len++)
        for (const int shift : {0, 3, 6, 10}) {
            Signal a = samples(11, unsigned(len)), x = samples(len, 6);
            for (Vsp16s& s : a) s = Vsp16s(s >> shift);
            for (Vsp16s& s : x) s = Vsp16s(s >> shift);
            a[0] = Vsp16s(1 << (len % 15));
            check(a, x, samples(10, 7), int(len % 16));
        }
    // Ordinary filters of any length, of which some outputs and sums just stay within their ranges and some do not.
    for (std::size_t len = 1; len <= 90; len++)
        for (const int shift : {0, 1, 3, 4}) {
            Signal a = samples(11, unsigned(len) + 1000), x = samples(len, unsigned(len)),
                   memory = samples(10, unsigned(len) + 1);
            for (Vsp16s& s : a) s = Vsp16s(s >> (shift < 2 ? 1 : 4));
            for (Vsp16s& s : x) s = Vsp16s(s >> shift);
            for (Vsp16s& s : memory) s = Vsp16s(s >> shift);
            a[0] = 4096;
            check(a, x, memory, 12);
        }
    // Just at the rounding of the largest and the saturation of the smallest result.
    for (const int edge : {32766, 32767, -32767, -32768})
        for (int below = -3; below <= 3; below++) {
            Signal a(11, 0);
            a[0] = 8, a[1] = 1;
            check(a, {sat16(edge)}, Signal{0, 0, 0, 0, 0, 0, 0, 0, 0, Vsp16s(below)}, 3);
        }
    EXPECT_GT(overflows, calls / 10);
    EXPECT_LT(overflows, calls * 9 / 10);
}

}  // namespace vsp::test::g729
