// Frames as they are stored, as RTP carries them, and as 3GPP's interfaces do.
#include "codec/amr/frame.h"
#include "codec/rfc4867/bit_string.h"
#include "codec/rfc4867/payload.h"
#include "codec/rfc4867/storage.h"

#pragma GCC visibility push(default)  // of what the library exports
#include "vspsvoice/amr.h"
#pragma GCC visibility pop

namespace vspv::amr {

namespace {

constexpr Vsp32s kTypeSilence = kModes, kTypeNoData = rfc4867::kTypeNoData;

// TS 26.101 4.1: bits of class A by frame type; those of a silence descriptor are all of it.
constexpr Vsp32s kClassA[kTypeSilence + 1] = {42, 49, 55, 58, 61, 75, 65, 81, 39};
constexpr Vsp32u kCrcPolynomial = 0x71;  // D^8 + D^6 + D^5 + D^4 + 1

Vsp32u crcOf(const Vsp8u* bytes, Vsp32s type) {
    Vsp32u crc = 0;
    for (Vsp32s i = 0; type <= kTypeSilence && i < kClassA[type]; i++) {
        const Vsp32u feedback = (crc >> 7 ^ bitAt(bytes, i)) & 1;
        crc = (crc << 1 & 0xFF) ^ (feedback != 0 ? kCrcPolynomial : 0);
    }
    return crc;
}

void reverseBits(Vsp8u* bytes, Vsp32s octets) {
    for (Vsp32s i = 0; i < octets; i++) {
        Vsp32u reversed = 0;
        for (Vsp32s k = 0; k < 8; k++) reversed |= (bytes[i] >> k & 1u) << (7 - k);
        bytes[i] = Vsp8u(reversed);
    }
}

Vsp32s packed(const Vsp8u* bytes, const VspvFrame& frame, Vsp32s form, Vsp32s requestedMode, Vsp8u* dst) {
    if (form == vspvAMRStorage) return rfc4867::packStored(kFrameTypes, bytes, frame, dst);
    const rfc4867::TypedFrame f = typed(kFrameTypes, frame);
    BitStringWriter writer(dst);
    if (form == vspvAMRIF1) {
        writer.put(Vsp32u(f.type << 1 | f.good), 5);
        const Vsp32s mode = f.type == kTypeNoData ? 0 : modeOf(frame.bitRate);
        writer.put(Vsp32u(mode), 3);
        writer.put(Vsp32u(requestedMode < 0 ? mode : requestedMode), 3);
        writer.put(f.bits > 0 ? crcOf(bytes, f.type) : 0, 8);
    } else {  // lowest bit first: written the other way round
        for (Vsp32s k = 0; k < 4; k++) writer.put(Vsp32u(f.type >> k & 1), 1);
    }
    writer.copy(bytes, f.bits);
    writer.align();
    if (form == vspvAMRIF2) reverseBits(dst, writer.octets());
    return writer.octets();
}

}  // namespace

}  // namespace vspv::amr

using namespace vspv;
using namespace vspv::amr;

VspStatus vspvAMRPackFrame(const Vsp8u* pBytes, const VspvFrame* pFrame, Vsp32s form, Vsp32s modeRequest, Vsp8u* pDst,
                           Vsp32s* pDstBytes) {
    if (pFrame == nullptr || pDst == nullptr || pDstBytes == nullptr) return vspStsNullPtrErr;
    if (pBytes == nullptr && typed(kFrameTypes, *pFrame).bits > 0) return vspStsNullPtrErr;
    const bool asks = form == vspvAMRIF1 && modeRequest != 0;
    if (form < vspvAMRStorage || form > vspvAMRIF2 || (asks && modeOf(modeRequest) < 0)) return vspStsRangeErr;
    const VspStatus status = checkSent(kFrameTypes, *pFrame);
    if (status != vspStsNoErr) return status;
    *pDstBytes = packed(pBytes, *pFrame, form, asks ? modeOf(modeRequest) : -1, pDst);
    return vspStsNoErr;
}

VspStatus vspvAMRUnpackFrame(const Vsp8u* pSrc, Vsp32s srcBytes, Vsp32s form, Vsp8u* pBytes, VspvFrame* pFrame,
                             Vsp32s* pUsed) {
    if (pSrc == nullptr || pBytes == nullptr || pFrame == nullptr || pUsed == nullptr) return vspStsNullPtrErr;
    if (form < vspvAMRStorage || form > vspvAMRIF2) return vspStsRangeErr;
    if (srcBytes < 1) return vspStsSizeErr;
    if (form == vspvAMRStorage) return rfc4867::unpackStored(kFrameTypes, pSrc, srcBytes, pBytes, pFrame, pUsed);
    Vsp8u turned[vspvAMRMaxFormBytes];
    const Vsp32s octets = srcBytes < vspvAMRMaxFormBytes ? srcBytes : vspvAMRMaxFormBytes;
    for (Vsp32s i = 0; i < octets; i++) turned[i] = pSrc[i];
    if (form == vspvAMRIF2) reverseBits(turned, octets);
    BitStringReader reader(turned, octets);

    Vsp32s type = 0;
    bool good = true;
    Vsp32u crc = 0;
    if (form == vspvAMRIF1) {
        type = Vsp32s(reader.take(4));
        good = reader.take(1) != 0;
        reader.take(6);
        crc = reader.take(8);
    } else {
        for (Vsp32s k = 0; k < 4; k++) type |= Vsp32s(reader.take(1)) << k;
    }
    const Vsp32s bits = bitsOf(kFrameTypes, type);
    if (bits < 0) return vspStsCodeRangeErr;
    Vsp8u bytes[vspvAMRMaxFormBytes];
    reader.copy(bytes, bits);
    if (reader.cutOff()) return vspStsSizeErr;
    if (form == vspvAMRIF1 && bits > 0) good = good && crc == crcOf(bytes, type);
    for (Vsp32s i = 0; i < (bits + 7) / 8; i++) pBytes[i] = bytes[i];
    *pFrame = frameOf(kFrameTypes, type, good, bytes);
    *pUsed = reader.octets();
    return vspStsNoErr;
}

VspStatus vspvAMRPackPayload(const Vsp8u* pBytes, const VspvFrame* pFrames, Vsp32s numFrames, Vsp32s octetAligned,
                             Vsp32s modeRequest, Vsp8u* pPayload, Vsp32s* pPayloadBytes) {
    return rfc4867::packPayload(kFrameTypes, pBytes, pFrames, numFrames, octetAligned, modeRequest, pPayload,
                                pPayloadBytes);
}

VspStatus vspvAMRUnpackPayload(const Vsp8u* pPayload, Vsp32s payloadBytes, Vsp32s octetAligned, Vsp32s maxFrames,
                               Vsp32s* pModeRequest, Vsp8u* pBytes, VspvFrame* pFrames, Vsp32s* pNumFrames) {
    return rfc4867::unpackPayload(kFrameTypes, pPayload, payloadBytes, octetAligned, maxFrames, pModeRequest, pBytes,
                                  pFrames, pNumFrames);
}
