// The searches that an encoder's time goes into. In the place of a length stands the lag.
#include "support/bench.h"

namespace {

const std::vector<int> kLags = {80};

// An impulse response that dies away, in Q13.
const Vsp16s* impulse() {
    static const std::vector<Vsp16s> samples = [] {
        std::vector<Vsp16s> h(60);
        double x = 8192;
        for (int i = 0; i < 60; i++) {
            h[std::size_t(i)] = Vsp16s(x);
            x *= -0.85;
        }
        return h;
    }();
    return samples.data();
}

// A target and the past excitation, quiet enough for no sum to saturate.
const Vsp16s* signals() {
    static const std::vector<Vsp16s> samples = [] {
        bench::Buffers noise(205);
        std::vector<Vsp16s> quiet(205);
        for (int i = 0; i < 205; i++) quiet[std::size_t(i)] = Vsp16s(noise.a[i] >> 5);
        return quiet;
    }();
    return samples.data();
}

// What the search of the gains gets.
const Vsp16s* correlations() {
    static const std::vector<Vsp16s> values = [] {
        std::vector<Vsp16s> corr(80);
        vsp::kApi_y8.vspsAdaptiveCodebookCorr_G723_16s(signals(), impulse(), signals() + 60, 80, 1, corr.data());
        return corr;
    }();
    return values.data();
}

const bool registered[] = {
    bench::add("vspsAdaptiveCodebookCorr_G723_16s", &vsp::Api::vspsAdaptiveCodebookCorr_G723_16s, kLags,
               [](auto function, bench::Buffers&, int lag) {
                   Vsp16s corr[80];
                   function(signals(), impulse(), signals() + 60, Vsp16s(lag), 1, corr);
                   benchmark::DoNotOptimize(corr[0]);
               }),
    bench::add("vspsGainQuant_G723_16s", &vsp::Api::vspsGainQuant_G723_16s, kLags,
               [](auto function, bench::Buffers&, int lag) {
                   Vsp16s offset, index;
                   function(correlations(), Vsp16s(lag), 1, 128, 4, &offset, &index);
                   benchmark::DoNotOptimize(index);
               }),
    bench::add("vspsFixedCodebookSearch_MLQ_G723_16s", &vsp::Api::vspsFixedCodebookSearch_MLQ_G723_16s, kLags,
               [](auto function, bench::Buffers&, int lag) {
                   Vsp16s code[60], index[4];
                   Vsp32s pos;
                   function(signals(), impulse(), Vsp16s(lag), 0, code, &pos, index);
                   benchmark::DoNotOptimize(index[0]);
               }),
    bench::add("vspsFixedCodebookSearch_ACELP_G723_16s", &vsp::Api::vspsFixedCodebookSearch_ACELP_G723_16s, kLags,
               [](auto function, bench::Buffers&, int lag) {
                   Vsp16s extra = 120, code[60], index[4];
                   Vsp32s pos;
                   function(signals(), impulse(), Vsp16s(lag), 40, &extra, code, &pos, index);
                   benchmark::DoNotOptimize(index[0]);
               }),
};

}  // namespace
