// The index of a lag (3GPP TS 26.190, 5.7).
#include "amrwb/adaptive_vector.h"
#include "amrwb/exports.h"
#include "amrwb/modes.h"
#include "amrwb/pitch_range.h"
#include "core/checks.h"

namespace vsp::VSP_LEVEL {

namespace {

// In halves.
int encodeLow(int lag, int fraction, int lagMin, bool relative) {
    if (relative) return 2 * (lag - lagMin) + (fraction >> 1);
    return lag < kLowResolution.whole ? 2 * lag + (fraction >> 1) - 68 : lag + 24;
}

// In quarters.
int encode(int lag, int fraction, int lagMin, bool relative) {
    if (relative) return 4 * (lag - lagMin) + fraction;
    if (lag < kResolution.halves) return 4 * lag + fraction - 136;
    return lag < kResolution.whole ? 2 * lag + (fraction >> 1) + 120 : lag + 280;
}

}  // namespace

VspStatus vspsDelayEncode_AMRWB_16s(const Vsp16s* pDelay, Vsp16s lagMin, Vsp16s relative, Vsp32s mode, Vsp16s* pIndex) {
    if (anyNull(pDelay, pIndex)) return vspStsNullPtrErr;
    if (lagMin < kShortestLag || lagMin > kLargestLagMin) return vspStsRangeErr;
    if (relative != 0 && relative != 1) return vspStsRangeErr;
    if (!isWideMode(mode)) return vspStsRangeErr;
    const int lag = pDelay[0], fraction = pDelay[1];
    if (lag < kShortestLag || lag > kLongestLag) return vspStsRangeErr;
    if (fraction < 0 || fraction > 3) return vspStsRangeErr;
    if (relative == 1 && (lag < lagMin || lag >= lagMin + kLagsOfRange)) return vspStsRangeErr;
    const auto encodeLag = isLowWideMode(mode) ? encodeLow : encode;
    *pIndex = Vsp16s(encodeLag(lag, fraction, lagMin, relative == 1));
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
