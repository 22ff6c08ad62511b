// The state of a coder. Encoder and decoder adapt alike, so they keep the same.
#pragma once

#include "vspsc/types.h"

namespace vsp {

constexpr int kG726Lanes = 8;      // of the vectors of the zero predictor
constexpr int kG726FirstZero = 2;  // lane of the newest of the six differences, which move up

// A difference in the 11-bit floating-point form of G.726, apart: bit 31 sign, bits 16-21 the rounding term 48 of the
// multiplication, bits 8-11 exponent, bits 0-5 mantissa.
constexpr Vsp32s kG726Zero = 48 << 16 | 32;

struct G726State {
    Vsp32s b[kG726Lanes];   // coefficients of the zero predictor, Q30: the 16 bits of Q14 and 16 zeros
    Vsp32s dq[kG726Lanes];  // quantised differences
    Vsp32s yl;              // slow scale factor, Q15
    Vsp16s yu;              // fast scale factor, Q9
    Vsp16s dms, dml;        // short-term and long-term average of F(I), Q9 and Q11
    Vsp16s ap;              // speed control, Q8
    Vsp16s a[2];            // coefficients of the pole predictor, Q14
    Vsp16s sr[2];           // reconstructed signal, newest first
    Vsp8u td;               // 1 if the signal looks like a tone
    Vsp8u pk[2];            // 1 where the sum of the difference and the zero prediction was negative, newest first
    Vsp8u bits;             // of a code
};
static_assert(sizeof(G726State) == 88 && alignof(G726State) == 4);

}  // namespace vsp
