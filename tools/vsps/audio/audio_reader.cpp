#include "audio/audio_reader.h"

#include <fcntl.h>
#include <sndfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <mutex>
#include <regex>
#include <span>
#include <utility>

#include "audio/audio_format.h"
#include "audio/resampler.h"
#include "console/error.h"
#include "console/standard_streams.h"

namespace {

constexpr int kLowestRate = 1000, kHighestRate = 768000;  // Hz; beyond them a header is taken to be broken
constexpr int kStretch = 1 << 14;                         // samples read at a time from a file
constexpr int kStretchesPerSecond = 50;                   // and from a pipe, where others may be waiting for them

// Programs that write a header into a pipe put about the largest size there.
constexpr unsigned long long kUnknownSize = 0x7fff0000;  // bytes
constexpr sf_count_t kUnknownLength = 0x0fff0000;        // samples, of up to 8 bytes

struct Closer {
    void operator()(SNDFILE* s) const { sf_close(s); }
};
using SoundFile = std::unique_ptr<SNDFILE, Closer>;

// What libsndfile itself accepts or words badly. Tells whether it is a pipe.
bool checkFile(const std::string& file) {
    struct stat status {};
    const bool standard = file == kStandardStream;
    if ((standard ? fstat(STDIN_FILENO, &status) : stat(file.c_str(), &status)) != 0)
        throw FileError(inputName(file), std::strerror(errno));
    if (S_ISDIR(status.st_mode)) throw FileError(inputName(file), "is a directory");
    if (S_ISREG(status.st_mode) && status.st_size == 0) throw FileError(inputName(file), "the file is empty");
    const bool isPipe = S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode);
    if (!S_ISREG(status.st_mode) && !isPipe) throw FileError(inputName(file), "is neither a file nor a pipe");
    return isPipe;
}

// The first bytes, which stay there to be read.
std::string firstBytes(int descriptor) {
    std::string bytes(4, '\0');
    ssize_t count = pread(descriptor, bytes.data(), bytes.size(), std::max<off_t>(0, lseek(descriptor, 0, SEEK_CUR)));
    if (count < 0) {  // a pipe
        int copy[2];
        if (pipe2(copy, O_CLOEXEC) != 0) return {};
        if (tee(descriptor, copy[1], bytes.size(), 0) > 0) count = read(copy[0], bytes.data(), bytes.size());
        close(copy[0]);
        close(copy[1]);
    }
    bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(0, count)));
    return bytes;
}

void refuseHeader(const std::string& name, const std::string& bytes) {
    const std::string format = formatOfHeader(bytes);
    if (!format.empty()) throw FileError(name, "has the header of " + format + ": leave out --raw");
}

// libsndfile's notes on the header.
std::string headerLog(SNDFILE* sound) {
    std::string log(1 << 14, '\0');
    const int length = sf_command(sound, SFC_GET_LOG_INFO, log.data(), static_cast<int>(log.size()));
    log.resize(static_cast<std::size_t>(std::max(0, length)));
    return log;
}

std::string openFailure(bool isPipe) {
    if (std::regex_search(headerLog(nullptr), std::regex("Sample [Rr]ate\\s*:\\s*0\n"))) return "the sample rate is 0 Hz";
    std::string reason = sf_strerror(nullptr);
    for (const char* prefix : {"Error : ", "System error : "})
        if (reason.starts_with(prefix)) reason.erase(0, std::strlen(prefix));
    while (!reason.empty() && (reason.back() == '.' || reason.back() == '\n')) reason.pop_back();
    if (sf_error(nullptr) == SF_ERR_UNRECOGNISED_FORMAT) reason += "; audio without a header needs --raw RATE";
    return "not readable as audio: " + reason + (isPipe ? " (a pipe can carry WAV, AU and headerless audio)" : "");
}

// What is missing if the header announces more audio data than there are.
std::string missingData(const std::string& log) {
    static const std::regex shortage("(?:data|SSND|Data Size)\\s*: (\\d+) \\(should be (\\d+)\\)");
    std::smatch match;
    if (!std::regex_search(log, match, shortage)) return {};
    const unsigned long long announced = std::stoull(match[1]), present = std::stoull(match[2]);
    if (announced <= present || announced >= kUnknownSize) return {};
    return std::to_string(present) + " of " + std::to_string(announced) + " bytes of audio";
}

// libsndfile takes every sample for an octet, whatever else the header says.
std::string lyingTag(int format, const std::string& log) {
    const bool aLaw = (format & SF_FORMAT_SUBMASK) == SF_FORMAT_ALAW,
               muLaw = (format & SF_FORMAT_SUBMASK) == SF_FORMAT_ULAW;
    static const std::regex width("Bit Width\\s*: (\\d+)");
    std::smatch match;
    if (!(aLaw || muLaw) || !std::regex_search(log, match, width) || match[1] == "8") return {};
    return std::string("its header says ") + (aLaw ? "A-law" : "mu-law") + ", but " + match[1].str() + " bits a sample";
}

}  // namespace

struct AudioReader::State {
    explicit State(const AudioSource& source) : name(inputName(source.file)) { open(source); }
    ~State() {
        sound.reset();
        if (descriptor >= 0) close(descriptor);
    }

    void open(const AudioSource& source);
    bool fill();
    std::span<const float> wanted(std::span<float> all) const;
    void checkFinite(std::span<const float> samples) const;
    void append(std::span<const float> interleaved);
    std::int16_t toPcm(float x);
    bool lengthUnknown() const { return !info.seekable && info.frames * info.channels >= kUnknownLength; }

    std::string name;
    int descriptor = -1;  // of a pipe
    SF_INFO info{};
    SoundFile sound;
    int rate = kRate, selected = -1;  // Hz; -1: all channels
    std::unique_ptr<Resampler> resampler;
    std::vector<float> stretch;
    Block pending;  // converted, from `taken` on not yet asked for
    std::size_t channels = 0, taken = 0;
    std::uint64_t inFile = 0, delivered = 0,
                  clipped = 0;  // samples of each channel at the file's rate, then at ours; samples
    std::string missing;        // at the end of the file, as its header has it
    bool ended = false;
};

void AudioReader::State::open(const AudioSource& source) {
    static std::mutex oneAtATime;  // libsndfile keeps why a file could not be opened in one place for all threads
    const bool isPipe = checkFile(source.file);
    if (isPipe || source.file == kStandardStream || source.rawRate != 0) {
        descriptor = source.file == kStandardStream ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                                    : ::open(source.file.c_str(), O_RDONLY | O_CLOEXEC);
        if (descriptor < 0) throw FileError(name, std::strerror(errno));
    }
    if (source.rawRate != 0) {
        refuseHeader(name, firstBytes(descriptor));
        info.samplerate = source.rawRate;
        info.channels = 1;
        info.format = rawFormat(source.file);
    }
    const std::scoped_lock lock(oneAtATime);
    sound.reset(descriptor >= 0 ? sf_open_fd(descriptor, SFM_READ, &info, SF_FALSE)
                                : sf_open(source.file.c_str(), SFM_READ, &info));
    if (!sound) throw FileError(name, openFailure(isPipe));
    if (info.samplerate < kLowestRate || info.samplerate > kHighestRate)
        throw FileError(name, "a sample rate of " + std::to_string(info.samplerate) + " Hz is not supported (" +
                                  std::to_string(kLowestRate) + " to " + std::to_string(kHighestRate) + ")");
    const std::string log = headerLog(sound.get());
    if (const std::string lie = lyingTag(info.format, log); !lie.empty()) throw FileError(name, lie);
    missing = missingData(log);
    channels = static_cast<std::size_t>(info.channels);
    const int frames = isPipe ? info.samplerate / kStretchesPerSecond : std::max(1, kStretch / info.channels);
    stretch.resize(static_cast<std::size_t>(frames) * channels);
}

// Reads and converts some more; false at the end.
bool AudioReader::State::fill() {
    if (ended) return false;
    if (pending.empty()) {
        pending.resize(selected < 0 ? channels : 1);
        if (info.samplerate != rate) resampler = std::make_unique<Resampler>(info.samplerate, rate, int(pending.size()));
    }
    const auto frames = static_cast<sf_count_t>(stretch.size() / channels);
    const sf_count_t count = sf_readf_float(sound.get(), stretch.data(), frames);
    if (count > 0) {
        const auto samples = wanted(std::span(stretch).first(static_cast<std::size_t>(count) * channels));
        checkFinite(samples);
        append(resampler ? std::span<const float>(resampler->process(samples)) : samples);
        inFile += static_cast<std::uint64_t>(count);
        return true;
    }
    ended = true;
    if (resampler && inFile > 0) append(resampler->finish());
    if (missing.empty() && inFile < static_cast<std::uint64_t>(info.frames) && !lengthUnknown())
        missing = std::to_string(inFile) + " of " + std::to_string(info.frames) + " samples";
    if (inFile == 0) throw FileError(name, "holds no samples" + (missing.empty() ? "" : ": cut short, " + missing));
    return true;
}

std::span<const float> AudioReader::State::wanted(std::span<float> all) const {
    if (selected < 0) return all;
    const std::size_t frames = all.size() / channels;
    for (std::size_t i = 0; i < frames; i++) all[i] = all[i * channels + static_cast<std::size_t>(selected)];
    return all.first(frames);
}

void AudioReader::State::checkFinite(std::span<const float> samples) const {
    for (std::size_t i = 0; i < samples.size(); i++)
        if (!std::isfinite(samples[i]))
            throw FileError(name, "sample " + std::to_string(inFile + i / pending.size()) + " is not a finite number");
}

void AudioReader::State::append(std::span<const float> interleaved) {
    for (Samples& channel : pending) channel.erase(channel.begin(), channel.begin() + std::ptrdiff_t(taken));
    taken = 0;
    for (std::size_t i = 0; i < interleaved.size(); i++) pending[i % pending.size()].push_back(toPcm(interleaved[i]));
}

std::int16_t AudioReader::State::toPcm(float x) {
    const float scaled = std::nearbyint(x * 32768.0f);
    if (scaled >= -32768.0f && scaled <= 32767.0f) return static_cast<std::int16_t>(scaled);
    clipped += scaled > 32768.0f || scaled < -32768.0f;  // +1.0 is full scale in floating point
    return scaled < 0 ? -32768 : 32767;
}

AudioReader::AudioReader(const AudioSource& source) : state_(std::make_unique<State>(source)) {}
AudioReader::~AudioReader() = default;
AudioReader::AudioReader(AudioReader&&) noexcept = default;

const std::string& AudioReader::name() const { return state_->name; }
int AudioReader::fileRate() const { return state_->info.samplerate; }
int AudioReader::rate() const { return state_->rate; }
std::size_t AudioReader::channels() const { return state_->selected < 0 ? state_->channels : 1; }
std::uint64_t AudioReader::length() const { return state_->delivered; }

std::uint64_t AudioReader::expected() const {
    if (state_->lengthUnknown()) return 0;
    return static_cast<std::uint64_t>(static_cast<double>(state_->info.frames) * rate() / fileRate());
}

void AudioReader::select(int channel) {
    if (channel < 1 || static_cast<std::size_t>(channel) > state_->channels)
        throw FileError(name(), "has no channel " + std::to_string(channel) + ", only " + std::to_string(state_->channels));
    state_->selected = channel - 1;
}

void AudioReader::convertTo(int rate) { state_->rate = rate; }

bool AudioReader::read(std::size_t samples, Block& block) {
    State& s = *state_;
    while ((s.pending.empty() || s.pending[0].size() - s.taken < samples) && s.fill()) {
    }
    const std::size_t count = std::min(samples, s.pending[0].size() - s.taken);
    block.resize(s.pending.size());
    for (std::size_t i = 0; i < block.size(); i++) {
        const auto from = s.pending[i].begin() + std::ptrdiff_t(s.taken);
        block[i].assign(from, from + std::ptrdiff_t(count));
    }
    s.taken += count;
    s.delivered += count;
    return count > 0;
}

std::vector<std::string> AudioReader::notes() const {
    const State& s = *state_;
    std::vector<std::string> notes;
    if (s.resampler)
        notes.push_back(s.name + ": resampled from " + std::to_string(s.info.samplerate) + " Hz to " +
                        std::to_string(s.rate) + " Hz");
    if (s.ended && !s.missing.empty()) notes.push_back(s.name + ": cut short, holds " + s.missing);
    if (s.clipped > 0)
        notes.push_back(s.name + ": " + std::to_string(s.clipped) + " samples beyond full scale were clipped");
    return notes;
}
