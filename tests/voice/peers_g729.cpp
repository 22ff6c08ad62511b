// Streams of G.729 Annex A between this codec, bcg729 and FFmpeg's decoder. None of the others follows the reference to the
// last bit: a tenth of the samples are equal, the rest differs by 31 dB less than the speech. So what is heard is compared.
#include "analysis/fidelity.h"
#include "support/speech.h"
#include "voice/coder.h"

extern "C" {
#include <bcg729/decoder.h>
#include <bcg729/encoder.h>
#include <libavcodec/avcodec.h>
}

namespace vsp::test {

namespace {

using Frames = std::vector<Octets>;  // of 10 octets, 2 for a silence descriptor, none in a pause

constexpr std::size_t kFrame = 80;

const Samples& speech() {
    static const Samples samples = [] {
        Samples recorded = recordedSpeech();
        recorded.resize(recorded.size() / kFrame * kFrame);
        return recorded;
    }();
    return samples;
}

template <class Code>
Frames framesOf(Code code) {
    Frames frames;
    for (std::size_t i = 0; i < speech().size(); i += kFrame) frames.push_back(code(&speech()[i]));
    return frames;
}

template <class Decode>
Samples heard(const Frames& frames, Decode decode) {
    Samples all;
    for (const Octets& frame : frames) {
        const Samples samples = decode(frame);
        all.insert(all.end(), samples.begin(), samples.end());
    }
    return all;
}

Frames coded(bool pauses) {
    Encoder encoder(codecNamed("g729a"));
    EXPECT_EQ(vspStsNoErr, vspvEncoderSetDTX(encoder.get(), pauses));
    return framesOf([&](const Vsp16s* samples) { return encoder(Samples(samples, samples + kFrame)); });
}

Samples decoded(const Frames& frames, const char* codec = "g729a") {
    Decoder decoder(codecNamed(codec));
    return heard(frames, [&](const Octets& octets) {
        const Vsp32s bytes = Vsp32s(octets.size());
        const Vsp32s type = bytes == 10 ? vspvFrameSpeech : bytes == 2 ? vspvFrameSIDUpdate : vspvFrameNoData;
        return decoder.frame(octets, {type, vspvQualityGood, 8000, bytes});
    });
}

Frames codedByBcg729(bool pauses) {
    bcg729EncoderChannelContextStruct* const encoder = initBcg729EncoderChannel(pauses);
    Frames frames = framesOf([&](const Vsp16s* samples) {
        Octets octets(10);
        uint8_t count = 0;
        bcg729Encoder(encoder, samples, octets.data(), &count);
        octets.resize(count);
        return octets;
    });
    closeBcg729EncoderChannel(encoder);
    return frames;
}

Samples decodedByBcg729(const Frames& frames) {
    bcg729DecoderChannelContextStruct* const decoder = initBcg729DecoderChannel();
    Samples all = heard(frames, [&](const Octets& octets) {
        const std::size_t bytes = octets.size();
        Samples samples(kFrame);
        bcg729Decoder(decoder, octets.data(), uint8_t(bytes), bytes == 0, bytes == 2, 0, samples.data());
        return samples;
    });
    closeBcg729DecoderChannel(decoder);
    return all;
}

Samples decodedByFfmpeg(const Frames& frames) {
    AVCodecContext* decoder = avcodec_alloc_context3(avcodec_find_decoder(AV_CODEC_ID_G729));
    decoder->sample_rate = 8000;
    decoder->ch_layout = AV_CHANNEL_LAYOUT_MONO;
    EXPECT_EQ(0, avcodec_open2(decoder, nullptr, nullptr));
    AVPacket* packet = av_packet_alloc();
    AVFrame* frame = av_frame_alloc();
    Samples all = heard(frames, [&](const Octets& octets) {
        EXPECT_EQ(0, av_new_packet(packet, int(octets.size())));
        std::copy(octets.begin(), octets.end(), packet->data);
        EXPECT_EQ(0, avcodec_send_packet(decoder, packet));
        EXPECT_EQ(0, avcodec_receive_frame(decoder, frame));
        av_packet_unref(packet);
        const auto* samples = reinterpret_cast<const Vsp16s*>(frame->data[0]);
        return Samples(samples, samples + frame->nb_samples);
    });
    av_frame_free(&frame);
    av_packet_free(&packet);
    avcodec_free_context(&decoder);
    return all;
}

// The same stream decoded twice sounds the same: less than 1 dB between the spectra, as a mean.
void expectAlike(const Samples& own, const Samples& other, const char* name) {
    SCOPED_TRACE(name);
    ASSERT_EQ(own.size(), other.size());
    EXPECT_EQ(0, delayBetween(own, other, 8000));
    FidelityMeter meter(8000);
    for (std::size_t i = 0; i + meter.step() <= own.size(); i += meter.step())
        meter.process({&own[i], meter.step()}, {&other[i], meter.step()});
    EXPECT_LT(meter.spectralDistance(), 1);
    std::size_t equal = 0;
    for (std::size_t i = 0; i < own.size(); i++) equal += own[i] == other[i];
    std::printf("%-40s %5.2f dB between the spectra, segmental SNR %5.1f dB, %4.1f %% of the samples equal\n", name,
                meter.spectralDistance(), meter.segmentalSnr(), 100.0 * double(equal) / double(own.size()));
}

}  // namespace

TEST(VoicePeersG729, OurStreamElsewhere) {
    const Frames frames = coded(false), withPauses = coded(true);
    expectAlike(decoded(frames), decodedByBcg729(frames), "ours, decoded by bcg729");
    expectAlike(decoded(frames, "g729"), decodedByFfmpeg(frames),
                "ours, decoded by FFmpeg");  // with the main body's filter
    expectAlike(decoded(withPauses), decodedByBcg729(withPauses), "ours with pauses, decoded by bcg729");
}

TEST(VoicePeersG729, StreamOfBcg729Here) {
    for (const bool pauses : {false, true}) {
        const Frames frames = codedByBcg729(pauses);
        expectAlike(decodedByBcg729(frames), decoded(frames), pauses ? "bcg729 with pauses, here" : "bcg729, here");
    }
}

}  // namespace vsp::test
