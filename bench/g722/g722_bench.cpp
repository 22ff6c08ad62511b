#include "support/bench.h"

namespace {

// Frames of 20 ms; the states go on from call to call. An implementation initialises its state where it first meets it.
template <class Init, class Function, class Call>
bool addCoder(const char* name, Init vsp::Api::*init, Function vsp::Api::*member, int len, Call call) {
    for (const bench::Implementation& implementation : bench::implementations()) {
        const Function function = implementation.api->*member;
        if (function == nullptr) continue;
        const std::string full = std::string(name) + "/" + implementation.name + "/" + std::to_string(len);
        benchmark::RegisterBenchmark(full.c_str(), [=, api = implementation.api](benchmark::State& state) {
            bench::Buffers x(len), out(2 * len);
            Vsp32s memory[36];
            (api->*init)(memory);
            for (auto _ : state) {
                call(function, x.a.data(), out.dst.data(), len, memory);
                benchmark::ClobberMemory();
            }
        });
    }
    return true;
}

template <class Function>
bool addFilter(const char* name, Function vsp::Api::*member) {
    return bench::add(name, member, {320}, [](auto function, bench::Buffers& x, int len) {
        thread_local Vsp16s delay[24] = {};
        function(x.a.data(), x.dst.data(), len, delay);
    });
}

[[maybe_unused]] const bool registered[] = {
    addFilter("vspsQMFAnalysis_G722_16s", &vsp::Api::vspsQMFAnalysis_G722_16s),
    addFilter("vspsQMFSynthesis_G722_16s", &vsp::Api::vspsQMFSynthesis_G722_16s),
    addCoder("vspsSBADPCMEncode_G722_16s", &vsp::Api::vspsSBADPCMEncodeInit_G722_16s, &vsp::Api::vspsSBADPCMEncode_G722_16s,
             320,
             [](auto function, const Vsp16s* src, Vsp16s* dst, int len, void* state) { function(src, dst, len, state); }),
    addCoder(
        "vspsSBADPCMDecode_G722_16s", &vsp::Api::vspsSBADPCMDecodeInit_G722_16s, &vsp::Api::vspsSBADPCMDecode_G722_16s, 160,
        [](auto function, const Vsp16s* src, Vsp16s* dst, int len, void* state) { function(src, dst, len, 1, state); }),
};

}  // namespace
