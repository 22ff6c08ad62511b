#include "g729/adaptive_vector.h"

#include "arithmetic/basic_ops.h"
#include "core/checks.h"
#include "g729/constants.h"
#include "g729/exports.h"
#include "g729/tables.h"
#include "vector/correlate.h"
#include "vector/magnitude.h"

namespace vsp::VSP_LEVEL {

namespace {

// Every partial sum saturated, from the middle outwards in turn, one output after the other: a short lag reads them back.
void interpolateSaturating(const Vsp16s* taps, const Vsp16s* z, Vsp16s* out) {
    for (int n = 0; n < kL_subfr; n++) {
        Vsp32s sum = 0;
        for (int i = 0; i < kL_inter10; i++) {
            sum = mac_32s(sum, z[n + kL_inter10 - 1 - i], taps[kL_inter10 - 1 - i]);
            sum = mac_32s(sum, z[n + kL_inter10 + i], taps[kL_inter10 + i]);
        }
        out[n] = round_32s(sum);
    }
}

// One vector of outputs, none of which may read another.
template <class V>
VSP_INLINE V interpolateUnit(const Vsp16s* taps, const Vsp16s* z) {
    const auto rounded = [](auto a) { return shr(add(a, decltype(a)::splat(0x4000)), 15); };
    const auto sums = offsetSums<V>(taps, kTaps, z);
    return packSatAlternating(rounded(sums.even[0]), rounded(sums.odd[0]));
}

// The subframe from output `first` on, in the largest vectors of which no output reads another.
template <class V = S16>
VSP_INLINE void interpolate(const Vsp16s* taps, const Vsp16s* z, Vsp16s* out, int lag, int first = 0) {
    constexpr int W = V::width;
    if (lag >= W + kL_inter10)
        for (; first + W <= kL_subfr; first += W) interpolateUnit<V>(taps, z + first).store(out + first);
    if constexpr (W > 8) interpolate<Half<V>>(taps, z, out, lag, first);
}

}  // namespace

void ownPred_lt_3(Vsp16s* excitation, int lag, int fraction) {
    const int f = fraction > 0 ? 3 - fraction : -fraction;
    const Vsp16s* const z = excitation - lag - (fraction > 0) - (kL_inter10 - 1);
    const Vsp16s* const taps = inter_3l_taps.taps[f];
    interpolate(taps, z, excitation, lag);
    // Once it is known that no sample read was large, those that were read back included, all outputs are right.
    if (maxMagnitude(z, kL_subfr + kTaps - 1) > kMaxExactSample) interpolateSaturating(taps, z, excitation);
}

static bool isLegal(const Vsp16s* pDelay) {
    return pDelay[0] >= 18 && pDelay[0] <= 144 && pDelay[1] >= -1 && pDelay[1] <= 1;
}

VspStatus vspsDecodeAdaptiveVector_G729_16s(const Vsp16s* pDelay, Vsp16s* pSrcDst, Vsp16s* pDst) {
    if (anyNull(pDelay, pSrcDst, pDst)) return vspStsNullPtrErr;
    if (!isLegal(pDelay)) return vspStsCodeRangeErr;
    Vsp16s* const current = pSrcDst + kExcitationHistory;
    ownPred_lt_3(current, pDelay[0], pDelay[1]);
    for (int n = 0; n < kL_subfr; n++) pDst[n] = current[n];
    return vspStsNoErr;
}

VspStatus vspsDecodeAdaptiveVector_G729_16s_I(const Vsp16s* pDelay, Vsp16s* pSrcDst) {
    if (anyNull(pDelay, pSrcDst)) return vspStsNullPtrErr;
    if (!isLegal(pDelay)) return vspStsCodeRangeErr;
    ownPred_lt_3(pSrcDst + kExcitationHistory, pDelay[0], pDelay[1]);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
