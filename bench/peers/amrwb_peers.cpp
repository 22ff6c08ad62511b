// The codec amrwb, the encoder vo-amrwbenc and the decoder opencore-amrwb at each rate.
#include <opencore-amrwb/dec_if.h>
#include <vo-amrwbenc/enc_if.h>

#include <string>

#include "stored_frames.h"

namespace {

void theirsEncode(benchmark::State& state, const RateOfCodec& rate, int mode) {
    void* const encoder = E_IF_init();
    uint8_t octets[64];
    for (auto _ : state)
        rate.forEachFrame([&](const int16_t* samples) {
            E_IF_encode(encoder, mode, samples, octets, 0);
            benchmark::DoNotOptimize(octets);
        });
    E_IF_exit(encoder);
}

void theirsDecode(benchmark::State& state, const RateOfCodec& rate) {
    const std::vector<StoredFrame> frames = rate.coded();
    void* const decoder = D_IF_init();
    int16_t samples[320];
    for (auto _ : state)
        for (const StoredFrame& frame : frames) {
            D_IF_decode(decoder, frame.stored, samples, 0);
            benchmark::DoNotOptimize(samples);
        }
    D_IF_exit(decoder);
}

const bool registered = [] {
    for (int mode = 0; mode < 9; mode++) {
        const RateOfCodec rate("amrwb", mode);
        const auto add = [&rate](const std::string& name, const auto& run) {
            benchmark::RegisterBenchmark((name + std::to_string(rate.bitRate())).c_str(), run);
        };
        add("amrwb_encode/library/", [rate](benchmark::State& state) { rate.encode(state); });
        add("amrwb_encode/vo-amrwbenc/", [rate, mode](benchmark::State& state) { theirsEncode(state, rate, mode); });
        add("amrwb_decode/library/", [rate](benchmark::State& state) { rate.decode(state); });
        add("amrwb_decode/opencore/", [rate](benchmark::State& state) { theirsDecode(state, rate); });
    }
    return true;
}();

}  // namespace
