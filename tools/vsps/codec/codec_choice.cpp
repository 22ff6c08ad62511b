#include "codec/codec_choice.h"

#include "console/options.h"

namespace {

std::size_t bitsPerFrame(const VspvCodec& codec) { return 8 * std::size_t(codec.maxFrameBytes); }

}  // namespace

std::vector<std::string> codecNames() {
    std::vector<std::string> names;
    for (Vsp32s i = 0; i < vspvCodecCount(); i++) names.emplace_back(vspvCodec(i)->name);
    return names;
}

int chooseBitRate(const VspvCodec& codec, int asked) {
    std::string rates;
    for (Vsp32s i = 0; i < codec.numBitRates; i++) {
        if (asked == codec.pBitRates[i]) return asked;
        rates += (i == 0 ? "" : ", ") + std::to_string(codec.pBitRates[i]);
    }
    if (asked != 0) throw UsageError{"--rate", std::string(codec.name) + " has " + rates + " bit/s"};
    return codec.pBitRates[0];
}

std::size_t speechBytes(const VspvCodec& codec, int bitRate) {
    Vsp32s bytes = 0;
    vspvSpeechBytes(&codec, bitRate, &bytes);
    return std::size_t(bytes);
}

// What codes by the frame needs less than two bits a sample at some rate, or has frames of its own length; the others' last
// 20 ms.
bool codesSampleBySample(const VspvCodec& codec) {
    if (50 * codec.frameSamples != codec.samplingRate) return false;
    const auto samples = std::size_t(codec.frameSamples);
    const std::size_t least = speechBytes(codec, codec.pBitRates[codec.numBitRates - 1]);
    return bitsPerFrame(codec) % samples == 0 && 8 * least >= 2 * samples;
}

std::size_t bytesOf(const VspvCodec& codec, std::size_t samples) {
    const auto frame = std::size_t(codec.frameSamples), bytes = std::size_t(codec.maxFrameBytes);
    return codesSampleBySample(codec) ? (samples * bytes + frame - 1) / frame : samples == 0 ? 0 : bytes;
}

std::size_t samplesOf(const VspvCodec& codec, std::size_t bytes) {
    const auto frame = std::size_t(codec.frameSamples);
    return codesSampleBySample(codec) ? bytes * frame / std::size_t(codec.maxFrameBytes) : frame;
}
