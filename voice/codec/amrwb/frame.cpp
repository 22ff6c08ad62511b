#include "codec/amrwb/frame.h"

#include "codec/amrwb/tables.h"

namespace vspv::amrwb {

namespace {

constexpr Vsp32s k2385 = 8;

// What a homing frame of 23.85 kbit/s need not have: gains of the high band, in the first three subframes, and the lowest
// bit of the gain before the second one of these.
Vsp32s ignoredBits(Vsp32s mode, Vsp32s parameter) {
    if (mode != k2385) return 0;
    return parameter == 19 || parameter == 31 || parameter == 43 ? 15 : parameter == 30 ? 1 : 0;
}

}  // namespace

constexpr rfc4867::FrameTypes kFrameTypes = {kModes, kBitRates, kLayouts, 40, true, true, false};

Vsp32s bytesOf(Vsp32s mode) { return rfc4867::bytesOf(kLayouts[mode]); }

void pack(Vsp32s mode, const Vsp16s* parameters, Vsp8u* bytes) { rfc4867::pack(kLayouts[mode], parameters, bytes); }
void unpack(Vsp32s mode, const Vsp8u* bytes, Vsp16s* parameters) { rfc4867::unpack(kLayouts[mode], bytes, parameters); }

void packSilence(const Vsp16s* parameters, bool update, Vsp32s mode, Vsp8u* bytes) {
    rfc4867::packSilence(kSilenceWidths, kSilenceParameters, parameters, update, bytes);
    rfc4867::putSilenceMode(kFrameTypes, mode, bytes);
}

void unpackSilence(const Vsp8u* bytes, Vsp16s* parameters) {
    rfc4867::unpackSilence(kSilenceWidths, kSilenceParameters, bytes, parameters);
}

bool isHoming(Vsp32s mode, const Vsp16s* parameters, bool firstSubframeOnly) {
    const rfc4867::ModeLayout& layout = kLayouts[mode];
    const Vsp32s number = firstSubframeOnly ? layout.firstSubframe : layout.parameters;
    for (Vsp32s i = 0; i < number; i++)
        if (((parameters[i] ^ layout.homing[i]) & ~ignoredBits(mode, i)) != 0) return false;
    return true;
}

}  // namespace vspv::amrwb
