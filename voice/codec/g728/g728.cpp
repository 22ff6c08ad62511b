// The codec g728.
#include "codec/bit_packing.h"
#include "codec/codec.h"
#include "codec/g728/decoder.h"
#include "codec/g728/encoder.h"

#pragma GCC visibility push(default)  // of what the library exports
#include "vspsvoice/g728.h"
#pragma GCC visibility pop

namespace vspv {

namespace {

using namespace g728;

constexpr Vsp32s kIndexBits = 10;

Vsp32s encoderBytes() { return sizeof(Encoder); }
Vsp32s decoderBytes() { return sizeof(Decoder); }
void initEncoder(void* encoder, const Codec&) { static_cast<Encoder*>(encoder)->reset(); }
void initDecoder(void* decoder, const Codec&) { static_cast<Decoder*>(decoder)->reset(); }

// Four indices in five octets, the first one at the highest bits (RFC 3551 4.5.13).
void encode(void* encoder, const Codec&, const Vsp16s* samples, Vsp8u* bytes, VspvFrame&) {
    Vsp16s indices[kCycle];
    static_cast<Encoder*>(encoder)->encode(samples, indices);
    BitWriter writer(bytes, BitOrder::highestFirst);
    for (const Vsp16s index : indices) {
        writer.put(Vsp32u(index) >> 8, kIndexBits - 8);
        writer.put(Vsp32u(index) & 0xFF, 8);
    }
}

void decode(void* decoder, const Codec&, const Vsp8u* bytes, const VspvFrame&, Vsp16s* samples) {
    Vsp16s indices[kCycle];
    BitReader reader(bytes, BitOrder::highestFirst);
    for (Vsp16s& index : indices) {
        index = Vsp16s(reader.take(kIndexBits - 8) << 8);
        index = Vsp16s(index | Vsp16s(reader.take(8)));
    }
    static_cast<Decoder*>(decoder)->decode(indices, samples);
}

void conceal(void* decoder, const Codec&, const Vsp8u*, const VspvFrame&, Vsp16s* samples) {
    static_cast<Decoder*>(decoder)->decode(nullptr, samples);
}

constexpr CodecFamily kFamily = {encoderBytes, decoderBytes, initEncoder, initDecoder,
                                 encode,       checkSpeech,  decode,      conceal};
constexpr Vsp32s kBitRate[] = {16000};

}  // namespace

constexpr Codec kG728 = {{"g728", "LD-CELP, delay of 0.625 ms", "ITU-T G.728 Annexes G and I; RFC 3551", 8000, kFrame,
                          kFrameBytes, 1, kBitRate, "G728", 8000, 15, vspvCodecConceals},
                         &kFamily,
                         nullptr};

}  // namespace vspv

using namespace vspv;

VspStatus vspvG728SetPostFilter(VspvDecoder* pDecoder, Vsp32s on) {
    if (pDecoder == nullptr) return vspStsNullPtrErr;
    void* decoder = partOf(pDecoder, kG728);
    if (decoder == nullptr) return vspStsBadArgErr;
    if (on != 0 && on != 1) return vspStsRangeErr;
    static_cast<Decoder*>(decoder)->setPostFilter(on == 1);
    return vspStsNoErr;
}
