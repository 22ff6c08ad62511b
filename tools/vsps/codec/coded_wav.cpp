#include "codec/coded_wav.h"

#include <unistd.h>

#include <cerrno>
#include <utility>

#include "audio/wav_numbers.h"
#include "codec/codec_choice.h"
#include "codec/gsm_wav_block.h"
#include "codec/octet_reader.h"
#include "codec/wav_tags.h"
#include "console/error.h"
#include "console/output_file.h"
#include "console/report_format.h"

namespace {

constexpr std::uint32_t kPcm = 1, kFloat = 3, kExtensible = 0xFFFE;
constexpr std::size_t kLongestChunk = 1 << 20;  // octets, of those before the audio

struct Header {
    const WavTag* tag = nullptr;
    const VspvCodec* codec = nullptr;
    std::uint64_t octets = 0;  // of audio
    bool lengthKnown = true;
};

const WavTag& checkFormat(const std::string& name, const std::string& content) {
    std::uint32_t kind = numberAt(content, 0, 2);
    if (kind == kExtensible) kind = numberAt(content, 24, 2);
    const std::uint32_t channels = numberAt(content, 2, 2), bits = numberAt(content, 14, 2),
                        block = numberAt(content, 12, 2);
    if (kind == kPcm || kind == kFloat) throw FileError(name, "is not coded, it holds samples: nothing to decode");
    const WavTag* tag = wavTag(kind, bits);
    if (tag == nullptr) throw FileError(name, format("no codec for WAV files with the tag 0x%04X", kind));
    if (channels != 1) throw FileError(name, "has " + std::to_string(channels) + " channels; coded speech has one");
    if (tag->bits != bits || block % tag->blockOctets != 0 || block == 0)
        throw FileError(name, std::string("its header says ") + tag->description + ", but " + std::to_string(bits) +
                                  " bits a sample in blocks of " + std::to_string(block) + " octets");
    return *tag;
}

Header readHeader(OctetReader& in) {
    const auto exactly = [&](std::size_t count) {
        std::string bytes = in.read(count);
        if (bytes.size() < count) throw FileError(in.name(), "cut short, ends within the header");
        return bytes;
    };
    if (in.first() != "RIFF" || exactly(12).substr(8) != "WAVE") throw FileError(in.name(), "has no header of a WAV file");
    Header header;
    for (;;) {
        const std::string chunk = exactly(8), id = chunk.substr(0, 4);
        const std::uint32_t size = numberAt(chunk, 4, 4);
        if (id == "data") {
            if (header.tag == nullptr) throw FileError(in.name(), "its header does not say what it holds");
            header.octets = size;
            header.lengthKnown = size < kUnknownWavLength;
            return header;
        }
        if (size > kLongestChunk) throw FileError(in.name(), "its header is damaged");
        const std::string content = exactly(size + size % 2);
        if (id != "fmt ") continue;
        header.tag = &checkFormat(in.name(), content);
        header.codec = vspvFindCodec(header.tag->codec);
        if (const std::uint32_t rate = numberAt(content, 4, 4); int(rate) != header.codec->samplingRate)
            throw FileError(in.name(), std::string("is at ") + std::to_string(rate) + " Hz; " + header.codec->name +
                                           " is at " + std::to_string(header.codec->samplingRate) + " Hz");
    }
}

// Frames in blocks as the tag has them: octets in their order, or the two frames of a block of GSM.
class CodedWavReader : public FrameReader {
  public:
    CodedWavReader(OctetReader in, const Header& header, int bitRate)
        : FrameReader(*header.codec), in_(std::move(in)), header_(header), bitRate_(bitRate), begin_(in_.count()) {}

    const std::string& name() const override { return in_.name(); }
    std::uint64_t expectedOctets() const override { return header_.lengthKnown ? header_.octets : 0; }
    std::uint64_t octets() const override { return in_.count() - begin_; }

    bool read(CodedFrame& frame) override {
        const auto whole = std::size_t(codec().maxFrameBytes);
        if (ready_.empty()) ready_ = readBlocks(whole);
        if (ready_.empty()) return false;
        frame.bytes = ready_.substr(0, whole);
        ready_.erase(0, frame.bytes.size());
        frame.samples = samplesOf(codec(), frame.bytes.size());
        frame.bytes.resize(whole);
        frame.told = {vspvFrameSpeech, vspvQualityGood, bitRate_, codec().maxFrameBytes};
        return true;
    }

  private:
    std::string readBlocks(std::size_t frame) {
        const std::size_t block = header_.tag->blockOctets;
        const bool isGsm = block == kGsmWavBlockOctets;
        const std::size_t wanted = isGsm ? block : frame;
        const std::uint64_t left = header_.lengthKnown ? header_.octets - octets() : wanted;
        std::string bytes = in_.read(std::min<std::uint64_t>(wanted, left));
        if (bytes.size() < std::min<std::uint64_t>(wanted, left) && header_.lengthKnown)
            throw FileError(name(), "cut short, holds " + std::to_string(octets()) + " of " +
                                        std::to_string(header_.octets) + " octets of audio");
        if (isGsm && bytes.size() % block != 0)
            throw FileError(name(), std::string("ends within a block of ") + header_.tag->description);
        return isGsm && !bytes.empty() ? framesOfGsmWavBlock(bytes) : bytes;
    }

    OctetReader in_;
    Header header_;
    int bitRate_;
    std::uint64_t begin_;  // octets of the header
    std::string ready_;
};

std::string wavHeader(const WavTag& tag, const VspvCodec& codec, std::uint32_t octets, std::uint32_t samples) {
    const bool isGsm = tag.blockOctets == kGsmWavBlockOctets;
    const auto rate = std::uint32_t(codec.samplingRate);
    std::string format;
    put(format, tag.tag, 2);
    put(format, 1, 2);
    put(format, rate, 4);
    put(format, rate * tag.blockOctets / tag.blockSamples, 4);
    put(format, tag.blockOctets, 2);
    put(format, tag.bits, 2);
    put(format, isGsm ? 2 : 0, 2);
    if (isGsm) put(format, tag.blockSamples, 2);

    std::string header = "RIFF";
    const std::uint32_t rest = 4 + 8 + std::uint32_t(format.size()) + 8 + 4 + 8;
    put(header, octets < kUnknownWavLength ? rest + octets + octets % 2 : octets, 4);
    header += "WAVEfmt ";
    put(header, std::uint32_t(format.size()), 4);
    header += format + "fact";
    put(header, 4, 4);
    put(header, samples, 4);
    header += "data";
    put(header, octets, 4);
    return header;
}

// The length goes into the header in the end, where the output can go back to it.
class CodedWavWriter : public FrameWriter {
  public:
    CodedWavWriter(const std::string& file, const VspvCodec& codec, const WavTag& tag)
        : file_(file), codec_(codec), tag_(tag), out_(file) {
        out_.write(wavHeader(tag, codec, kUnknownWavLength, kUnknownWavLength));
    }

    std::size_t framesOfBlock() const override { return tag_.blockOctets == kGsmWavBlockOctets ? 2 : 1; }

    void write(const CodedFrame& frame) override {
        waiting_ += std::string_view(frame.bytes).substr(0, bytesOf(codec_, frame.samples));
        samples_ += frame.samples;
        if (framesOfBlock() == 1) {
            add(waiting_);
        } else if (waiting_.size() == framesOfBlock() * kGsmFrameOctets) {
            add(gsmWavBlock(waiting_));
        } else {
            return;
        }
        waiting_.clear();
    }
    std::uint64_t octets() const override { return octets_; }

    void commit() override {
        if (octets_ % tag_.blockOctets != 0) add(std::string(tag_.blockOctets - octets_ % tag_.blockOctets, '\0'));
        if (octets_ % 2 != 0) out_.write(std::string_view("\0", 1));
        if (!out_.isStream()) {
            const std::string header = wavHeader(tag_, codec_, std::uint32_t(octets_), std::uint32_t(samples_));
            if (pwrite(out_.descriptor(), header.data(), header.size(), 0) != ssize_t(header.size())) out_.fail(errno);
        }
        out_.commit();
    }

  private:
    void add(std::string_view bytes) {
        out_.write(bytes);
        octets_ += bytes.size();
        if (octets_ >= kUnknownWavLength && !out_.isStream())
            throw FileError(file_, "more than 2 GiB do not go into a WAV file");
    }

    std::string file_;
    const VspvCodec& codec_;
    const WavTag& tag_;
    OutputFile out_;
    std::string waiting_;  // for its block to be full
    std::uint64_t octets_ = 0, samples_ = 0;
};

}  // namespace

std::unique_ptr<FrameReader> openCodedWav(const std::string& file, const VspvCodec* codec, int bitRate) {
    OctetReader in(file);
    const Header header = readHeader(in);
    if (codec != nullptr && codec != header.codec)
        throw FileError(in.name(), std::string("holds ") + header.tag->description + ", which is " + header.codec->name +
                                       " and not " + codec->name);
    const int rate = chooseBitRate(*header.codec, bitRate);
    return std::make_unique<CodedWavReader>(std::move(in), header, rate);
}

std::unique_ptr<FrameWriter> createCodedWav(const std::string& file, const VspvCodec* codec) {
    const WavTag* tag = wavTagOf(codec->name);
    if (tag == nullptr)
        throw FileError(file, std::string("a WAV file has no tag for ") + codec->name + ", only for " + codecsWithTags());
    return std::make_unique<CodedWavWriter>(file, *codec, *tag);
}
