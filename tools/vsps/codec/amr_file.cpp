#include "codec/amr_file.h"

#include <utility>
#include <vector>

#include "codec/codec_choice.h"
#include "codec/octet_reader.h"
#include "console/error.h"
#include "console/output_file.h"

namespace {

// What tells the files of the two codecs apart.
struct Kind {
    std::string magic;
    const char* codec;
    std::size_t longestFrame;  // octets, as it is stored
    VspStatus (*pack)(const Vsp8u* bytes, const VspvFrame* frame, Vsp8u* stored, Vsp32s* storedBytes);
    VspStatus (*unpack)(const Vsp8u* stored, Vsp32s storedBytes, Vsp8u* bytes, VspvFrame* frame, Vsp32s* used);
};

const Kind kNarrow = {"#!AMR\n", "AMR", vspvAMRMaxFormBytes,
                      [](const Vsp8u* bytes, const VspvFrame* frame, Vsp8u* stored, Vsp32s* storedBytes) {
                          return vspvAMRPackFrame(bytes, frame, vspvAMRStorage, 0, stored, storedBytes);
                      },
                      [](const Vsp8u* stored, Vsp32s storedBytes, Vsp8u* bytes, VspvFrame* frame, Vsp32s* used) {
                          return vspvAMRUnpackFrame(stored, storedBytes, vspvAMRStorage, bytes, frame, used);
                      }};
const Kind kWide = {"#!AMR-WB\n", "AMR-WB", vspvAMRWBMaxStoredBytes, vspvAMRWBPackFrame, vspvAMRWBUnpackFrame};

const Vsp8u* octetsOf(const std::string& bytes) { return reinterpret_cast<const Vsp8u*>(bytes.data()); }

class AmrReader : public FrameReader {
  public:
    AmrReader(const Kind& kind, const std::string& file, const VspvCodec& codec, int bitRate)
        : FrameReader(codec), kind_(kind), in_(file) {
        chooseBitRate(codec, bitRate);
        const std::string magic = in_.read(kind.magic.size());
        if (magic == kind.magic) return;
        if (magic.starts_with("#!AMR_") || magic.starts_with("#!AMR-WB_"))
            throw FileError(in_.name(), "has several channels; one is supported");
        for (const auto& [other, codecName] : {std::pair(&kNarrow, "amr"), {&kWide, "amrwb"}})
            if (magic.starts_with(other->magic.substr(0, kNarrow.magic.size())))
                throw FileError(in_.name(),
                                std::string("has the header of ") + other->codec + "; use --codec " + codecName);
        throw FileError(in_.name(), std::string("has not the header of an ") + kind.codec + " file");
    }

    const std::string& name() const override { return in_.name(); }
    std::uint64_t expectedOctets() const override { return in_.expected(); }
    std::uint64_t octets() const override { return in_.count(); }

    bool read(CodedFrame& frame) override {
        std::string stored = in_.read(1);
        if (stored.empty()) return false;
        frames_++;
        // The header alone tells by the status whether there is such a frame, and the longest one how long it is.
        std::string longest = stored + std::string(kind_.longestFrame, '\0');
        Vsp32s used = 0;
        frame.bytes.resize(std::size_t(codec().maxFrameBytes));
        const auto bytes = reinterpret_cast<Vsp8u*>(frame.bytes.data());
        if (kind_.unpack(octetsOf(longest), Vsp32s(longest.size()), bytes, &frame.told, &used) != vspStsNoErr)
            throw FileError(name(), "frame " + std::to_string(frames_) + " is none of " + kind_.codec);
        stored += in_.read(std::size_t(used) - 1);
        if (kind_.unpack(octetsOf(stored), Vsp32s(stored.size()), bytes, &frame.told, &used) != vspStsNoErr)
            throw FileError(name(), "cut short, ends within frame " + std::to_string(frames_));
        frame.bytes.resize(std::size_t(frame.told.numBytes));
        frame.samples = std::size_t(codec().frameSamples);
        return true;
    }

  private:
    const Kind& kind_;
    OctetReader in_;
    std::uint64_t frames_ = 0;
};

class AmrWriter : public FrameWriter {
  public:
    AmrWriter(const Kind& kind, const std::string& file)
        : kind_(kind), out_(file, kind.magic), octets_(kind.magic.size()), stored_(kind.longestFrame) {}

    bool holdsSilence() const override { return true; }
    void write(const CodedFrame& frame) override {
        Vsp32s bytes = 0;
        kind_.pack(octetsOf(frame.bytes), &frame.told, stored_.data(), &bytes);
        out_.write({reinterpret_cast<const char*>(stored_.data()), std::size_t(bytes)});
        octets_ += std::uint64_t(bytes);
    }
    std::uint64_t octets() const override { return octets_; }
    void commit() override { out_.commit(); }

  private:
    const Kind& kind_;
    OutputFile out_;
    std::uint64_t octets_;
    std::vector<Vsp8u> stored_;
};

}  // namespace

std::unique_ptr<FrameReader> openAmr(const std::string& file, const VspvCodec* codec, int bitRate) {
    return std::make_unique<AmrReader>(kNarrow, file, *codec, bitRate);
}

std::unique_ptr<FrameReader> openAmrWb(const std::string& file, const VspvCodec* codec, int bitRate) {
    return std::make_unique<AmrReader>(kWide, file, *codec, bitRate);
}

std::unique_ptr<FrameWriter> createAmr(const std::string& file, const VspvCodec*) {
    return std::make_unique<AmrWriter>(kNarrow, file);
}

std::unique_ptr<FrameWriter> createAmrWb(const std::string& file, const VspvCodec*) {
    return std::make_unique<AmrWriter>(kWide, file);
}
