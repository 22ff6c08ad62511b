#include "codec/amr/frame.h"

#include "codec/amr/tables.h"

namespace vspv::amr {

constexpr rfc4867::FrameTypes kFrameTypes = {kModes, kBitRates, kLayouts, 39, false, false, true};

Vsp32s bytesOf(Vsp32s mode) { return rfc4867::bytesOf(kLayouts[mode]); }

void pack(Vsp32s mode, const Vsp16s* parameters, Vsp8u* bytes) { rfc4867::pack(kLayouts[mode], parameters, bytes); }
void unpack(Vsp32s mode, const Vsp8u* bytes, Vsp16s* parameters) { rfc4867::unpack(kLayouts[mode], bytes, parameters); }

void packSilence(const Vsp16s* parameters, bool update, Vsp32s mode, Vsp8u* bytes) {
    rfc4867::packSilence(kSilenceWidths, kSilenceParameters, parameters, update, bytes);
    rfc4867::putSilenceMode(kFrameTypes, mode, bytes);
}

Vsp32s unpackSilence(const Vsp8u* bytes, Vsp16s* parameters) {
    rfc4867::unpackSilence(kSilenceWidths, kSilenceParameters, bytes, parameters);
    return rfc4867::silenceMode(kFrameTypes, bytes);
}

bool isHoming(Vsp32s mode, const Vsp16s* parameters, bool firstSubframeOnly) {
    const rfc4867::ModeLayout& layout = kLayouts[mode];
    const Vsp32s number = firstSubframeOnly ? layout.firstSubframe : layout.parameters;
    for (Vsp32s i = 0; i < number; i++)
        if (parameters[i] != layout.homing[i]) return false;
    return true;
}

}  // namespace vspv::amr
