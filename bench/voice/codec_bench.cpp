// One second of audio through each codec of the voice layer, in its frames; and, where the work is a few calls, through the
// functions of the library alone, without packing bits, checks and what concealment has to remember. G.722.1 also through a
// coder in floating point, G.728 through one that is written plainly and gives the same bits, which is tried first, without
// and with a check of each sum.
#include "g728/scalar_g728.h"

#define BENCH_G728_CHECKED
#include "g728/scalar_g728.h"
#include "gsmfr/codec.h"
#include "support/bench.h"
#include "support/speech.h"
#include "voice/float_g7221.h"
#include "vspsvoice.h"

namespace {

constexpr int kLongestSecond = 32000;

const std::vector<Vsp16s>& noise() {
    static const std::vector<Vsp16s> samples = [] {
        bench::Buffers buffers(kLongestSecond);
        return std::vector<Vsp16s>(buffers.a.data(), buffers.a.data() + kLongestSecond);
    }();
    return samples;
}

template <class Size>
std::vector<Vsp64s> memoryFor(Size size, const VspvCodec& codec) {
    Vsp32s bytes = 0;
    size(&codec, &bytes);
    return std::vector<Vsp64s>(std::size_t(bytes) / 8);
}

struct Second {
    std::vector<Vsp8u> bytes;
    std::vector<VspvFrame> frames;
};

Second encode(const VspvCodec& codec, VspvEncoder* encoder) {
    Second coded;
    for (int at = 0; at + codec.frameSamples <= codec.samplingRate; at += codec.frameSamples) {
        coded.bytes.resize((coded.frames.size() + 1) * std::size_t(codec.maxFrameBytes));
        Vsp8u* bytes = coded.bytes.data() + coded.frames.size() * std::size_t(codec.maxFrameBytes);
        vspvEncode(encoder, &noise()[std::size_t(at)], bytes, &coded.frames.emplace_back());
    }
    return coded;
}

void addLayer(const VspvCodec& codec) {
    benchmark::RegisterBenchmark(
        (std::string("voice_encode/") + codec.name + "/layer").c_str(), [&](benchmark::State& run) {
            auto memory = memoryFor(vspvEncoderGetSize, codec);
            const auto encoder = reinterpret_cast<VspvEncoder*>(memory.data());
            vspvEncoderInit(encoder, &codec);
            std::vector<Vsp8u> bytes(std::size_t(codec.maxFrameBytes));
            VspvFrame frame;
            for (auto _ : run)
                for (int at = 0; at + codec.frameSamples <= codec.samplingRate; at += codec.frameSamples)
                    vspvEncode(encoder, &noise()[std::size_t(at)], bytes.data(), &frame);
        });
    benchmark::RegisterBenchmark(
        (std::string("voice_decode/") + codec.name + "/layer").c_str(), [&](benchmark::State& run) {
            auto encoderMemory = memoryFor(vspvEncoderGetSize, codec), memory = memoryFor(vspvDecoderGetSize, codec);
            const auto encoder = reinterpret_cast<VspvEncoder*>(encoderMemory.data());
            vspvEncoderInit(encoder, &codec);
            const Second coded = encode(codec, encoder);
            const auto decoder = reinterpret_cast<VspvDecoder*>(memory.data());
            vspvDecoderInit(decoder, &codec);
            std::vector<Vsp16s> samples(std::size_t(codec.frameSamples));
            for (auto _ : run)
                for (std::size_t i = 0; i < coded.frames.size(); i++)
                    vspvDecode(decoder, &coded.bytes[i * std::size_t(codec.maxFrameBytes)], &coded.frames[i],
                               samples.data());
        });
}

template <class Frame>
void addBare(const std::string& name, int frames, Frame frame) {
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& run) mutable {
        for (auto _ : run)
            for (int i = 0; i < frames; i++) frame(i);
    });
}

// The same codes in every frame of a decoder.
struct G722 {
    Vsp16s delay[24] = {}, bands[320], codes[160], samples[320];
    std::vector<Vsp64s> state = std::vector<Vsp64s>(256);
};

void addBareG722() {
    G722 encoder, decoder;
    vspsSBADPCMEncodeInit_G722_16s(encoder.state.data());
    vspsSBADPCMDecodeInit_G722_16s(decoder.state.data());
    for (std::size_t k = 0; k < 160; k++) decoder.codes[k] = Vsp16s(noise()[k] & 0xFF);
    addBare("voice_encode/g722/bare", 50, [x = encoder](int i) mutable {
        vspsQMFAnalysis_G722_16s(&noise()[320 * std::size_t(i)], x.bands, 320, x.delay);
        vspsSBADPCMEncode_G722_16s(x.bands, x.codes, 320, x.state.data());
    });
    addBare("voice_decode/g722/bare", 50, [x = decoder](int) mutable {
        vspsSBADPCMDecode_G722_16s(x.codes, x.bands, 160, 1, x.state.data());
        vspsQMFSynthesis_G722_16s(x.bands, x.samples, 320, x.delay);
    });
}

struct G726 {
    Vsp8u codes[160];
    Vsp16s samples[160];
    std::vector<Vsp64s> state = std::vector<Vsp64s>(64);
};

void addBareG726() {
    G726 encoder, decoder;
    vspsEncodeInit_G726_16s8u(encoder.state.data(), 23);
    vspsDecodeInit_G726_8u16s(decoder.state.data(), 23);
    for (std::size_t k = 0; k < 160; k++) decoder.codes[k] = Vsp8u(noise()[k] & 15);
    addBare("voice_encode/g726-32/bare", 50, [x = encoder](int i) mutable {
        vspsEncode_G726_16s8u(&noise()[160 * std::size_t(i)], x.codes, 160, x.state.data());
    });
    addBare("voice_decode/g726-32/bare", 50,
            [x = decoder](int) mutable { vspsDecode_G726_8u16s(x.codes, x.samples, 160, x.state.data()); });
}

void addBareGsm() {
    const vsp::Api* library = nullptr;
    for (const bench::Implementation& i : bench::implementations())
        if (i.name == std::string("library")) library = i.api;
    if (library == nullptr) return;
    const vsp::test::gsmfr::Codec coder(*library);
    std::vector<Vsp16s> parameters(76), samples(160);
    vsp::test::gsmfr::Codec(*library).encode(noise().data(), parameters.data());
    addBare("voice_encode/gsm/bare", 50,
            [=, x = coder](int i) mutable { x.encode(&noise()[160 * std::size_t(i)], parameters.data()); });
    addBare("voice_decode/gsm/bare", 50, [=, x = coder](int) mutable { x.decode(parameters.data(), samples.data()); });
}

// The same in floating point.
void addFloatG7221() {
    constexpr int kBits = 640;
    FloatG7221Encoder encoder(kBits);
    std::vector<std::uint8_t> coded;
    for (std::size_t i = 0; i < 50; i++) {
        const std::vector<std::uint8_t> frame = encoder.encode(&noise()[kFloatFrame * i]);
        coded.insert(coded.end(), frame.begin(), frame.end());
    }
    addBare("voice_encode/g7221/float", 50,
            [x = encoder](int i) mutable { benchmark::DoNotOptimize(x.encode(&noise()[kFloatFrame * std::size_t(i)])); });
    addBare("voice_decode/g7221/float", 50,
            [=, x = FloatG7221Decoder(kBits), samples = std::vector<Vsp16s>(kFloatFrame)](int i) mutable {
                x.decode(&coded[kBits / 8 * std::size_t(i)], samples.data());
                benchmark::DoNotOptimize(samples.data());
            });
}

namespace plain = bench::g728;

// Four indices of ten bits, the highest first.
std::vector<Vsp8u> packed(const Vsp16s* indices) {
    std::vector<Vsp8u> octets(5);
    for (std::size_t bit = 0; bit < 40; bit++)
        octets[bit / 8] |= Vsp8u((indices[bit / 10] >> (9 - bit % 10) & 1) << (7 - bit % 8));
    return octets;
}

// Whether both codings of recorded speech have the same bits and the same samples.
template <class Encoder, class Decoder>
bool sameAsPlainG728() {
    const VspvCodec& codec = *vspvFindCodec("g728");
    auto encoderMemory = memoryFor(vspvEncoderGetSize, codec), decoderMemory = memoryFor(vspvDecoderGetSize, codec);
    const auto encoder = reinterpret_cast<VspvEncoder*>(encoderMemory.data());
    const auto decoder = reinterpret_cast<VspvDecoder*>(decoderMemory.data());
    vspvEncoderInit(encoder, &codec);
    vspvDecoderInit(decoder, &codec);
    Encoder plainEncoder;
    Decoder plainDecoder;
    const std::vector<Vsp16s> speech = vsp::test::recordedSpeech();
    for (std::size_t at = 0; at + plain::kFrame <= speech.size(); at += plain::kFrame) {
        Vsp16s indices[plain::kCycle];
        std::vector<Vsp8u> bytes(5);
        std::vector<Vsp16s> samples(plain::kFrame), plainSamples(plain::kFrame);
        VspvFrame frame;
        vspvEncode(encoder, &speech[at], bytes.data(), &frame);
        vspvDecode(decoder, bytes.data(), &frame, samples.data());
        plainEncoder.encode(&speech[at], indices);
        plainDecoder.decode(indices, plainSamples.data());
        if (packed(indices) != bytes || plainSamples != samples) return false;
    }
    return !speech.empty();
}

template <class Encoder, class Decoder>
void addPlainG728(const std::string& kind) {
    const auto add = [&](const char* direction, auto run) {
        benchmark::RegisterBenchmark((direction + ("/g728/" + kind)).c_str(), [=](benchmark::State& state) {
            if (!sameAsPlainG728<Encoder, Decoder>()) return state.SkipWithError("bits differ from those of the layer");
            run(state);
        });
    };
    constexpr std::size_t kFrames = 400;
    add("voice_encode", [](benchmark::State& state) {
        Encoder encoder;
        Vsp16s indices[plain::kCycle];
        for (auto _ : state)
            for (std::size_t i = 0; i < kFrames; i++) encoder.encode(&noise()[plain::kFrame * i], indices);
    });
    add("voice_decode", [](benchmark::State& state) {
        std::vector<Vsp16s> indices(plain::kCycle * kFrames), samples(plain::kFrame);
        Encoder encoder;
        for (std::size_t i = 0; i < kFrames; i++) encoder.encode(&noise()[plain::kFrame * i], &indices[plain::kCycle * i]);
        Decoder decoder;
        for (auto _ : state)
            for (std::size_t i = 0; i < kFrames; i++) decoder.decode(&indices[plain::kCycle * i], samples.data());
    });
}

const bool registered = [] {
    for (Vsp32s i = 0; i < vspvCodecCount(); i++) addLayer(*vspvCodec(i));
    addBareG722();
    addBareG726();
    addBareGsm();
    addFloatG7221();
    addPlainG728<plain::Encoder, plain::Decoder>("plain");
    addPlainG728<bench::g728_checked::Encoder, bench::g728_checked::Decoder>("checked");
    return true;
}();

}  // namespace
