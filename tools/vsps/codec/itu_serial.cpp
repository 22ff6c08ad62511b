#include "codec/itu_serial.h"

#include <algorithm>

#include "codec/codec_choice.h"
#include "codec/octet_reader.h"
#include "console/error.h"
#include "console/output_file.h"
#include "console/standard_streams.h"

namespace {

constexpr unsigned kSync = 0x6B21, kZero = 0x7F, kOne = 0x81;
constexpr std::size_t kMaxBits = 1024, kSilenceBits = 15, kSilenceOctets = 2;

unsigned wordAt(const std::string& bytes, std::size_t i) {
    return unsigned(static_cast<unsigned char>(bytes[2 * i])) | unsigned(static_cast<unsigned char>(bytes[2 * i + 1])) << 8;
}

class ItuSerialReader : public FrameReader {
  public:
    ItuSerialReader(const std::string& file, const VspvCodec& codec) : FrameReader(codec), in_(file) {}

    const std::string& name() const override { return in_.name(); }
    std::uint64_t expectedOctets() const override { return in_.expected(); }
    std::uint64_t octets() const override { return in_.count(); }

    // A word of zero among the bits says that the frame is erased, and of a frame without bits another word in the place of
    // that for synchronisation.
    bool read(CodedFrame& frame) override {
        const std::string header = in_.read(4);
        if (header.empty()) return false;
        frames_++;
        if (header.size() < 4) fail("is cut short");
        const unsigned sync = wordAt(header, 0);
        const std::size_t bits = wordAt(header, 1);
        if ((sync != kSync && bits != 0) || bits > kMaxBits) fail("does not begin with the word for synchronisation");
        const std::string words = in_.read(2 * bits);
        if (words.size() < 2 * bits) fail("is cut short");

        bool erased = sync != kSync;
        frame.bytes.assign((bits + 7) / 8, '\0');
        for (std::size_t i = 0; i < bits; i++) {
            const unsigned word = wordAt(words, i);
            if (word != kZero && word != kOne && word != 0) fail("has a word that is no bit");
            erased = erased || word == 0;
            if (word == kOne) frame.bytes[i / 8] = char(frame.bytes[i / 8] | 0x80 >> i % 8);
        }
        frame.told = described(bits);
        if (erased) frame.told.quality = bits == 0 ? vspvQualityLost : vspvQualityBad;
        frame.samples = std::size_t(codec().frameSamples);
        return true;
    }

  private:
    [[noreturn]] void fail(const std::string& reason) const {
        throw FileError(name(), "frame " + std::to_string(frames_) + " of the serial format " + reason);
    }

    VspvFrame described(std::size_t bits) const {
        const VspvCodec& c = codec();
        const bool silence = (c.capabilities & vspvCodecDTX) != 0;
        const auto octets = Vsp32s((bits + 7) / 8);
        if (bits == 0) return {vspvFrameNoData, silence ? vspvQualityGood : vspvQualityLost, c.pBitRates[0], 0};
        if (silence && octets == Vsp32s(kSilenceOctets))
            return {vspvFrameSIDUpdate, vspvQualityGood, c.pBitRates[0], octets};
        for (Vsp32s i = 0; i < c.numBitRates; i++)
            if (bits == std::size_t(c.pBitRates[i]) * std::size_t(c.frameSamples) / std::size_t(c.samplingRate))
                return {vspvFrameSpeech, vspvQualityGood, c.pBitRates[i], octets};
        fail("has " + std::to_string(bits) + " bits, which is none of " + c.name);
    }

    OctetReader in_;
    std::uint64_t frames_ = 0;
};

class ItuSerialWriter : public FrameWriter {
  public:
    ItuSerialWriter(const std::string& file, const VspvCodec& codec) : codec_(codec), out_(file) {}

    bool holdsSilence() const override { return true; }
    void write(const CodedFrame& frame) override {
        const bool speech = frame.told.type == vspvFrameSpeech;
        const std::size_t bits =
            frame.bytes.empty() ? 0
            : speech ? std::size_t(frame.told.bitRate) * std::size_t(codec_.frameSamples) / std::size_t(codec_.samplingRate)
                     : kSilenceBits;
        std::string words;
        const auto put = [&](std::size_t word) { words += {char(word & 0xFF), char(word >> 8)}; };
        put(kSync);
        put(bits);
        for (std::size_t i = 0; i < bits; i++) put((frame.bytes[i / 8] >> (7 - i % 8) & 1) != 0 ? kOne : kZero);
        out_.write(words);
        octets_ += words.size();
    }
    std::uint64_t octets() const override { return octets_; }
    void commit() override { out_.commit(); }

  private:
    const VspvCodec& codec_;
    OutputFile out_;
    std::uint64_t octets_ = 0;
};

const VspvCodec& checked(const std::string& file, const VspvCodec* codec) {
    const VspvCodec& c = codec != nullptr ? *codec : *vspvFindCodec("g729");
    if (const std::string name = c.name; name.starts_with("g729") || name.starts_with("g7221")) return c;
    throw FileError(inputName(file), std::string("the serial format holds G.729 and G.722.1, not ") + c.name);
}

}  // namespace

std::unique_ptr<FrameReader> openItuSerial(const std::string& file, const VspvCodec* codec, int bitRate) {
    const VspvCodec& c = checked(file, codec);
    chooseBitRate(c, bitRate);
    return std::make_unique<ItuSerialReader>(file, c);
}

std::unique_ptr<FrameWriter> createItuSerial(const std::string& file, const VspvCodec* codec) {
    return std::make_unique<ItuSerialWriter>(file, checked(file, codec));
}
