// G.722 in frames: the sequence of the ITU-T, recorded calls, changing rates and lost frames.
#include <cstring>

#include "support/test_data.h"
#include "support/vector_case.h"
#include "voice/coder.h"
#include "vspsc.h"

namespace vsp::test {

namespace {

const VspvCodec& g722() { return codecNamed("g722"); }

Samples decodedAt(const Octets& octets, const std::vector<Vsp32s>& bitRates) {
    Decoder decoder(g722());
    Samples all;
    for (std::size_t i = 0; i + 160 <= octets.size(); i += 160) {
        VspvFrame told = goodFrame(g722());
        told.bitRate = bitRates[i / 160 % bitRates.size()];
        const Samples samples = decoder.frame(Octets(&octets[i], &octets[i] + 160), told);
        all.insert(all.end(), samples.begin(), samples.end());
    }
    return all;
}

Samples wholeFrames(Samples samples) {
    samples.resize(samples.size() / 320 * 320);
    return samples;
}

}  // namespace

TEST(VoiceG722, SequenceOfTheItu) {
    const auto words = [](const char* name) {
        const std::string bytes = testData(std::string("g722/official/") + name);
        Samples x(bytes.size() / 2);
        std::memcpy(x.data(), bytes.data(), bytes.size());
        return x;
    };
    const std::string bytes = testData("g722/official/codsp.cod");
    Octets codes(bytes.begin(), bytes.end());
    codes.resize(codes.size() / 160 * 160);
    EXPECT_EQ(codes, Encoder(g722())(words("inpsp.bin")));
    EXPECT_EQ(wholeFrames(words("outsp1.bin")), decodedAt(codes, {64000}));
    EXPECT_EQ(wholeFrames(words("outsp2.bin")), decodedAt(codes, {56000}));
    EXPECT_EQ(wholeFrames(words("outsp3.bin")), decodedAt(codes, {48000}));
}

// The bits that a rate leaves out are 0 and do not count.
TEST(VoiceG722, TheRateMayChangeWithEveryFrame) {
    const std::string bytes = testData("g722/official/inpsp.bin");
    Samples source(320 * 100);
    std::memcpy(source.data(), bytes.data(), 640 * 100);
    const Octets full = Encoder(g722())(source);
    Encoder encoder(g722());
    Octets coded;
    for (std::size_t i = 0; i < 100; i++) {
        ASSERT_EQ(vspStsNoErr, vspvEncoderSetRate(encoder.get(), g722().pBitRates[i % 3]));
        const Octets frame = encoder(Samples(&source[320 * i], &source[320 * i] + 320));
        coded.insert(coded.end(), frame.begin(), frame.end());
    }
    for (std::size_t i = 0; i < full.size(); i++) ASSERT_EQ(full[i] & ~((1 << i / 160 % 3) - 1), coded[i]);
    EXPECT_EQ(decodedAt(full, {64000, 56000, 48000}), decodedAt(coded, {64000, 56000, 48000}));
}

TEST(VoiceG722, LostFramesAreThoseOfTheLibrary) {
    const std::string bytes = testData("g722/official/codsp.cod");
    Octets codes(bytes.begin(), bytes.begin() + 160 * 60), replaced;
    const auto lost = [](std::size_t i) { return i == 0 || (i >= 20 && i < 27) || i == 40; };
    Samples history(4 * 160 + 1, 0xFF);
    history[0] = 0;
    for (std::size_t i = 0; i < 60; i++) {
        Samples frame(&codes[160 * i], &codes[160 * i] + 160);
        vspsConcealCodes_G722_16s_I(frame.data(), 160, lost(i), history.data());
        replaced.insert(replaced.end(), frame.begin(), frame.end());
    }
    Decoder decoder(g722());
    Samples heard;
    for (std::size_t i = 0; i < 60; i++) {
        const Octets frame(&codes[160 * i], &codes[160 * i] + 160);
        const Samples samples = lost(i) ? decoder.lost() : decoder.frame(frame, goodFrame(g722()));
        heard.insert(heard.end(), samples.begin(), samples.end());
    }
    EXPECT_EQ(decodedAt(replaced, {64000}), heard);
}

}  // namespace vsp::test
