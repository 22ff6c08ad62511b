// GSM-AMR frames in its interface formats and as they are stored and sent.
#include "support/status_order.h"
#include "voice/sent_frames.h"

namespace vsp::test {

TEST(VoiceAmrForms, EveryFrameComesBackFromEveryForm) {
    for (const Vsp32s form : {vspvAMRStorage, vspvAMRIF1, vspvAMRIF2})
        for (Sent sent : allKinds(amrFrames())) {
            SCOPED_TRACE("form " + std::to_string(form) + ", " + std::to_string(sent.told.bitRate));
            Vsp8u octets[vspvAMRMaxFormBytes];
            Vsp32s bytes = 0;
            ASSERT_EQ(vspStsNoErr, vspvAMRPackFrame(sent.octets.data(), &sent.told, form, 4750, octets, &bytes));
            if (form == vspvAMRIF2) sent.told.quality = vspvQualityGood;
            const Vsp32s header = form == vspvAMRStorage ? 8 : form == vspvAMRIF1 ? 19 : 4;
            const Vsp32s bits = amrFrames().bits(sent.told);
            EXPECT_EQ((header + bits + 7) / 8, bytes);
            const auto unpack = [=](const Vsp8u* source, Vsp32s n, Vsp8u* content, VspvFrame* frame, Vsp32s* used) {
                return vspvAMRUnpackFrame(source, n, form, content, frame, used);
            };
            expectUnpacked(Octets(octets, octets + bytes), 31, unpack, sent);
            if (form == vspvAMRIF1 && bits > 0) {  // an error in class A is noticed
                octets[3] ^= 1;
                sent.told.quality = vspvQualityBad;
                Octets spoilt(octets, octets + bytes);
                VspvFrame frame{};
                Vsp8u content[31];
                Vsp32s used = 0;
                ASSERT_EQ(vspStsNoErr, vspvAMRUnpackFrame(octets, bytes, form, content, &frame, &used));
                EXPECT_EQ(vspvQualityBad, frame.quality);
            }
        }
}

TEST(VoiceAmrForms, WhatTheCodecDoesNotHaveIsRefused) {
    Vsp8u dst[64], bytes[31] = {};
    VspvFrame frame{vspvFrameSpeech, vspvQualityGood, 12200, 31};
    Vsp32s n = 0;
    EXPECT_EQ(vspStsRangeErr, vspvAMRPackFrame(bytes, &frame, 3, 0, dst, &n));
    EXPECT_EQ(vspStsRangeErr, vspvAMRPackFrame(bytes, &frame, vspvAMRIF1, 12201, dst, &n));
    frame.numBytes = 30;
    EXPECT_EQ(vspStsSizeErr, vspvAMRPackFrame(bytes, &frame, vspvAMRIF2, 0, dst, &n));
    for (int type = 9; type < 15; type++) {
        const Vsp8u if1[33] = {Vsp8u(type << 4)}, if2[33] = {Vsp8u(type)};
        EXPECT_EQ(vspStsCodeRangeErr, vspvAMRUnpackFrame(if1, 33, vspvAMRIF1, bytes, &frame, &n));
        EXPECT_EQ(vspStsCodeRangeErr, vspvAMRUnpackFrame(if2, 33, vspvAMRIF2, bytes, &frame, &n));
    }
}

}  // namespace vsp::test
