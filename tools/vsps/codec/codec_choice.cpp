#include "codec/codec_choice.h"

#include <utility>

#include "audio/extension.h"
#include "console/error.h"
#include "console/options.h"
#include "console/standard_streams.h"

namespace {

// Of codecs whose files have other extensions than their names.
constexpr std::pair<const char*, const char*> kExtensions[] = {
    {".al", "pcma"}, {".alaw", "pcma"}, {".ul", "pcmu"}, {".ulaw", "pcmu"}};

std::size_t bitsPerFrame(const VspvCodec& codec) { return 8 * std::size_t(codec.maxFrameBytes); }

}  // namespace

std::vector<std::string> codecNames() {
    std::vector<std::string> names;
    for (Vsp32s i = 0; i < vspvCodecCount(); i++) names.emplace_back(vspvCodec(i)->name);
    return names;
}

const VspvCodec& chooseCodec(const std::string& name, const std::string& file) {
    if (!name.empty()) return *vspvFindCodec(name.c_str());  // the option takes no other names
    std::string extension = extensionOf(file), known;
    for (const auto& [other, codec] : kExtensions) {
        if (extension == other) extension = std::string(".") + codec;
        known += std::string(other) + ' ';
    }
    const VspvCodec* codec = extension.empty() ? nullptr : vspvFindCodec(extension.c_str() + 1);
    if (codec != nullptr) return *codec;
    for (const std::string& each : codecNames()) known += '.' + each + ' ';
    if (file == kStandardStream) throw UsageError{"--codec", "is required where there is no file name"};
    throw FileError(file, "no codec has this extension; use --codec or one of " + known.erase(known.size() - 1));
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

bool codesSampleBySample(const VspvCodec& codec) { return bitsPerFrame(codec) % std::size_t(codec.frameSamples) == 0; }

std::size_t bytesOf(const VspvCodec& codec, std::size_t samples) {
    const auto frame = std::size_t(codec.frameSamples);
    if (!codesSampleBySample(codec)) return (samples + frame - 1) / frame * std::size_t(codec.maxFrameBytes);
    return (samples * std::size_t(codec.maxFrameBytes) + frame - 1) / frame;
}

std::size_t samplesOf(const VspvCodec& codec, std::size_t bytes) {
    return bytes * std::size_t(codec.frameSamples) / std::size_t(codec.maxFrameBytes);
}
