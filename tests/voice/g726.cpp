// G.726 in frames: recorded calls, sequences of the ITU-T and both orders of bits.
#include <set>

#include "support/test_data.h"
#include "support/vector_case.h"
#include "voice/coder.h"

namespace vsp::test {

namespace {

constexpr Vsp32s kRates[] = {17, 22, 23, 24};

struct Names {
    const char *rfc, *aal2;
};
Names namesOf(Vsp32s rate) {
    switch (rate) {
        case 17: return {"g726-16", "aal2-g726-16"};
        case 22: return {"g726-24", "aal2-g726-24"};
        case 23: return {"g726-32", "aal2-g726-32"};
        default: return {"g726-40", "aal2-g726-40"};
    }
}

int bitsOf(Vsp32s rate) { return rate == 17 ? 2 : rate - 19; }

// Bit by bit: the first code begins at the lowest bit of an octet, or at the highest.
Octets packed(const Octets& codes, int bits, bool highestFirst) {
    Octets octets(codes.size() * std::size_t(bits) / 8);
    for (std::size_t i = 0; i < octets.size() * 8; i++) {
        const auto bit = int(i % std::size_t(bits));
        const int value = codes[i / std::size_t(bits)] >> (highestFirst ? bits - 1 - bit : bit) & 1;
        octets[i / 8] |= Vsp8u(value << (highestFirst ? 7 - i % 8 : i % 8));
    }
    return octets;
}

void expectCoded(Vsp32s rate, const Samples& samples, Octets codes) {
    codes.resize(samples.size() / 160 * 160);
    EXPECT_EQ(packed(codes, bitsOf(rate), false), Encoder(codecNamed(namesOf(rate).rfc))(samples));
    EXPECT_EQ(packed(codes, bitsOf(rate), true), Encoder(codecNamed(namesOf(rate).aal2))(samples));
}

}  // namespace

TEST(VoiceG726, RecordedCalls) {
    int frames = 0;
    for (const auto& items : readItemCases("g726/encode.vec")) {
        const auto rates = items[1].values<Vsp32s>();
        if (std::set(rates.begin(), rates.end()).size() != 1) continue;
        expectCoded(rates[0], items[2].values<Vsp16s>(), items[3].values<Vsp8u>());
        frames++;
    }
    for (const auto& items : readItemCases("g726/decode.vec")) {
        const auto rates = items[1].values<Vsp32s>();
        if (std::set(rates.begin(), rates.end()).size() != 1) continue;
        Octets codes = items[2].values<Vsp8u>();
        Samples expected = items[3].values<Vsp16s>();
        codes.resize(codes.size() / 160 * 160);
        expected.resize(codes.size());
        EXPECT_EQ(expected, Decoder(codecNamed(namesOf(rates[0]).rfc))(packed(codes, bitsOf(rates[0]), false)));
        EXPECT_EQ(expected, Decoder(codecNamed(namesOf(rates[0]).aal2))(packed(codes, bitsOf(rates[0]), true)));
        frames++;
    }
    EXPECT_GE(frames, 8);
}

// The sequences are octets of G.711: decoded by the codec of their law, they give the same codes.
TEST(VoiceG726, SequencesOfTheItu) {
    const auto octets = [](const char* file) {
        const std::string bytes = testData(std::string("g726/official/") + file);
        return Octets(bytes.begin(), bytes.end() - std::ptrdiff_t(bytes.size() % 160));
    };
    for (const Vsp32s rate : kRates)
        for (const bool aLaw : {true, false})
            for (const char* load : {"n", "v"}) {
                const Octets pcm = octets(load[0] == 'n' ? (aLaw ? "nrm.a" : "nrm.m") : (aLaw ? "ovr.a" : "ovr.m"));
                const std::string codes =
                    std::string("r") + load + std::to_string(8 * bitsOf(rate)) + "f" + (aLaw ? "a" : "m") + ".i";
                expectCoded(rate, Decoder(codecNamed(aLaw ? "pcma" : "pcmu"))(pcm), octets(codes.c_str()));
            }
}

}  // namespace vsp::test
