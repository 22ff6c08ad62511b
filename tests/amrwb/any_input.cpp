// Filters on any input against their definitions, saturation included: the kernels take short cuts where nothing can
// saturate.
#include <algorithm>
#include <functional>
#include <random>

#include "amrwb/pitch_tables.h"
#include "arithmetic/standard_ops.h"
#include "common/definitions.h"
#include "support/guarded.h"
#include "support/level_test.h"
#include "support/samples.h"

namespace vsp::test {

namespace {

// Full scale every fourth time.
std::vector<Vsp16s> scaled(std::size_t n, unsigned seed) {
    auto x = samples(n, seed);
    for (Vsp16s& a : x) a = Vsp16s(a >> (seed % 4 == 0 ? 0 : seed % 13));
    return x;
}

std::vector<Vsp16s> evenlySpread(std::size_t n, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<Vsp16s> x(n);
    for (Vsp16s& a : x) a = Vsp16s(random());
    return x;
}

// Those of 50 Hz, 400 Hz and the weighted speech: feedback behind its format, then inputs.
struct Coefficients {
    Vsp16s a[4], b[4];
};
constexpr Coefficients kHighPass[3] = {{{8192, 16211, -8021}, {4053, -8106, 4053}},
                                       {{16384, 29280, -14160}, {915, -1830, 915}},
                                       {{8192, 21663, -19258, 5734}, {-3432, 10280, -10280, 3432}}};

struct HighPassDefinition {
    Coefficients c;
    int order;
    Vsp32s y[3] = {};
    Vsp16s x[4] = {};

    Vsp16s operator()(Vsp16s input) {
        for (int k = order; k > 0; k--) x[k] = x[k - 1];
        x[0] = input;
        Vsp32s sum = 0x4000;
        for (int k = 0; k < order; k++) sum = mac_32s(sum, Vsp16s(y[k] >> 1 & 0x7FFF), c.a[k + 1]);
        sum >>= 15;
        for (int k = 0; k < order; k++) sum = mac_32s(sum, Vsp16s(y[k] >> 16), c.a[k + 1]);
        for (int k = 0; k <= order; k++) sum = mac_32s(sum, x[k], c.b[k]);
        const int shift = c.a[0] == 8192 ? 2 : 1;
        for (int k = order - 1; k > 0; k--) y[k] = y[k - 1];
        y[0] = shl_32s(sum, shift);
        return round_32s(shl_32s(y[0], shift - 1));
    }
};

// `Syn_filt_32`; y has 28 bits, sixteen earlier outputs first.
void synthesise(const Vsp16s* lpc, const Vsp16s* x, int scale, int len, std::vector<Vsp32s>& y) {
    const int shift = norm_16s(lpc[0]) + 1;
    for (int n = 0; n < len; n++) {
        const Vsp32s* const past = y.data() + y.size();
        Vsp32s sum = 0;
        for (int j = 1; j <= 16; j++) sum = msu_32s(sum, Vsp16s(past[-j] & 0xFFF), lpc[j]);
        sum = mac_32s(sum >> 12, x[n], Vsp16s(lpc[0] >> (4 + scale)));
        for (int j = 1; j <= 16; j++) sum = msu_32s(sum, Vsp16s(past[-j] >> 12), lpc[j]);
        y.push_back(shl_32s(sum, shift) >> 4);
    }
}

}  // namespace

class WideFilters : public LevelTest {};
VSPSC_EVERY_LEVEL(WideFilters);

TEST_P(WideFilters, HighPassFilterIsTheDefinition) {
    for (unsigned seed = 1; seed <= 400; seed++) {
        SCOPED_TRACE(seed);
        Coefficients c = kHighPass[seed % 3];
        const int order = seed % 3 == 2 ? 3 : 2;
        const auto any = evenlySpread(8, seed), full = evenlySpread(200, seed + 1000);
        const bool wild = seed % 5 == 0;  // samples one by one, which may not saturate but on the way
        for (int k = 1; wild && k <= order; k++) c.a[k] = Vsp16s(any[std::size_t(k)] >> (2 + seed / 20 % 4));
        for (int k = 0; wild && k <= order; k++) c.b[k] = any[4 + std::size_t(k)];
        HighPassDefinition definition{c, order};
        Guarded<Vsp32s> state(std::vector<Vsp32s>(10));
        ASSERT_EQ(vspStsNoErr, api.vspsHighPassFilterInit_AMRWB_16s(c.a, c.b, order, state.data()));
        for (unsigned call = 0; call < (wild ? 200u : 4u); call++) {
            auto x = wild ? std::vector{full[call]} : scaled(1 + (seed * 7 + call * 31) % 150, seed + 1000 * call);
            for (std::size_t i = 1; seed % 4 == 1 && i < x.size(); i++) x[i] = Vsp16s((x[i] + 15 * x[i - 1]) / 16);
            for (std::size_t i = 0; seed % 16 == 7 && i < x.size(); i++) x[i] = i / 40 % 2 == 0 ? kMax16 : kMin16;
            Guarded<Vsp16s> signal(x);
            for (Vsp16s& s : x) s = definition(s);
            ASSERT_EQ(vspStsNoErr, api.vspsHighPassFilter_AMRWB_16s_I(signal.data(), int(x.size()), state.data()));
            ASSERT_EQ(x, signal.values());
        }
    }
}

TEST_P(WideFilters, SynthesisInDoublePrecisionIsTheDefinition) {
    for (unsigned seed = 1; seed <= 1200; seed++) {
        SCOPED_TRACE(seed);
        const bool wild = seed % 4 == 0;  // one sample, which may not saturate but on the way
        auto lpc = scaled(17, seed);
        if (seed % 3 != 0) lpc[0] = Vsp16s(4096 >> seed % 4 % 3);
        for (std::size_t j = 1; !wild && seed % 2 == 0 && j <= 16; j++) lpc[j] = Vsp16s(lpc[j] / 8 / int(j));
        const int len = wild ? 1 : 1 + int(seed % 64), scale = int(seed % 9);
        const Guarded<Vsp16s> x(scaled(std::size_t(len), seed + 1000));
        auto memory = samples<Vsp32s>(16, seed);
        for (Vsp32s& m : memory) m = m >> (wild ? 0 : seed % 20);
        std::vector<Vsp32s> y;
        for (const Vsp32s m : memory) y.push_back(m >> 4);
        synthesise(lpc.data(), x.data(), scale, len, y);
        for (Vsp32s& a : y) a *= 16;

        Guarded<Vsp32s> mem(memory), dst(static_cast<std::size_t>(len));
        ASSERT_EQ(vspStsNoErr,
                  api.vspsSynthesisFilter_AMRWB_16s32s(lpc.data(), x.data(), scale, len, mem.data(), dst.data()));
        ASSERT_EQ(std::vector<Vsp32s>(y.begin() + 16, y.end()), dst.values());
        ASSERT_EQ(std::vector<Vsp32s>(y.end() - 16, y.end()), mem.values());
    }
}

// Four filters at a time or one by one.
TEST_P(WideFilters, FiltersOfSubframesAreThoseOfTheirPairs) {
    constexpr int kWeights[3] = {14746, 26214, 31457};
    for (unsigned seed = 1; seed <= 400; seed++) {
        SCOPED_TRACE(seed);
        const auto steep = [seed](unsigned which) {
            auto isp = scaled(16, seed + which);
            if (seed % 2 == 0) std::sort(isp.begin(), isp.end() - 1, std::greater<>());
            for (Vsp16s& x : isp) x = seed % 5 == 0 ? Vsp16s(kMax16 - (x & 0xFFF)) : x;  // large coefficients
            return isp;
        };
        const auto previous = steep(0), isp = steep(1000);
        Guarded<Vsp16s> lpc(68);
        ASSERT_EQ(vspStsNoErr, api.vspsInterpolateISP_AMRWB_16s(previous.data(), isp.data(), lpc.data()));
        for (int k = 0; k < 4; k++) {
            auto between = isp;
            for (std::size_t i = 0; k < 3 && i < 16; i++)
                between[i] = Vsp16s((previous[i] * (32768 - kWeights[k]) + isp[i] * kWeights[k] + 0x4000) >> 15);
            Guarded<Vsp16s> one(17);
            ASSERT_EQ(vspStsNoErr, api.vspsISPToLPC_AMRWB_16s(between.data(), 16, 0, one.data()));
            for (int i = 0; i <= 16; i++) ASSERT_EQ(one.data()[i], lpc.data()[17 * k + i]) << k << ' ' << i;
        }
    }
}

// Of samples that need no saturation on the way: the last output, which the kernel makes apart, and the others.
TEST_P(WideFilters, AdaptiveVectorSaturates) {
    constexpr int kOutputs = 65, kHistory = 400;
    constexpr Vsp16s kLag = 231;  // reads no outputs
    for (Vsp16s fraction = 0; fraction < 4; fraction++)
        for (const int output : {0, 33, 64})
            for (const int amplitude : {kMaxExactExcitation, -kMaxExactExcitation}) {
                Guarded<Vsp16s> excitation(std::vector<Vsp16s>(kHistory + kOutputs));
                const Vsp16s* const taps = inter4_2[fraction];
                Vsp16s* const exc = excitation.data() + kHistory;
                Vsp16s* const read = exc + output - (kLag - kExcitationTaps / 2) - (kExcitationTaps - 1) - (fraction > 0);
                Vsp64s sum = 0;
                for (int i = 0; i < kExcitationTaps; i++) {
                    read[i] = Vsp16s(taps[i] < 0 ? -amplitude : amplitude);
                    sum += Vsp64s(taps[i]) * read[i];
                }
                const Vsp16s delay[2] = {kLag, fraction};
                ASSERT_EQ(vspStsNoErr, api.vspsDecodeAdaptiveVector_AMRWB_16s_I(delay, exc));
                ASSERT_EQ(saturate16((sum + 0x2000) >> 14), exc[output]) << fraction << ' ' << output << ' ' << amplitude;
            }
}

}  // namespace vsp::test
