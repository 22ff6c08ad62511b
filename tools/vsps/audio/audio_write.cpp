#include <sndfile.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "audio/audio.h"
#include "console/error.h"

namespace {

// A file in memory for libsndfile.
struct MemoryFile {
    std::string bytes;
    std::size_t position = 0;
};

MemoryFile& memory(void* user) { return *static_cast<MemoryFile*>(user); }

sf_count_t length(void* user) { return static_cast<sf_count_t>(memory(user).bytes.size()); }

sf_count_t tell(void* user) { return static_cast<sf_count_t>(memory(user).position); }

sf_count_t seek(sf_count_t offset, int whence, void* user) {
    const sf_count_t origin = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? tell(user) : length(user);
    memory(user).position = static_cast<std::size_t>(std::max<sf_count_t>(0, origin + offset));
    return tell(user);
}

sf_count_t read(void* data, sf_count_t count, void* user) {
    MemoryFile& m = memory(user);
    if (m.position >= m.bytes.size()) return 0;
    const std::size_t n = std::min(static_cast<std::size_t>(count), m.bytes.size() - m.position);
    std::memcpy(data, m.bytes.data() + m.position, n);
    m.position += n;
    return static_cast<sf_count_t>(n);
}

sf_count_t write(const void* data, sf_count_t count, void* user) try {
    MemoryFile& m = memory(user);
    const auto n = static_cast<std::size_t>(count);
    if (m.bytes.size() < m.position + n) m.bytes.resize(m.position + n);
    std::memcpy(m.bytes.data() + m.position, data, n);
    m.position += n;
    return count;
} catch (const std::bad_alloc&) {
    return 0;  // no exception through libsndfile
}

Samples interleave(const std::vector<Samples>& channels, std::size_t begin, std::size_t end) {
    Samples out;
    out.reserve((end - begin) * channels.size());
    for (std::size_t i = begin; i < end; i++)
        for (const Samples& channel : channels) out.push_back(channel[i]);
    return out;
}

}  // namespace

std::string encodeAudio(const std::vector<Samples>& channels, int format, const std::string& file) {
    constexpr std::size_t kStretch = 1 << 16, kLargest = 0xfff00000;
    const int container = format & SF_FORMAT_TYPEMASK;
    const std::size_t size = channels.size() * channels.front().size() * sizeof(std::int16_t);
    if (size > kLargest && container != SF_FORMAT_RAW && container != SF_FORMAT_FLAC)
        throw FileError(file, "more than 4 GiB of audio only go into .flac and headerless files");

    MemoryFile target;
    SF_VIRTUAL_IO io{length, seek, read, write, tell};
    SF_INFO info{};
    info.samplerate = kRate;
    info.channels = static_cast<int>(channels.size());
    info.format = format;
    SNDFILE* sound = sf_open_virtual(&io, SFM_WRITE, &info, &target);
    if (sound == nullptr) throw FileError(file, std::string("cannot be written: ") + sf_strerror(nullptr));
    bool complete = true;
    for (std::size_t i = 0; i < channels.front().size() && complete; i += kStretch) {
        const std::size_t frames = std::min(kStretch, channels.front().size() - i);
        const Samples stretch = interleave(channels, i, i + frames);
        complete =
            sf_writef_short(sound, stretch.data(), static_cast<sf_count_t>(frames)) == static_cast<sf_count_t>(frames);
    }
    const std::string reason = sf_strerror(sound);
    const bool closed = sf_close(sound) == 0;
    if (!complete || !closed) throw FileError(file, "cannot be written: " + reason);
    return std::move(target.bytes);
}
