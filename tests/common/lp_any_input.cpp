// Linear prediction on any input against the definitions, saturation included: the kernels take short cuts where nothing
// can saturate.
#include "common/lp_definitions.h"
#include "common/tables.h"
#include "g729/lp_tables.h"
#include "support/guarded.h"
#include "support/level_test.h"
#include "support/samples.h"

namespace vsp::test {

class LinearPrediction : public LevelTest {
  protected:
    using Signal = std::vector<Vsp16s>;

    // Full scale every fourth time.
    static Signal scaled(std::size_t n, unsigned seed) {
        auto x = samples(n, seed);
        for (Vsp16s& a : x) a = Vsp16s(a >> (seed % 4 == 0 ? 0 : seed % 13));
        return x;
    }
    // Autocorrelations of a windowed signal, or any.
    std::vector<Vsp32s> correlations(int lags, unsigned seed) {
        std::vector<Vsp32s> r(static_cast<std::size_t>(lags));
        Vsp32s norm;
        auto x = scaled(240, seed);
        for (std::size_t i = 1; seed % 3 != 0 && i < x.size(); i++) x[i] = Vsp16s((x[i] + 31 * x[i - 1]) / 32);
        plain::lp::autoCorr(x.data(), 240, r.data(), lags, &norm);
        return seed % 7 == 0 ? samples<Vsp32s>(r.size(), seed) : r;
    }
};
VSPSC_EVERY_LEVEL(LinearPrediction);

TEST_P(LinearPrediction, FiltersAndCorrelationsAreTheDefinitions) {
    for (unsigned seed = 1; seed <= 400; seed++) {
        SCOPED_TRACE(seed);
        const int len = 1 + int(seed % 90), order = seed % 3 == 0 ? 10 : 1 + int(seed % 30), lags = 1 + int(seed) % len;
        const auto at = [](int n) { return static_cast<std::size_t>(n); };
        const Guarded<Vsp16s> src(scaled(at(order + len), seed)), lpc(scaled(at(order + 1), seed + 1000)),
            mem(scaled(at(order), seed + 2000));
        Signal expected(at(len));
        plain::lp::residual(src.data() + order, lpc.data(), order, expected.data(), len);
        Guarded<Vsp16s> dst(at(len));
        ASSERT_EQ(vspStsNoErr, api.vspsResidualFilter_G729E_16s(src.data() + order, lpc.data(), dst.data(), len, order));
        ASSERT_EQ(expected, dst.values());

        const bool overflow = plain::lp::synthesis(lpc.data(), src.data(), expected.data(), len, order, mem.data());
        ASSERT_EQ(overflow ? vspStsOverflow : vspStsNoErr,
                  api.vspsSynthesisFilter_G729E_16s(lpc.data(), src.data(), dst.data(), len, order, mem.data()));
        ASSERT_EQ(expected, dst.values());

        std::vector<Vsp32s> r(at(lags));
        Vsp32s norm, expectedNorm;
        const bool divided = plain::lp::autoCorr(src.data(), len, r.data(), lags, &expectedNorm);
        Guarded<Vsp32s> correlation(at(lags));
        ASSERT_EQ(divided ? vspStsOverflow : vspStsNoErr,
                  api.vspsAutoCorr_NormE_16s32s(src.data(), len, correlation.data(), lags, &norm));
        ASSERT_EQ(r, correlation.values());
        ASSERT_EQ(expectedNorm, norm);
    }
}

// Coefficients b0 b1 b2 a0 a1 a2 and what the filter keeps: outputs in double precision and inputs, the newest first.
struct HighPassDefinition {
    Vsp16s c[6], y1Hi = 0, y1Lo = 0, y2Hi = 0, y2Lo = 0, x1 = 0, x2 = 0;

    Vsp16s operator()(Vsp16s x, int scaleFactor) {
        const auto fed = [](Vsp16s hi, Vsp16s lo, Vsp16s a) { return mac_32s(Mul2_32s(hi * a), Mul_16s(lo, a), 1); };
        Vsp32s y = Add_32s(fed(y1Hi, y1Lo, c[4]), fed(y2Hi, y2Lo, c[5]));
        y = mac_32s(mac_32s(mac_32s(y, x, c[0]), x1, c[1]), x2, c[2]);
        y = shl_32s(y, 15 - scaleFactor);
        y2Hi = y1Hi;
        y2Lo = y1Lo;
        y1Hi = Vsp16s(y >> 16);
        y1Lo = Vsp16s(y >> 1 & 0x7FFF);
        x2 = x1;
        x1 = x;
        return round_32s(scaleFactor == 13 ? shl_32s(y, 1) : y);
    }
};

TEST_P(LinearPrediction, HighPassFilterIsTheDefinition) {
    constexpr Vsp16s kFilters[3][6] = {{1899, -3798, 1899, 4096, 7807, -3733},    // of the encoders, Q12
                                       {7699, -15398, 7699, 8192, 15836, -7667},  // of the decoders, Q13
                                       {2000, 2000, 2000, 8192, 15900, -7800}};   // loud at low frequencies
    for (unsigned seed = 1; seed <= 600; seed++) {
        SCOPED_TRACE(seed);
        const int scaleFactor = seed % 2 == 0 ? 12 : 13;
        HighPassDefinition definition{};
        const auto any = scaled(6, seed);
        for (std::size_t i = 0; i < 6; i++) definition.c[i] = seed % 5 == 0 ? any[i] : kFilters[(seed / 2) % 3][i];
        Guarded<Vsp16s> state(std::vector<Vsp16s>(12));
        ASSERT_EQ(vspStsNoErr, api.vspsHighPassFilterInit_G729(definition.c, state.data()));
        for (unsigned call = 0; call < 4; call++) {
            auto x = scaled(1 + (seed * 7 + call * 31) % 180, seed + 1000 * call);
            for (std::size_t i = 1; seed % 4 == 1 && i < x.size(); i++) x[i] = Vsp16s((x[i] + 15 * x[i - 1]) / 16);
            Guarded<Vsp16s> signal(x);
            for (Vsp16s& s : x) s = definition(s, scaleFactor);
            ASSERT_EQ(vspStsNoErr,
                      api.vspsHighPassFilter_G729_16s_ISfs(signal.data(), int(x.size()), scaleFactor, state.data()));
            ASSERT_EQ(x, signal.values());
        }
    }
}

TEST_P(LinearPrediction, RecursionsAreTheDefinition) {
    for (unsigned seed = 1; seed <= 400; seed++) {
        SCOPED_TRACE(seed);
        const Signal lsp = scaled(10, seed);
        Signal filter(11), expectedFilter(11);
        plain::lp::lspToLpc(lsp.data(), expectedFilter.data());
        ASSERT_EQ(vspStsNoErr, api.vspsLSPToLPC_G729_16s(lsp.data(), filter.data()));
        ASSERT_EQ(expectedFilter, filter);

        const int order = seed % 2 == 0 ? 10 : 30;
        const auto r = correlations(order + 1, seed);
        std::vector<Vsp32s> a, k;
        Vsp16s err, expectedErr, lpc[31], rc[30], mem[33];
        const bool stable = plain::lp::levinson(r.data(), order, order == 30, a, k, expectedErr);
        const auto function = order == 10 ? api.vspsLevinsonDurbin_G729_32s16s : api.vspsLevinsonDurbin_G729E_32s16s;
        ASSERT_EQ(stable ? vspStsNoErr : vspStsOverflow, function(r.data(), lpc, rc, &err, mem));
        if (!stable) continue;
        ASSERT_EQ(expectedErr, err);
        for (int i = 1; i <= order; i++) {
            ASSERT_EQ(round_32s(Mul2_32s(a[std::size_t(i)])), lpc[i]);
            ASSERT_EQ(k[std::size_t(i - 1)] >> 16, rc[i - 1]);
        }
    }
}

TEST_P(LinearPrediction, RootSearchesAreTheDefinition) {
    int complete = 0;
    for (unsigned seed = 1; seed <= 600; seed++) {
        SCOPED_TRACE(seed);
        Signal lpc = scaled(11, seed);
        std::vector<Vsp32s> a, k;
        Vsp16s err;
        if (seed % 3 != 0 && plain::lp::levinson(correlations(11, seed).data(), 10, false, a, k, err))
            for (std::size_t i = 1; i <= 10; i++) lpc[i] = round_32s(Mul2_32s(a[i]));
        const Signal previous = samples(10, seed);
        const auto compare = [&](auto function, const Vsp16s* grid, plain::lp::RootSearch search) {
            Signal expected(10), lsp(10);
            if (!plain::lp::lpcToLsp(lpc.data(), grid, search, expected.data()))
                expected = previous;
            else
                complete++;
            ASSERT_EQ(vspStsNoErr, function(lpc.data(), previous.data(), lsp.data()));
            ASSERT_EQ(expected, lsp);
        };
        compare(api.vspsLPCToLSP_G729_16s, lspGrid, {61, 4, false});
        compare(api.vspsLPCToLSP_G729A_16s, gridAnnexA, {51, 2, false});
        compare(api.vspsLPCToLSP_GSMAMR_16s, lspGrid, {61, 4, true});
    }
    EXPECT_GT(complete, 300);
}

}  // namespace vsp::test
