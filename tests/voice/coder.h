// A codec through the voice layer, on objects of exactly the size that they may have.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "support/guarded.h"
#include "vspsvoice.h"

namespace vsp::test {

using Samples = std::vector<Vsp16s>;
using Octets = std::vector<Vsp8u>;

inline const VspvCodec& codecNamed(const char* name) {
    const VspvCodec* codec = vspvFindCodec(name);
    if (codec == nullptr) throw std::runtime_error(std::string("no codec ") + name);
    return *codec;
}

inline std::vector<const VspvCodec*> allCodecs() {
    std::vector<const VspvCodec*> codecs;
    for (Vsp32s i = 0; i < vspvCodecCount(); i++) codecs.push_back(vspvCodec(i));
    return codecs;
}

// Octets of a frame of speech.
inline Vsp32s speechBytes(const VspvCodec& codec, Vsp32s bitRate) {
    Vsp32s bytes = 0;
    EXPECT_EQ(vspStsNoErr, vspvSpeechBytes(&codec, bitRate, &bytes));
    return bytes;
}

inline VspvFrame goodFrame(const VspvCodec& codec) {
    const Vsp32s bitRate = codec.pBitRates[0];
    return {vspvFrameSpeech, vspvQualityGood, bitRate, speechBytes(codec, bitRate)};
}
inline constexpr VspvFrame kLostFrame{vspvFrameSpeech, vspvQualityLost, 0, 0};

// Of an object, eight bytes each.
inline std::size_t wordsOf(const VspvCodec& codec, VspStatus (*getSize)(const VspvCodec*, Vsp32s*)) {
    Vsp32s bytes = 0;
    EXPECT_EQ(vspStsNoErr, getSize(&codec, &bytes));
    EXPECT_EQ(0, bytes % 8);
    return std::size_t(bytes) / 8;
}

class Encoder {
  public:
    explicit Encoder(const VspvCodec& codec) : codec_(codec), memory_(wordsOf(codec, vspvEncoderGetSize)) {
        EXPECT_EQ(vspStsNoErr, vspvEncoderInit(get(), &codec));
    }
    VspvEncoder* get() { return reinterpret_cast<VspvEncoder*>(memory_.data()); }

    // Whole frames; what is left over is not coded.
    Octets operator()(const Samples& samples) {
        Octets all;
        for (std::size_t i = 0; i + std::size_t(codec_.frameSamples) <= samples.size();
             i += std::size_t(codec_.frameSamples)) {
            const Guarded<Vsp16s> frame(Samples(&samples[i], &samples[i] + codec_.frameSamples));
            Guarded<Vsp8u> bytes{std::size_t(codec_.maxFrameBytes)};
            VspvFrame told{-1, -1, -1, -1};
            EXPECT_EQ(vspStsNoErr, vspvEncode(get(), frame.data(), bytes.data(), &told));
            EXPECT_TRUE(told.type == vspvFrameSpeech || (codec_.capabilities & vspvCodecDTX) != 0);
            EXPECT_EQ(vspvQualityGood, told.quality);
            all.insert(all.end(), bytes.begin(), bytes.begin() + told.numBytes);
        }
        return all;
    }

  private:
    const VspvCodec& codec_;
    Guarded<Vsp64s> memory_;
};

class Decoder {
  public:
    explicit Decoder(const VspvCodec& codec) : codec_(codec), memory_(wordsOf(codec, vspvDecoderGetSize)) {
        EXPECT_EQ(vspStsNoErr, vspvDecoderInit(get(), &codec));
    }
    VspvDecoder* get() { return reinterpret_cast<VspvDecoder*>(memory_.data()); }
    Guarded<Vsp64s>& memory() { return memory_; }

    Samples frame(const Octets& bytes, const VspvFrame& told) {
        const Guarded<Vsp8u> source(bytes);
        Guarded<Vsp16s> samples{std::size_t(codec_.frameSamples)};
        EXPECT_EQ(vspStsNoErr, vspvDecode(get(), source.data(), &told, samples.data()));
        return samples.values();
    }
    Samples lost() {
        Guarded<Vsp16s> samples{std::size_t(codec_.frameSamples)};
        EXPECT_EQ(vspStsNoErr, vspvDecode(get(), nullptr, &kLostFrame, samples.data()));
        return samples.values();
    }

    Samples operator()(const Octets& octets) {
        Samples all;
        const VspvFrame told = goodFrame(codec_);
        for (std::size_t i = 0; i < octets.size(); i += std::size_t(told.numBytes)) {
            const Samples samples = frame(Octets(&octets[i], &octets[i] + told.numBytes), told);
            all.insert(all.end(), samples.begin(), samples.end());
        }
        return all;
    }

  private:
    const VspvCodec& codec_;
    Guarded<Vsp64s> memory_;
};

}  // namespace vsp::test
