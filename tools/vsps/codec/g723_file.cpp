#include "codec/g723_file.h"

#include "audio/audio_format.h"
#include "codec/codec_choice.h"
#include "codec/octet_reader.h"
#include "console/error.h"
#include "console/output_file.h"

namespace {

constexpr const char* kNoData = "\x03";

class G723Reader : public FrameReader {
  public:
    G723Reader(const std::string& file, const VspvCodec& codec, int bitRate) : FrameReader(codec), in_(file) {
        chooseBitRate(codec, bitRate);
        if (const std::string format = formatOfHeader(in_.first()); !format.empty())
            throw FileError(in_.name(), "has the header of " + format + ": a sound file, no coded stream");
    }

    const std::string& name() const override { return in_.name(); }
    std::uint64_t expectedOctets() const override { return in_.expected(); }
    std::uint64_t octets() const override { return in_.count(); }

    bool read(CodedFrame& frame) override {
        frame.bytes = in_.read(1);
        if (frame.bytes.empty()) return false;
        frames_++;
        vspvG723Frame(Vsp8u(frame.bytes[0]), &frame.told);
        const auto whole = std::size_t(frame.told.numBytes);
        frame.bytes += in_.read(whole - 1);
        if (frame.bytes.size() < whole) throw FileError(name(), "cut short, ends within frame " + std::to_string(frames_));
        frame.samples = std::size_t(codec().frameSamples);
        return true;
    }

  private:
    OctetReader in_;
    std::uint64_t frames_ = 0;
};

class G723Writer : public FrameWriter {
  public:
    explicit G723Writer(const std::string& file) : out_(file) {}

    bool holdsSilence() const override { return true; }
    void write(const CodedFrame& frame) override {
        const std::string_view bytes = frame.told.numBytes == 0
                                           ? std::string_view(kNoData)
                                           : std::string_view(frame.bytes).substr(0, std::size_t(frame.told.numBytes));
        out_.write(bytes);
        octets_ += bytes.size();
    }
    std::uint64_t octets() const override { return octets_; }
    void commit() override { out_.commit(); }

  private:
    OutputFile out_;
    std::uint64_t octets_ = 0;
};

}  // namespace

std::unique_ptr<FrameReader> openG723(const std::string& file, const VspvCodec* codec, int bitRate) {
    return std::make_unique<G723Reader>(file, *codec, bitRate);
}

std::unique_ptr<FrameWriter> createG723(const std::string& file, const VspvCodec*) {
    return std::make_unique<G723Writer>(file);
}
