#include "codec/rfc4867/payload.h"

#include "codec/rfc4867/bit_string.h"

namespace vspv::rfc4867 {

static constexpr Vsp32u kNoRequest = 15;
static constexpr Vsp32s kMaxFrames = 1000;  // twenty seconds

VspStatus packPayload(const FrameTypes& types, const Vsp8u* bytes, const VspvFrame* frames, Vsp32s numFrames,
                      Vsp32s octetAligned, Vsp32s modeRequest, Vsp8u* payload, Vsp32s* payloadBytes) {
    if (frames == nullptr || payload == nullptr || payloadBytes == nullptr) return vspStsNullPtrErr;
    if (numFrames < 1 || numFrames > kMaxFrames) return vspStsSizeErr;
    for (Vsp32s i = 0; i < numFrames; i++) {
        if (bytes == nullptr && typed(types, frames[i]).bits > 0) return vspStsNullPtrErr;
        const VspStatus status = checkSent(types, frames[i]);
        if (status != vspStsNoErr) return status;
    }
    if (modeRequest != 0 && modeOf(types, modeRequest) < 0) return vspStsRangeErr;

    const Vsp32s padding = octetAligned != 0 ? 4 : 0;
    BitStringWriter writer(payload);
    writer.put(modeRequest == 0 ? kNoRequest : Vsp32u(modeOf(types, modeRequest)), 4);
    writer.put(0, padding);
    for (Vsp32s i = 0; i < numFrames; i++) {
        const TypedFrame f = typed(types, frames[i]);
        writer.put(Vsp32u((i + 1 < numFrames) << 5 | f.type << 1 | f.good), 6);
        writer.put(0, padding / 2);
    }
    for (Vsp32s i = 0; i < numFrames; i++) {
        const TypedFrame f = typed(types, frames[i]);
        writer.copy(bytes, f.bits);
        if (octetAligned != 0) writer.align();
        if (f.bits > 0) bytes += frames[i].numBytes;
    }
    *payloadBytes = writer.octets();
    return vspStsNoErr;
}

VspStatus unpackPayload(const FrameTypes& types, const Vsp8u* payload, Vsp32s payloadBytes, Vsp32s octetAligned,
                        Vsp32s maxFrames, Vsp32s* modeRequest, Vsp8u* bytes, VspvFrame* frames, Vsp32s* numFrames) {
    if (payload == nullptr || modeRequest == nullptr || bytes == nullptr || frames == nullptr || numFrames == nullptr)
        return vspStsNullPtrErr;
    if (payloadBytes < 1 || maxFrames < 1) return vspStsSizeErr;

    // The table of contents is read twice, so that nothing is written of a payload that has a fault.
    const Vsp32s padding = octetAligned != 0 ? 4 : 0;
    BitStringReader contents(payload, payloadBytes);
    const Vsp32u request = contents.take(4);
    if (request != kNoRequest && request >= Vsp32u(types.modes)) return vspStsCodeRangeErr;
    contents.take(padding);
    const BitStringReader first = contents;
    Vsp64s bits = 0;
    Vsp32s found = 0;
    for (bool more = true; more;) {
        const Vsp32u entry = contents.take(6);
        contents.take(padding / 2);
        if (contents.cutOff()) return vspStsSizeErr;
        const Vsp32s frameBits = bitsOf(types, Vsp32s(entry >> 1 & 15));
        if (frameBits < 0) return vspStsCodeRangeErr;
        bits += octetAligned != 0 ? (frameBits + 7) & ~7 : frameBits;
        if (++found > maxFrames) return vspStsSizeErr;
        more = entry >> 5 != 0;
    }
    BitStringReader content = contents;
    if (content.bitsLeft() < bits) return vspStsSizeErr;

    contents = first;
    for (Vsp32s i = 0; i < found; i++) {
        const Vsp32u entry = contents.take(6);
        contents.take(padding / 2);
        const Vsp32s type = Vsp32s(entry >> 1 & 15);
        content.copy(bytes, bitsOf(types, type));
        if (octetAligned != 0) content.align();
        frames[i] = frameOf(types, type, entry % 2 != 0, bytes);
        bytes += frames[i].numBytes;
    }
    *modeRequest = request == kNoRequest ? 0 : types.bitRates[request];
    *numFrames = found;
    return vspStsNoErr;
}

}  // namespace vspv::rfc4867
