// GSM full rate in frames of 33 octets: recorded calls, frames of other codecs, substitution and muting.
#include "gsmfr/codec.h"
#include "support/level_test.h"
#include "support/samples.h"
#include "support/speech.h"
#include "support/vector_case.h"
#include "voice/coder.h"

namespace vsp::test {

namespace {

const VspvCodec& gsm() { return codecNamed("gsm"); }

// Bit by bit, with the signature.
Octets packed(const Samples& parameters) {
    std::vector<bool> bits;
    const auto put = [&](int value, int width) {
        for (int i = width - 1; i >= 0; i--) bits.push_back((value >> i & 1) != 0);
    };
    for (std::size_t i = 0; i < parameters.size(); i++) {
        const std::size_t place = i % 76, inSubFrame = (place - 8) % 17;
        if (place == 0) put(0xD, 4);
        const int lar[] = {6, 6, 5, 5, 4, 4, 3, 3}, rest[] = {7, 2, 2, 6};
        put(parameters[i], place < 8 ? lar[place] : inSubFrame < 4 ? rest[inSubFrame] : 3);
    }
    Octets octets(bits.size() / 8);
    for (std::size_t i = 0; i < bits.size(); i++) octets[i / 8] |= Vsp8u(bits[i] << (7 - i % 8));
    return octets;
}

}  // namespace

TEST(VoiceGsm, RecordedCalls) {
    for (const auto& items : readItemCases("gsmfr/codec.vec")) {
        const Octets octets = packed(items[1].values<Vsp16s>());
        EXPECT_EQ(octets, Encoder(gsm())(items[0].values<Vsp16s>()));
        EXPECT_EQ(items[2].values<Vsp16s>(), Decoder(gsm())(octets));
    }
    for (const auto& items : readItemCases("gsmfr/decoder.vec"))
        EXPECT_EQ(items[1].values<Vsp16s>(), Decoder(gsm())(packed(items[0].values<Vsp16s>())));
}

TEST(VoiceGsm, FramesWithoutTheSignatureAreRefused) {
    const Octets coded = Encoder(gsm())(recordedSpeech());
    Decoder decoder(gsm());
    decoder(Octets(coded.begin(), coded.begin() + 33 * 50));
    const std::vector<Vsp64s> before = decoder.memory().values();
    Guarded<Vsp16s> samples(160);
    const Samples untouched = samples.values();
    for (int signature = 0; signature < 16; signature++) {
        Octets frame(coded.begin() + 33 * 50, coded.begin() + 33 * 51);
        frame[0] = Vsp8u(signature << 4 | (frame[0] & 15));
        for (const Vsp32s quality : {vspvQualityGood, vspvQualityDegraded}) {
            VspvFrame told = goodFrame(gsm());
            told.quality = quality;
            if (signature == 0xD) continue;
            EXPECT_EQ(vspStsCodeRangeErr, vspvDecode(decoder.get(), frame.data(), &told, samples.data()));
        }
    }
    EXPECT_EQ(before, decoder.memory().values());
    EXPECT_EQ(untouched, samples.values());
}

// The first lost frame is the last good one, the others are quieter by 4 steps each, with any grids; then silence.
TEST(VoiceGsm, LostFramesAreRepeatedAndMuted) {
    const Samples noise = samples(160 * 22);
    gsmfr::Codec encoder(*apiOf("library")), decoder(*apiOf("library"));
    Decoder heard(gsm());
    Samples parameters(76), expected(160);
    for (std::size_t i = 0; i < 22; i++) {
        encoder.encode(&noise[160 * i], parameters.data());
        decoder.decode(parameters.data(), expected.data());
        ASSERT_EQ(expected, heard.frame(packed(parameters), goodFrame(gsm())));
    }
    int loudest = 0;
    for (std::size_t s = 11; s < 76; s += 17) loudest = std::max<int>(loudest, parameters[s]);
    ASSERT_GT(loudest, 40);
    decoder.decode(parameters.data(), expected.data());
    ASSERT_EQ(expected, heard.lost());
    for (; loudest > 4; loudest -= 4) {
        const Samples lost = heard.lost();
        for (std::size_t s = 11; s < 76; s += 17) parameters[s] = std::max<Vsp16s>(0, Vsp16s(parameters[s] - 4));
        bool found = false;
        for (int grids = 0; grids < 256 && !found; grids++) {
            for (std::size_t s = 0; s < 4; s++) parameters[10 + 17 * s] = Vsp16s(grids >> 2 * s & 3);
            gsmfr::Codec candidate(decoder);
            candidate.decode(parameters.data(), expected.data());
            found = expected == lost;
        }
        ASSERT_TRUE(found) << "at maximum " << loudest;
        decoder.decode(parameters.data(), expected.data());
    }
    const Samples silence{42, 39, 21, 10, 9, 4, 3, 2}, quiet{40, 0, 1, 0, 3, 4, 3, 4, 4, 3, 3, 3, 3, 4, 4, 3, 3};
    parameters = silence;
    for (int s = 0; s < 4; s++) parameters.insert(parameters.end(), quiet.begin(), quiet.end());
    for (int i = 0; i < 10; i++) {
        decoder.decode(parameters.data(), expected.data());
        ASSERT_EQ(expected, heard.lost());
    }
}

}  // namespace vsp::test
