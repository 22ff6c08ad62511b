#include "codec/rfc4867/parameter_bits.h"

#include <cstdint>
#include <cstring>

#include "codec/rfc4867/bit_string.h"

namespace vspv::rfc4867 {

namespace {

constexpr Vsp32s kSilenceBits = kUpdateBit;

// The bits of an octet as octets behind each other, highest bit first.
void spreadOctet(Vsp32u octet, Vsp8u* bits) {
    const std::uint64_t ownBitInEach = octet * 0x0101010101010101ULL & 0x0102040810204080ULL;
    const std::uint64_t spread = (ownBitInEach + 0x7F7F7F7F7F7F7F7FULL) >> 7 & 0x0101010101010101ULL;
    std::memcpy(bits, &spread, sizeof spread);
}

// Parameters as bits behind each other, highest bits first. Writes up to kMaxWidth behind the first bit of the last one.
void spread(const Vsp16s* parameters, const Vsp8u* widths, Vsp32s number, Vsp8u* bits) {
    for (Vsp32s i = 0; i < number; i++) {
        const Vsp32u leftAligned = Vsp32u(Vsp16u(parameters[i])) << (kMaxWidth - widths[i]);
        spreadOctet(leftAligned >> 8 & 0xFF, bits);
        spreadOctet(leftAligned & 0xFF, bits + 8);
        bits += widths[i];
    }
}

Vsp32s numberOf(const Vsp8u* bits, const Vsp16s* places, Vsp32s number) {
    Vsp32s value = 0;
    for (Vsp32s k = 0; k < number; k++) value = 2 * value + bits[places[k]];
    return value;
}

void put(Vsp8u* bytes, Vsp32s bit, Vsp32u value) { bytes[bit / 8] = Vsp8u(bytes[bit / 8] | value << (7 - bit % 8)); }

}  // namespace

void pack(const ModeLayout& layout, const Vsp16s* parameters, Vsp8u* bytes) {
    Vsp8u bits[kMaxBits + kMaxWidth];
    spread(parameters, layout.widths, layout.parameters, bits);
    const Vsp32s whole = layout.bits / 8, rest = layout.bits % 8;
    for (Vsp32s i = 0; i < whole; i++) bytes[i] = Vsp8u(numberOf(bits, layout.order + 8 * i, 8));
    if (rest != 0) bytes[whole] = Vsp8u(numberOf(bits, layout.order + 8 * whole, rest) << (8 - rest));
}

void unpack(const ModeLayout& layout, const Vsp8u* bytes, Vsp16s* parameters) {
    Vsp8u bits[kMaxBits + 7];
    for (Vsp32s i = 0; i < bytesOf(layout); i++) spreadOctet(bytes[i], bits + 8 * i);
    const Vsp16s* places = layout.places;
    for (Vsp32s i = 0; i < layout.parameters; i++) {
        parameters[i] = Vsp16s(numberOf(bits, places, layout.widths[i]));
        places += layout.widths[i];
    }
}

void packSilence(const Vsp8u* widths, Vsp32s number, const Vsp16s* parameters, bool update, Vsp8u* bytes) {
    Vsp8u bits[kSilenceBits + kMaxWidth];
    spread(parameters, widths, number, bits);
    for (Vsp32s i = 0; i < kSilenceBytes; i++) bytes[i] = 0;
    for (Vsp32s k = 0; k < kSilenceBits; k++) put(bytes, k, bits[k]);
    put(bytes, kUpdateBit, update);
}

void unpackSilence(const Vsp8u* widths, Vsp32s number, const Vsp8u* bytes, Vsp16s* parameters) {
    Vsp32s k = 0;
    for (Vsp32s i = 0; i < number; i++) {
        Vsp32u value = 0;
        for (const Vsp32s end = k + widths[i]; k < end; k++) value = 2 * value + bitAt(bytes, k);
        parameters[i] = Vsp16s(value);
    }
}

}  // namespace vspv::rfc4867
