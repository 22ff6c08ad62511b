// GSM-AMR: recorded codings of the reference at all rates, with both detectors, and frames that were lost or damaged.
#include "support/vector_case.h"
#include "voice/coder.h"

namespace vsp::test {

namespace {

const VspvCodec& amr() { return codecNamed("amr"); }

// As zlib forms it, of little-endian samples.
Vsp32u crc32(const Samples& samples) {
    Vsp32u crc = ~0u;
    for (const Vsp16s sample : samples)
        for (const int shift : {0, 8}) {
            crc ^= Vsp32u(sample >> shift & 0xFF);
            for (int i = 0; i < 8; i++) crc = crc >> 1 ^ (crc % 2 != 0 ? 0xEDB88320u : 0u);
        }
    return ~crc;
}

struct StoredFrame {
    VspvFrame told;
    Octets octets;
};

// Frames behind each other as RFC 4867 5.3 stores them.
std::vector<StoredFrame> framesOf(const Octets& storage) {
    constexpr Vsp32s kRates[] = {4750, 5150, 5900, 6700, 7400, 7950, 10200, 12200};
    std::vector<StoredFrame> frames;
    for (std::size_t i = 0; i < storage.size();) {
        const int type = storage[i] >> 3 & 15;
        EXPECT_EQ(4, storage[i] & 0x87);
        const Vsp32s bytes = type < 8 ? speechBytes(amr(), kRates[type]) : type == 8 ? 5 : 0;
        const Octets octets(&storage[i] + 1, &storage[i] + 1 + bytes);
        const bool update = type == 8 && (octets[4] & 0x10) != 0;
        const Vsp32s kind = type < 8   ? vspvFrameSpeech
                            : type > 8 ? vspvFrameNoData
                            : update   ? vspvFrameSIDUpdate
                                       : vspvFrameSIDFirst;
        frames.push_back({{kind, vspvQualityGood, kRates[type < 8 ? type : 7], bytes}, octets});
        i += 1 + std::size_t(bytes);
    }
    return frames;
}

// What the reference's numbers of received types mean; 255 for as it was sent.
StoredFrame received(StoredFrame f, Vsp8u type) {
    switch (type) {
        case 255: break;
        case 1: f.told.quality = vspvQualityDegraded; break;
        case 2: f = {{vspvFrameOnset, vspvQualityGood, f.told.bitRate, 0}, {}}; break;
        case 3:
        case 6: f.told.quality = vspvQualityBad; break;
        case 7: f = {{vspvFrameNoData, vspvQualityGood, f.told.bitRate, 0}, {}}; break;
        default: throw std::runtime_error("unexpected type");
    }
    return f;
}

}  // namespace

TEST(VoiceAmr, RecordedCodings) {
    constexpr Vsp32s kRates[] = {4750, 5150, 5900, 6700, 7400, 7950, 10200, 12200};
    const auto pcm = readItemCases("gsmamr/codec-pcm.vec");
    const auto cases = readItemCases("gsmamr/codec.vec");
    ASSERT_FALSE(cases.empty());
    for (std::size_t number = 0; number < cases.size(); number++) {
        SCOPED_TRACE("case " + std::to_string(number));
        const std::vector<Item>& items = cases[number];
        const auto head = items[0].values<Vsp32s>();
        const auto rates = items[1].values<Vsp8u>(), types = items[4].values<Vsp8u>();
        const auto crcs = items[3].values<Vsp32s>(), damagedCrcs = items[5].values<Vsp32s>();
        const auto frames = framesOf(items[2].values<Vsp8u>());
        const Samples samples = pcm.at(std::size_t(head[0])).at(0).values<Vsp16s>();
        ASSERT_EQ(rates.size(), frames.size());

        Encoder encoder(amr());
        Decoder decoder(amr()), damagedDecoder(amr());
        ASSERT_EQ(vspStsNoErr, vspvEncoderSetDTX(encoder.get(), head[2]));
        for (std::size_t i = 0; i < frames.size(); i++) {
            SCOPED_TRACE("frame " + std::to_string(i));
            ASSERT_EQ(vspStsNoErr, vspvEncoderSetRate(encoder.get(), kRates[rates[i]]));
            ASSERT_EQ(frames[i].octets, encoder(Samples(&samples[160 * i], &samples[160 * i] + 160)));
            ASSERT_EQ(Vsp32u(crcs[i]), crc32(decoder.frame(frames[i].octets, frames[i].told)));
            const StoredFrame damaged = received(frames[i], types[i]);
            ASSERT_EQ(Vsp32u(damagedCrcs[i]), crc32(damagedDecoder.frame(damaged.octets, damaged.told)));
        }
    }
}

}  // namespace vsp::test
