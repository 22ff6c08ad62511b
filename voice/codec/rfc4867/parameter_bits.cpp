#include "codec/rfc4867/parameter_bits.h"

#include "codec/rfc4867/bit_string.h"

namespace vspv::rfc4867 {

namespace {

constexpr Vsp32s kSilenceBits = kUpdateBit;

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

void pack(const ModeLayout& layout, const Vsp16s* parameters, Vsp8u* bytes) {
    Vsp8u bits[kMaxBits];
    spread(parameters, layout.widths, layout.parameters, bits);
    for (Vsp32s i = 0; i < bytesOf(layout); i++) bytes[i] = 0;
    for (Vsp32s k = 0; k < layout.bits; k++) put(bytes, k, bits[layout.order[k]]);
}

void unpack(const ModeLayout& layout, const Vsp8u* bytes, Vsp16s* parameters) {
    Vsp8u bits[kMaxBits];
    for (Vsp32s k = 0; k < layout.bits; k++) bits[layout.order[k]] = Vsp8u(bitAt(bytes, k));
    gather(bits, layout.widths, layout.parameters, parameters);
}

void packSilence(const Vsp8u* widths, Vsp32s number, const Vsp16s* parameters, bool update, Vsp8u* bytes) {
    Vsp8u bits[kSilenceBits];
    spread(parameters, widths, number, bits);
    for (Vsp32s i = 0; i < kSilenceBytes; i++) bytes[i] = 0;
    for (Vsp32s k = 0; k < kSilenceBits; k++) put(bytes, k, bits[k]);
    put(bytes, kUpdateBit, update);
}

void unpackSilence(const Vsp8u* widths, Vsp32s number, const Vsp8u* bytes, Vsp16s* parameters) {
    Vsp8u bits[kSilenceBits];
    for (Vsp32s k = 0; k < kSilenceBits; k++) bits[k] = Vsp8u(bitAt(bytes, k));
    gather(bits, widths, number, parameters);
}

}  // namespace vspv::rfc4867
