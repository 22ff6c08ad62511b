// Codes of a few bits, in octets.
#pragma once

#include "vspsc/types.h"

namespace vspv {

// The order of the bits: the first code begins at the lowest or the highest bit of the first octet, and goes on at that of
// the next.
enum class BitOrder { lowestFirst, highestFirst };

// The bits fill whole octets.
inline void packBits(const Vsp8u* codes, Vsp32s count, Vsp32s bits, BitOrder order, Vsp8u* octets) {
    Vsp32u held = 0;
    Vsp32s heldBits = 0;
    for (Vsp32s i = 0; i < count; i++) {
        held = order == BitOrder::lowestFirst ? held | Vsp32u(codes[i]) << heldBits : held << bits | codes[i];
        heldBits += bits;
        if (heldBits < 8) continue;
        heldBits -= 8;
        *octets++ = Vsp8u(order == BitOrder::lowestFirst ? held : held >> heldBits);
        if (order == BitOrder::lowestFirst) held >>= 8;
    }
}

inline void unpackBits(const Vsp8u* octets, Vsp32s count, Vsp32s bits, BitOrder order, Vsp8u* codes) {
    Vsp32u held = 0;
    Vsp32s heldBits = 0;
    for (Vsp32s i = 0; i < count; i++) {
        if (heldBits < bits) {
            held = order == BitOrder::lowestFirst ? held | Vsp32u(*octets) << heldBits : held << 8 | *octets;
            heldBits += 8;
            octets++;
        }
        heldBits -= bits;
        codes[i] = Vsp8u((order == BitOrder::lowestFirst ? held : held >> heldBits) & ((1u << bits) - 1));
        if (order == BitOrder::lowestFirst) held >>= bits;
    }
}

}  // namespace vspv
