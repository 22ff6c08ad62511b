// RTP payloads of RFC 4867.
#include "codec/amr/bit_string.h"
#include "codec/amr/frame_type.h"

#pragma GCC visibility push(default)  // of what the library exports
#include "vspsvoice/amr.h"
#pragma GCC visibility pop

using namespace vspv::amr;

static constexpr Vsp32u kNoRequest = 15;
static constexpr Vsp32s kMaxFrames = 1000;  // twenty seconds

VspStatus vspvAMRPackPayload(const Vsp8u* pBytes, const VspvFrame* pFrames, Vsp32s numFrames, Vsp32s octetAligned,
                             Vsp32s modeRequest, Vsp8u* pPayload, Vsp32s* pPayloadBytes) {
    if (pFrames == nullptr || pPayload == nullptr || pPayloadBytes == nullptr) return vspStsNullPtrErr;
    if (numFrames < 1 || numFrames > kMaxFrames) return vspStsSizeErr;
    for (Vsp32s i = 0; i < numFrames; i++) {
        if (pBytes == nullptr && typed(pFrames[i]).bits > 0) return vspStsNullPtrErr;
        const VspStatus status = checkSent(pFrames[i]);
        if (status != vspStsNoErr) return status;
    }
    if (modeRequest != 0 && modeOf(modeRequest) < 0) return vspStsRangeErr;

    const Vsp32s padding = octetAligned != 0 ? 4 : 0;
    BitStringWriter writer(pPayload);
    writer.put(modeRequest == 0 ? kNoRequest : Vsp32u(modeOf(modeRequest)), 4);
    writer.put(0, padding);
    for (Vsp32s i = 0; i < numFrames; i++) {
        const TypedFrame f = typed(pFrames[i]);
        writer.put(Vsp32u((i + 1 < numFrames) << 5 | f.type << 1 | f.good), 6);
        writer.put(0, padding / 2);
    }
    for (Vsp32s i = 0; i < numFrames; i++) {
        writer.copy(pBytes, typed(pFrames[i]).bits);
        if (octetAligned != 0) writer.align();
        if (typed(pFrames[i]).bits > 0) pBytes += pFrames[i].numBytes;
    }
    *pPayloadBytes = writer.octets();
    return vspStsNoErr;
}

VspStatus vspvAMRUnpackPayload(const Vsp8u* pPayload, Vsp32s payloadBytes, Vsp32s octetAligned, Vsp32s maxFrames,
                               Vsp32s* pModeRequest, Vsp8u* pBytes, VspvFrame* pFrames, Vsp32s* pNumFrames) {
    if (pPayload == nullptr || pModeRequest == nullptr || pBytes == nullptr || pFrames == nullptr || pNumFrames == nullptr)
        return vspStsNullPtrErr;
    if (payloadBytes < 1 || maxFrames < 1) return vspStsSizeErr;

    // The table of contents is read twice, so that nothing is written of a payload that has a fault.
    const Vsp32s padding = octetAligned != 0 ? 4 : 0;
    BitStringReader contents(pPayload, payloadBytes);
    const Vsp32u request = contents.take(4);
    if (request != kNoRequest && request >= Vsp32u(kModes)) return vspStsCodeRangeErr;
    contents.take(padding);
    const BitStringReader first = contents;
    Vsp64s bits = 0;
    Vsp32s numFrames = 0;
    for (bool more = true; more;) {
        const Vsp32u entry = contents.take(6);
        contents.take(padding / 2);
        if (contents.cutOff()) return vspStsSizeErr;
        const Vsp32s frameBits = bitsOf(Vsp32s(entry >> 1 & 15));
        if (frameBits < 0) return vspStsCodeRangeErr;
        bits += octetAligned != 0 ? (frameBits + 7) & ~7 : frameBits;
        if (++numFrames > maxFrames) return vspStsSizeErr;
        more = entry >> 5 != 0;
    }
    BitStringReader frames = contents;
    if (frames.bitsLeft() < bits) return vspStsSizeErr;

    contents = first;
    for (Vsp32s i = 0; i < numFrames; i++) {
        const Vsp32u entry = contents.take(6);
        contents.take(padding / 2);
        const Vsp32s type = Vsp32s(entry >> 1 & 15);
        frames.copy(pBytes, bitsOf(type));
        if (octetAligned != 0) frames.align();
        pFrames[i] = frameOf(type, entry % 2 != 0, pBytes);
        pBytes += pFrames[i].numBytes;
    }
    *pModeRequest = request == kNoRequest ? 0 : kBitRates[request];
    *pNumFrames = numFrames;
    return vspStsNoErr;
}
