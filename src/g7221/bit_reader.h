// The bits of a frame, its words taken from the top.
#pragma once

#include "arithmetic/basic_ops.h"
#include "g7221/layout.h"
#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

// Behind the frame there are zeros. Positions are from 0 to kMaxFrameBits.
class BitReader {
  public:
    // Any number of bits that a frame may have.
    [[gnu::always_inline]] BitReader(const Vsp16s* words, int bits) {
        for (int i = 0; i < bits / 16; i++) octets_[2 * i] = Vsp8u(words[i] >> 8), octets_[2 * i + 1] = Vsp8u(words[i]);
        __builtin_memset(octets_ + bits / 8, 0, sizeof octets_ - std::size_t(bits / 8));
    }

    // The next 32 bits and those behind them, from the top; 57 of them are good.
    [[gnu::always_inline]] Vsp64u peek(int position) const {
        Vsp64u all;
        __builtin_memcpy(&all, octets_ + position / 8, sizeof all);
        return __builtin_bswap64(all) << (position % 8);
    }

  private:
    Vsp8u octets_[2 * kMaxFrameWords + 8];
};

}  // namespace vsp::VSP_LEVEL
