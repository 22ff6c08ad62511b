// One second of speech-like noise through G.726: the library and spandsp in frames of 20 ms, one code in a byte; libavcodec
// in the frames that it asks for, codes packed, as it has no other form.
#include <benchmark/benchmark.h>
extern "C" {
#include <libavcodec/avcodec.h>
}
#include <spandsp.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "vspsc.h"

namespace {

constexpr int kRate = 8000, kFrame = 160;

struct Rate {
    int code, bits;
    int bitsPerSecond() const { return bits * kRate; }
};
constexpr Rate kRates[] = {{17, 2}, {22, 3}, {23, 4}, {24, 5}};

// Noise of a falling spectrum in bursts of an eighth of a second.
const std::vector<int16_t>& signal() {
    static const std::vector<int16_t> samples = [] {
        std::mt19937 random(1);
        std::normal_distribution<double> noise;
        std::vector<int16_t> x(kRate);
        double low = 0;
        for (int i = 0; i < kRate; i++) {
            low = 0.9 * low + noise(random);
            x[static_cast<std::size_t>(i)] = static_cast<int16_t>(low * (i / 1000 % 2 == 0 ? 3000 : 30));
        }
        return x;
    }();
    return samples;
}

const std::vector<uint8_t>& codes(const Rate& rate) {
    static std::vector<uint8_t> all[6];
    std::vector<uint8_t>& c = all[rate.bits];
    if (c.empty()) {
        c.resize(kRate);
        Vsp32s state[22];
        vspsEncodeInit_G726_16s8u(state, rate.code);
        vspsEncode_G726_16s8u(signal().data(), c.data(), kRate, state);
    }
    return c;
}

void libraryEncodes(benchmark::State& state, Rate rate) {
    Vsp32s coder[22];
    vspsEncodeInit_G726_16s8u(coder, rate.code);
    std::vector<uint8_t> out(kRate);
    for (auto _ : state)
        for (int i = 0; i < kRate; i += kFrame) vspsEncode_G726_16s8u(&signal()[i], &out[i], kFrame, coder);
    benchmark::DoNotOptimize(out.data());
}

void libraryDecodes(benchmark::State& state, Rate rate) {
    Vsp32s coder[23];
    vspsDecodeInit_G726_8u16s(coder, rate.code);
    std::vector<int16_t> out(kRate);
    for (auto _ : state)
        for (int i = 0; i < kRate; i += kFrame) vspsDecode_G726_8u16s(&codes(rate)[i], &out[i], kFrame, coder);
    benchmark::DoNotOptimize(out.data());
}

void spandspEncodes(benchmark::State& state, Rate rate) {
    g726_state_t* const coder = g726_init(nullptr, rate.bitsPerSecond(), G726_ENCODING_LINEAR, G726_PACKING_NONE);
    std::vector<uint8_t> out(kRate);
    for (auto _ : state)
        for (int i = 0; i < kRate; i += kFrame) g726_encode(coder, &out[i], &signal()[i], kFrame);
    benchmark::DoNotOptimize(out.data());
    g726_free(coder);
}

void spandspDecodes(benchmark::State& state, Rate rate) {
    g726_state_t* const coder = g726_init(nullptr, rate.bitsPerSecond(), G726_ENCODING_LINEAR, G726_PACKING_NONE);
    std::vector<int16_t> out(kRate);
    for (auto _ : state)
        for (int i = 0; i < kRate; i += kFrame) g726_decode(coder, &out[i], &codes(rate)[i], kFrame);
    benchmark::DoNotOptimize(out.data());
    g726_free(coder);
}

// An opened codec of libavcodec with a frame and a packet to use over and over.
class Avcodec {
  public:
    Avcodec(const AVCodec* codec, const Rate& rate) : context(avcodec_alloc_context3(codec)) {
        context->sample_rate = kRate;
        context->ch_layout = AV_CHANNEL_LAYOUT_MONO;
        context->sample_fmt = AV_SAMPLE_FMT_S16;
        context->bit_rate = rate.bitsPerSecond();
        context->bits_per_coded_sample = rate.bits;
        if (avcodec_open2(context, codec, nullptr) != 0) throw std::runtime_error("libavcodec has no G.726");
    }
    ~Avcodec() {
        av_frame_free(&frame);
        av_packet_free(&packet);
        avcodec_free_context(&context);
    }
    Avcodec(const Avcodec&) = delete;
    Avcodec& operator=(const Avcodec&) = delete;

    // Encodes n samples, the time of which is that of the benchmark; hands each packet on.
    template <class Take>
    void encode(const int16_t* samples, int n, Take take) {
        for (int i = 0; i < n; i += context->frame_size) {
            frame->nb_samples = std::min(context->frame_size, n - i);
            frame->format = AV_SAMPLE_FMT_S16;
            frame->ch_layout = context->ch_layout;
            frame->data[0] = reinterpret_cast<uint8_t*>(const_cast<int16_t*>(samples + i));
            frame->linesize[0] = frame->nb_samples * 2;
            frame->buf[0] = av_buffer_create(frame->data[0], static_cast<std::size_t>(frame->linesize[0]), keep, nullptr,
                                             AV_BUFFER_FLAG_READONLY);
            if (avcodec_send_frame(context, frame) != 0) throw std::runtime_error("libavcodec does not encode");
            while (avcodec_receive_packet(context, packet) == 0) {
                take(packet);
                av_packet_unref(packet);
            }
            av_frame_unref(frame);
        }
    }

    AVCodecContext* context;
    AVFrame* frame = av_frame_alloc();
    AVPacket* packet = av_packet_alloc();

  private:
    static void keep(void*, uint8_t*) {}
};

void avcodecEncodes(benchmark::State& state, Rate rate) {
    Avcodec coder(avcodec_find_encoder(AV_CODEC_ID_ADPCM_G726), rate);
    for (auto _ : state)
        coder.encode(signal().data(), kRate, [](const AVPacket* packet) { benchmark::DoNotOptimize(packet->data); });
}

void avcodecDecodes(benchmark::State& state, Rate rate) {
    std::vector<AVPacket*> packets;
    Avcodec encoder(avcodec_find_encoder(AV_CODEC_ID_ADPCM_G726), rate);
    encoder.encode(signal().data(), kRate, [&](const AVPacket* packet) { packets.push_back(av_packet_clone(packet)); });
    Avcodec decoder(avcodec_find_decoder(AV_CODEC_ID_ADPCM_G726), rate);
    int64_t samples = 0;
    for (auto _ : state)
        for (const AVPacket* packet : packets) {
            if (avcodec_send_packet(decoder.context, packet) != 0) throw std::runtime_error("libavcodec does not decode");
            while (avcodec_receive_frame(decoder.context, decoder.frame) == 0) samples += decoder.frame->nb_samples;
        }
    for (AVPacket*& packet : packets) av_packet_free(&packet);
    state.counters["samples"] = benchmark::Counter(static_cast<double>(samples), benchmark::Counter::kAvgIterations);
}

const bool registered = [] {
    for (const Rate& rate : kRates) {
        const std::string name = "g726_" + std::to_string(rate.bits * 8);
        const struct {
            const char* name;
            void (*run)(benchmark::State&, Rate);
        } runs[] = {
            {"_encode/library", libraryEncodes},    {"_encode/spandsp", spandspEncodes},
            {"_encode/libavcodec", avcodecEncodes}, {"_decode/library", libraryDecodes},
            {"_decode/spandsp", spandspDecodes},    {"_decode/libavcodec", avcodecDecodes},
        };
        for (const auto& run : runs)
            benchmark::RegisterBenchmark((name + run.name + "/" + std::to_string(kRate)).c_str(), run.run, rate);
    }
    return true;
}();

}  // namespace
