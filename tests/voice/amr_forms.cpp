// GSM-AMR frames as they are stored and sent.
#include "support/samples.h"
#include "support/status_order.h"
#include "voice/coder.h"

namespace vsp::test {

namespace {

struct Sent {
    VspvFrame told;
    Octets octets;
};

// Frames of every mode, both silence descriptors and no data, with random bits; the unused bits at the end are zero.
std::vector<Sent> allKinds() {
    const VspvCodec& amr = codecNamed("amr");
    std::vector<Sent> all;
    for (Vsp32s i = 0; i < 8; i++)
        for (const Vsp32s quality : {vspvQualityGood, vspvQualityBad}) {
            const Vsp32s rate = amr.pBitRates[i], bytes = speechBytes(amr, rate);
            Octets octets(std::size_t(bytes), 0);
            for (Vsp32s bit = 0; bit < rate / 50; bit++)
                octets[std::size_t(bit / 8)] |= Vsp8u((samples(1, unsigned(bit + 300 * i))[0] & 1) << (7 - bit % 8));
            all.push_back({{vspvFrameSpeech, quality, rate, bytes}, octets});
        }
    all.push_back({{vspvFrameSIDFirst, vspvQualityGood, 12200, 5}, {1, 2, 3, 4, 0x2E & 0xEF}});
    all.push_back({{vspvFrameSIDUpdate, vspvQualityBad, 5900, 5}, {1, 2, 3, 4, 0x34}});
    all.push_back({{vspvFrameNoData, vspvQualityGood, 12200, 0}, {}});
    return all;
}

void expectSame(const VspvFrame& expected, const VspvFrame& f) {
    EXPECT_EQ(expected.type, f.type);
    EXPECT_EQ(expected.quality, f.quality);
    EXPECT_EQ(expected.bitRate, f.bitRate);
    EXPECT_EQ(expected.numBytes, f.numBytes);
}

// What comes out of a form, of exactly the octets that it has; a shorter one is refused and leaves everything as it was.
void expectUnpacked(const Octets& form, Vsp32s kind, const Sent& expected) {
    for (std::size_t n = 1; n <= form.size(); n++) {
        const Guarded<Vsp8u> source(Octets(form.begin(), form.begin() + std::ptrdiff_t(n)));
        Guarded<Vsp8u> bytes(31);
        const Octets untouched = bytes.values();
        VspvFrame frame{-1, -1, -1, -1};
        Vsp32s used = -1;
        const VspStatus status = vspvAMRUnpackFrame(source.data(), Vsp32s(n), kind, bytes.data(), &frame, &used);
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

}  // namespace

TEST(VoiceAmrForms, EveryFrameComesBackFromEveryForm) {
    for (const Vsp32s form : {vspvAMRStorage, vspvAMRIF1, vspvAMRIF2})
        for (Sent sent : allKinds()) {
            SCOPED_TRACE("form " + std::to_string(form) + ", " + std::to_string(sent.told.bitRate));
            Vsp8u octets[vspvAMRMaxFormBytes];
            Vsp32s bytes = 0;
            ASSERT_EQ(vspStsNoErr, vspvAMRPackFrame(sent.octets.data(), &sent.told, form, 4750, octets, &bytes));
            if (form == vspvAMRIF2) sent.told.quality = vspvQualityGood;
            const Vsp32s header = form == vspvAMRStorage ? 8 : form == vspvAMRIF1 ? 19 : 4;
            const Vsp32s bits = sent.told.numBytes == 5 ? 39 : sent.told.numBytes == 0 ? 0 : sent.told.bitRate / 50;
            EXPECT_EQ((header + bits + 7) / 8, bytes);
            expectUnpacked(Octets(octets, octets + bytes), form, sent);
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

// RFC 4867 4.3.5.1 and 4.4.5.1: a frame of 7.4 kbit/s each.
TEST(VoiceAmrForms, PayloadsBeginAsTheStandardShows) {
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
}

TEST(VoiceAmrForms, PayloadsOfManyFramesComeBackAndCutOffOnesAreRefused) {
    const std::vector<Sent> sent = allKinds();
    Octets octets;
    std::vector<VspvFrame> frames;
    for (const Sent& s : sent) {
        octets.insert(octets.end(), s.octets.begin(), s.octets.end());
        frames.push_back(s.told);
    }
    const Vsp32s number = Vsp32s(frames.size());
    for (const Vsp32s aligned : {0, 1}) {
        Octets payload(std::size_t(1 + 32 * number));
        Vsp32s bytes = 0, request = -1, found = -1;
        ASSERT_EQ(vspStsNoErr,
                  vspvAMRPackPayload(octets.data(), frames.data(), number, aligned, 10200, payload.data(), &bytes));
        for (Vsp32s n = 1; n <= bytes; n++) {
            const Guarded<Vsp8u> source(Octets(payload.begin(), payload.begin() + n));
            Guarded<Vsp8u> content(std::size_t(31 * number));
            Guarded<VspvFrame> told{std::size_t(number)};
            const Octets untouched = content.values();
            const VspStatus status =
                vspvAMRUnpackPayload(source.data(), n, aligned, number, &request, content.data(), told.data(), &found);
            ASSERT_EQ(n < bytes ? vspStsSizeErr : vspStsNoErr, status) << n;
            if (n < bytes) {
                ASSERT_EQ(untouched, content.values());
                ASSERT_EQ(-1, found);
                continue;
            }
            EXPECT_EQ(10200, request);
            ASSERT_EQ(number, found);
            for (std::size_t i = 0; i < frames.size(); i++) expectSame(frames[i], told[i]);
            EXPECT_EQ(octets, Octets(content.begin(), content.begin() + std::ptrdiff_t(octets.size())));
            EXPECT_EQ(vspStsSizeErr, vspvAMRUnpackPayload(source.data(), n, aligned, number - 1, &request, content.data(),
                                                          told.data(), &found));
        }
    }
}

TEST(VoiceAmrForms, WhatTheCodecDoesNotHaveIsRefused) {
    Vsp8u dst[64], bytes[31] = {};
    VspvFrame frame{vspvFrameSpeech, vspvQualityGood, 12200, 31};
    Vsp32s n = 0, found = 0;
    EXPECT_EQ(vspStsRangeErr, vspvAMRPackFrame(bytes, &frame, 3, 0, dst, &n));
    EXPECT_EQ(vspStsRangeErr, vspvAMRPackFrame(bytes, &frame, vspvAMRIF1, 12201, dst, &n));
    EXPECT_EQ(vspStsRangeErr, vspvAMRPackPayload(bytes, &frame, 1, 0, 1, dst, &n));
    EXPECT_EQ(vspStsSizeErr, vspvAMRPackPayload(bytes, &frame, 0, 0, 0, dst, &n));
    for (const auto& [rate, status] : {std::pair(12200, vspStsNullPtrErr), {12201, vspStsRangeErr}}) {
        frame.bitRate = rate;
        EXPECT_EQ(status, vspvAMRPackFrame(nullptr, &frame, vspvAMRStorage, 0, dst, &n));
        EXPECT_EQ(status, vspvAMRPackPayload(nullptr, &frame, 1, 0, 0, dst, &n));
    }
    frame.bitRate = 12200;
    frame.numBytes = 30;
    EXPECT_EQ(vspStsSizeErr, vspvAMRPackFrame(bytes, &frame, vspvAMRIF2, 0, dst, &n));
    EXPECT_EQ(vspStsSizeErr, vspvAMRPackPayload(bytes, &frame, 1, 0, 0, dst, &n));
    for (const int type : {9, 10, 11, 12, 13, 14}) {
        const Vsp8u stored[32] = {Vsp8u(type << 3)}, payload[32] = {0xF0, Vsp8u(type << 3)};
        EXPECT_EQ(vspStsCodeRangeErr, vspvAMRUnpackFrame(stored, 32, vspvAMRStorage, bytes, &frame, &n));
        EXPECT_EQ(vspStsCodeRangeErr, vspvAMRUnpackPayload(payload, 32, 1, 1, &n, bytes, &frame, &found));
    }
    const Vsp8u request[2] = {0x80, 0x7C};
    EXPECT_EQ(vspStsCodeRangeErr, vspvAMRUnpackPayload(request, 2, 1, 1, &n, bytes, &frame, &found));
    const std::vector<VspStatus> order{vspStsNullPtrErr, vspStsSizeErr};
    const Choices<Vsp32s> one{1, {{0, vspStsSizeErr}, {kLowest, vspStsSizeErr}}};
    expectStatusOrder(vspvAMRUnpackPayload, order, pointer, one, value, one, pointer, pointer, pointer, pointer);
}

}  // namespace vsp::test
