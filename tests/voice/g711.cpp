// G.711 against its tables of decision values.
#include "voice/coder.h"

namespace vsp::test {

namespace {

// The 129 decision values of magnitudes, for 16-bit samples.
std::vector<int> decisionValues(bool aLaw) {
    std::vector<int> values{0};
    if (!aLaw) values.push_back(4);  // the first interval of mu-law is half as wide
    for (int segment = 0; segment < 8; segment++) {
        const int width = aLaw ? 16 << (segment == 0 ? 0 : segment - 1) : 8 << segment;
        while (int(values.size()) < 16 * (segment + 1) + 1) values.push_back(values.back() + width);
    }
    return values;
}

// The octet of interval n, as transmitted.
Vsp8u octet(bool aLaw, int n, bool negative) { return Vsp8u((n | (negative ? 0 : 128)) ^ (aLaw ? 0x55 : 0x7F)); }

}  // namespace

TEST(VoiceG711, EverySampleAndEveryOctet) {
    for (const bool aLaw : {true, false}) {
        const VspvCodec& codec = codecNamed(aLaw ? "pcma" : "pcmu");
        const std::vector<int> decisions = decisionValues(aLaw);
        ASSERT_EQ(aLaw ? 32768 : 8159 * 4, decisions.back());
        Samples source, expectedSamples;
        Octets expected, octets;
        for (int x = -32768; x < 32768; x++) {
            int n = 127;
            while (n > 0 && decisions[std::size_t(n)] > std::abs(x)) n--;
            source.push_back(Vsp16s(x));
            expected.push_back(octet(aLaw, n, x < 0));
        }
        for (int i = 0; i < 160; i++) {  // full frames
            source.push_back(0);
            expected.push_back(octet(aLaw, 0, false));
        }
        const Octets coded = Encoder(codec)(source);
        expected.resize(coded.size());
        ASSERT_GE(coded.size(), 65536u);
        ASSERT_EQ(expected, coded);

        for (std::size_t n = 0; n < 160; n++) {
            const std::size_t interval = n % 128;
            const int middle = !aLaw && interval == 0 ? 0 : (decisions[interval] + decisions[interval + 1]) / 2;
            for (const bool negative : {false, true}) {
                octets.push_back(octet(aLaw, int(interval), negative));
                expectedSamples.push_back(Vsp16s(negative ? -middle : middle));
            }
        }
        ASSERT_EQ(expectedSamples, Decoder(codec)(octets));
    }
}

}  // namespace vsp::test
