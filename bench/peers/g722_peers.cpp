// One second of audio through the G.722 coders: ours and that of spandsp in frames of 20 ms, that of FFmpeg in one packet,
// which spares it its cost per packet.
#include <benchmark/benchmark.h>
#include <spandsp.h>

#include <cstdlib>

extern "C" {
#include <libavcodec/avcodec.h>
}

#include "peer_signal.h"
#include "vspsc.h"

namespace {

constexpr int kRate = 16000, kFrame = 320;

const std::vector<int16_t>& signal() {
    static const std::vector<int16_t> x = speechLike(kRate);
    return x;
}

const std::vector<uint8_t>& code() {
    static const std::vector<uint8_t> octets = [] {
        std::vector<uint8_t> x(kRate / 2);
        g722_encode_state_t* const coder = g722_encode_init(nullptr, 64000, 0);
        g722_encode(coder, x.data(), signal().data(), kRate);
        g722_encode_free(coder);
        return x;
    }();
    return octets;
}

void encode(benchmark::State& state) {
    Vsp32s coder[36], size;
    Vsp16s delay[24] = {}, bands[kFrame], codes[kFrame / 2];
    if (vspsSBADPCMEncodeStateSize_G722_16s(&size) != vspStsNoErr || size > static_cast<Vsp32s>(sizeof coder)) std::abort();
    vspsSBADPCMEncodeInit_G722_16s(coder);
    for (auto _ : state)
        for (int i = 0; i < kRate; i += kFrame) {
            vspsQMFAnalysis_G722_16s(signal().data() + i, bands, kFrame, delay);
            vspsSBADPCMEncode_G722_16s(bands, codes, kFrame, coder);
            benchmark::DoNotOptimize(codes);
        }
}

void decode(benchmark::State& state) {
    Vsp32s coder[36];
    Vsp16s delay[24] = {}, bands[kFrame], samples[kFrame];
    vspsSBADPCMDecodeInit_G722_16s(coder);
    const std::vector<Vsp16s> codes(code().begin(), code().end());
    for (auto _ : state)
        for (int i = 0; i < kRate / 2; i += kFrame / 2) {
            vspsSBADPCMDecode_G722_16s(codes.data() + i, bands, kFrame / 2, 1, coder);
            vspsQMFSynthesis_G722_16s(bands, samples, kFrame, delay);
            benchmark::DoNotOptimize(samples);
        }
}

void spandspEncode(benchmark::State& state) {
    g722_encode_state_t* const coder = g722_encode_init(nullptr, 64000, 0);
    uint8_t codes[kFrame / 2];
    for (auto _ : state)
        for (int i = 0; i < kRate; i += kFrame) {
            g722_encode(coder, codes, signal().data() + i, kFrame);
            benchmark::DoNotOptimize(codes);
        }
    g722_encode_free(coder);
}

void spandspDecode(benchmark::State& state) {
    g722_decode_state_t* const coder = g722_decode_init(nullptr, 64000, 0);
    int16_t samples[kFrame];
    for (auto _ : state)
        for (int i = 0; i < kRate / 2; i += kFrame / 2) {
            g722_decode(coder, samples, code().data() + i, kFrame / 2);
            benchmark::DoNotOptimize(samples);
        }
    g722_decode_free(coder);
}

AVCodecContext* opened(const AVCodec* codec) {
    AVCodecContext* const context = avcodec_alloc_context3(codec);
    context->sample_fmt = AV_SAMPLE_FMT_S16;
    context->sample_rate = kRate;
    context->frame_size = kRate;
    context->ch_layout = AV_CHANNEL_LAYOUT_MONO;
    if (avcodec_open2(context, codec, nullptr) < 0) std::abort();
    return context;
}

void ffmpegEncode(benchmark::State& state) {
    AVCodecContext* context = opened(avcodec_find_encoder(AV_CODEC_ID_ADPCM_G722));
    AVFrame* frame = av_frame_alloc();
    frame->format = AV_SAMPLE_FMT_S16;
    frame->nb_samples = kRate;
    frame->ch_layout = AV_CHANNEL_LAYOUT_MONO;
    frame->sample_rate = kRate;
    if (av_frame_get_buffer(frame, 0) < 0) std::abort();
    std::copy(signal().begin(), signal().end(), reinterpret_cast<int16_t*>(frame->data[0]));
    AVPacket* packet = av_packet_alloc();
    for (auto _ : state) {
        if (avcodec_send_frame(context, frame) < 0 || avcodec_receive_packet(context, packet) < 0 ||
            packet->size != kRate / 2)
            std::abort();
        av_packet_unref(packet);
    }
    av_packet_free(&packet);
    av_frame_free(&frame);
    avcodec_free_context(&context);
}

void ffmpegDecode(benchmark::State& state) {
    AVCodecContext* context = opened(avcodec_find_decoder(AV_CODEC_ID_ADPCM_G722));
    AVPacket* packet = av_packet_alloc();
    if (av_new_packet(packet, kRate / 2) < 0) std::abort();
    std::copy(code().begin(), code().end(), packet->data);
    AVFrame* frame = av_frame_alloc();
    for (auto _ : state) {
        if (avcodec_send_packet(context, packet) < 0 || avcodec_receive_frame(context, frame) < 0 ||
            frame->nb_samples != kRate)
            std::abort();
        av_frame_unref(frame);
    }
    av_frame_free(&frame);
    av_packet_free(&packet);
    avcodec_free_context(&context);
}

benchmark::internal::Benchmark* const registered[] = {
    benchmark::RegisterBenchmark("g722_encode/library/16000", encode),
    benchmark::RegisterBenchmark("g722_encode/spandsp/16000", spandspEncode),
    benchmark::RegisterBenchmark("g722_encode/ffmpeg/16000", ffmpegEncode),
    benchmark::RegisterBenchmark("g722_decode/library/16000", decode),
    benchmark::RegisterBenchmark("g722_decode/spandsp/16000", spandspDecode),
    benchmark::RegisterBenchmark("g722_decode/ffmpeg/16000", ffmpegDecode),
};

}  // namespace
