// Streams of G.723.1 between this codec and FFmpeg's, whose decoder follows the reference to the last bit. Its encoder,
// which has 6.3 kbit/s only, chooses other codes.
#include "support/speech.h"
#include "voice/coder.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace vsp::test {

namespace {

using Frames = std::vector<Octets>;

constexpr std::size_t kFrame = 240;

const Samples& speech() {
    static const Samples samples = [] {
        Samples recorded = recordedSpeech();
        recorded.resize(recorded.size() / kFrame * kFrame);
        return recorded;
    }();
    return samples;
}

// The rate changes every so many frames, or not at all for 0.
Frames coded(Vsp32s bitRate, std::size_t changesAfter) {
    Encoder encoder(codecNamed("g723"));
    Frames frames;
    for (std::size_t i = 0; i < speech().size() / kFrame; i++) {
        const bool other = changesAfter > 0 && i / changesAfter % 2 != 0;
        EXPECT_EQ(vspStsNoErr, vspvEncoderSetRate(encoder.get(), other ? 11600 - bitRate : bitRate));
        frames.push_back(encoder(Samples(&speech()[kFrame * i], &speech()[kFrame * i] + kFrame)));
    }
    return frames;
}

Samples decoded(const Frames& frames) {
    Decoder decoder(codecNamed("g723"));
    Samples all;
    for (const Octets& octets : frames) {
        VspvFrame told{};
        EXPECT_EQ(vspStsNoErr, vspvG723Frame(octets.at(0), &told));
        const Samples samples = decoder.frame(octets, told);
        all.insert(all.end(), samples.begin(), samples.end());
    }
    return all;
}

AVCodecContext* opened(const AVCodec* codec) {
    AVCodecContext* context = avcodec_alloc_context3(codec);
    context->sample_rate = 8000;
    context->bit_rate = 6300;
    context->sample_fmt = AV_SAMPLE_FMT_S16;
    context->ch_layout = AV_CHANNEL_LAYOUT_MONO;
    EXPECT_EQ(0, avcodec_open2(context, codec, nullptr));
    return context;
}

Samples decodedByFfmpeg(const Frames& frames) {
    AVCodecContext* decoder = opened(avcodec_find_decoder(AV_CODEC_ID_G723_1));
    AVPacket* packet = av_packet_alloc();
    AVFrame* frame = av_frame_alloc();
    Samples all;
    for (const Octets& octets : frames) {
        EXPECT_EQ(0, av_new_packet(packet, int(octets.size())));
        std::copy(octets.begin(), octets.end(), packet->data);
        EXPECT_EQ(0, avcodec_send_packet(decoder, packet));
        EXPECT_EQ(0, avcodec_receive_frame(decoder, frame));
        av_packet_unref(packet);
        const auto* samples = reinterpret_cast<const Vsp16s*>(frame->data[0]);
        all.insert(all.end(), samples, samples + frame->nb_samples);
    }
    av_frame_free(&frame);
    av_packet_free(&packet);
    avcodec_free_context(&decoder);
    return all;
}

Frames codedByFfmpeg() {
    AVCodecContext* encoder = opened(avcodec_find_encoder(AV_CODEC_ID_G723_1));
    AVPacket* packet = av_packet_alloc();
    AVFrame* frame = av_frame_alloc();
    frame->nb_samples = int(kFrame);
    frame->format = AV_SAMPLE_FMT_S16;
    frame->sample_rate = 8000;
    frame->ch_layout = AV_CHANNEL_LAYOUT_MONO;
    EXPECT_EQ(0, av_frame_get_buffer(frame, 0));
    Frames frames;
    for (std::size_t i = 0; i < speech().size(); i += kFrame) {
        EXPECT_EQ(0, av_frame_make_writable(frame));
        std::copy(&speech()[i], &speech()[i] + kFrame, reinterpret_cast<Vsp16s*>(frame->data[0]));
        EXPECT_EQ(0, avcodec_send_frame(encoder, frame));
        EXPECT_EQ(0, avcodec_receive_packet(encoder, packet));
        frames.emplace_back(packet->data, packet->data + packet->size);
        av_packet_unref(packet);
    }
    av_frame_free(&frame);
    av_packet_free(&packet);
    avcodec_free_context(&encoder);
    return frames;
}

void expectEqual(const Frames& frames) {
    const Samples here = decoded(frames), there = decodedByFfmpeg(frames);
    ASSERT_EQ(here.size(), there.size());
    for (std::size_t i = 0; i < here.size(); i++) ASSERT_EQ(here[i], there[i]) << "sample " << i;
}

}  // namespace

TEST(VoicePeersG723, OurStreamsElsewhere) {
    for (const std::size_t changesAfter : {0, 1, 7})
        for (const Vsp32s bitRate : {6300, 5300}) expectEqual(coded(bitRate, changesAfter));
}

TEST(VoicePeersG723, StreamOfFfmpegHere) { expectEqual(codedByFfmpeg()); }

}  // namespace vsp::test
