// The searches that an encoder's time goes into. In the place of a length stands the bit rate's number.
#include "support/bench.h"

namespace {

const std::vector<int> kRates = {9, 13, 16, 20, 21};

// An impulse response that dies away, in Q12 with its usual headroom.
const Vsp16s* impulse() {
    static const std::vector<Vsp16s> samples = [] {
        std::vector<Vsp16s> h(64);
        double x = 2048;
        for (int i = 0; i < 64; i++) {
            h[std::size_t(i)] = Vsp16s(x);
            x *= -0.8;
        }
        return h;
    }();
    return samples.data();
}

// Targets, residuals and vectors one after the other, quiet enough for no sum to saturate.
const Vsp16s* signals() {
    static const std::vector<Vsp16s> samples = [] {
        bench::Buffers noise(500);
        std::vector<Vsp16s> quiet(500);
        for (int i = 0; i < 500; i++) quiet[std::size_t(i)] = Vsp16s(noise.a[i] >> 5);
        return quiet;
    }();
    return samples.data();
}

const bool registered[] = {
    bench::add("vspsAlgebraicCodebookSearch_AMRWB_16s", &vsp::Api::vspsAlgebraicCodebookSearch_AMRWB_16s, kRates,
               [](auto function, bench::Buffers&, int rate) {
                   Vsp16s code[64], y[64], index[8];
                   function(signals(), signals() + 64, impulse(), rate, code, y, index);
                   benchmark::DoNotOptimize(code[0]);
               }),
    bench::add("vspsAdaptiveCodebookSearch_AMRWB_16s", &vsp::Api::vspsAdaptiveCodebookSearch_AMRWB_16s, {13},
               [](auto function, bench::Buffers&, int rate) {
                   Vsp16s delay[2];
                   function(signals(), impulse(), signals() + 300, 60, 0, rate, delay);
                   benchmark::DoNotOptimize(delay[0]);
               }),
};

}  // namespace
