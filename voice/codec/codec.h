// What a codec is inside: its public record, the functions of its family, and what tells it from others of the family.
#pragma once

#pragma GCC visibility push(default)  // of what the library exports
#include "vspsvoice/codec.h"
#pragma GCC visibility pop

namespace vspv {

struct Codec;

// The functions of a family. An object is memory of the size that the family asks for, aligned to 8 bytes.
struct CodecFamily {
    Vsp32s (*encoderBytes)();
    Vsp32s (*decoderBytes)();
    void (*initEncoder)(void* encoder, const Codec& codec);
    void (*initDecoder)(void* decoder, const Codec& codec);
    // The frame comes as speech at the rate in force, of the codec's longest frame; the family corrects what is otherwise.
    void (*encode)(void* encoder, const Codec& codec, const Vsp16s* samples, Vsp8u* bytes, VspvFrame& frame);
    // Of a frame that has arrived, with errors or without: what vspvDecode says of it.
    VspStatus (*check)(const Codec& codec, const Vsp8u* bytes, const VspvFrame& frame);
    void (*decode)(void* decoder, const Codec& codec, const Vsp8u* bytes, const VspvFrame& frame, Vsp16s* samples);
    // A bad or a lost frame; the octets of a lost one may be null.
    void (*conceal)(void* decoder, const Codec& codec, const Vsp8u* bytes, const VspvFrame& frame, Vsp16s* samples);
    // Whether there is such a mode; null if the codec has no discontinuous transmission.
    bool (*setDTX)(void* encoder, const Codec& codec, Vsp32s mode) = nullptr;
};

struct Codec {
    VspvCodec record;
    const CodecFamily* family;
    const void* settings;  // the family's, or null
};

bool hasRate(const VspvCodec& codec, Vsp32s bitRate);

// The check of codecs that have speech frames of one length only.
VspStatus checkSpeech(const Codec& codec, const Vsp8u* bytes, const VspvFrame& frame);

// The family's part of an object, or null if that is one of another codec.
void* partOf(VspvEncoder* encoder, const Codec& codec);
void* partOf(VspvDecoder* decoder, const Codec& codec);

extern const Codec kPcma, kPcmu, kG722, kGsm, kG729, kG729A, kG729D, kG729E, kG729I, kAmr, kAmrWb, kG7221, kG7221C, kG728,
    kG723;
extern const Codec kG726_16, kG726_24, kG726_32, kG726_40;
extern const Codec kAal2G726_16, kAal2G726_24, kAal2G726_32, kAal2G726_40;

}  // namespace vspv
