// Frames of amr and amrwb stored and in RTP payloads.
#include "support/status_order.h"
#include "voice/sent_frames.h"

namespace vsp::test {

class VoiceRfc4867 : public ::testing::TestWithParam<const Rfc4867Codec*> {
  protected:
    const Rfc4867Codec& codec = *GetParam();
};

TEST_P(VoiceRfc4867, StoredFramesComeBack) {
    for (const Sent& sent : allKinds(codec)) {
        SCOPED_TRACE(sent.told.bitRate);
        Guarded<Vsp8u> stored{std::size_t(codec.maxFrameBytes) + 1};
        Vsp32s bytes = 0;
        ASSERT_EQ(vspStsNoErr, codec.packStored(sent.octets.data(), &sent.told, stored.data(), &bytes));
        EXPECT_EQ(1 + sent.told.numBytes, bytes);
        expectUnpacked(Octets(stored.begin(), stored.begin() + bytes), codec.maxFrameBytes, codec.unpackStored, sent);
    }
}

TEST_P(VoiceRfc4867, PayloadsOfManyFramesComeBackAndCutOffOnesAreRefused) {
    const std::vector<Sent> sent = allKinds(codec);
    Octets octets;
    std::vector<VspvFrame> frames;
    Vsp32s entireBits = 4, alignedBytes = 1;
    for (const Sent& s : sent) {
        octets.insert(octets.end(), s.octets.begin(), s.octets.end());
        frames.push_back(s.told);
        entireBits += 6 + codec.bits(s.told);
        alignedBytes += 1 + s.told.numBytes;
    }
    const Vsp32s number = Vsp32s(frames.size()), asked = codec.rates[5];
    for (const Vsp32s aligned : {0, 1}) {
        Octets payload;
        payload.resize(std::size_t(alignedBytes));
        Vsp32s bytes = 0, request = -1, found = -1;
        ASSERT_EQ(vspStsNoErr,
                  codec.packPayload(octets.data(), frames.data(), number, aligned, asked, payload.data(), &bytes));
        EXPECT_EQ(aligned == 0 ? (entireBits + 7) / 8 : alignedBytes, bytes);
        for (Vsp32s n = 1; n <= bytes; n++) {
            const Guarded<Vsp8u> source(Octets(payload.begin(), payload.begin() + n));
            Guarded<Vsp8u> content(std::size_t(codec.maxFrameBytes * number));
            Guarded<VspvFrame> told{std::size_t(number)};
            const Octets untouched = content.values();
            const VspStatus status =
                codec.unpackPayload(source.data(), n, aligned, number, &request, content.data(), told.data(), &found);
            ASSERT_EQ(n < bytes ? vspStsSizeErr : vspStsNoErr, status) << n;
            if (n < bytes) {
                ASSERT_EQ(untouched, content.values());
                ASSERT_EQ(-1, found);
                continue;
            }
            EXPECT_EQ(asked, request);
            ASSERT_EQ(number, found);
            for (std::size_t i = 0; i < frames.size(); i++) expectSame(frames[i], told[i]);
            EXPECT_EQ(octets, Octets(content.begin(), content.begin() + std::ptrdiff_t(octets.size())));
            EXPECT_EQ(vspStsSizeErr, codec.unpackPayload(source.data(), n, aligned, number - 1, &request, content.data(),
                                                         told.data(), &found));
        }
    }
}

TEST_P(VoiceRfc4867, WhatTheCodecDoesNotHaveIsRefused) {
    Vsp8u dst[128], bytes[60] = {};
    const Vsp32s rate = codec.rates.back(), longest = codec.maxFrameBytes;
    VspvFrame frame{vspvFrameSpeech, vspvQualityGood, rate, longest};
    Vsp32s n = 0, found = 0;
    EXPECT_EQ(vspStsRangeErr, codec.packPayload(bytes, &frame, 1, 0, 1, dst, &n));
    EXPECT_EQ(vspStsSizeErr, codec.packPayload(bytes, &frame, 0, 0, 0, dst, &n));
    for (const auto& [asked, status] : {std::pair(rate, vspStsNullPtrErr), {rate + 1, vspStsRangeErr}}) {
        frame.bitRate = asked;
        EXPECT_EQ(status, codec.packStored(nullptr, &frame, dst, &n));
        EXPECT_EQ(status, codec.packPayload(nullptr, &frame, 1, 0, 0, dst, &n));
    }
    for (const VspvFrame& wrong : {VspvFrame{vspvFrameSpeech, vspvQualityGood, rate, longest - 1},
                                   {vspvFrameSIDUpdate, vspvQualityBad, rate, 6},
                                   {vspvFrameNoData, vspvQualityGood, rate, 1}}) {
        EXPECT_EQ(vspStsSizeErr, codec.packStored(bytes, &wrong, dst, &n));
        EXPECT_EQ(vspStsSizeErr, codec.packPayload(bytes, &wrong, 1, 0, 0, dst, &n));
    }
    const int silence = int(codec.rates.size()), lost = codec.silenceBits == 40 ? 14 : 15;
    for (int type = silence + 1; type < lost; type++) {
        const Vsp8u stored[64] = {Vsp8u(type << 3)}, payload[64] = {0xF0, Vsp8u(type << 3)};
        EXPECT_EQ(vspStsCodeRangeErr, codec.unpackStored(stored, 64, bytes, &frame, &n));
        EXPECT_EQ(vspStsCodeRangeErr, codec.unpackPayload(payload, 64, 1, 1, &n, bytes, &frame, &found));
    }
    for (int mode = silence; mode < 15; mode++) {
        const Vsp8u request[2] = {Vsp8u(mode << 4), 0x7C};
        EXPECT_EQ(vspStsCodeRangeErr, codec.unpackPayload(request, 2, 1, 1, &n, bytes, &frame, &found));
    }
    const std::vector<VspStatus> order{vspStsNullPtrErr, vspStsSizeErr};
    const Choices<Vsp32s> one{1, {{0, vspStsSizeErr}, {kLowest, vspStsSizeErr}}};
    expectStatusOrder(codec.unpackPayload, order, pointer, one, value, one, pointer, pointer, pointer, pointer);
    expectStatusOrder(codec.unpackStored, order, pointer, one, pointer, pointer, pointer);
}

INSTANTIATE_TEST_SUITE_P(, VoiceRfc4867, ::testing::Values(&amrFrames(), &amrwbFrames()),
                         [](const auto& test) { return test.param->name; });

// RFC 4867 4.3.5.1 and 4.4.5.1: a frame of 7.4 kbit/s each; 4.3.5.4: of wide band, 6.6 kbit/s, with a request.
TEST(VoiceRfc4867Payloads, BeginAsTheStandardShows) {
    const Octets ones(19, 0xFF);
    const VspvFrame frame{vspvFrameSpeech, vspvQualityGood, 7400, 19};
    Vsp8u payload[64];
    Vsp32s bytes = 0;
    ASSERT_EQ(vspStsNoErr, vspvAMRPackPayload(ones.data(), &frame, 1, 0, 0, payload, &bytes));
    EXPECT_EQ(20, bytes);
    EXPECT_EQ(0xF2, payload[0]);
    EXPECT_EQ(0x7F, payload[1]);
    EXPECT_EQ(0xFC, payload[19]);  // 158 bits
    ASSERT_EQ(vspStsNoErr, vspvAMRPackPayload(ones.data(), &frame, 1, 1, 5900, payload, &bytes));
    EXPECT_EQ(21, bytes);
    EXPECT_EQ(0x20, payload[0]);
    EXPECT_EQ(0x24, payload[1]);
    EXPECT_EQ(0xF0, payload[20]);  // 148 bits

    const VspvFrame wide{vspvFrameSpeech, vspvQualityGood, 6600, 17};
    ASSERT_EQ(vspStsNoErr, vspvAMRWBPackPayload(ones.data(), &wide, 1, 0, 8850, payload, &bytes));
    EXPECT_EQ(18, bytes);  // 142 bits
    EXPECT_EQ(0x10, payload[0]);
    EXPECT_EQ(0x7F, payload[1]);
    EXPECT_EQ(0xFC, payload[17]);
}

}  // namespace vsp::test
