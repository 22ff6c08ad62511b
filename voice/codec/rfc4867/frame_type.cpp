#include "codec/rfc4867/frame_type.h"

#include "codec/rfc4867/bit_string.h"

namespace vspv::rfc4867 {

namespace {

bool hasOctets(const VspvFrame& f) {
    return f.quality != vspvQualityLost && f.type != vspvFrameNoData && f.type != vspvFrameOnset;
}

// The place of a bit of the mode in force, by its value.
Vsp32s placeOfModeBit(const FrameTypes& types, Vsp32s k) {
    return types.highestModeBitFirst ? types.silenceBits - 1 - k : kUpdateBit + 1 + k;
}
Vsp32s modeBits(const FrameTypes& types) { return types.silenceBits - kUpdateBit - 1; }

}  // namespace

Vsp32s modeOf(const FrameTypes& types, Vsp32s bitRate) {
    for (Vsp32s mode = 0; mode < types.modes; mode++)
        if (types.bitRates[mode] == bitRate) return mode;
    return -1;
}

Vsp32s silenceMode(const FrameTypes& types, const Vsp8u* bytes) {
    Vsp32u mode = 0;
    for (Vsp32s k = 0; k < modeBits(types); k++) mode |= bitAt(bytes, placeOfModeBit(types, k)) << k;
    return Vsp32s(mode) < types.modes ? Vsp32s(mode) : types.modes - 1;
}

void putSilenceMode(const FrameTypes& types, Vsp32s mode, Vsp8u* bytes) {
    for (Vsp32s k = 0; k < modeBits(types); k++) {
        const Vsp32s place = placeOfModeBit(types, k);
        bytes[place / 8] = Vsp8u(bytes[place / 8] | (mode >> k & 1) << (7 - place % 8));
    }
}

VspStatus checkFrame(const FrameTypes& types, const VspvFrame& f) {
    const bool known =
        f.type >= vspvFrameSpeech && (f.type < vspvFrameOnset || (f.type == vspvFrameOnset && types.hasOnset));
    const Vsp32s mode = modeOf(types, f.bitRate);
    if (!known || mode < 0) return vspStsRangeErr;
    const bool none = f.type == vspvFrameNoData || f.type == vspvFrameOnset;
    const Vsp32s bytes = none ? 0 : f.type == vspvFrameSpeech ? bytesOf(types.layouts[mode]) : kSilenceBytes;
    return f.numBytes == bytes ? vspStsNoErr : vspStsSizeErr;
}

VspStatus checkSent(const FrameTypes& types, const VspvFrame& f) {
    if (f.quality < vspvQualityGood || f.quality > vspvQualityLost) return vspStsRangeErr;
    return f.quality == vspvQualityLost ? vspStsNoErr : checkFrame(types, f);
}

TypedFrame typed(const FrameTypes& types, const VspvFrame& f) {
    if (f.quality == vspvQualityLost && types.tellsLost) return {kTypeLost, 0, true};
    if (!hasOctets(f)) return {kTypeNoData, 0, true};
    const Vsp32s type = f.type == vspvFrameSpeech ? modeOf(types, f.bitRate) : types.modes;
    return {type, bitsOf(types, type), f.quality <= vspvQualityGood};
}

Vsp32s bitsOf(const FrameTypes& types, Vsp32s type) {
    if (type >= 0 && type < types.modes) return types.layouts[type].bits;
    if (type == types.modes) return types.silenceBits;
    return type == kTypeNoData || (type == kTypeLost && types.tellsLost) ? 0 : -1;
}

VspvFrame frameOf(const FrameTypes& types, Vsp32s type, bool good, const Vsp8u* bytes) {
    const Vsp32s quality = good ? vspvQualityGood : vspvQualityBad, highest = types.bitRates[types.modes - 1];
    if (type < types.modes) return {vspvFrameSpeech, quality, types.bitRates[type], bytesOf(types.layouts[type])};
    if (type == kTypeNoData) return {vspvFrameNoData, vspvQualityGood, highest, 0};
    if (type == kTypeLost) return {vspvFrameSpeech, vspvQualityLost, highest, 0};
    const Vsp32s kind = bitAt(bytes, kUpdateBit) != 0 ? vspvFrameSIDUpdate : vspvFrameSIDFirst;
    return {kind, quality, types.bitRates[silenceMode(types, bytes)], kSilenceBytes};
}

}  // namespace vspv::rfc4867
