// One second of audio through the codec amrwb, through the encoder vo-amrwbenc and the decoder opencore-amrwb, frame by
// frame, at each rate.
#include <benchmark/benchmark.h>
#include <opencore-amrwb/dec_if.h>
#include <vo-amrwbenc/enc_if.h>

#include <cstdlib>
#include <string>

#include "peer_signal.h"
#include "vspsvoice.h"

namespace {

constexpr int kRate = 16000, kFrame = 320;
constexpr Vsp32s kBitRates[] = {6600, 8850, 12650, 14250, 15850, 18250, 19850, 23050, 23850};

const std::vector<int16_t>& signal() {
    static const std::vector<int16_t> x = speechLike(kRate);
    return x;
}

void must(bool good) {
    if (!good) std::abort();
}

// In the form in which files have the frames, which the others take and make; ours begin at the second octet.
struct Frame {
    uint8_t stored[64];
    VspvFrame told;
};

class Encoder {
  public:
    explicit Encoder(int mode) {
        const VspvCodec* const codec = vspvFindCodec("amrwb");
        Vsp32s bytes = 0;
        must(vspvEncoderGetSize(codec, &bytes) == vspStsNoErr);
        memory_.resize(std::size_t(bytes) / 8);
        vspvEncoderInit(get(), codec);
        must(vspvEncoderSetRate(get(), kBitRates[mode]) == vspStsNoErr);
    }
    void operator()(int at, Frame& frame) { vspvEncode(get(), signal().data() + at, frame.stored + 1, &frame.told); }

  private:
    VspvEncoder* get() { return reinterpret_cast<VspvEncoder*>(memory_.data()); }
    std::vector<Vsp64s> memory_;
};

std::vector<Frame> coded(int mode) {
    Encoder encoder(mode);
    std::vector<Frame> frames(kRate / kFrame);
    for (std::size_t i = 0; i < frames.size(); i++) {
        encoder(int(i) * kFrame, frames[i]);
        frames[i].stored[0] = static_cast<uint8_t>(mode << 3 | 4);
    }
    return frames;
}

void encode(benchmark::State& state, int mode) {
    Encoder encoder(mode);
    Frame frame;
    for (auto _ : state)
        for (int i = 0; i < kRate; i += kFrame) {
            encoder(i, frame);
            benchmark::DoNotOptimize(frame);
        }
}

void theirsEncode(benchmark::State& state, int mode) {
    void* const encoder = E_IF_init();
    uint8_t octets[64];
    for (auto _ : state)
        for (int i = 0; i < kRate; i += kFrame) {
            E_IF_encode(encoder, mode, signal().data() + i, octets, 0);
            benchmark::DoNotOptimize(octets);
        }
    E_IF_exit(encoder);
}

void decode(benchmark::State& state, int mode) {
    const std::vector<Frame> frames = coded(mode);
    const VspvCodec* const codec = vspvFindCodec("amrwb");
    Vsp32s bytes = 0;
    must(vspvDecoderGetSize(codec, &bytes) == vspStsNoErr);
    std::vector<Vsp64s> memory(std::size_t(bytes) / 8);
    const auto decoder = reinterpret_cast<VspvDecoder*>(memory.data());
    vspvDecoderInit(decoder, codec);
    int16_t samples[kFrame];
    for (auto _ : state)
        for (const Frame& frame : frames) {
            vspvDecode(decoder, frame.stored + 1, &frame.told, samples);
            benchmark::DoNotOptimize(samples);
        }
}

void theirsDecode(benchmark::State& state, int mode) {
    const std::vector<Frame> frames = coded(mode);
    void* const decoder = D_IF_init();
    int16_t samples[kFrame];
    for (auto _ : state)
        for (const Frame& frame : frames) {
            D_IF_decode(decoder, frame.stored, samples, 0);
            benchmark::DoNotOptimize(samples);
        }
    D_IF_exit(decoder);
}

const bool registered = [] {
    for (int mode = 0; mode < 9; mode++) {
        const auto add = [mode](const char* name, void (*run)(benchmark::State&, int)) {
            const std::string full = name + std::to_string(kBitRates[mode]);
            benchmark::RegisterBenchmark(full.c_str(), [=](benchmark::State& state) { run(state, mode); });
        };
        add("amrwb_encode/library/", encode);
        add("amrwb_encode/vo-amrwbenc/", theirsEncode);
        add("amrwb_decode/library/", decode);
        add("amrwb_decode/opencore/", theirsDecode);
    }
    return true;
}();

}  // namespace
