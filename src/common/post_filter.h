// What the post-filters of G.729 and GSM-AMR share, and products of signals with gains, in vectors of eight samples.
#pragma once

#include "arithmetic/standard_ops.h"
#include "common/lengths.h"
#include "vector/dot.h"
#include "vector/eight_32s.h"

namespace vsp::VSP_LEVEL {

VSP_INLINE Vsp32s doubledEnergy(const Vsp16s* a, int len) { return Cnvrt_64s32s(2 * energy(a, len)); }

// Correlation of neighbouring samples, doubled, each partial sum saturated. None is larger than the energy.
VSP_INLINE Vsp32s neighbourCorrelation(const Vsp16s* x, int len, Vsp32s doubledEnergy) {
    return doubledEnergy < kMax32 ? Vsp32s(2 * dot(x, x + 1, len - 1)) : dotSaturating(x, x + 1, len - 1);
}

// The factor of the tilt compensation: the first reflection coefficient of a response of the short-term filter, times 0.8.
VSP_INLINE Vsp16s responseTilt(const Vsp16s* h, int len) {
    const Vsp32s r0 = doubledEnergy(h, len);
    const Vsp16s a0 = high_32s(r0), a1 = high_32s(neighbourCorrelation(h, len, r0));
    return a1 <= 0 ? Vsp16s(0) : Div_16s(Mul_16s(a1, 26214), a0);
}

// dst[n] = x[n] - factor * x[n - 1].
VSP_INLINE void compensateTilt(Vsp16s factor, const Vsp16s* x, Vsp16s* dst) {
    const S16_128 factors = S16_128::splat(factor);
    for (int n = 0; n < kL_subfr; n += S16_128::width)
        subSat(S16_128::load(x + n), mulShift15Sat(S16_128::load(x + n - 1), factors)).store(dst + n);
}

// a * b, shifted right by Shift, rounded or not, saturated.
template <int Shift, bool Rounded>
VSP_INLINE S16_128 product(S16_128 a, S16_128 b) {
    const S32_128 rounding = S32_128::splat(Rounded ? 1 << (Shift - 1) : 0);
    const S16_128 lo = mulLo(a, b), hi = mulHi(a, b);
    return packSat(shr(add(zipLo(lo, hi), rounding), Shift), shr(add(zipHi(lo, hi), rounding), Shift));
}

// output[n] = output[n] * gain[n] as above.
template <int Shift, bool Rounded>
VSP_INLINE void multiplyGains(const Vsp16s* gains, Vsp16s* output) {
    for (int n = 0; n < kL_subfr; n += S16_128::width)
        product<Shift, Rounded>(S16_128::load(gains + n), S16_128::load(output + n)).store(output + n);
}

// The output times a gain in Q12 that follows the wanted one slowly: nine tenths of it and a step of up to 3276.
VSP_INLINE void followGain(Vsp16s step, Vsp16s& gain, Vsp16s* output) {
    Vsp16s gains[kL_subfr];
    int current = gain;
    for (Vsp16s& g : gains) {
        current = ((current * 29491) >> 15) + step;
        g = Vsp16s(current);
    }
    gain = Vsp16s(current);
    multiplyGains<12, false>(gains, output);
}

}  // namespace vsp::VSP_LEVEL
