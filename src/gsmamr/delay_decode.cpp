// The decoding of the pitch delay (`Dec_lag3`, `Dec_lag6`, and the choice of the delay in lost frames).
#include "core/checks.h"
#include "gsmamr/exports.h"
#include "gsmamr/pitch_range.h"

namespace vsp::VSP_LEVEL {

namespace {

struct Delay {
    int lag, fraction;
};

int indexBits(Vsp32s mode, bool delta) {
    if (!delta) return mode == kMode122 ? 9 : 8;
    return hasCoarseDelta(mode) ? 4 : mode == kMode795 || mode == kMode122 ? 6 : 5;
}

Delay decodeThirds(Vsp32s mode, bool delta, int index, int lagBefore) {
    if (!delta) {
        if (index >= 197) return {index - 112, 0};
        const int lag = (index + 2) / 3 + 19;
        return {lag, index - 3 * lag + 58};
    }
    const LagRange range = deltaRange(mode, lagBefore);
    if (!hasCoarseDelta(mode)) {
        const int steps = (index + 2) / 3 - 1;
        return {range.min + steps, index - 2 - 3 * steps};
    }
    const int middle = range.coarseMiddle(lagBefore);
    if (index < 4) return {middle - 5 + index, 0};
    if (index >= 12) return {middle - 11 + index, 0};
    const int steps = (index - 5 + 3) / 3 - 2;  // the quotient of index - 5 and 3 rounded down, less 1
    return {middle + steps, index - 9 - 3 * steps};
}

Delay decodeSixths(bool delta, int index, int lagBefore) {
    if (delta) {
        const int steps = (index + 5) / 6 - 1;
        return {deltaRange(kMode122, lagBefore).min + steps, index - 3 - 6 * steps};
    }
    if (index >= 463) return {index - 368, 0};
    const int lag = (index + 5) / 6 + 17;
    return {lag, index - 6 * lag + 105};
}

}  // namespace

VspStatus vspsDelayDecode_GSMAMR_16s(Vsp32s mode, Vsp32s subframe, Vsp16s index, Vsp32s bfi, Vsp32s inNoise,
                                     Vsp32s voicedHangover, Vsp16s* pPrevLag, Vsp16s* pLagBuf, Vsp16s* pDelay) {
    if (anyNull(pPrevLag, pLagBuf, pDelay)) return vspStsNullPtrErr;
    if (!isSpeechMode(mode) || !isSubframe(subframe)) return vspStsRangeErr;
    const bool delta = isDeltaSubframe(mode, subframe);
    if (index < 0 || index >> indexBits(mode, delta) != 0) return vspStsRangeErr;
    if (*pPrevLag < kFirstLag || *pPrevLag > kLastLag) return vspStsRangeErr;

    Delay delay = mode == kMode122 ? decodeSixths(delta, index, *pPrevLag) : decodeThirds(mode, delta, index, *pPrevLag);
    if (mode == kMode122) {
        if (bfi != 0 || (delta && index >= 61)) {
            *pLagBuf = Vsp16s(delay.lag);
            delay = {*pPrevLag, 0};
        }
    } else {
        *pLagBuf = Vsp16s(delay.lag);
        if (bfi != 0) {
            if (*pPrevLag < kLongestLag) ++*pPrevLag;
            const bool steadyNoise = mode <= kMode590 && inNoise != 0 && voicedHangover > 4;
            delay = {steadyNoise ? *pLagBuf : *pPrevLag, 0};
        }
    }
    pDelay[0] = Vsp16s(delay.lag);
    pDelay[1] = Vsp16s(delay.fraction);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
