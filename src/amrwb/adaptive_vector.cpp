#include "amrwb/adaptive_vector.h"

#include "amrwb/exports.h"
#include "amrwb/pitch_tables.h"
#include "core/checks.h"
#include "vector/correlate.h"
#include "vector/magnitude.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kOutputs = kWideSubframe + 1;

// Every partial sum saturated, one output after the other: a short lag reads them back.
void interpolateSaturating(const Vsp16s* taps, const Vsp16s* z, Vsp16s* out) {
    for (int n = 0; n < kOutputs; n++) out[n] = round_32s(Mul2_32s(dotSaturating(taps, z + n, kExcitationTaps)));
}

// Vectors of outputs, none of which reads another.
template <class V>
VSP_INLINE void interpolate(const Vsp16s* taps, const Vsp16s* z, Vsp16s* out) {
    const auto rounded = [](auto a) { return shr(add(a, decltype(a)::splat(0x2000)), 14); };
    for (int n = 0; n < kWideSubframe; n += V::width) {
        const auto sums = offsetSums<V>(taps, kExcitationTaps, z + n);
        packSatAlternating(rounded(sums.even[0]), rounded(sums.odd[0])).store(out + n);
    }
}

}  // namespace

void ownAdaptiveVector(int lag, int fraction, Vsp16s* exc) {
    // The samples that an output reads end so many before it.
    const int distance = lag - kExcitationTaps / 2;
    const Vsp16s* const taps = inter4_2[fraction];
    const Vsp16s* const z = exc - distance - (kExcitationTaps - 1) - (fraction > 0);
    static_assert(kShortestLag - kExcitationTaps / 2 >= Sliding16::width);
    interpolate<Sliding16>(taps, z, exc);
    Vsp32s last = 0x2000;
    for (int i = 0; i < kExcitationTaps; i++) last = wrapAdd_32s(last, taps[i] * z[kWideSubframe + i]);
    exc[kWideSubframe] = sat_16s(last >> 14);
    // Once it is known that no sample read was large, those that were read back included, all outputs are right.
    if (maxMagnitude(z, kOutputs + kExcitationTaps - 1) > kMaxExactExcitation) interpolateSaturating(taps, z, exc);
}

VspStatus vspsDecodeAdaptiveVector_AMRWB_16s_I(const Vsp16s* pDelay, Vsp16s* pExc) {
    if (anyNull(pDelay, pExc)) return vspStsNullPtrErr;
    if (pDelay[0] < kShortestLag || pDelay[0] > kLongestLag) return vspStsRangeErr;
    if (pDelay[1] < 0 || pDelay[1] > 3) return vspStsRangeErr;
    ownAdaptiveVector(pDelay[0], pDelay[1], pExc);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
