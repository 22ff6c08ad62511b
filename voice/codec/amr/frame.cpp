#include "codec/amr/frame.h"

#include "codec/amr/bit_string.h"
#include "codec/amr/tables.h"

namespace vspv::amr {

namespace {

constexpr Vsp32s kMaxBits = 244, kSilenceBits = 35;

void put(Vsp8u* bytes, Vsp32s bit, Vsp32u value) { bytes[bit / 8] = Vsp8u(bytes[bit / 8] | value << (7 - bit % 8)); }

// Parameters as bits behind each other, highest bits first, and back.
void spread(const Vsp16s* parameters, const Vsp8u* widths, Vsp32s number, Vsp8u* bits) {
    for (Vsp32s i = 0; i < number; i++)
        for (Vsp32s k = widths[i] - 1; k >= 0; k--) *bits++ = Vsp8u(parameters[i] >> k & 1);
}
void gather(const Vsp8u* bits, const Vsp8u* widths, Vsp32s number, Vsp16s* parameters) {
    for (Vsp32s i = 0; i < number; i++) {
        Vsp32s value = 0;
        for (Vsp32s k = 0; k < widths[i]; k++) value = 2 * value + *bits++;
        parameters[i] = Vsp16s(value);
    }
}

}  // namespace

Vsp32s parametersOf(Vsp32s mode) { return kLayouts[mode].parameters; }
Vsp32s bytesOf(Vsp32s mode) { return (kLayouts[mode].bits + 7) / 8; }

void pack(Vsp32s mode, const Vsp16s* parameters, Vsp8u* bytes) {
    const ModeLayout& layout = kLayouts[mode];
    Vsp8u bits[kMaxBits];
    spread(parameters, layout.widths, layout.parameters, bits);
    for (Vsp32s i = 0; i < bytesOf(mode); i++) bytes[i] = 0;
    for (Vsp32s k = 0; k < layout.bits; k++) put(bytes, k, bits[layout.order[k]]);
}

void unpack(Vsp32s mode, const Vsp8u* bytes, Vsp16s* parameters) {
    const ModeLayout& layout = kLayouts[mode];
    Vsp8u bits[kMaxBits];
    for (Vsp32s k = 0; k < layout.bits; k++) bits[layout.order[k]] = Vsp8u(bitAt(bytes, k));
    gather(bits, layout.widths, layout.parameters, parameters);
}

void packSilence(const Vsp16s* parameters, bool update, Vsp32s mode, Vsp8u* bytes) {
    Vsp8u bits[kSilenceBits];
    spread(parameters, kSilenceWidths, kSilenceParameters, bits);
    for (Vsp32s i = 0; i < kSilenceBytes; i++) bytes[i] = 0;
    for (Vsp32s k = 0; k < kSilenceBits; k++) put(bytes, k, bits[k]);
    put(bytes, kSilenceBits, update);
    for (Vsp32s k = 0; k < 3; k++) put(bytes, kSilenceBits + 1 + k, Vsp32u(mode) >> k & 1);
}

Vsp32s unpackSilence(const Vsp8u* bytes, Vsp16s* parameters) {
    Vsp8u bits[kSilenceBits];
    for (Vsp32s k = 0; k < kSilenceBits; k++) bits[k] = Vsp8u(bitAt(bytes, k));
    gather(bits, kSilenceWidths, kSilenceParameters, parameters);
    Vsp32u mode = 0;
    for (Vsp32s k = 0; k < 3; k++) mode |= bitAt(bytes, kSilenceBits + 1 + k) << k;
    return Vsp32s(mode);
}

bool isHoming(Vsp32s mode, const Vsp16s* parameters, bool firstSubframeOnly) {
    const ModeLayout& layout = kLayouts[mode];
    const Vsp32s number = firstSubframeOnly ? layout.firstSubframe : layout.parameters;
    for (Vsp32s i = 0; i < number; i++)
        if (parameters[i] != layout.homing[i]) return false;
    return true;
}

}  // namespace vspv::amr
