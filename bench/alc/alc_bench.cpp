#include "support/bench.h"

namespace {

// Speech-like: bursts of a quarter of a second.
std::vector<Vsp16s> signal() {
    bench::Buffers noise(16000);
    std::vector<Vsp16s> bursts(16000);
    for (int i = 0; i < 16000; i++) bursts[i] = Vsp16s(noise.a[i] / (i / 2000 % 2 == 1 ? 256 : 1));
    return bursts;
}

const bool registered = bench::add(
    "vspsALC_G169_16s", &vsp::Api::vspsALC_G169_16s, bench::kFrameLengths, [](auto function, bench::Buffers& x, int len) {
        static const std::vector<Vsp16s> input = signal();
        thread_local Vsp32s state[31];
        thread_local int position = -1;
        if (position < 0) vspsALCInit_G169_16s(reinterpret_cast<VspALCState_G169_16s*>(state));
        if (position < 0 || position + len > int(input.size())) position = 0;
        benchmark::DoNotOptimize(
            function(input.data() + position, x.dst.data(), len, reinterpret_cast<VspALCState_G169_16s*>(state)));
        position += len;
    });

}  // namespace
