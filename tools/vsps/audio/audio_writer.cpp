#include "audio/audio_writer.h"

#include <fcntl.h>
#include <sndfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "audio/spool.h"
#include "audio/wav_numbers.h"
#include "console/error.h"
#include "console/standard_streams.h"

namespace {

constexpr std::uint64_t kLargest = 0xfff00000;  // bytes of audio where a header has 32 bits for them
constexpr std::uint32_t kWavHeader = 44;        // bytes

int container(int format) { return format & SF_FORMAT_TYPEMASK; }

// Of 16-bit PCM.
std::string wavHeader(int rate, int channels, std::uint32_t dataSize) {
    const auto frame = std::uint32_t(channels) * 2;
    std::string header = "RIFF";
    put(header, dataSize + kWavHeader - 8, 4);
    header += "WAVEfmt ";
    put(header, 16, 4);
    put(header, 1, 2);
    put(header, std::uint32_t(channels), 2);
    put(header, std::uint32_t(rate), 4);
    put(header, std::uint32_t(rate) * frame, 4);
    put(header, frame, 2);
    put(header, 16, 2);
    header += "data";
    put(header, dataSize, 4);
    return header;
}

}  // namespace

// What libsndfile writes to: the output's file or, on the way to a stream, a spool or nothing but the stream's end.
struct AudioWriter::Target {
    explicit Target(OutputFile& output) : out(output) {}
    ~Target() {
        if (sound != nullptr) sf_close(sound);
    }

    static Target& of(void* user) { return *static_cast<Target*>(user); }

    static sf_count_t length(void* user) {
        const Target& t = of(user);
        struct stat status {};
        return t.direct() ? t.written : fstat(t.descriptor(), &status) == 0 ? status.st_size : -1;
    }
    static sf_count_t tell(void* user) {
        return of(user).direct() ? of(user).written : lseek(of(user).descriptor(), 0, SEEK_CUR);
    }
    static sf_count_t seek(sf_count_t offset, int whence, void* user) {
        return of(user).direct() ? of(user).written : lseek(of(user).descriptor(), offset, whence);
    }
    static sf_count_t read(void* data, sf_count_t count, void* user) {
        return ::read(of(user).descriptor(), data, std::size_t(count));
    }
    static sf_count_t write(const void* data, sf_count_t count, void* user) {
        Target& t = of(user);
        const auto* bytes = static_cast<const char*>(data);
        for (sf_count_t done = 0; done < count;) {
            const ssize_t n = ::write(t.descriptor(), bytes + done, std::size_t(count - done));
            if (n < 0 && errno == EINTR) continue;
            if (n < 0) {
                if (t.error == 0) t.error = errno;
                return done;
            }
            done += n;
            t.written += n;
        }
        return count;
    }

    bool direct() const { return out.isStream() && !spool; }
    int descriptor() const { return spool ? spool->descriptor() : out.descriptor(); }

    OutputFile& out;
    std::unique_ptr<Spool> spool;
    SNDFILE* sound = nullptr;
    sf_count_t written = 0;
    int error = 0;  // why writing failed
};

AudioWriter::AudioWriter(const std::string& file, int format, int rate, int channels)
    : file_(outputName(file)),
      format_(format),
      rate_(rate),
      channels_(channels),
      out_(file),
      target_(std::make_unique<Target>(out_)) {
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = channels;
    info.format = format;
    if (out_.isStream() && container(format) == SF_FORMAT_WAV) {
        headerAt_ = lseek(out_.descriptor(), 0, SEEK_CUR);
        out_.write(wavHeader(rate, channels, kUnknownWavLength));
        info.format = SF_FORMAT_RAW | SF_FORMAT_PCM_16 | SF_ENDIAN_LITTLE;
    } else if (out_.isStream() && container(format) != SF_FORMAT_RAW) {
        target_->spool = std::make_unique<Spool>();
    }
    SF_VIRTUAL_IO io{Target::length, Target::seek, Target::read, Target::write, Target::tell};
    target_->sound = sf_open_virtual(&io, SFM_WRITE, &info, target_.get());
    if (target_->sound == nullptr) fail();
}

AudioWriter::~AudioWriter() = default;

void AudioWriter::write(const Samples& samples) { writeFrames(samples.data(), samples.size()); }

void AudioWriter::write(const Block& block) {
    if (block.size() == 1) return write(block.front());
    interleaved_.clear();
    for (std::size_t i = 0; i < block.front().size(); i++)
        for (const Samples& channel : block) interleaved_.push_back(channel[i]);
    writeFrames(interleaved_.data(), block.front().size());
}

void AudioWriter::writeFrames(const std::int16_t* interleaved, std::size_t frames) {
    length_ += frames;
    const bool anySize = target_->direct() || container(format_) == SF_FORMAT_RAW || container(format_) == SF_FORMAT_FLAC;
    if (!anySize && bytes() > kLargest)
        throw FileError(file_, "more than 4 GiB of audio only go into .flac and headerless files");
    const auto count = static_cast<sf_count_t>(frames);
    if (sf_writef_short(target_->sound, interleaved, count) != count) fail();
}

void AudioWriter::commit() {
    const int closed = sf_close(std::exchange(target_->sound, nullptr));
    if (closed != 0 || target_->error != 0) fail();
    if (target_->spool) target_->spool->copyTo(out_);
    if (headerAt_ >= 0) completeHeader();
    out_.commit();
}

// Standard output may be a file, whose header can get the length after all.
void AudioWriter::completeHeader() {
    const std::uint64_t size = bytes();
    const int descriptor = out_.descriptor();
    if (size >= kUnknownWavLength || (fcntl(descriptor, F_GETFL) & O_APPEND) != 0) return;
    lseek(descriptor, headerAt_, SEEK_SET);
    out_.write(wavHeader(rate_, channels_, std::uint32_t(size)));
    lseek(descriptor, 0, SEEK_END);
}

void AudioWriter::fail() const {
    if (target_->error != 0) out_.fail(target_->error);
    throw FileError(file_, std::string("cannot be written: ") + sf_strerror(target_->sound));
}
