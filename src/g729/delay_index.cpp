// The transmitted index of the pitch delay and its parity bit (G.729 3.7.2, 4.1.3 and Annex D).
#include "core/checks.h"
#include "g729/constants.h"
#include "g729/exports.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kFirstIntegerIndex = 197;  // of subframe 0: from 86 samples on without a fraction

// The shortest lag of the range of subframe 1 around the lag of subframe 0.
int shortestLag(int lag) {
    const int first = lag - 5;
    return first < kPitMin ? kPitMin : first > kPitMax - 9 ? kPitMax - 9 : first;
}

bool outsideSearch(int lag, int subframe) {
    return lag < kPitMin - 2 || lag > kPitMax + 2 || (subframe != 0 && subframe != 1);
}

int firstIndex(int lag, int fraction) { return lag <= 85 ? 3 * lag - 58 + fraction : lag + 112; }

void decodeFirst(int index, Vsp16s* delay) {
    const bool fractional = index < kFirstIntegerIndex;
    const int lag = fractional ? (index + 2) / 3 + 19 : index - 112;
    delay[0] = Vsp16s(lag);
    delay[1] = Vsp16s(fractional ? index - 3 * lag + 58 : 0);
}

}  // namespace

VspStatus vspsDelayEncode_G729_16s(const Vsp16s* pDelay, Vsp16s lag, Vsp16s subframe, Vsp16s* pIndex) {
    if (anyNull(pDelay, pIndex)) return vspStsNullPtrErr;
    if (outsideSearch(lag, subframe)) return vspStsRangeErr;
    if (subframe == 0)
        *pIndex = Vsp16s(firstIndex(pDelay[0], pDelay[1]));
    else
        *pIndex = Vsp16s(3 * (pDelay[0] - shortestLag(lag)) + 2 + pDelay[1]);
    return vspStsNoErr;
}

VspStatus vspsDelayEncode_G729D_16s(const Vsp16s* pDelay, Vsp16s lag, Vsp16s subframe, Vsp16s* pIndex) {
    if (anyNull(pDelay, pIndex)) return vspStsNullPtrErr;
    if (outsideSearch(lag, subframe)) return vspStsRangeErr;
    const int step = pDelay[0] - shortestLag(lag);
    if (subframe == 0)
        *pIndex = Vsp16s(firstIndex(pDelay[0], pDelay[1]));
    else
        *pIndex = Vsp16s(step < 3 ? step : step < 7 ? 3 * (step - 3) + pDelay[1] + 3 : step + 6);
    return vspStsNoErr;
}

VspStatus vspsDelayParity_G729_16s(Vsp16s index, Vsp16s* pParity) {
    if (anyNull(pParity)) return vspStsNullPtrErr;
    *pParity = Vsp16s(1 ^ (__builtin_popcount(Vsp32u(index) & 0xFC) & 1));
    return vspStsNoErr;
}

VspStatus vspsDelayDecode_G729_16s(Vsp16s index, Vsp16s lag, Vsp16s subframe, Vsp16s* pDelay) {
    if (anyNull(pDelay)) return vspStsNullPtrErr;
    if (subframe != 0 && subframe != 1) return vspStsRangeErr;
    if (index < 0 || index > (subframe == 0 ? 255 : 31)) return vspStsCodeRangeErr;
    if (subframe == 0) {
        decodeFirst(index, pDelay);
    } else {
        const int step = (index + 2) / 3 - 1;
        pDelay[0] = Vsp16s(shortestLag(lag) + step);
        pDelay[1] = Vsp16s(index - 2 - 3 * step);
    }
    return vspStsNoErr;
}

VspStatus vspsDelayDecode_G729D_16s(Vsp16s index, Vsp16s lag, Vsp16s subframe, Vsp16s* pDelay) {
    if (anyNull(pDelay)) return vspStsNullPtrErr;
    if (subframe != 0 && subframe != 1) return vspStsRangeErr;
    if (index < 0 || index > (subframe == 0 ? 255 : 15)) return vspStsCodeRangeErr;
    if (subframe == 0) {
        decodeFirst(index, pDelay);
    } else {  // three whole lags, eight delays a third apart, four whole lags
        const bool fractional = index >= 4 && index < 12;
        const int thirds = index - 3;  // from the third lag on
        const int step = fractional ? 3 + (thirds + 1) / 3 : index < 4 ? index : index - 6;
        pDelay[0] = Vsp16s(shortestLag(lag) + step);
        pDelay[1] = Vsp16s(fractional ? thirds - 3 * (step - 3) : 0);
    }
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
