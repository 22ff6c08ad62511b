// The codec amrwb against opencore-amrwb, which decodes our frames to our samples, and vo-amrwbenc, which makes our frames
// at 12.65 to 23.85 kbit/s. At 6.60 and 8.85 kbit/s it limits the pitch gain as older releases of the standard did.
#include <opencore-amrwb/dec_if.h>
#include <vo-amrwbenc/enc_if.h>

#include <cmath>
#include <memory>

#include "support/speech.h"
#include "voice/sent_frames.h"

namespace vsp::test {

namespace {

constexpr std::size_t kFrame = 320;

const VspvCodec& amrwb() { return codecNamed("amrwb"); }

// Speech with its pauses at both rates, tones that fade, silence, noise that swells; a thousand frames.
//
// Of bare tones, digital silence and where sums saturate vo-amrwbenc's frames are not always those of the reference, whose
// recorded ones ours equal: it gets soft noise instead.
Samples signal(bool softer) {
    const Samples narrow = recordedSpeech();
    Samples all(narrow.begin(), narrow.begin() + 60000);
    for (std::size_t i = 60000; i + 1 < narrow.size() && all.size() < 260000; i++) {
        all.push_back(narrow[i]);
        all.push_back(Vsp16s((narrow[i] + narrow[i + 1]) / 2));
    }
    const Samples any = samples(60000);
    if (softer) {
        for (const Vsp16s x : any) all.push_back(Vsp16s(x >> 5));
    } else {
        for (const double hertz : {50.0, 440.0, 2004.0, 5600.0, 7400.0})
            for (int i = 0; i < 4000; i++)
                all.push_back(
                    Vsp16s(std::lround(std::exp(-i / 800.0) * 32000 * std::sin(i * hertz * 6.283185307 / 16000))));
        all.resize(290000);
        for (std::size_t i = 0; i < 30000; i++) all.push_back(Vsp16s(any[i] >> (15 - i / 2000)));
    }
    EXPECT_EQ(1000 * kFrame, all.size());
    return all;
}

class OurEncoder {
  public:
    OurEncoder(Vsp32s rate, Vsp32s dtx) : encoder_(amrwb()) {
        EXPECT_EQ(vspStsNoErr, vspvEncoderSetRate(encoder_.get(), rate));
        EXPECT_EQ(vspStsNoErr, vspvEncoderSetDTX(encoder_.get(), dtx));
    }
    Sent operator()(const Vsp16s* samples) {
        Sent sent{{}, Octets(std::size_t(amrwb().maxFrameBytes))};
        EXPECT_EQ(vspStsNoErr, vspvEncode(encoder_.get(), samples, sent.octets.data(), &sent.told));
        sent.octets.resize(std::size_t(sent.told.numBytes));
        return sent;
    }

  private:
    Encoder encoder_;
};

Octets stored(const Sent& sent) {
    Octets octets(vspvAMRWBMaxStoredBytes);
    Vsp32s bytes = 0;
    EXPECT_EQ(vspStsNoErr, vspvAMRWBPackFrame(sent.octets.data(), &sent.told, octets.data(), &bytes));
    octets.resize(std::size_t(bytes));
    return octets;
}

}  // namespace

TEST(VoicePeersAmrWb, OpencoreDecodesTheSame) {
    const Samples source = signal(false);
    for (const bool dtx : {false, true})
        for (const Vsp32s rate : amrwbFrames().rates) {
            if (dtx && rate != 6600 && rate != 23850) continue;
            SCOPED_TRACE(std::to_string(rate) + (dtx ? " with pauses" : ""));
            OurEncoder encode(rate, dtx);
            Decoder ours(amrwb());
            const std::unique_ptr<void, void (*)(void*)> theirs(D_IF_init(), D_IF_exit);
            int pauses = 0;
            for (std::size_t i = 0; i < source.size() / kFrame; i++) {
                const Sent sent = encode(&source[kFrame * i]);
                Octets octets = stored(sent);
                octets.resize(64);
                Samples heard(kFrame);
                D_IF_decode(theirs.get(), octets.data(), heard.data(), 0);
                ASSERT_EQ(heard, ours.frame(sent.octets, sent.told)) << "frame " << i;
                pauses += sent.told.type != vspvFrameSpeech;
            }
            EXPECT_EQ(dtx, pauses > 50) << pauses;
        }
}

TEST(VoicePeersAmrWb, VoAmrwbencMakesTheSameFrames) {
    const Samples source = signal(true);
    for (int mode = 2; mode < 9; mode++) {
        const Vsp32s rate = amrwbFrames().rates[std::size_t(mode)];
        SCOPED_TRACE(rate);
        OurEncoder encode(rate, 0);
        const std::unique_ptr<void, void (*)(void*)> theirs(E_IF_init(), E_IF_exit);
        for (std::size_t i = 0; i < source.size() / kFrame; i++) {
            Octets octets(64);
            octets.resize(std::size_t(E_IF_encode(theirs.get(), mode, &source[kFrame * i], octets.data(), 0)));
            ASSERT_EQ(octets, stored(encode(&source[kFrame * i]))) << "frame " << i;
        }
    }
}

}  // namespace vsp::test
