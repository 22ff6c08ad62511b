// AMR-WB: recorded codings of the reference at all rates, with and without discontinuous transmission, and decodings of
// frames that were lost or damaged.
#include "support/vector_case.h"
#include "voice/sent_frames.h"

namespace vsp::test {

namespace {

constexpr std::size_t kFrame = 320;

const VspvCodec& amrwb() { return codecNamed("amrwb"); }

// Frames of a file.
std::vector<Sent> framesOf(const Octets& file) {
    const std::string magic = "#!AMR-WB\n";
    EXPECT_EQ(magic, std::string(file.begin(), file.begin() + std::ptrdiff_t(magic.size())));
    std::vector<Sent> frames;
    for (std::size_t at = magic.size(); at < file.size();) {
        Octets bytes(60);
        VspvFrame told{};
        Vsp32s used = 0;
        EXPECT_EQ(vspStsNoErr, vspvAMRWBUnpackFrame(&file[at], Vsp32s(file.size() - at), bytes.data(), &told, &used));
        bytes.resize(std::size_t(told.numBytes));
        frames.push_back({told, bytes});
        at += std::size_t(used);
    }
    return frames;
}

// What the reference's numbers of received types mean.
Sent received(Sent f, Vsp8u type) {
    switch (type) {
        case 1: f.told.quality = vspvQualityDegraded; break;
        case 2: f.told.quality = vspvQualityLost; break;
        case 3:
        case 6: f.told.quality = vspvQualityBad; break;
        case 7: f = {{vspvFrameNoData, vspvQualityGood, f.told.bitRate, 0}, {}}; break;
        default: break;
    }
    return f;
}

}  // namespace

TEST(VoiceAmrWb, RecordedCodings) {
    const auto pcm = readItemCases("amrwb/codec-pcm.vec");
    const auto cases = readItemCases("amrwb/codec.vec");
    ASSERT_FALSE(cases.empty());
    for (std::size_t number = 0; number < cases.size(); number++) {
        SCOPED_TRACE("case " + std::to_string(number));
        const std::vector<Item>& items = cases[number];
        const Samples samples = pcm.at(std::size_t(items[0].values<Vsp32s>()[0])).at(0).values<Vsp16s>();
        const auto modes = items[1].values<Vsp8u>(), types = items[4].values<Vsp8u>();
        const std::vector<Sent> frames = framesOf(items[3].values<Vsp8u>());
        const auto heard = items[5].values<Vsp16s>();
        ASSERT_EQ(types.size(), frames.size());

        Encoder encoder(amrwb());
        Decoder decoder(amrwb());
        ASSERT_EQ(vspStsNoErr, vspvEncoderSetDTX(encoder.get(), items[2].values<Vsp32s>()[0]));
        for (std::size_t i = 0; i < frames.size(); i++) {
            SCOPED_TRACE("frame " + std::to_string(i));
            ASSERT_EQ(vspStsNoErr, vspvEncoderSetRate(encoder.get(), amrwbFrames().rates[modes[i % modes.size()]]));
            ASSERT_EQ(frames[i].octets, encoder(Samples(&samples[kFrame * i], &samples[kFrame * i] + kFrame)));
        }
        for (std::size_t i = 0; i < frames.size(); i++) {
            SCOPED_TRACE("decoded frame " + std::to_string(i) + " as " + std::to_string(types[i]));
            const Sent got = received(frames[i], types[i]);
            ASSERT_EQ(Samples(&heard[kFrame * i], &heard[kFrame * i] + kFrame), decoder.frame(got.octets, got.told));
        }
    }
}

// 3GPP TS 26.173: frames that reset both sides, and what a decoder at home answers with.
TEST(VoiceAmrWb, HomingFrames) {
    const Samples homing(kFrame, 8), speech = samples(kFrame);
    for (const Vsp32s rate : amrwbFrames().rates) {
        SCOPED_TRACE(rate);
        Encoder encoder(amrwb());
        Decoder decoder(amrwb());
        const VspvFrame told{vspvFrameSpeech, vspvQualityGood, rate, speechBytes(amrwb(), rate)};
        ASSERT_EQ(vspStsNoErr, vspvEncoderSetRate(encoder.get(), rate));
        const Octets fromStart = encoder(speech);
        encoder(homing);
        EXPECT_EQ(fromStart, encoder(speech));
        encoder(homing);
        const Octets reset = encoder(homing);
        const Samples afterStart = decoder.frame(fromStart, told);
        decoder.frame(fromStart, told);
        EXPECT_NE(homing, decoder.frame(reset, told));
        EXPECT_EQ(homing, decoder.frame(reset, told));
        EXPECT_EQ(afterStart, decoder.frame(fromStart, told));
    }
}

}  // namespace vsp::test
