#include "codec/octet_stream.h"

#include "audio/audio_format.h"
#include "codec/codec_choice.h"
#include "codec/octet_reader.h"
#include "console/error.h"
#include "console/output_file.h"

namespace {

class OctetStreamReader : public FrameReader {
  public:
    OctetStreamReader(const std::string& file, const VspvCodec& codec, int bitRate)
        : FrameReader(codec), in_(file), bitRate_(chooseBitRate(codec, bitRate)) {
        if (const std::string format = formatOfHeader(in_.first()); !format.empty())
            throw FileError(in_.name(), "has the header of " + format + ": a sound file, no coded stream");
    }

    const std::string& name() const override { return in_.name(); }
    std::uint64_t expectedOctets() const override { return in_.expected(); }
    std::uint64_t octets() const override { return in_.count(); }

    bool read(CodedFrame& frame) override {
        const std::size_t whole = speechBytes(codec(), bitRate_);
        frame.bytes = in_.read(whole);
        if (frame.bytes.empty()) return false;
        frame.samples = samplesOf(codec(), frame.bytes.size());
        if (frame.bytes.size() < whole && !codesSampleBySample(codec()))
            throw FileError(name(), "cut short, ends within a frame of " + std::string(codec().name));
        frame.bytes.resize(whole);
        frame.told = {vspvFrameSpeech, vspvQualityGood, bitRate_, Vsp32s(whole)};
        return true;
    }

  private:
    OctetReader in_;
    int bitRate_;
};

class OctetStreamWriter : public FrameWriter {
  public:
    OctetStreamWriter(const std::string& file, const VspvCodec& codec) : codec_(codec), out_(file) {}

    void write(const CodedFrame& frame) override {
        const std::string_view bytes = std::string_view(frame.bytes).substr(0, bytesOf(codec_, frame.samples));
        out_.write(bytes);
        octets_ += bytes.size();
    }
    std::uint64_t octets() const override { return octets_; }
    void commit() override { out_.commit(); }

  private:
    const VspvCodec& codec_;
    OutputFile out_;
    std::uint64_t octets_ = 0;
};

}  // namespace

std::unique_ptr<FrameReader> openOctets(const std::string& file, const VspvCodec* codec, int bitRate) {
    return std::make_unique<OctetStreamReader>(file, *codec, bitRate);
}

std::unique_ptr<FrameWriter> createOctets(const std::string& file, const VspvCodec* codec) {
    return std::make_unique<OctetStreamWriter>(file, *codec);
}
