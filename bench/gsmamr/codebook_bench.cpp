// The searches that an encoder's time goes into. In the place of a length stands the bit rate's number.
#include "support/bench.h"

namespace {

const std::vector<int> kRates = {0, 1, 3, 6, 7, 8, 11, 12};

// An impulse response that dies away, in Q12.
const Vsp16s* impulse() {
    static const std::vector<Vsp16s> samples = [] {
        std::vector<Vsp16s> h(40);
        double x = 4096;
        for (int i = 0; i < 40; i++) {
            h[std::size_t(i)] = Vsp16s(x);
            x *= -0.85;
        }
        return h;
    }();
    return samples.data();
}

// Targets, residuals and vectors one after the other, quiet enough for no sum to saturate.
const Vsp16s* signals() {
    static const std::vector<Vsp16s> samples = [] {
        bench::Buffers noise(400);
        std::vector<Vsp16s> quiet(400);
        for (int i = 0; i < 400; i++) quiet[std::size_t(i)] = Vsp16s(noise.a[i] >> 5);
        return quiet;
    }();
    return samples.data();
}

const bool registered[] = {
    bench::add("vspsAlgebraicCodebookSearch_GSMAMR_16s", &vsp::Api::vspsAlgebraicCodebookSearch_GSMAMR_16s, kRates,
               [](auto function, bench::Buffers&, int rate) {
                   Vsp16s code[40], y[40], index[10];
                   function(signals(), signals() + 40, impulse(), rate, 0, 60, 8000, code, y, index);
                   benchmark::DoNotOptimize(index[0]);
               }),
    bench::add("vspsAdaptiveCodebookSearch_GSMAMR_16s", &vsp::Api::vspsAdaptiveCodebookSearch_GSMAMR_16s, kRates,
               [](auto function, bench::Buffers&, int rate) {
                   Vsp16s lag = 60, delay[2], index;
                   function(signals(), impulse(), signals() + 200, rate, 0, 60, &lag, delay, &index);
                   benchmark::DoNotOptimize(index);
               }),
    bench::add("vspsGainQuant_GSMAMR_16s", &vsp::Api::vspsGainQuant_GSMAMR_16s, kRates,
               [](auto function, bench::Buffers&, int rate) {
                   const Vsp16s* const x = signals();
                   const Vsp16s coeff[4] = {20000, 2, 18000, 2};
                   Vsp16s pred[8] = {}, mem[30] = {}, gain[2] = {8000, 500}, before[2], index[2];
                   function(x, x + 40, x + 80, x + 120, x + 160, x + 200, x + 240, coeff, rate, 1, 32767, pred, mem, gain,
                            before, index);
                   benchmark::DoNotOptimize(index[0]);
               }),
    bench::add("vspsLSPQuant_GSMAMR_16s", &vsp::Api::vspsLSPQuant_GSMAMR_16s, {0, 7, 8, 12},
               [](auto function, bench::Buffers&, int rate) {
                   static constexpr Vsp16s kLsp[20] = {31000,  27000,  22000,  14000,  7000,   -1000, -8000,
                                                       -15000, -22000, -27000, 31000,  26500,  21500, 14500,
                                                       7500,   -500,   -8500,  -15500, -21000, -26500};
                   Vsp16s residual[10] = {}, lsp[20], index[5];
                   function(kLsp, rate, residual, lsp, index);
                   benchmark::DoNotOptimize(index[0]);
               }),
};

}  // namespace
