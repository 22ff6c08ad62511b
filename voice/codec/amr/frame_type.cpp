#include "codec/amr/frame_type.h"

#include "codec/amr/bit_string.h"
#include "codec/amr/tables.h"

namespace vspv::amr {

namespace {

constexpr Vsp32s kSilenceBits = 39, kUpdateBit = 35;

bool hasOctets(const VspvFrame& f) {
    return f.quality != vspvQualityLost && f.type != vspvFrameNoData && f.type != vspvFrameOnset;
}

}  // namespace

Vsp32s modeOf(Vsp32s bitRate) {
    for (Vsp32s mode = 0; mode < kModes; mode++)
        if (kBitRates[mode] == bitRate) return mode;
    return -1;
}

VspStatus checkFrame(const VspvFrame& f) {
    if (f.type < vspvFrameSpeech || f.type > vspvFrameOnset || modeOf(f.bitRate) < 0) return vspStsRangeErr;
    const bool none = f.type == vspvFrameNoData || f.type == vspvFrameOnset;
    const Vsp32s bytes = none ? 0 : f.type == vspvFrameSpeech ? bytesOf(modeOf(f.bitRate)) : kSilenceBytes;
    return f.numBytes == bytes ? vspStsNoErr : vspStsSizeErr;
}

VspStatus checkSent(const VspvFrame& f) {
    if (f.quality < vspvQualityGood || f.quality > vspvQualityLost) return vspStsRangeErr;
    return f.quality == vspvQualityLost ? vspStsNoErr : checkFrame(f);
}

TypedFrame typed(const VspvFrame& f) {
    const Vsp32s type = !hasOctets(f) ? kTypeNoData : f.type == vspvFrameSpeech ? modeOf(f.bitRate) : kTypeSilence;
    return {type, bitsOf(type), type == kTypeNoData || f.quality <= vspvQualityGood};
}

Vsp32s bitsOf(Vsp32s type) {
    if (type >= 0 && type < kModes) return kLayouts[type].bits;
    return type == kTypeSilence ? kSilenceBits : type == kTypeNoData ? 0 : -1;
}

VspvFrame frameOf(Vsp32s type, bool good, const Vsp8u* bytes) {
    const Vsp32s quality = good ? vspvQualityGood : vspvQualityBad;
    if (type < kModes) return {vspvFrameSpeech, quality, kBitRates[type], bytesOf(type)};
    if (type == kTypeNoData) return {vspvFrameNoData, vspvQualityGood, kBitRates[kModes - 1], 0};
    Vsp16s parameters[kSilenceParameters];
    const Vsp32s kind = bitAt(bytes, kUpdateBit) != 0 ? vspvFrameSIDUpdate : vspvFrameSIDFirst;
    return {kind, quality, kBitRates[unpackSilence(bytes, parameters)], kSilenceBytes};
}

}  // namespace vspv::amr
