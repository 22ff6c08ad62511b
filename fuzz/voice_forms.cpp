// Any octets as frames of amr and amrwb in the forms in which they are stored and sent, and as RTP payloads. An error
// changes nothing; what is taken out can be put in again, and comes out the same; the decoder takes it.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "vspsvoice.h"

namespace {

constexpr std::size_t kFrameBytes = 60;
constexpr Vsp32s kMaxFrames = 40;

void check(bool good, const char* problem) {
    if (good) return;
    std::fprintf(stderr, "%s\n", problem);
    std::abort();
}

bool same(const VspvFrame& a, const VspvFrame& b) {
    return a.type == b.type && a.quality == b.quality && a.bitRate == b.bitRate && a.numBytes == b.numBytes;
}

// The two codecs under one interface; only amr has several forms of a frame.
struct Codec {
    const char* name;
    VspStatus (*packFrame)(const Vsp8u*, const VspvFrame*, Vsp32s, Vsp32s, Vsp8u*, Vsp32s*);
    VspStatus (*unpackFrame)(const Vsp8u*, Vsp32s, Vsp32s, Vsp8u*, VspvFrame*, Vsp32s*);
    VspStatus (*packPayload)(const Vsp8u*, const VspvFrame*, Vsp32s, Vsp32s, Vsp32s, Vsp8u*, Vsp32s*);
    VspStatus (*unpackPayload)(const Vsp8u*, Vsp32s, Vsp32s, Vsp32s, Vsp32s*, Vsp8u*, VspvFrame*, Vsp32s*);
};

constexpr Codec kNarrow = {"amr", vspvAMRPackFrame, vspvAMRUnpackFrame, vspvAMRPackPayload, vspvAMRUnpackPayload};
constexpr Codec kWide = {"amrwb",
                         [](const Vsp8u* bytes, const VspvFrame* frame, Vsp32s, Vsp32s, Vsp8u* dst, Vsp32s* dstBytes) {
                             return vspvAMRWBPackFrame(bytes, frame, dst, dstBytes);
                         },
                         [](const Vsp8u* src, Vsp32s srcBytes, Vsp32s, Vsp8u* bytes, VspvFrame* frame, Vsp32s* used) {
                             return vspvAMRWBUnpackFrame(src, srcBytes, bytes, frame, used);
                         },
                         vspvAMRWBPackPayload, vspvAMRWBUnpackPayload};

class Decoder {
  public:
    explicit Decoder(const Codec& forms) {
        const VspvCodec* codec = vspvFindCodec(forms.name);
        Vsp32s bytes = 0;
        vspvDecoderGetSize(codec, &bytes);
        memory_.resize(std::size_t(bytes) / 8);
        vspvDecoderInit(get(), codec);
    }
    void operator()(const Vsp8u* bytes, const VspvFrame& frame) {
        Vsp16s samples[320];
        const std::vector<Vsp8u> exact(bytes, bytes + frame.numBytes);
        check(vspvDecode(get(), exact.data(), &frame, samples) == vspStsNoErr, "a frame is not decoded");
    }

  private:
    VspvDecoder* get() { return reinterpret_cast<VspvDecoder*>(memory_.data()); }
    std::vector<Vsp64s> memory_;
};

// What is taken out, over what was there.
struct Frames {
    Vsp32s request = -7, number = -7, used = -7;
    VspvFrame frames[kMaxFrames];
    Vsp8u bytes[kMaxFrames * kFrameBytes];

    Frames() {
        std::memset(frames, 0x55, sizeof frames);
        std::memset(bytes, 0x55, sizeof bytes);
    }
    bool operator==(const Frames& other) const {
        for (Vsp32s i = 0; i < kMaxFrames; i++)
            if (!same(frames[i], other.frames[i])) return false;
        return request == other.request && number == other.number && std::memcmp(bytes, other.bytes, sizeof bytes) == 0;
    }
};

VspStatus unpackForm(const Codec& codec, const std::vector<Vsp8u>& source, Vsp32s form, Frames& f) {
    return codec.unpackFrame(source.data(), Vsp32s(source.size()), form, f.bytes, f.frames, &f.used);
}

void runForm(const Codec& codec, std::vector<Vsp8u> source, Vsp32s form) {
    Decoder decoder(codec);
    while (!source.empty()) {
        Frames f, again;
        const VspStatus status = unpackForm(codec, source, form, f);
        if (status != vspStsNoErr) {
            check(f == Frames() && f.used == -7, "an error changed something");
            source.erase(source.begin());
            continue;
        }
        check(f.used >= 1 && f.used <= Vsp32s(source.size()), "more octets are used than there are");
        decoder(f.bytes, f.frames[0]);
        std::vector<Vsp8u> packed(vspvAMRWBMaxStoredBytes);
        Vsp32s bytes = 0;
        check(codec.packFrame(f.bytes, f.frames, form, 0, packed.data(), &bytes) == vspStsNoErr, "a frame is not packed");
        packed.resize(std::size_t(bytes));
        check(bytes == f.used && unpackForm(codec, packed, form, again) == vspStsNoErr && again == f,
              "a frame becomes another");
        source.erase(source.begin(), source.begin() + f.used);
    }
}

VspStatus unpackPayload(const Codec& codec, const std::vector<Vsp8u>& source, Vsp32s octetAligned, Vsp32s room, Frames& f) {
    return codec.unpackPayload(source.data(), Vsp32s(source.size()), octetAligned, room, &f.request, f.bytes, f.frames,
                               &f.number);
}

void runPayload(const Codec& codec, const std::vector<Vsp8u>& source, Vsp32s octetAligned, Vsp32s room) {
    Frames f, again;
    if (unpackPayload(codec, source, octetAligned, room, f) != vspStsNoErr) {
        check(f == Frames(), "an error changed something");
        return;
    }
    check(f.number >= 1 && f.number <= room, "there are more frames than there is room for");
    Decoder decoder(codec);
    const Vsp8u* bytes = f.bytes;
    for (Vsp32s i = 0; i < f.number; i++) {
        decoder(bytes, f.frames[i]);
        bytes += f.frames[i].numBytes;
    }
    std::vector<Vsp8u> packed(1 + 61 * std::size_t(f.number));
    Vsp32s size = 0;
    check(codec.packPayload(f.bytes, f.frames, f.number, octetAligned, f.request, packed.data(), &size) == vspStsNoErr,
          "a payload is not packed");
    packed.resize(std::size_t(size));
    check(packed.size() <= source.size(), "a payload that is cut off is taken");
    check(unpackPayload(codec, packed, octetAligned, room, again) == vspStsNoErr && again == f,
          "a payload becomes another");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const Vsp8u* data, std::size_t size) {
    if (size < 3) return 0;
    const Vsp8u choice = data[0];
    std::vector<Vsp8u> source(data + 2, data + size);
    if (choice % 2 == 0) {
        runForm(choice / 128 == 0 ? kNarrow : kWide, source, choice / 2 % 3);
    } else {
        runPayload(choice / 128 == 0 ? kNarrow : kWide, source, choice / 4 % 2, 1 + data[1] % kMaxFrames);
    }
    return 0;
}
