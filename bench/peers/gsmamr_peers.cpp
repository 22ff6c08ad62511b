// The codec amr and that of opencore-amrnb at each rate.
#include <opencore-amrnb/interf_dec.h>
#include <opencore-amrnb/interf_enc.h>

#include <string>

#include "stored_frames.h"

namespace {

void opencoreEncode(benchmark::State& state, const RateOfCodec& rate, int mode) {
    void* const encoder = Encoder_Interface_init(0);
    uint8_t octets[64];
    for (auto _ : state)
        rate.forEachFrame([&](int16_t* samples) {
            Encoder_Interface_Encode(encoder, Mode(mode), samples, octets, 0);
            benchmark::DoNotOptimize(octets);
        });
    Encoder_Interface_exit(encoder);
}

void opencoreDecode(benchmark::State& state, const RateOfCodec& rate) {
    const std::vector<StoredFrame> frames = rate.coded();
    void* const decoder = Decoder_Interface_init();
    int16_t samples[320];
    for (auto _ : state)
        for (const StoredFrame& frame : frames) {
            Decoder_Interface_Decode(decoder, frame.stored, samples, 0);
            benchmark::DoNotOptimize(samples);
        }
    Decoder_Interface_exit(decoder);
}

const bool registered = [] {
    for (int mode = 0; mode < 8; mode++) {
        const RateOfCodec rate("amr", mode);
        const auto add = [&rate](const std::string& name, const auto& run) {
            benchmark::RegisterBenchmark((name + std::to_string(rate.bitRate())).c_str(), run);
        };
        add("amr_encode/library/", [rate](benchmark::State& state) { rate.encode(state); });
        add("amr_encode/opencore/", [rate, mode](benchmark::State& state) { opencoreEncode(state, rate, mode); });
        add("amr_decode/library/", [rate](benchmark::State& state) { rate.decode(state); });
        add("amr_decode/opencore/", [rate](benchmark::State& state) { opencoreDecode(state, rate); });
    }
    return true;
}();

}  // namespace
