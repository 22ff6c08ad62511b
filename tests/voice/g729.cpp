// G.729 and its annexes: recorded codings of the reference, with erased and damaged frames and with pauses.
#include "support/vector_case.h"
#include "voice/coder.h"

namespace vsp::test {

namespace {

// What happens to a frame between the encoder and the decoder, as the recordings number it.
enum Fate : Vsp8u { kReceived = 0, kErased = 1, kBit20Inverted = 2, kBit1Inverted = 3 };

struct Coding {
    const VspvCodec& codec;
    bool silence;
    Samples pcm;
    std::vector<Vsp32s> rates;  // asked for
    std::vector<Octets> frames;
    bool rateOfErasedKnown;

    VspvFrame told(std::size_t i) const {
        const Vsp32s bytes = Vsp32s(frames[i].size());
        const Vsp32s type = bytes == 0 ? vspvFrameNoData : bytes == 2 ? vspvFrameSIDUpdate : vspvFrameSpeech;
        return {type, vspvQualityGood, rates[i], bytes};
    }

    void expectFrames() const {
        Encoder encoder(codec);
        ASSERT_EQ(vspStsNoErr, vspvEncoderSetDTX(encoder.get(), silence));
        for (std::size_t i = 0; i < frames.size(); i++) {
            ASSERT_EQ(vspStsNoErr, vspvEncoderSetRate(encoder.get(), rates[i]));
            const Octets coded = encoder(Samples(&pcm[80 * i], &pcm[80 * i] + 80));
            ASSERT_EQ(frames[i], coded) << "frame " << i;
        }
    }

    void expectSamples(const Samples& expected, const Octets& fates) const {
        Decoder decoder(codec);
        for (std::size_t i = 0; i < frames.size(); i++) {
            VspvFrame frame = told(i);
            Octets bytes = frames[i];
            const auto invert = [&](std::size_t bit) {
                if (bytes.size() > bit / 8) bytes[bit / 8] ^= Vsp8u(0x80 >> bit % 8);
            };
            const Vsp8u fate = fates.empty() ? Vsp8u(kReceived) : fates[i];
            if (fate == kErased) frame.quality = rateOfErasedKnown ? vspvQualityBad : vspvQualityLost;
            if (fate == kBit20Inverted) invert(20);
            if (fate == kBit1Inverted) invert(1);
            ASSERT_EQ(Samples(&expected[80 * i], &expected[80 * i] + 80), decoder.frame(bytes, frame)) << "frame " << i;
        }
    }
};

void expectCodings(const char* name, const std::string& file, const std::string& pcmFile, bool silence,
                   bool rateOfErasedKnown) {
    const auto pcm = readItemCases("g729/" + pcmFile + ".vec");
    const auto cases = readItemCases("g729/" + file + ".vec");
    ASSERT_FALSE(cases.empty());
    for (std::size_t number = 0; number < cases.size(); number++) {
        SCOPED_TRACE(file + ", case " + std::to_string(number));
        const std::vector<Item>& items = cases[number];
        const auto head = items[0].values<Vsp32s>();
        const bool ratesGiven = head.size() == 2;  // and whether there are pauses
        const std::size_t at = ratesGiven ? 2 : 1;
        const auto bits = items[at].values<Vsp8u>(), packed = items[at + 1].values<Vsp8u>();
        Coding coding{codecNamed(name),
                      ratesGiven ? head[1] != 0 : silence,
                      pcm.at(std::size_t(head[0])).at(0).values<Vsp16s>(),
                      {},
                      {},
                      rateOfErasedKnown};
        auto next = packed.begin();
        for (std::size_t i = 0; i < bits.size(); i++) {
            const std::size_t octets = (bits[i] + 7u) / 8;
            const Vsp32s rates[] = {6400, 8000, 11800};
            coding.rates.push_back(ratesGiven ? rates[items[1].values<Vsp8u>()[i]] : bits[i] == 64 ? 6400 : 8000);
            coding.frames.emplace_back(next, next + std::ptrdiff_t(octets));
            next += std::ptrdiff_t(octets);
        }
        coding.expectFrames();
        coding.expectSamples(items[at + 2].values<Vsp16s>(), {});
        coding.expectSamples(items[at + 4].values<Vsp16s>(), items[at + 3].values<Vsp8u>());
    }
}

}  // namespace

TEST(VoiceG729, RecordedCodings) {
    expectCodings("g729", "codec-main", "codec-pcm", false, false);
    expectCodings("g729", "codec-b", "codec-pcm", true, false);
}

TEST(VoiceG729, RecordedCodingsOfTheFastCoder) {
    expectCodings("g729a", "codec-a", "codec-pcm", false, false);
    expectCodings("g729a", "codec-ba", "codec-pcm", true, false);
}

TEST(VoiceG729, RecordedCodingsAtOtherRates) {
    expectCodings("g729d", "codec-d", "codec-pcm", false, true);
    expectCodings("g729d", "codec-d3", "codec-pcm", false, true);
    expectCodings("g729e", "codec-e", "codec-pcme", false, true);
    expectCodings("g729i", "codec-i", "codec-pcme", false, false);
}

}  // namespace vsp::test
