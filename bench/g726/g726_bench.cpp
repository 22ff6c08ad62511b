#include "g726/scalar_g726.h"
#include "support/bench.h"

namespace {

constexpr int kFrame = 160;

// One frame of noise after the other through one coder. Call is called as call(api, buffers, codes, state).
template <class Init, class Call>
void add(const std::string& name, Init init, Vsp32s rate, Call call) {
    for (const bench::Implementation& implementation : bench::implementations()) {
        const vsp::Api& api = *implementation.api;
        if (api.*init == nullptr) continue;
        const std::string full = name + "/" + implementation.name + "/" + std::to_string(kFrame);
        benchmark::RegisterBenchmark(full.c_str(), [=, &api](benchmark::State& run) {
            bench::Buffers buffers(kFrame);
            bench::Aligned<Vsp8u> codes(2 * kFrame);
            for (int i = 0; i < kFrame; i++) codes[i] = Vsp8u(buffers.a[i]);
            alignas(8) Vsp32s state[bench::kScalarG726Words];
            (api.*init)(state, rate);
            for (auto _ : run) {
                call(api, buffers, codes.data(), state);
                benchmark::ClobberMemory();
            }
        });
    }
}

const bool registered = [] {
    const auto encoder = &vsp::Api::vspsEncodeInit_G726_16s8u, decoder = &vsp::Api::vspsDecodeInit_G726_8u16s;
    for (const auto& [rate, kbits] : {std::pair(17, "_16"), {22, "_24"}, {23, "_32"}, {24, "_40"}}) {
        add(std::string("vspsEncode_G726_16s8u") + kbits, encoder, rate,
            [](const vsp::Api& api, bench::Buffers& x, Vsp8u* codes, void* state) {
                api.vspsEncode_G726_16s8u(x.a.data(), codes + kFrame, kFrame, state);
            });
        add(std::string("vspsDecode_G726_8u16s") + kbits, decoder, rate,
            [](const vsp::Api& api, bench::Buffers& x, Vsp8u* codes, void* state) {
                api.vspsDecode_G726_8u16s(codes, x.dst.data(), kFrame, state);
            });
    }
    add("vspsEncodePCM_G726_8u_32", encoder, 23, [](const vsp::Api& api, bench::Buffers&, Vsp8u* codes, void* state) {
        api.vspsEncodePCM_G726_8u(codes, codes + kFrame, kFrame, 0, state);
    });
    add("vspsDecodePCM_G726_8u_32", decoder, 23, [](const vsp::Api& api, bench::Buffers&, Vsp8u* codes, void* state) {
        api.vspsDecodePCM_G726_8u(codes, codes + kFrame, kFrame, 0, state);
    });
    return true;
}();

}  // namespace
