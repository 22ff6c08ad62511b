#include "codec/amr_file.h"

#include "codec/codec_choice.h"
#include "codec/octet_reader.h"
#include "console/error.h"
#include "console/output_file.h"

namespace {

constexpr const char* kMagic = "#!AMR\n";

const Vsp8u* octetsOf(const std::string& bytes) { return reinterpret_cast<const Vsp8u*>(bytes.data()); }

class AmrReader : public FrameReader {
  public:
    AmrReader(const std::string& file, const VspvCodec& codec, int bitRate) : FrameReader(codec), in_(file) {
        chooseBitRate(codec, bitRate);
        std::string magic = in_.read(std::string(kMagic).size());
        if (magic == kMagic) return;
        if (magic.starts_with("#!AMR-")) throw FileError(name(), "has the header of AMR-WB, which is another codec");
        if (magic.starts_with("#!AMR_")) throw FileError(name(), "has several channels; one is supported");
        throw FileError(name(), "has not the header of an AMR file");
    }

    const std::string& name() const override { return in_.name(); }
    std::uint64_t expectedOctets() const override { return in_.expected(); }
    std::uint64_t octets() const override { return in_.count(); }

    bool read(CodedFrame& frame) override {
        std::string stored = in_.read(1);
        if (stored.empty()) return false;
        frames_++;
        // The header alone tells by the status whether there is such a frame, and the longest one how long it is.
        std::string longest = stored + std::string(vspvAMRMaxFormBytes, '\0');
        Vsp32s used = 0;
        frame.bytes.resize(std::size_t(codec().maxFrameBytes));
        const auto bytes = reinterpret_cast<Vsp8u*>(frame.bytes.data());
        if (vspvAMRUnpackFrame(octetsOf(longest), Vsp32s(longest.size()), vspvAMRStorage, bytes, &frame.told, &used) !=
            vspStsNoErr)
            throw FileError(name(), "frame " + std::to_string(frames_) + " is none of AMR");
        stored += in_.read(std::size_t(used) - 1);
        if (vspvAMRUnpackFrame(octetsOf(stored), Vsp32s(stored.size()), vspvAMRStorage, bytes, &frame.told, &used) !=
            vspStsNoErr)
            throw FileError(name(), "cut short, ends within frame " + std::to_string(frames_));
        frame.bytes.resize(std::size_t(frame.told.numBytes));
        frame.samples = std::size_t(codec().frameSamples);
        return true;
    }

  private:
    OctetReader in_;
    std::uint64_t frames_ = 0;
};

class AmrWriter : public FrameWriter {
  public:
    explicit AmrWriter(const std::string& file) : out_(file, kMagic), octets_(std::string(kMagic).size()) {}

    bool holdsSilence() const override { return true; }
    void write(const CodedFrame& frame) override {
        Vsp8u stored[vspvAMRMaxFormBytes];
        Vsp32s bytes = 0;
        vspvAMRPackFrame(octetsOf(frame.bytes), &frame.told, vspvAMRStorage, 0, stored, &bytes);
        out_.write({reinterpret_cast<const char*>(stored), std::size_t(bytes)});
        octets_ += std::uint64_t(bytes);
    }
    std::uint64_t octets() const override { return octets_; }
    void commit() override { out_.commit(); }

  private:
    OutputFile out_;
    std::uint64_t octets_;
};

}  // namespace

std::unique_ptr<FrameReader> openAmr(const std::string& file, const VspvCodec* codec, int bitRate) {
    return std::make_unique<AmrReader>(file, *codec, bitRate);
}

std::unique_ptr<FrameWriter> createAmr(const std::string& file, const VspvCodec*) {
    return std::make_unique<AmrWriter>(file);
}
