#include "codec/coded_file.h"

#include "audio/extension.h"
#include "codec/amr_file.h"
#include "codec/codec_choice.h"
#include "codec/coded_wav.h"
#include "codec/g723_file.h"
#include "codec/itu_serial.h"
#include "codec/octet_stream.h"
#include "console/error.h"
#include "console/options.h"
#include "console/standard_streams.h"

namespace {

struct Format {
    const char* extension;
    const char* codec;  // that the extension names, or null if any may be in the file
    // The codec is null where neither the command line nor the extension has named one.
    std::unique_ptr<FrameReader> (*open)(const std::string& file, const VspvCodec* codec, int bitRate);
    std::unique_ptr<FrameWriter> (*create)(const std::string& file, const VspvCodec* codec);
};

constexpr Format kOctets = {"", nullptr, openOctets, createOctets};

// The first line with a codec is its format where the extension does not tell one.
constexpr Format kFormats[] = {
    {".al", "pcma", openOctets, createOctets},
    {".alaw", "pcma", openOctets, createOctets},
    {".ul", "pcmu", openOctets, createOctets},
    {".ulaw", "pcmu", openOctets, createOctets},
    {".amr", "amr", openAmr, createAmr},
    {".awb", "amrwb", openAmrWb, createAmrWb},
    {".g723", "g723", openG723, createG723},
    {".bit", nullptr, openItuSerial, createItuSerial},
    {".wav", nullptr, openCodedWav, createCodedWav},
};

struct Chosen {
    const Format* format;
    const VspvCodec* codec;  // or null
};

bool names(const Format& format, const VspvCodec& codec) {
    return format.codec != nullptr && codec.name == std::string(format.codec);
}

const Format& formatFor(const VspvCodec& codec, const std::string& extension) {
    for (const Format& f : kFormats)
        if (extension == f.extension && (f.codec == nullptr || names(f, codec))) return f;
    for (const Format& f : kFormats)
        if (names(f, codec)) return f;
    return kOctets;
}

Chosen choose(const CodedFileChoice& choice) {
    const std::string extension = choice.file == kStandardStream ? "" : extensionOf(choice.file);
    if (!choice.codec.empty()) {
        const VspvCodec* codec = vspvFindCodec(choice.codec.c_str());  // the option takes no other names
        return {&formatFor(*codec, extension), codec};
    }
    for (const Format& f : kFormats)
        if (extension == f.extension) return {&f, f.codec == nullptr ? nullptr : vspvFindCodec(f.codec)};
    if (const VspvCodec* codec = extension.empty() ? nullptr : vspvFindCodec(extension.c_str() + 1))
        return {&formatFor(*codec, extension), codec};
    if (choice.file == kStandardStream) throw UsageError{"--codec", "is required where there is no file name"};
    std::string known = codedExtensions();
    for (const std::string& each : codecNames()) known += " ." + each;
    throw FileError(choice.file, "no codec has this extension; use --codec or one of " + known);
}

}  // namespace

std::unique_ptr<FrameReader> openCoded(const CodedFileChoice& choice) {
    const Chosen chosen = choose(choice);
    if (chosen.codec != nullptr) chooseBitRate(*chosen.codec, choice.bitRate);
    return chosen.format->open(choice.file, chosen.codec, choice.bitRate);
}

const VspvCodec& codecOf(const CodedFileChoice& choice) {
    const Chosen chosen = choose(choice);
    if (chosen.codec == nullptr)
        throw UsageError{"--codec", "is required: " + extensionOf(choice.file) + " files hold several"};
    return *chosen.codec;
}

std::unique_ptr<FrameWriter> createCoded(const CodedFileChoice& choice) {
    const Chosen chosen = choose(choice);
    return chosen.format->create(choice.file, chosen.codec);
}

std::string codedExtensions() {
    std::string all;
    for (const Format& f : kFormats) all += (all.empty() ? "" : " ") + std::string(f.extension);
    return all;
}
