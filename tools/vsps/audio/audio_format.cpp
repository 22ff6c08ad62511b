#include "audio/audio_format.h"

#include <sndfile.h>

#include <algorithm>
#include <filesystem>

#include "audio/extension.h"
#include "console/error.h"
#include "console/standard_streams.h"

namespace {

struct Format {
    const char* extension;
    int format;
};

constexpr int kWav = SF_FORMAT_WAV | SF_FORMAT_PCM_16, kRaw = SF_FORMAT_RAW | SF_FORMAT_PCM_16 | SF_ENDIAN_LITTLE;

constexpr Format kFormats[] = {
    {".wav", kWav},
    {".flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16},
    {".au", SF_FORMAT_AU | SF_FORMAT_PCM_16},
    {".snd", SF_FORMAT_AU | SF_FORMAT_PCM_16},
    {".aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_16},
    {".raw", kRaw},
    {".pcm", kRaw},
    {".sln", kRaw},
    {".al", SF_FORMAT_RAW | SF_FORMAT_ALAW},
    {".alaw", SF_FORMAT_RAW | SF_FORMAT_ALAW},
    {".ul", SF_FORMAT_RAW | SF_FORMAT_ULAW},
    {".ulaw", SF_FORMAT_RAW | SF_FORMAT_ULAW},
};

const Format* find(const std::string& file) {
    const std::string extension = extensionOf(file);
    const auto found =
        std::find_if(std::begin(kFormats), std::end(kFormats), [&](const Format& f) { return extension == f.extension; });
    return found == std::end(kFormats) ? nullptr : found;
}

}  // namespace

int outputFormat(const std::string& file, bool raw) {
    const int stream = raw ? kRaw : kWav;
    if (file == kStandardStream) return stream;
    std::error_code error;
    const auto status = std::filesystem::status(file, error);
    if (is_directory(status)) throw FileError(file, "is a directory");
    if (const Format* f = find(file)) return f->format;
    if (is_other(status)) return stream;  // a device such as /dev/stdout has no extension
    throw FileError(file, "unknown extension; use one of " + outputExtensions());
}

int rawFormat(const std::string& file) {
    const Format* f = find(file);
    return f != nullptr && (f->format & SF_FORMAT_TYPEMASK) == SF_FORMAT_RAW ? f->format : kRaw;
}

std::string outputExtensions() {
    std::string all;
    for (const Format& f : kFormats) all += (all.empty() ? "" : " ") + std::string(f.extension);
    return all;
}

std::string formatOfHeader(const std::string& bytes) {
    for (const auto& [magic, format] :
         {std::pair("RIFF", "WAV"), std::pair("RIFX", "WAV"), std::pair("RF64", "WAV"), std::pair(".snd", "AU"),
          std::pair("FORM", "AIFF"), std::pair("fLaC", "FLAC"), std::pair("OggS", "Ogg"), std::pair("caff", "CAF")})
        if (bytes == magic) return format;
    return {};
}
