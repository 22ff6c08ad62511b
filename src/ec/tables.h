// Constants of the echo-cancellation family.
#pragma once

#include "vspsc/types.h"

namespace vsp {

// Band-pass resonators at 2100 Hz for 8 and 16 kHz: y[n] = c0 x[n] + c1 x[n-2] - c2 y[n-1] - c3 y[n-2].
extern const Vsp32f td_iir_coeffs_8_32f[4], td_iir_coeffs_16_32f[4];
extern const Vsp16s td_iir_coeffs_8_16s[4], td_iir_coeffs_16_16s[4];  // Q12

// Prototype windows of the sub-band filter bank, named after its order, frame size and length; floats, and the same in Q13.
extern const Vsp32f VspsSubbandWindow_5_24_128_32f[128];
extern const Vsp16s VspsSubbandWindow_5_24_128_16s[128];
extern const Vsp32f VspsSubbandWindow_6_44_256_32f[256];
extern const Vsp16s VspsSubbandWindow_6_44_256_16s[256];

// The built-in prototype window for a transform of 2^order, frames of F and length L; null if there is none.
const Vsp32f* builtInWindow_32f(Vsp32s order, Vsp32s frameSize, Vsp32s windowLen);
const Vsp16s* builtInWindow_16s(Vsp32s order, Vsp32s frameSize, Vsp32s windowLen);

}  // namespace vsp
