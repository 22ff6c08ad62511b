// What holds for every codec: records, objects, the checks and their order.
#include <set>

#include "support/samples.h"
#include "support/speech.h"
#include "support/status_order.h"
#include "voice/coder.h"

namespace vsp::test {

TEST(VoiceCodecs, RecordsAreFoundAndConsistent) {
    EXPECT_EQ(nullptr, vspvCodec(-1));
    EXPECT_EQ(nullptr, vspvCodec(vspvCodecCount()));
    for (const char* unknown : {"", "g726", "g726-322", "pcm"}) EXPECT_EQ(nullptr, vspvFindCodec(unknown)) << unknown;
    EXPECT_EQ(&codecNamed("amrwb"), vspvFindCodec("amr-wb"));
    EXPECT_EQ(&codecNamed("g729"), vspvFindCodec("G729"));
    std::set<std::string> names;
    for (const VspvCodec* codec : allCodecs()) {
        SCOPED_TRACE(codec->name);
        EXPECT_TRUE(names.insert(codec->name).second);
        EXPECT_EQ(codec, vspvFindCodec(codec->name));
        for (Vsp32s i = 0; i < codec->numBitRates; i++)
            EXPECT_LE(Vsp64s(codec->pBitRates[i]) * codec->frameSamples, 8LL * codec->maxFrameBytes * codec->samplingRate);
        EXPECT_EQ(codec->numBitRates > 1, (codec->capabilities & vspvCodecRates) != 0);
        EXPECT_EQ(0, 2000 * codec->frameSamples % codec->samplingRate);  // whole halves of milliseconds
    }
}

TEST(VoiceCodecs, AnObjectMayMoveAndStartAgain) {
    const Samples speech = recordedSpeech();
    for (const VspvCodec* codec : allCodecs()) {
        SCOPED_TRACE(codec->name);
        const auto frames = 20 * std::ptrdiff_t(codec->frameSamples),
                   bytes = 20 * std::ptrdiff_t(goodFrame(*codec).numBytes);
        const Samples first(speech.begin(), speech.begin() + frames);
        const Octets coded = Encoder(*codec)(first);
        ASSERT_EQ(bytes, std::ssize(coded));
        const Samples whole = Decoder(*codec)(coded);

        Decoder one(*codec), other(*codec);
        Samples parts = one(Octets(coded.begin(), coded.begin() + bytes / 2));
        other(coded);  // a used object
        std::copy(one.memory().begin(), one.memory().end(), other.memory().begin());
        const Samples rest = other(Octets(coded.begin() + bytes / 2, coded.end()));
        parts.insert(parts.end(), rest.begin(), rest.end());
        EXPECT_EQ(whole, parts);

        other.lost();
        EXPECT_EQ(vspStsNoErr, vspvDecoderInit(other.get(), codec));
        EXPECT_EQ(whole, other(coded));
    }
}

TEST(VoiceCodecs, ChecksComeInOrderAndTouchNothing) {
    const std::vector<VspStatus> order{vspStsNullPtrErr, vspStsBadArgErr};
    VspvCodec copy = *vspvCodec(0);
    const Choices<const VspvCodec*> codecs{vspvCodec(0), {{nullptr, vspStsNullPtrErr}, {&copy, vspStsBadArgErr}}};
    expectStatusOrder(vspvEncoderGetSize, order, codecs, pointer);
    expectStatusOrder(vspvDecoderGetSize, order, codecs, pointer);
    expectStatusOrder(vspvEncoderInit, order, pointer, codecs);
    expectStatusOrder(vspvDecoderInit, order, pointer, codecs);
    const Choices<Vsp32s> bitRate{64000, {{63999, vspStsRangeErr}}};
    expectStatusOrder(vspvSpeechBytes, {vspStsNullPtrErr, vspStsBadArgErr, vspStsRangeErr}, codecs, bitRate, pointer);
    expectStatusOrder(vspvEncode, order, pointer, pointer, pointer, pointer);
    EXPECT_EQ(vspStsNullPtrErr, vspvEncoderSetRate(nullptr, 64000));
    EXPECT_EQ(vspStsNullPtrErr, vspvEncoderSetDTX(nullptr, 0));
    EXPECT_EQ(nullptr, vspvFindCodec(nullptr));

    for (const VspvCodec* codec : allCodecs()) {
        SCOPED_TRACE(codec->name);
        Encoder encoder(*codec);
        Decoder decoder(*codec);
        const Octets bytes = encoder(samples(std::size_t(codec->frameSamples)));
        for (const Vsp32s rate : {0, -1, codec->pBitRates[0] + 1, kLowest})
            EXPECT_EQ(vspStsRangeErr, vspvEncoderSetRate(encoder.get(), rate));
        EXPECT_EQ(vspStsNoErr, vspvEncoderSetDTX(encoder.get(), 0));
        for (const Vsp32s mode : {-1, (codec->capabilities & vspvCodecDTX) != 0 ? 3 : 1, kLowest})
            EXPECT_EQ(vspStsRangeErr, vspvEncoderSetDTX(encoder.get(), mode));

        const VspvFrame good = goodFrame(*codec);
        const std::vector<Vsp64s> before = decoder.memory().values();
        Guarded<Vsp16s> dst{std::size_t(codec->frameSamples)};
        const Samples untouched = dst.values();
        const auto refuses = [&](VspStatus status, const Vsp8u* source, VspvFrame frame) {
            EXPECT_EQ(status, vspvDecode(decoder.get(), source, &frame, dst.data()));
        };
        const auto with = [&](Vsp32s VspvFrame::*field, Vsp32s to, VspvFrame frame) {
            frame.*field = to;
            return frame;
        };
        for (const Vsp32s quality : {-1, 4, kLowest})
            refuses(vspStsRangeErr, bytes.data(), with(&VspvFrame::quality, quality, good));
        for (const Vsp32s quality : {vspvQualityGood, vspvQualityDegraded, vspvQualityBad}) {
            const VspvFrame frame = with(&VspvFrame::quality, quality, good), noRate = with(&VspvFrame::bitRate, 1, frame);
            refuses(vspStsNullPtrErr, nullptr, noRate);
            const bool silence = (codec->capabilities & vspvCodecDTX) != 0;
            for (const Vsp32s type : {-1, 1, 2, 3, 4})
                refuses(
                    silence && type > 0 && (type < 4 || codec->name == std::string("amr")) ? vspStsSizeErr : vspStsRangeErr,
                    bytes.data(), with(&VspvFrame::type, type, frame));
            refuses(vspStsRangeErr, bytes.data(), with(&VspvFrame::numBytes, 0, noRate));
            for (const Vsp32s n : {0, -1, good.numBytes - 1, good.numBytes + 1, kLowest})
                refuses(vspStsSizeErr, bytes.data(), with(&VspvFrame::numBytes, n, frame));
        }
        EXPECT_EQ(vspStsNullPtrErr, vspvDecode(nullptr, bytes.data(), &good, dst.data()));
        EXPECT_EQ(vspStsNullPtrErr, vspvDecode(decoder.get(), bytes.data(), nullptr, dst.data()));
        EXPECT_EQ(vspStsNullPtrErr, vspvDecode(decoder.get(), bytes.data(), &good, nullptr));
        EXPECT_EQ(before, decoder.memory().values());
        EXPECT_EQ(untouched, dst.values());
    }
}

}  // namespace vsp::test
