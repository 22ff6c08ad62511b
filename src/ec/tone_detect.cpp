// The 2100 Hz answer tone with phase reversals (ITU-T G.168, V.25): a resonator whose output power is compared with that of
// the input. A reversal makes the output collapse for a moment.
#include "common/basic_ops.h"
#include "core/checks.h"
#include "core/level.h"
#include "ec/align.h"
#include "ec/tables.h"

namespace vsp::VSP_LEVEL {

namespace {

// Counts in samples.
struct RunLimits {
    Vsp32s minRun, maxRun, maxDip;
};
constexpr RunLimits runLimits(Vsp32s rate) { return {rate / 1000 * 413, rate / 1000 * 466, rate / 100 * 2}; }

struct State_32f {
    const Vsp32f* coeffs;
    Vsp32f powerOut, powerIn;
    Vsp32f x1, x2, y1, y2;
    Vsp32f alpha;
    Vsp32s run, minRun, maxRun;
    Vsp32s dip, maxDip;
    Vsp32s reversals;
};
static_assert(sizeof(State_32f) == 64);

struct State_16s {
    const Vsp16s* coeffs;  // Q12
    Vsp32s powerOut, powerIn;
    Vsp16s x1, x2, y1, y2;
    Vsp32s run, minRun, maxRun;
    Vsp32s dip, maxDip;
    Vsp32s reversals;
    Vsp16s alpha;  // Q14
};
static_assert(sizeof(State_16s) == 56);

constexpr bool supported(Vsp32s rate) { return rate == 8000 || rate == 16000; }

// A sample at which the power at 2100 Hz is low. Tells whether it is the second or a later reversal.
template <class State>
VSP_INLINE bool countDip(State& s, bool deep) {
    bool flag = false;
    if (deep && s.minRun < s.run && s.run < s.maxRun) {
        s.reversals++;
        flag = s.reversals >= 2;
        s.run = 0;
    }
    s.dip++;
    if (s.dip > s.maxDip) s.reversals = s.dip = s.run = 0;
    return flag;
}

}  // namespace

VspStatus vspsToneDetectGetStateSize_EC_32f(Vsp32s rate, Vsp32s* pSize) {
    if (anyNull(pSize)) return vspStsNullPtrErr;
    if (!supported(rate)) return vspStsRangeErr;
    *pSize = sizeof(State_32f) + kAlignment;
    return vspStsNoErr;
}

VspStatus vspsToneDetectGetStateSize_EC_16s(Vsp32s rate, Vsp32s* pSize) {
    if (anyNull(pSize)) return vspStsNullPtrErr;
    if (!supported(rate)) return vspStsRangeErr;
    *pSize = sizeof(State_16s) + kAlignment;
    return vspStsNoErr;
}

VspStatus vspsToneDetectInit_EC_32f(VspToneDetectState_EC_32f* pState, Vsp32s rate) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    if (!supported(rate)) return vspStsRangeErr;
    const RunLimits limits = runLimits(rate);
    State_32f& s = *aligned<State_32f>(pState);
    s = {};
    s.coeffs = rate == 8000 ? td_iir_coeffs_8_32f : td_iir_coeffs_16_32f;
    s.alpha = rate == 8000 ? 0.96f : 0.92f;
    s.minRun = limits.minRun;
    s.maxRun = limits.maxRun;
    s.maxDip = limits.maxDip;
    return vspStsNoErr;
}

VspStatus vspsToneDetectInit_EC_16s(VspToneDetectState_EC_16s* pState, Vsp32s rate) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    if (!supported(rate)) return vspStsRangeErr;
    const RunLimits limits = runLimits(rate);
    State_16s& s = *aligned<State_16s>(pState);
    s = {};
    s.coeffs = rate == 8000 ? td_iir_coeffs_8_16s : td_iir_coeffs_16_16s;
    s.alpha = rate == 8000 ? 15728 : 15073;
    s.minRun = limits.minRun;
    s.maxRun = limits.maxRun;
    s.maxDip = limits.maxDip;
    return vspStsNoErr;
}

VspStatus vspsToneDetect_EC_32f(const Vsp32f* pSrc, Vsp32s len, Vsp32s* pFlag, VspToneDetectState_EC_32f* pState) {
    if (anyNull(pSrc, pFlag, pState)) return vspStsNullPtrErr;
    if (len < 1) return vspStsBadArgErr;
    State_32f* const state = aligned<State_32f>(pState);
    State_32f s = *state;
    const Vsp32f c0 = s.coeffs[0], c1 = s.coeffs[1], c2 = s.coeffs[2], c3 = s.coeffs[3];
    bool flag = false;
    for (Vsp32s n = 0; n < len; n++) {
        const Vsp32f x = pSrc[n], y = c0 * x + c1 * s.x2 - c2 * s.y1 - c3 * s.y2;
        s.x2 = s.x1;
        s.x1 = x;
        s.y2 = s.y1;
        s.y1 = y;
        s.powerIn = s.alpha * s.powerIn + (1 - s.alpha) * (x * x);
        s.powerOut = s.alpha * s.powerOut + (1 - s.alpha) * (y * y);
        const Vsp64f in = s.powerIn, out = s.powerOut;
        if (out > 0.8 * in && 10000 * s.powerIn > s.powerOut) {
            s.run++;
            s.dip = 0;
        } else if (out > 0.0008 * in && in > out) {
            flag |= countDip(s, out < 0.48 * in);
        } else {
            s.run = s.dip = 0;
        }
    }
    *state = s;
    *pFlag = flag;
    return vspStsNoErr;
}

VspStatus vspsToneDetect_EC_16s(const Vsp16s* pSrc, Vsp32s len, Vsp32s* pFlag, VspToneDetectState_EC_16s* pState) {
    if (anyNull(pSrc, pFlag, pState)) return vspStsNullPtrErr;
    if (len < 1) return vspStsBadArgErr;
    State_16s* const state = aligned<State_16s>(pState);
    State_16s s = *state;
    const Vsp32s c0 = s.coeffs[0], c1 = s.coeffs[1], c2 = s.coeffs[2], c3 = s.coeffs[3];
    const Vsp64s alpha = s.alpha, beta = 16384 - s.alpha;
    bool flag = false;
    for (Vsp32s n = 0; n < len; n++) {
        const Vsp16s x = pSrc[n], y = sat_16s((c1 * s.x2 - c2 * s.y1 - c3 * s.y2 + c0 * x + 2048) >> 12);
        s.x2 = s.x1;
        s.x1 = x;
        s.y2 = s.y1;
        s.y1 = y;
        s.powerIn = Vsp32s((x * x * beta + s.powerIn * alpha) >> 14);
        s.powerOut = Vsp32s((y * y * beta + s.powerOut * alpha) >> 14);
        if (s.powerOut > (Vsp64s(s.powerIn) * 13107) >> 14) {  // 0.8
            s.run++;
            s.dip = 0;
        } else {
            flag |= countDip(s, s.powerOut < (Vsp64s(s.powerIn) * 7864) >> 14);  // 0.48
        }
    }
    *state = s;
    *pFlag = flag;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
