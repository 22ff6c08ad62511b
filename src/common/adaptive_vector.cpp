#include "common/adaptive_vector.h"

#include "arithmetic/basic_ops.h"
#include "common/lengths.h"
#include "vector/correlate.h"
#include "vector/magnitude.h"

namespace vsp::VSP_LEVEL {

namespace {

// Every partial sum saturated, from the middle outwards in turn, one output after the other: a short lag reads them back.
void interpolateSaturating(const Vsp16s* taps, const Vsp16s* z, Vsp16s* out) {
    for (int n = 0; n < kL_subfr; n++) {
        Vsp32s sum = 0;
        for (int i = 0; i < kSideTaps; i++) {
            sum = mac_32s(sum, z[n + kSideTaps - 1 - i], taps[kSideTaps - 1 - i]);
            sum = mac_32s(sum, z[n + kSideTaps + i], taps[kSideTaps + i]);
        }
        out[n] = round_32s(sum);
    }
}

// One vector of outputs, none of which may read another.
template <class V>
VSP_INLINE V interpolateUnit(const Vsp16s* taps, const Vsp16s* z) {
    const auto rounded = [](auto a) { return shr(add(a, decltype(a)::splat(0x4000)), 15); };
    const auto sums = offsetSums<V>(taps, kAdaptiveTaps, z);
    return packSatAlternating(rounded(sums.even[0]), rounded(sums.odd[0]));
}

// The subframe from output `first` on, in the largest vectors of which no output reads another.
template <class V = S16>
VSP_INLINE void interpolate(const Vsp16s* taps, const Vsp16s* z, Vsp16s* out, int delay, int first = 0) {
    constexpr int W = V::width;
    if (delay >= W + kSideTaps)
        for (; first + W <= kL_subfr; first += W) interpolateUnit<V>(taps, z + first).store(out + first);
    if constexpr (W > 8) interpolate<Half<V>>(taps, z, out, delay, first);
}

}  // namespace

void ownInterpolateExcitation(const Vsp16s* taps, Vsp16s* excitation, int delay) {
    const Vsp16s* const z = excitation - delay - (kSideTaps - 1);
    if (delay < S16_128::width + kSideTaps) {
        interpolateSaturating(taps, z, excitation);
        return;
    }
    interpolate(taps, z, excitation, delay);
    // Once it is known that no sample read was large, those that were read back included, all outputs are right.
    if (maxMagnitude(z, kL_subfr + kAdaptiveTaps - 1) > kMaxExactSample) interpolateSaturating(taps, z, excitation);
}

}  // namespace vsp::VSP_LEVEL
