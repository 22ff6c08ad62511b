// Recorded speech through the coders of G.729: ours through the voice layer, with its packing of bits and its checks,
// bcg729, which is Annex A, and FFmpeg's decoder, which gets a second in one packet. `per_second` is the time of a second
// of speech. The last benchmarks code and decode 20 ms of each of a thousand calls in turn; `channels` is how many a core
// could hold.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

extern "C" {
#include <bcg729/decoder.h>
#include <bcg729/encoder.h>
#include <libavcodec/avcodec.h>
}

#include "layer_codec.h"
#include "support/speech.h"

namespace {

using Samples = std::vector<Vsp16s>;

constexpr std::size_t kRate = 8000, kFrame = 80, kSeconds = 20, kFramesOfSecond = kRate / kFrame, kOctets = 15;
constexpr std::size_t kFrames = kSeconds * kFramesOfSecond, kCalls = 1000;

const Vsp16s* speech(std::size_t frame) {
    static const Samples recorded = vsp::test::recordedSpeech();
    if (recorded.size() < kFrames * kFrame) std::abort();
    return &recorded[frame % kFrames * kFrame];
}

struct CodedFrame {
    Vsp8u octets[kOctets];
    VspvFrame told;
};

class OurEncoder {
  public:
    OurEncoder(const char* name, Vsp32s bitRate, bool silence) : encoder_(name) {
        require(vspvEncoderSetRate(encoder_.get(), bitRate) == vspStsNoErr);
        if (silence) require(vspvEncoderSetDTX(encoder_.get(), 1) == vspStsNoErr);
    }
    void operator()(const Vsp16s* samples, CodedFrame& coded) {
        vspvEncode(encoder_.get(), samples, coded.octets, &coded.told);
    }

  private:
    LayerEncoder encoder_;
};

class OurDecoder {
  public:
    explicit OurDecoder(const char* name) : decoder_(name) {}
    void operator()(const CodedFrame& coded, Vsp16s* samples) {
        vspvDecode(decoder_.get(), coded.octets, &coded.told, samples);
    }

  private:
    LayerDecoder decoder_;
};

class Bcg729Encoder {
  public:
    explicit Bcg729Encoder(bool silence) : state_(initBcg729EncoderChannel(silence), closeBcg729EncoderChannel) {}
    void operator()(const Vsp16s* samples, CodedFrame& coded) {
        uint8_t octets = 0;
        bcg729Encoder(state_.get(), samples, coded.octets, &octets);
        coded.told = {vspvFrameSpeech, vspvQualityGood, 8000, octets};
    }

  private:
    std::unique_ptr<bcg729EncoderChannelContextStruct, decltype(&closeBcg729EncoderChannel)> state_;
};

class Bcg729Decoder {
  public:
    Bcg729Decoder() : state_(initBcg729DecoderChannel(), closeBcg729DecoderChannel) {}
    void operator()(const CodedFrame& coded, Vsp16s* samples) {
        const Vsp32s octets = coded.told.numBytes;
        bcg729Decoder(state_.get(), coded.octets, uint8_t(octets), octets == 0, octets == 2, 0, samples);
    }

  private:
    std::unique_ptr<bcg729DecoderChannelContextStruct, decltype(&closeBcg729DecoderChannel)> state_;
};

std::vector<CodedFrame> coded(const char* name, Vsp32s bitRate, bool silence) {
    OurEncoder encoder(name, bitRate, silence);
    std::vector<CodedFrame> frames(kFrames);
    for (std::size_t i = 0; i < kFrames; i++) encoder(speech(i), frames[i]);
    return frames;
}

void perSecond(benchmark::State& run) {
    run.counters["per_second"] = benchmark::Counter(double(run.iterations()) * double(kSeconds),
                                                    benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

std::string named(const std::string& name) { return name + "/" + std::to_string(kFrames * kFrame); }

template <class MakeEncoder>
void addEncoder(const std::string& name, MakeEncoder make) {
    benchmark::RegisterBenchmark(named(name).c_str(), [=](benchmark::State& run) {
        auto encoder = make();
        CodedFrame frame;
        for (auto _ : run)
            for (std::size_t i = 0; i < kFrames; i++) {
                encoder(speech(i), frame);
                benchmark::DoNotOptimize(frame);
            }
        perSecond(run);
    });
}

template <class MakeDecoder>
void addDecoder(const std::string& name, const char* codec, Vsp32s bitRate, bool silence, MakeDecoder make) {
    benchmark::RegisterBenchmark(named(name).c_str(), [=](benchmark::State& run) {
        const std::vector<CodedFrame> frames = coded(codec, bitRate, silence);
        auto decoder = make();
        Vsp16s samples[kFrame];
        for (auto _ : run)
            for (const CodedFrame& frame : frames) {
                decoder(frame, samples);
                benchmark::DoNotOptimize(samples);
            }
        perSecond(run);
    });
}

void ffmpegDecode(benchmark::State& run) {
    constexpr int kPacket = 10 * kFramesOfSecond;
    AVCodecContext* context = avcodec_alloc_context3(avcodec_find_decoder(AV_CODEC_ID_G729));
    context->sample_rate = kRate;
    context->ch_layout = AV_CHANNEL_LAYOUT_MONO;
    require(avcodec_open2(context, nullptr, nullptr) == 0);
    std::vector<AVPacket*> packets(kSeconds);
    const std::vector<CodedFrame> frames = coded("g729a", 8000, false);
    for (std::size_t i = 0; i < kFrames; i++) {
        AVPacket*& packet = packets[i / kFramesOfSecond];
        if (packet == nullptr) {
            packet = av_packet_alloc();
            require(av_new_packet(packet, kPacket) == 0);
        }
        for (std::size_t k = 0; k < 10; k++) packet->data[i % kFramesOfSecond * 10 + k] = frames[i].octets[k];
    }
    AVFrame* frame = av_frame_alloc();
    for (auto _ : run)
        for (const AVPacket* packet : packets) {
            require(avcodec_send_packet(context, packet) == 0);
            std::size_t samples = 0;
            while (avcodec_receive_frame(context, frame) == 0) samples += std::size_t(frame->nb_samples);
            require(samples == kRate);
        }
    perSecond(run);
    av_frame_free(&frame);
    for (AVPacket* packet : packets) av_packet_free(&packet);
    avcodec_free_context(&context);
}

// Each call is somewhere else in the recording.
template <class MakeEncoder, class MakeDecoder>
void addCalls(const std::string& name, MakeEncoder makeEncoder, MakeDecoder makeDecoder) {
    constexpr std::size_t kPacket = 2;
    benchmark::RegisterBenchmark((name + "/" + std::to_string(kCalls)).c_str(), [=](benchmark::State& run) {
        std::vector<decltype(makeEncoder())> encoders;
        std::vector<decltype(makeDecoder())> decoders;
        for (std::size_t i = 0; i < kCalls; i++) {
            encoders.push_back(makeEncoder());
            decoders.push_back(makeDecoder());
        }
        std::size_t now = 0;
        Vsp16s samples[kFrame];
        CodedFrame frame;
        for (auto _ : run) {
            for (std::size_t i = 0; i < kCalls; i++)
                for (std::size_t k = 0; k < kPacket; k++) {
                    encoders[i](speech(now + 7 * i + k), frame);
                    decoders[i](frame, samples);
                    benchmark::DoNotOptimize(samples);
                }
            now += kPacket;
        }
        run.counters["channels"] =
            benchmark::Counter(double(run.iterations() * kCalls * kPacket) / kFramesOfSecond, benchmark::Counter::kIsRate);
    });
}

const bool registered = [] {
    const auto bcg729 = [](bool silence) { return [=] { return Bcg729Encoder(silence); }; };
    const auto bcg729Back = [] { return Bcg729Decoder(); };
    for (const bool silence : {false, true}) {
        const std::string pauses = silence ? "B" : "";
        for (const char* name : {"g729a", "g729", "g729i"}) {
            const Vsp32s bitRate = name == std::string("g729i") ? 11800 : 8000;
            addEncoder(name + pauses + "_encode/library", [=] { return OurEncoder(name, bitRate, silence); });
            addDecoder(name + pauses + "_decode/library", name, bitRate, silence, [=] { return OurDecoder(name); });
        }
        addEncoder("g729a" + pauses + "_encode/bcg729", bcg729(silence));
        addDecoder("g729a" + pauses + "_decode/bcg729", "g729a", 8000, silence, bcg729Back);
    }
    benchmark::RegisterBenchmark(named("g729a_decode/ffmpeg").c_str(), ffmpegDecode);
    addEncoder("g729d_encode/library", [] { return OurEncoder("g729d", 6400, false); });
    addDecoder("g729d_decode/library", "g729d", 6400, false, [] { return OurDecoder("g729d"); });
    addEncoder("g729e_encode/library", [] { return OurEncoder("g729e", 11800, false); });
    addDecoder("g729e_decode/library", "g729e", 11800, false, [] { return OurDecoder("g729e"); });

    addCalls(
        "g729_calls/library", [] { return OurEncoder("g729", 8000, false); }, [] { return OurDecoder("g729"); });
    addCalls(
        "g729a_calls/library", [] { return OurEncoder("g729a", 8000, false); }, [] { return OurDecoder("g729a"); });
    addCalls(
        "g729aB_calls/library", [] { return OurEncoder("g729a", 8000, true); }, [] { return OurDecoder("g729a"); });
    addCalls("g729a_calls/bcg729", bcg729(false), bcg729Back);
    addCalls("g729aB_calls/bcg729", bcg729(true), bcg729Back);
    addCalls(
        "g729d_calls/library", [] { return OurEncoder("g729d", 6400, false); }, [] { return OurDecoder("g729d"); });
    addCalls(
        "g729e_calls/library", [] { return OurEncoder("g729e", 11800, false); }, [] { return OurDecoder("g729e"); });
    return true;
}();

}  // namespace
