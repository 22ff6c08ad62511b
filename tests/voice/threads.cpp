// Encoders and decoders of their own on threads, at the same time.
#include <thread>

#include "support/samples.h"
#include "support/speech.h"
#include "voice/coder.h"

namespace vsp::test {

namespace {

// What one call does with a codec: frames there and back at changing rates, some of which are lost.
Samples call(const VspvCodec& codec, const Samples& speech, std::size_t seed) {
    const auto length = std::size_t(codec.frameSamples);
    Encoder encoder(codec);
    Decoder decoder(codec);
    Samples heard;
    for (std::size_t i = 0, at = 16 * seed; at + length <= speech.size(); i++, at += length) {
        const Vsp32s rate = codec.pBitRates[(i / 10 + seed) % std::size_t(codec.numBitRates)];
        EXPECT_EQ(vspStsNoErr, vspvEncoderSetRate(encoder.get(), rate));
        Octets bytes(std::size_t(codec.maxFrameBytes));
        VspvFrame told{};
        EXPECT_EQ(vspStsNoErr, vspvEncode(encoder.get(), &speech[at], bytes.data(), &told));
        const Samples frame = (i + seed) % 7 == 0 ? decoder.lost() : decoder.frame(bytes, told);
        heard.insert(heard.end(), frame.begin(), frame.end());
    }
    return heard;
}

}  // namespace

TEST(VoiceThreads, DoNotDisturbEachOther) {
    constexpr std::size_t kCalls = 3;
    Samples speech = recordedSpeech();
    speech.resize(32000);
    const auto codecs = allCodecs();
    std::vector<Samples> heard(codecs.size() * kCalls);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < heard.size(); i++)
        threads.emplace_back([&, i] { heard[i] = call(*codecs[i / kCalls], speech, i % kCalls); });
    for (std::thread& thread : threads) thread.join();
    for (std::size_t i = 0; i < heard.size(); i++) {
        EXPECT_TRUE(call(*codecs[i / kCalls], speech, i % kCalls) == heard[i]) << codecs[i / kCalls]->name;
        if (i % kCalls != 0) {
            EXPECT_FALSE(heard[i] == heard[i - 1]);
        }
    }
}

}  // namespace vsp::test
