// Bits behind each other, highest bit of an octet first, from any place.
#pragma once

#include "vspsc/types.h"

namespace vspv {

// NOLINTNEXTLINE(clang-analyzer-core.NullDereference): frames without bits alone may come without octets
inline Vsp32u bitAt(const Vsp8u* bytes, Vsp32s bit) { return bytes[bit / 8] >> (7 - bit % 8) & 1u; }

class BitStringWriter {
  public:
    explicit BitStringWriter(Vsp8u* bytes) : bytes_(bytes) {}

    void put(Vsp32u value, Vsp32s bits) {
        for (Vsp32s i = bits - 1; i >= 0; i--) putBit(value >> i & 1);
    }
    void copy(const Vsp8u* source, Vsp32s bits) {
        for (Vsp32s i = 0; i < bits; i++) putBit(bitAt(source, i));
    }
    void align() {
        while (position_ % 8 != 0) putBit(0);
    }
    Vsp32s octets() const { return (position_ + 7) / 8; }

  private:
    void putBit(Vsp32u bit) {
        Vsp8u& octet = bytes_[position_ / 8];
        const Vsp32s shift = 7 - position_ % 8;
        octet = Vsp8u((shift == 7 ? 0u : Vsp32u(octet)) | bit << shift);
        position_++;
    }

    Vsp8u* bytes_;
    Vsp32s position_ = 0;
};

// Behind the last octet there are zeros, and too many bits have been read.
class BitStringReader {
  public:
    BitStringReader(const Vsp8u* bytes, Vsp32s octets) : bytes_(bytes), bits_(8LL * octets) {}

    Vsp32u take(Vsp32s bits) {
        Vsp32u value = 0;
        for (Vsp32s i = 0; i < bits; i++) value = value << 1 | takeBit();
        return value;
    }
    void copy(Vsp8u* destination, Vsp32s bits) {
        BitStringWriter writer(destination);
        for (Vsp32s i = 0; i < bits; i++) writer.put(takeBit(), 1);
    }
    void align() { position_ = (position_ + 7) & ~7LL; }
    Vsp64s bitsLeft() const { return bits_ - position_; }
    bool cutOff() const { return position_ > bits_; }
    Vsp32s octets() const { return Vsp32s((position_ + 7) / 8); }

  private:
    Vsp32u takeBit() {
        const Vsp64s at = position_++;
        return at < bits_ ? bytes_[at / 8] >> (7 - at % 8) & 1u : 0;
    }

    const Vsp8u* bytes_;
    Vsp64s bits_, position_ = 0;
};

}  // namespace vspv
