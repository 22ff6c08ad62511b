// States of the library's high-pass filters, and scaling by powers of two.
#pragma once

#include "codec/library_state.h"
#include "vspsc/amrwb.h"
#include "vspsc/common.h"

namespace vspv::amrwb {

// 3GPP TS 26.190 5.1, 5.4.2, 5.9: from 50 Hz and from 400 Hz, and that of the weighted speech.
class HighPass {
  public:
    enum Kind { k50Hz, k400Hz, kWeightedSpeech };

    void reset(Kind kind) {
        static constexpr Vsp16s kA[3][4] = {{8192, 16211, -8021}, {16384, 29280, -14160}, {8192, 21663, -19258, 5734}};
        static constexpr Vsp16s kB[3][4] = {{4053, -8106, 4053}, {915, -1830, 915}, {-3432, 10280, -10280, 3432}};
        vspsHighPassFilterInit_AMRWB_16s(kA[kind], kB[kind], kind == kWeightedSpeech ? 3 : 2, state_);
    }
    void filter(Vsp16s* samples, Vsp32s n) { vspsHighPassFilter_AMRWB_16s_I(samples, n, state_); }
    void* state() { return state_; }

  private:
    LibraryState<40> state_;
};

// Times 2^exponent, rounded and saturated.
inline void scale(const Vsp16s* src, Vsp32s exponent, Vsp16s* dst, Vsp32s n) {
    // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult): exponents of 16-bit samples are small
    vspsMulC_NR_16s_Sfs(src, Vsp16s(exponent > 0 ? 1 << exponent : 1), dst, n, exponent < 0 ? -exponent : 0);
}
inline void scale(Vsp16s* samples, Vsp32s exponent, Vsp32s n) {
    if (exponent != 0) scale(samples, exponent, samples, n);
}

// round(L_shl(gain, exponent)) of a gain in Q16; the exponent is not negative.
inline Vsp16s roundedGain(Vsp32s gain, Vsp32s exponent) {
    Vsp64s scaled = Vsp64s(gain) << exponent;
    if (scaled > 0x7FFFFFFF) scaled = 0x7FFFFFFF;
    if (scaled < -0x7FFFFFFF - 1) scaled = -0x7FFFFFFF - 1;
    const Vsp64s rounded = scaled + 0x8000;
    return Vsp16s((rounded > 0x7FFFFFFF ? 0x7FFFFFFF : rounded) >> 16);
}

}  // namespace vspv::amrwb
