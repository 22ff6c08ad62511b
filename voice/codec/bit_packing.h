// Codes of up to 8 bits, one behind the other in octets.
#pragma once

#include "vspsc/types.h"

namespace vspv {

// Where the first code begins: at the lowest or at the highest bit of the first octet; the next octet goes on in the same
// way.
enum class BitOrder { lowestFirst, highestFirst };

class BitWriter {
  public:
    BitWriter(Vsp8u* octets, BitOrder order) : next_(octets), order_(order) {}

    void put(Vsp32u code, Vsp32s bits) {
        held_ = order_ == BitOrder::lowestFirst ? held_ | code << heldBits_ : held_ << bits | code;
        heldBits_ += bits;
        if (heldBits_ < 8) return;
        heldBits_ -= 8;
        *next_++ = Vsp8u(order_ == BitOrder::lowestFirst ? held_ : held_ >> heldBits_);
        if (order_ == BitOrder::lowestFirst) held_ >>= 8;
    }

  private:
    Vsp8u* next_;
    BitOrder order_;
    Vsp32u held_ = 0;
    Vsp32s heldBits_ = 0;  // less than 8, the rest has been written
};

class BitReader {
  public:
    BitReader(const Vsp8u* octets, BitOrder order) : next_(octets), order_(order) {}

    Vsp32u take(Vsp32s bits) {
        if (heldBits_ < bits) {
            const Vsp32u octet = *next_++;
            held_ = order_ == BitOrder::lowestFirst ? held_ | octet << heldBits_ : held_ << 8 | octet;
            heldBits_ += 8;
        }
        heldBits_ -= bits;
        const Vsp32u mask = (1u << bits) - 1;
        if (order_ == BitOrder::highestFirst) return held_ >> heldBits_ & mask;
        const Vsp32u code = held_ & mask;
        held_ >>= bits;
        return code;
    }

  private:
    const Vsp8u* next_;
    BitOrder order_;
    Vsp32u held_ = 0;
    Vsp32s heldBits_ = 0;
};

}  // namespace vspv
