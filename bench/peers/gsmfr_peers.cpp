// One second of audio through the GSM full-rate coders: ours, whose functions leave out the packing of the parameters, and
// libgsm, whose interface includes it.
#include <benchmark/benchmark.h>
#include <gsm.h>

#include "gsmfr/codec.h"
#include "peer_signal.h"

namespace {

constexpr int kRate = 8000, kFrame = 160, kFrames = kRate / kFrame, kParameters = vsp::test::gsmfr::kParameters;

constexpr vsp::Api kLibrary = {
#define VSPSC_EXPORT(family, name) .name = &::name,
#include "core/exports.def"
#undef VSPSC_EXPORT
};

const std::vector<int16_t>& signal() {
    static const std::vector<int16_t> x = speechLike(kRate);
    return x;
}

void encode(benchmark::State& state) {
    vsp::test::gsmfr::Codec coder(kLibrary);
    Vsp16s parameters[kParameters];
    for (auto _ : state)
        for (int i = 0; i < kRate; i += kFrame) {
            coder.encode(signal().data() + i, parameters);
            benchmark::DoNotOptimize(parameters);
        }
}

void decode(benchmark::State& state) {
    vsp::test::gsmfr::Codec coder(kLibrary), decoder(kLibrary);
    static Vsp16s parameters[kFrames][kParameters];
    for (int i = 0; i < kFrames; i++) coder.encode(signal().data() + i * kFrame, parameters[i]);
    Vsp16s samples[kFrame];
    for (auto _ : state)
        for (const auto& frame : parameters) {
            decoder.decode(frame, samples);
            benchmark::DoNotOptimize(samples);
        }
}

void libgsmEncode(benchmark::State& state) {
    const gsm coder = gsm_create();
    gsm_frame octets;
    std::vector<int16_t> x = signal();
    for (auto _ : state)
        for (int i = 0; i < kRate; i += kFrame) {
            gsm_encode(coder, x.data() + i, octets);
            benchmark::DoNotOptimize(octets);
        }
    gsm_destroy(coder);
}

void libgsmDecode(benchmark::State& state) {
    const gsm coder = gsm_create(), decoder = gsm_create();
    static gsm_frame octets[kFrames];
    std::vector<int16_t> x = signal();
    for (int i = 0; i < kFrames; i++) gsm_encode(coder, x.data() + i * kFrame, octets[i]);
    int16_t samples[kFrame];
    for (auto _ : state)
        for (auto& frame : octets) {
            gsm_decode(decoder, frame, samples);
            benchmark::DoNotOptimize(samples);
        }
    gsm_destroy(coder);
    gsm_destroy(decoder);
}

benchmark::internal::Benchmark* const registered[] = {
    benchmark::RegisterBenchmark("gsmfr_encode/library/8000", encode),
    benchmark::RegisterBenchmark("gsmfr_encode/libgsm/8000", libgsmEncode),
    benchmark::RegisterBenchmark("gsmfr_decode/library/8000", decode),
    benchmark::RegisterBenchmark("gsmfr_decode/libgsm/8000", libgsmDecode),
};

}  // namespace
