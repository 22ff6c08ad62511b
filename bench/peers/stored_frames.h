// One second of audio through amr or amrwb, frame by frame, at one of its rates. The peers take frames as files have them.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "layer_codec.h"
#include "peer_signal.h"

struct StoredFrame {
    std::uint8_t stored[64];  // ours begin at the second octet
    VspvFrame told;
};

class RateOfCodec {
  public:
    RateOfCodec(const char* name, int mode) : name_(name), mode_(mode), codec_(*vspvFindCodec(name)) {}

    Vsp32s bitRate() const { return codec_.pBitRates[codec_.numBitRates - 1 - mode_]; }
    int samplesOfFrame() const { return codec_.frameSamples; }

    // Calls back for each frame with a copy of its samples, which some encoders change.
    template <class Code>
    void forEachFrame(const Code& code) const {
        static const std::vector<std::int16_t> signal = speechLike(codec_.samplingRate);
        std::int16_t samples[320];
        for (int at = 0; at < codec_.samplingRate; at += codec_.frameSamples) {
            std::copy_n(signal.data() + at, codec_.frameSamples, samples);
            code(samples);
        }
    }

    std::vector<StoredFrame> coded() const {
        LayerEncoder encoder = newEncoder();
        std::vector<StoredFrame> frames;
        forEachFrame([&](const std::int16_t* samples) {
            StoredFrame frame{};
            frame.stored[0] = static_cast<std::uint8_t>(mode_ << 3 | 4);
            vspvEncode(encoder.get(), samples, frame.stored + 1, &frame.told);
            frames.push_back(frame);
        });
        return frames;
    }

    void encode(benchmark::State& state) const {
        LayerEncoder encoder = newEncoder();
        StoredFrame frame;
        for (auto _ : state)
            forEachFrame([&](const std::int16_t* samples) {
                vspvEncode(encoder.get(), samples, frame.stored + 1, &frame.told);
                benchmark::DoNotOptimize(frame);
            });
    }

    void decode(benchmark::State& state) const {
        const std::vector<StoredFrame> frames = coded();
        LayerDecoder decoder(name_);
        std::int16_t samples[320];
        for (auto _ : state)
            for (const StoredFrame& frame : frames) {
                vspvDecode(decoder.get(), frame.stored + 1, &frame.told, samples);
                benchmark::DoNotOptimize(samples);
            }
    }

  private:
    LayerEncoder newEncoder() const {
        LayerEncoder encoder(name_);
        require(vspvEncoderSetRate(encoder.get(), bitRate()) == vspStsNoErr);
        return encoder;
    }

    const char* name_;
    int mode_;
    const VspvCodec& codec_;
};
