// Frames of amr and amrwb as they are stored and sent.
#pragma once

#include <functional>

#include "support/samples.h"
#include "voice/coder.h"

namespace vsp::test {

// One of the two codecs.
struct Rfc4867Codec {
    const char* name;
    std::vector<Vsp32s> rates;
    Vsp32s silenceBits, maxFrameBytes;
    VspStatus (*packStored)(const Vsp8u*, const VspvFrame*, Vsp8u*, Vsp32s*);
    VspStatus (*unpackStored)(const Vsp8u*, Vsp32s, Vsp8u*, VspvFrame*, Vsp32s*);
    VspStatus (*packPayload)(const Vsp8u*, const VspvFrame*, Vsp32s, Vsp32s, Vsp32s, Vsp8u*, Vsp32s*);
    VspStatus (*unpackPayload)(const Vsp8u*, Vsp32s, Vsp32s, Vsp32s, Vsp32s*, Vsp8u*, VspvFrame*, Vsp32s*);

    Vsp32s bits(const VspvFrame& f) const {
        return f.type == vspvFrameSpeech   ? (f.numBytes == 0 ? 0 : f.bitRate / 50)
               : f.type == vspvFrameNoData ? 0
                                           : silenceBits;
    }
};

inline const Rfc4867Codec& amrFrames() {
    static const Rfc4867Codec codec = {"amr",
                                       {4750, 5150, 5900, 6700, 7400, 7950, 10200, 12200},
                                       39,
                                       31,
                                       [](const Vsp8u* bytes, const VspvFrame* frame, Vsp8u* dst, Vsp32s* dstBytes) {
                                           return vspvAMRPackFrame(bytes, frame, vspvAMRStorage, 0, dst, dstBytes);
                                       },
                                       [](const Vsp8u* src, Vsp32s srcBytes, Vsp8u* bytes, VspvFrame* frame, Vsp32s* used) {
                                           return vspvAMRUnpackFrame(src, srcBytes, vspvAMRStorage, bytes, frame, used);
                                       },
                                       vspvAMRPackPayload,
                                       vspvAMRUnpackPayload};
    return codec;
}

inline const Rfc4867Codec& amrwbFrames() {
    static const Rfc4867Codec codec = {"amrwb",
                                       {6600, 8850, 12650, 14250, 15850, 18250, 19850, 23050, 23850},
                                       40,
                                       60,
                                       vspvAMRWBPackFrame,
                                       vspvAMRWBUnpackFrame,
                                       vspvAMRWBPackPayload,
                                       vspvAMRWBUnpackPayload};
    return codec;
}

struct Sent {
    VspvFrame told;
    Octets octets;
};

// Frames of every mode, both silence descriptors, no data and, where it has a type, a lost one, with random bits; the
// unused bits at the end are zero.
inline std::vector<Sent> allKinds(const Rfc4867Codec& codec) {
    std::vector<Sent> all;
    for (const Vsp32s rate : codec.rates)
        for (const Vsp32s quality : {vspvQualityGood, vspvQualityBad}) {
            const Vsp32s bits = rate / 50, bytes = (bits + 7) / 8;
            Octets octets(std::size_t(bytes), 0);
            for (Vsp32s bit = 0; bit < bits; bit++)
                octets[std::size_t(bit / 8)] |= Vsp8u((samples(1, unsigned(bit + rate))[0] & 1) << (7 - bit % 8));
            all.push_back({{vspvFrameSpeech, quality, rate, bytes}, octets});
        }
    const bool wide = codec.silenceBits == 40;
    const Vsp32s highest = codec.rates.back();
    // The mode in force is 7 of amr and 2 of amrwb: lowest bit first there, highest bit first here.
    all.push_back({{vspvFrameSIDFirst, vspvQualityGood, wide ? 12650 : 12200, 5}, {1, 2, 3, 4, Vsp8u(wide ? 0xE2 : 0xEE)}});
    all.push_back({{vspvFrameSIDUpdate, vspvQualityBad, wide ? 19850 : 5900, 5}, {1, 2, 3, 4, Vsp8u(wide ? 0x36 : 0x34)}});
    all.push_back({{vspvFrameNoData, vspvQualityGood, highest, 0}, {}});
    if (wide) all.push_back({{vspvFrameSpeech, vspvQualityLost, highest, 0}, {}});
    return all;
}

inline void expectSame(const VspvFrame& expected, const VspvFrame& f) {
    EXPECT_EQ(expected.type, f.type);
    EXPECT_EQ(expected.quality, f.quality);
    EXPECT_EQ(expected.bitRate, f.bitRate);
    EXPECT_EQ(expected.numBytes, f.numBytes);
}

// What comes out of a form, of exactly the octets that it has; a shorter one is refused and leaves everything as it was.
template <class Unpack>
void expectUnpacked(const Octets& form, Vsp32s maxFrameBytes, const Unpack& unpack, const Sent& expected) {
    for (std::size_t n = 1; n <= form.size(); n++) {
        const Guarded<Vsp8u> source(Octets(form.begin(), form.begin() + std::ptrdiff_t(n)));
        Guarded<Vsp8u> bytes{std::size_t(maxFrameBytes)};
        const Octets untouched = bytes.values();
        VspvFrame frame{-1, -1, -1, -1};
        Vsp32s used = -1;
        const VspStatus status = unpack(source.data(), Vsp32s(n), bytes.data(), &frame, &used);
        if (n < form.size()) {
            EXPECT_EQ(vspStsSizeErr, status);
            EXPECT_EQ(untouched, bytes.values());
            EXPECT_EQ(-1, frame.type);
        } else {
            ASSERT_EQ(vspStsNoErr, status);
            expectSame(expected.told, frame);
            EXPECT_EQ(expected.octets, Octets(bytes.begin(), bytes.begin() + frame.numBytes));
            EXPECT_EQ(Vsp32s(n), used);
        }
    }
}

}  // namespace vsp::test
