#include <sndfile.h>
#include <sys/stat.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <memory>
#include <mutex>
#include <regex>

#include "audio/audio.h"
#include "audio/resampler.h"
#include "console/error.h"
#include "console/progress.h"

namespace {

constexpr int kLowestRate = 1000, kHighestRate = 768000;  // Hz; beyond them a header is taken to be broken
constexpr sf_count_t kStretch = 1 << 16;                  // samples read at a time

// Programs that write a header into a pipe put about the largest size there.
constexpr unsigned long long kUnknownSize = 0x7fff0000;  // bytes
constexpr sf_count_t kUnknownLength = 0x0fff0000;        // samples, of up to 8 bytes

struct Closer {
    void operator()(SNDFILE* s) const { sf_close(s); }
};
using SoundFile = std::unique_ptr<SNDFILE, Closer>;

// What libsndfile itself accepts or words badly.
void checkFile(const std::string& file) {
    struct stat status {};
    if (stat(file.c_str(), &status) != 0) throw FileError(file, std::strerror(errno));
    if (S_ISDIR(status.st_mode)) throw FileError(file, "is a directory");
    if (S_ISREG(status.st_mode) && status.st_size == 0) throw FileError(file, "the file is empty");
    if (!S_ISREG(status.st_mode) && !S_ISFIFO(status.st_mode)) throw FileError(file, "is neither a file nor a pipe");
}

// libsndfile's notes on the header.
std::string headerLog(SNDFILE* sound) {
    std::string log(1 << 14, '\0');
    const int length = sf_command(sound, SFC_GET_LOG_INFO, log.data(), static_cast<int>(log.size()));
    log.resize(static_cast<std::size_t>(std::max(0, length)));
    return log;
}

std::string openFailure() {
    if (std::regex_search(headerLog(nullptr), std::regex("Sample Rate\\s*: 0\n"))) return "the sample rate is 0 Hz";
    std::string reason = sf_strerror(nullptr);
    for (const char* prefix : {"Error : ", "System error : "})
        if (reason.starts_with(prefix)) reason.erase(0, std::strlen(prefix));
    while (!reason.empty() && (reason.back() == '.' || reason.back() == '\n')) reason.pop_back();
    return "not readable as audio: " + reason;
}

// True if the header announces more audio data than there are.
bool isTruncated(const std::string& log) {
    static const std::regex shortage("(?:data|SSND|Data Size)\\s*: (\\d+) \\(should be (\\d+)\\)");
    std::smatch match;
    if (!std::regex_search(log, match, shortage)) return false;
    const unsigned long long announced = std::stoull(match[1]), present = std::stoull(match[2]);
    return announced > present && announced < kUnknownSize;
}

SoundFile open(const std::string& file, std::optional<RawInput> raw, SF_INFO& info) {
    static std::mutex oneAtATime;  // libsndfile keeps why a file could not be opened in one place for all threads
    const std::scoped_lock lock(oneAtATime);
    checkFile(file);
    if (raw) {
        info.samplerate = raw->rate;
        info.channels = 1;
        info.format = rawFormat(file);
    }
    SoundFile sound(sf_open(file.c_str(), SFM_READ, &info));
    if (!sound) throw FileError(file, openFailure());
    if (info.samplerate < kLowestRate || info.samplerate > kHighestRate)
        throw FileError(file, "a sample rate of " + std::to_string(info.samplerate) + " Hz is not supported (" +
                                  std::to_string(kLowestRate) + " to " + std::to_string(kHighestRate) + ")");
    if (isTruncated(headerLog(sound.get())))
        throw FileError(file, "truncated: the header announces more audio than the file holds");
    return sound;
}

class Collector {  // of converted samples, by channel
  public:
    explicit Collector(Recording& recording) : recording_(recording) {}

    void add(std::span<const float> interleaved) {
        for (std::size_t i = 0; i < interleaved.size(); i++)
            recording_.channels[i % recording_.channels.size()].push_back(toPcm(interleaved[i]));
    }

    std::size_t clipped() const { return clipped_; }

  private:
    std::int16_t toPcm(float x) {
        const float scaled = std::nearbyint(x * 32768.0f);
        if (scaled >= -32768.0f && scaled <= 32767.0f) return static_cast<std::int16_t>(scaled);
        clipped_ += scaled > 32768.0f || scaled < -32768.0f;  // +1.0 is full scale in floating point
        return scaled < 0 ? -32768 : 32767;
    }

    Recording& recording_;
    std::size_t clipped_ = 0;
};

void checkFinite(const std::string& file, std::span<const float> samples, std::size_t position, std::size_t channels) {
    for (std::size_t i = 0; i < samples.size(); i++)
        if (!std::isfinite(samples[i]))
            throw FileError(file, "sample " + std::to_string((position + i) / channels) + " is not a finite number");
}

}  // namespace

Recording readAudio(const std::string& file, std::optional<RawInput> raw, int otherRate) {
    SF_INFO info{};
    const SoundFile sound = open(file, raw, info);
    const auto channels = static_cast<std::size_t>(info.channels);
    const int rate = info.samplerate == otherRate ? otherRate : kRate;
    Recording recording{info.samplerate, rate, std::vector<Samples>(channels), {}};
    Collector collector(recording);
    std::unique_ptr<Resampler> resampler;
    if (info.samplerate != rate) resampler = std::make_unique<Resampler>(info.samplerate, rate, info.channels);

    const sf_count_t frames = std::max<sf_count_t>(1, kStretch / info.channels);
    std::vector<float> stretch(static_cast<std::size_t>(frames) * channels);
    sf_count_t total = 0;
    {
        Progress progress("reading", static_cast<std::size_t>(info.frames));
        while (true) {
            const sf_count_t count = sf_readf_float(sound.get(), stretch.data(), frames);
            if (count <= 0) break;
            const std::span<const float> samples(stretch.data(), static_cast<std::size_t>(count) * channels);
            checkFinite(file, samples, static_cast<std::size_t>(total) * channels, channels);
            collector.add(resampler ? std::span<const float>(resampler->process(samples)) : samples);
            total += count;
            progress.advance(static_cast<std::size_t>(count));
        }
        if (resampler) collector.add(resampler->finish());
    }
    const bool lengthUnknown = !info.seekable && info.frames * info.channels >= kUnknownLength;
    if (total < info.frames && !lengthUnknown) throw FileError(file, "truncated or damaged: the audio data end early");
    if (recording.length() == 0) throw FileError(file, "holds no samples");
    if (resampler)
        recording.notes.push_back(file + ": resampled from " + std::to_string(info.samplerate) + " Hz to " +
                                  std::to_string(rate) + " Hz");
    if (collector.clipped() > 0)
        recording.notes.push_back(file + ": " + std::to_string(collector.clipped()) +
                                  " samples beyond full scale were clipped");
    return recording;
}
