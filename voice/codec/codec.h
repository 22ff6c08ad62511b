// What a codec is inside: its public record, the functions of its family, and what tells it from others of the family.
#pragma once

#pragma GCC visibility push(default)  // of what the library exports
#include "vspsvoice/codec.h"
#pragma GCC visibility pop

namespace vspv {

struct Codec;

// The functions of a family. An object is memory of the size that the family asks for, aligned to 8 bytes. Arguments have
// been checked: the rate is one of the codec's, and a frame has the length that the record gives.
struct CodecFamily {
    Vsp32s (*encoderBytes)();
    Vsp32s (*decoderBytes)();
    void (*initEncoder)(void* encoder, const Codec& codec);
    void (*initDecoder)(void* decoder, const Codec& codec);
    void (*encode)(void* encoder, const Codec& codec, Vsp32s bitRate, const Vsp16s* samples, Vsp8u* bytes);
    bool (*accepts)(const Codec& codec, const Vsp8u* bytes);  // whether it is a frame of this codec
    void (*decode)(void* decoder, const Codec& codec, Vsp32s bitRate, const Vsp8u* bytes, Vsp16s* samples);
    void (*conceal)(void* decoder, const Codec& codec, Vsp16s* samples);
};

struct Codec {
    VspvCodec record;
    const CodecFamily* family;
    const void* settings;  // the family's, or null
};

inline bool acceptsAll(const Codec&, const Vsp8u*) { return true; }

extern const Codec kPcma, kPcmu, kG722, kGsm;
extern const Codec kG726_16, kG726_24, kG726_32, kG726_40;
extern const Codec kAal2G726_16, kAal2G726_24, kAal2G726_32, kAal2G726_40;

}  // namespace vspv
