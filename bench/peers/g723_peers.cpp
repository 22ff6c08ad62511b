// Recorded speech through the coders of G.723.1: ours through the voice layer, with its packing of bits and its checks, and
// FFmpeg's, whose encoder has 6.3 kbit/s only. `ffmpeg_overhead` is what FFmpeg's interface takes: frames and packets of
// the same sizes through its codec of linear samples. `per_second` is the time of a second of speech.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
}

#include "layer_codec.h"
#include "support/speech.h"

namespace {

constexpr std::size_t kRate = 8000, kFrame = 240, kFrames = 600;

const Vsp16s* speech(std::size_t frame) {
    static const std::vector<Vsp16s> recorded = vsp::test::recordedSpeech();
    if (recorded.size() < kFrames * kFrame) std::abort();
    return &recorded[frame * kFrame];
}

struct CodedFrame {
    Vsp8u octets[24];
    VspvFrame told;
};

void perSecond(benchmark::State& run) {
    run.counters["per_second"] = benchmark::Counter(double(run.iterations() * kFrames * kFrame) / double(kRate),
                                                    benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

LayerEncoder encoderFor(Vsp32s bitRate, bool silence) {
    LayerEncoder encoder("g723");
    require(vspvEncoderSetRate(encoder.get(), bitRate) == vspStsNoErr);
    require(vspvEncoderSetDTX(encoder.get(), silence) == vspStsNoErr);
    return encoder;
}

std::vector<CodedFrame> coded(Vsp32s bitRate, bool silence) {
    LayerEncoder encoder = encoderFor(bitRate, silence);
    std::vector<CodedFrame> frames(kFrames);
    for (std::size_t i = 0; i < kFrames; i++) vspvEncode(encoder.get(), speech(i), frames[i].octets, &frames[i].told);
    return frames;
}

void encode(benchmark::State& run, Vsp32s bitRate, bool silence) {
    LayerEncoder encoder = encoderFor(bitRate, silence);
    CodedFrame frame;
    for (auto _ : run)
        for (std::size_t i = 0; i < kFrames; i++) {
            vspvEncode(encoder.get(), speech(i), frame.octets, &frame.told);
            benchmark::DoNotOptimize(frame);
        }
    perSecond(run);
}

void decode(benchmark::State& run, Vsp32s bitRate, bool silence) {
    const std::vector<CodedFrame> frames = coded(bitRate, silence);
    LayerDecoder decoder("g723");
    Vsp16s samples[kFrame];
    for (auto _ : run)
        for (const CodedFrame& frame : frames) {
            vspvDecode(decoder.get(), frame.octets, &frame.told, samples);
            benchmark::DoNotOptimize(samples);
        }
    perSecond(run);
}

AVCodecContext* opened(const AVCodec* codec) {
    AVCodecContext* context = avcodec_alloc_context3(codec);
    context->sample_rate = int(kRate);
    context->bit_rate = 6300;
    context->sample_fmt = AV_SAMPLE_FMT_S16;
    context->ch_layout = AV_CHANNEL_LAYOUT_MONO;
    require(avcodec_open2(context, codec, nullptr) == 0);
    return context;
}

void ffmpegEncode(benchmark::State& run, AVCodecID codec) {
    AVCodecContext* encoder = opened(avcodec_find_encoder(codec));
    AVPacket* packet = av_packet_alloc();
    std::vector<AVFrame*> frames(kFrames);
    for (std::size_t i = 0; i < kFrames; i++) {
        AVFrame*& frame = frames[i] = av_frame_alloc();
        frame->nb_samples = int(kFrame);
        frame->format = AV_SAMPLE_FMT_S16;
        frame->sample_rate = int(kRate);
        frame->ch_layout = AV_CHANNEL_LAYOUT_MONO;
        require(av_frame_get_buffer(frame, 0) == 0);
        std::copy(speech(i), speech(i) + kFrame, reinterpret_cast<Vsp16s*>(frame->data[0]));
    }
    for (auto _ : run)
        for (const AVFrame* frame : frames) {
            require(avcodec_send_frame(encoder, frame) == 0);
            require(avcodec_receive_packet(encoder, packet) == 0);
            av_packet_unref(packet);
        }
    perSecond(run);
    for (AVFrame* frame : frames) av_frame_free(&frame);
    av_packet_free(&packet);
    avcodec_free_context(&encoder);
}

void ffmpegDecode(benchmark::State& run, AVCodecID codec, Vsp32s bitRate) {
    AVCodecContext* decoder = opened(avcodec_find_decoder(codec));
    AVFrame* frame = av_frame_alloc();
    std::vector<AVPacket*> packets;
    for (const CodedFrame& own : coded(bitRate, false)) {
        const bool linear = codec != AV_CODEC_ID_G723_1;
        AVPacket* packet = av_packet_alloc();
        require(av_new_packet(packet, linear ? 2 * int(kFrame) : own.told.numBytes) == 0);
        if (!linear) std::copy(own.octets, own.octets + own.told.numBytes, packet->data);
        packets.push_back(packet);
    }
    for (auto _ : run)
        for (const AVPacket* packet : packets) {
            require(avcodec_send_packet(decoder, packet) == 0);
            require(avcodec_receive_frame(decoder, frame) == 0);
            require(std::size_t(frame->nb_samples) == kFrame);
        }
    perSecond(run);
    av_frame_free(&frame);
    for (AVPacket* packet : packets) av_packet_free(&packet);
    avcodec_free_context(&decoder);
}

const bool registered = [] {
    const auto add = [](const std::string& name, auto function, auto... arguments) {
        benchmark::RegisterBenchmark((name + "/" + std::to_string(kFrames * kFrame)).c_str(), function, arguments...);
    };
    for (const Vsp32s bitRate : {6300, 5300}) {
        const std::string rate = "g723_" + std::to_string(bitRate);
        add(rate + "_encode/library", encode, bitRate, false);
        if (bitRate == 6300) add(rate + "_encode/ffmpeg", ffmpegEncode, AV_CODEC_ID_G723_1);
        add(rate + "_decode/library", decode, bitRate, false);
        add(rate + "_decode/ffmpeg", ffmpegDecode, AV_CODEC_ID_G723_1, bitRate);
    }
    add("g723A_6300_encode/library", encode, 6300, true);
    add("g723A_6300_decode/library", decode, 6300, true);
    add("g723_encode/ffmpeg_overhead", ffmpegEncode, AV_CODEC_ID_PCM_S16LE);
    add("g723_decode/ffmpeg_overhead", ffmpegDecode, AV_CODEC_ID_PCM_S16LE, 6300);
    return true;
}();

}  // namespace
