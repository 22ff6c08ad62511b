#include "audio/spool.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "console/error.h"

namespace {

struct BlockHeader {
    std::uint32_t channels, samples;
};

std::filesystem::path folder() {
    std::error_code error;
    const auto path = std::filesystem::temp_directory_path(error);
    return error ? "/tmp" : path;
}

[[noreturn]] void fail() {
    throw FileError(folder(), std::string("a temporary file there cannot be used: ") + std::strerror(errno));
}

void writeAll(int descriptor, const void* data, std::size_t size) {
    for (const auto* at = static_cast<const char*>(data); size > 0;) {
        const ssize_t count = ::write(descriptor, at, size);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) fail();
        at += count;
        size -= std::size_t(count);
    }
}

// The number of bytes, which is smaller at the end only.
std::size_t readAll(int descriptor, void* data, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count = ::read(descriptor, static_cast<char*>(data) + done, size - done);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) fail();
        if (count == 0) break;
        done += std::size_t(count);
    }
    return done;
}

}  // namespace

Spool::Spool() {
    std::string name = folder() / "vsps-XXXXXX";
    descriptor_ = mkostemp(name.data(), 0);
    if (descriptor_ < 0) fail();
    unlink(name.c_str());
}

Spool::~Spool() { close(descriptor_); }

void Spool::write(const Block& block) {
    const BlockHeader header{std::uint32_t(block.size()), std::uint32_t(block.front().size())};
    writeAll(descriptor_, &header, sizeof header);
    for (const Samples& channel : block) writeAll(descriptor_, channel.data(), channel.size() * sizeof channel[0]);
}

void Spool::rewind() { lseek(descriptor_, 0, SEEK_SET); }

bool Spool::read(Block& block) {
    BlockHeader header{};
    if (readAll(descriptor_, &header, sizeof header) < sizeof header) return false;
    block.resize(header.channels);
    for (Samples& channel : block) {
        channel.resize(header.samples);
        readAll(descriptor_, channel.data(), channel.size() * sizeof channel[0]);
    }
    return true;
}

void Spool::copyTo(OutputFile& out) {
    rewind();
    std::array<char, 1 << 16> part;
    while (const std::size_t count = readAll(descriptor_, part.data(), part.size())) out.write({part.data(), count});
}
