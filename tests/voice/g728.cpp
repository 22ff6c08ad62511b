// G.728 in frames of four vectors: recorded codings of the standard's fixed-point arithmetic, and lost frames.
#include "support/vector_case.h"
#include "voice/coder.h"

namespace vsp::test {

// Ten bits each, the highest first.
static Octets packed(const Samples& indices) {
    Octets octets(indices.size() * 5 / 4);
    for (std::size_t bit = 0; bit < 8 * octets.size(); bit++)
        octets[bit / 8] |= Vsp8u((indices[bit / 10] >> (9 - bit % 10) & 1) << (7 - bit % 8));
    return octets;
}

TEST(VoiceG728, RecordedCodings) {
    const VspvCodec& g728 = codecNamed("g728");
    const std::size_t samples = std::size_t(g728.frameSamples), octets = std::size_t(g728.maxFrameBytes);
    const auto cases = readItemCases("g728/codec.vec");
    ASSERT_FALSE(cases.empty());
    for (const auto& items : cases) {
        const Octets coded = packed(items[1].values<Vsp16s>());
        EXPECT_EQ(coded, Encoder(g728)(items[0].values<Vsp16s>()));
        EXPECT_EQ(items[3].values<Vsp16s>(), Decoder(g728)(coded));
        // A mark is for so many frames.
        const Octets lost = items[4].values<Vsp8u>();
        const auto frames = std::size_t(items[5].values<Vsp32s>()[0]);
        Decoder decoder(g728);
        Samples heard;
        for (std::size_t i = 0; i * octets < coded.size(); i++) {
            const Octets frame(&coded[octets * i], &coded[octets * i] + octets);
            const Samples part = lost.at(i / frames) != 0 ? decoder.lost() : decoder.frame(frame, goodFrame(g728));
            heard.insert(heard.end(), part.begin(), part.end());
        }
        EXPECT_EQ(items[6].values<Vsp16s>(), heard);
        EXPECT_EQ(samples * coded.size() / octets, heard.size());
    }
}

}  // namespace vsp::test
