// One second of audio through the codec amr and through that of opencore-amrnb, frame by frame, at each rate. Both
// encoders get a copy of the samples, since opencore filters them in place.
#include <benchmark/benchmark.h>
#include <opencore-amrnb/interf_dec.h>
#include <opencore-amrnb/interf_enc.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "peer_signal.h"
#include "vspsvoice.h"

namespace {

constexpr int kRate = 8000, kFrame = 160;
constexpr Vsp32s kBitRates[] = {4750, 5150, 5900, 6700, 7400, 7950, 10200, 12200};

const std::vector<int16_t>& signal() {
    static const std::vector<int16_t> x = speechLike(kRate);
    return x;
}

void must(bool good) {
    if (!good) std::abort();
}

// In the form in which files have the frames, which opencore takes; ours begin at the second octet.
struct Frame {
    uint8_t stored[32];
    VspvFrame told;
};

class Encoder {
  public:
    explicit Encoder(int mode) {
        const VspvCodec* const codec = vspvFindCodec("amr");
        Vsp32s bytes = 0;
        must(vspvEncoderGetSize(codec, &bytes) == vspStsNoErr);
        memory_.resize(std::size_t(bytes) / 8);
        vspvEncoderInit(get(), codec);
        must(vspvEncoderSetRate(get(), kBitRates[mode]) == vspStsNoErr);
    }
    void operator()(int at, Frame& frame) {
        int16_t samples[kFrame];
        std::copy_n(signal().data() + at, kFrame, samples);
        vspvEncode(get(), samples, frame.stored + 1, &frame.told);
    }

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

void opencoreEncode(benchmark::State& state, int mode) {
    void* const encoder = Encoder_Interface_init(0);
    uint8_t octets[64];
    for (auto _ : state)
        for (int i = 0; i < kRate; i += kFrame) {
            int16_t samples[kFrame];
            std::copy_n(signal().data() + i, kFrame, samples);
            Encoder_Interface_Encode(encoder, Mode(mode), samples, octets, 0);
            benchmark::DoNotOptimize(octets);
        }
    Encoder_Interface_exit(encoder);
}

void decode(benchmark::State& state, int mode) {
    const std::vector<Frame> frames = coded(mode);
    const VspvCodec* const codec = vspvFindCodec("amr");
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

void opencoreDecode(benchmark::State& state, int mode) {
    const std::vector<Frame> frames = coded(mode);
    void* const decoder = Decoder_Interface_init();
    int16_t samples[kFrame];
    for (auto _ : state)
        for (const Frame& frame : frames) {
            Decoder_Interface_Decode(decoder, frame.stored, samples, 0);
            benchmark::DoNotOptimize(samples);
        }
    Decoder_Interface_exit(decoder);
}

const bool registered = [] {
    for (int mode = 0; mode < 8; mode++) {
        const auto add = [mode](const char* name, void (*run)(benchmark::State&, int)) {
            const std::string full = name + std::to_string(kBitRates[mode]);
            benchmark::RegisterBenchmark(full.c_str(), [=](benchmark::State& state) { run(state, mode); });
        };
        add("amr_encode/library/", encode);
        add("amr_encode/opencore/", opencoreEncode);
        add("amr_decode/library/", decode);
        add("amr_decode/opencore/", opencoreDecode);
    }
    return true;
}();

}  // namespace
