// The 2100 Hz answer tone with phase reversals (ITU-T G.168, V.25): a resonator whose output power is compared with that of
// the input. A reversal makes the output collapse for a moment.
#include "common/basic_ops.h"
#include "core/checks.h"
#include "core/level.h"
#include "ec/align.h"
#include "ec/tables.h"
#include "vector/simd.h"

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

// The signal is taken in blocks: what depends on the input alone in vectors, then the recursions sample by sample, then
// what the powers tell.
constexpr int kBlock = 32;

#if defined(__AVX2__)
using Doubles = F64_256;
#else
using Doubles = F64_128;
#endif

// One bit for each sample of a block: the tone is there; it is low; so low that a tone before it may have been reversed.
struct Classes {
    Vsp32u tone = 0, low = 0, deep = 0;
};

VSP_INLINE int lowestOne(Vsp32u bits) { return bits == 0 ? kBlock : __builtin_ctz(bits); }

// Counts some samples at which the tone is low. Tells whether a second or later reversal is among them.
template <class State>
VSP_INLINE bool countLow(State& s, int samples, Vsp32u deep) {
    const Vsp32s untilCleared = s.maxDip - s.dip;
    const Vsp32s reversal = s.minRun < s.run && s.run < s.maxRun ? lowestOne(deep) : kBlock;
    bool flag = false;
    if (reversal < samples && reversal <= untilCleared) {
        flag = s.reversals >= 1;
        s.reversals = flag ? 2 : 1;
        s.run = 0;
    }
    s.dip += samples;
    if (samples > untilCleared) {
        s.reversals = s.run = 0;
        s.dip = samples - 1 - untilCleared;
    }
    return flag;
}

// Counts the first samples of a block, stretch by stretch.
template <class State>
VSP_INLINE bool countSamples(State& s, const Classes& c, int samples) {
    bool flag = false;
    for (int i = 0; i < samples;) {
        const Vsp32u tone = c.tone >> i, low = c.low >> i;
        const Vsp32u same = (tone & 1) != 0 ? tone : (low & 1) != 0 ? low : ~(tone | low);
        const int end = lowestOne(~same), stretch = end < samples - i ? end : samples - i;
        if ((tone & 1) != 0) {
            s.run = s.run + stretch < s.maxRun ? s.run + stretch : s.maxRun;  // a longer one counts like this one
            s.dip = 0;
        } else if ((low & 1) != 0) {
            flag |= countLow(s, stretch, c.deep >> i);
        } else {
            s.run = s.dip = 0;
        }
        i += stretch;
    }
    return flag;
}

VSP_INLINE Classes classify(const Vsp32f* powerIn, const Vsp32f* powerOut) {
    Classes c;
    for (int i = 0; i < kBlock; i += Sliding32f::width) {
        const Sliding32f in = Sliding32f::load(powerIn + i), out = Sliding32f::load(powerOut + i);
        c.tone |= greater(mul(Sliding32f::splat(10000), in), out) << i;
        c.low |= greater(in, out) << i;
    }
    Vsp32u high = 0, audible = 0;
    for (int i = 0; i < kBlock; i += Doubles::width) {
        const Doubles in = loadDouble<Doubles>(powerIn + i), out = loadDouble<Doubles>(powerOut + i);
        high |= greater(out, mul(Doubles::splat(0.8), in)) << i;
        audible |= greater(out, mul(Doubles::splat(0.0008), in)) << i;
        c.deep |= greater(mul(Doubles::splat(0.48), in), out) << i;
    }
    c.tone &= high;
    c.low &= audible & ~c.tone;
    return c;
}

// Products of the powers and the Q14 factors are exact.
VSP_INLINE Classes classify(const Vsp32s* powerIn, const Vsp32s* powerOut) {
    Classes c;
    Vsp32u shallow = 0;
    for (int i = 0; i < kBlock; i += Doubles::width) {
        const Doubles in = loadDouble<Doubles>(powerIn + i), out = loadDouble<Doubles>(powerOut + i);
        c.tone |= greater(out, mul(Doubles::splat(13107 / 16384.0), in)) << i;  // out > (13107 in) >> 14
        shallow |= greater(add(out, Doubles::splat(1)), mul(Doubles::splat(7864 / 16384.0), in)) << i;
    }
    c.low = ~c.tone;
    c.deep = ~shallow;  // out < (7864 in) >> 14
    return c;
}

template <class T>
VSP_INLINE void copy(const T* src, T* dst, int count) {
    if (count == kBlock)
        __builtin_memcpy(dst, src, sizeof(T) * kBlock);
    else
        for (int i = 0; i < count; i++) dst[i] = src[i];
}

bool detect(State_32f& s, const Vsp32f* src, Vsp32s len) {
    const Vsp32f c0 = s.coeffs[0], c1 = s.coeffs[1], c2 = s.coeffs[2], c3 = s.coeffs[3];
    const Vsp32f alpha = s.alpha, beta = 1 - alpha;
    Vsp32f x[2 + kBlock] = {}, drive[kBlock], square[kBlock], powerIn[kBlock] = {}, powerOut[kBlock] = {};
    bool flag = false;
    for (Vsp32s n = 0; n < len; n += kBlock) {
        const int count = len - n < kBlock ? len - n : kBlock;
        x[0] = s.x2;
        x[1] = s.x1;
        copy(src + n, x + 2, count);
        for (int i = 0; i < kBlock; i++) {
            drive[i] = c0 * x[i + 2] + c1 * x[i];
            square[i] = beta * (x[i + 2] * x[i + 2]);
        }
        for (int i = 0; i < count; i++) {
            const Vsp32f y = drive[i] - c2 * s.y1 - c3 * s.y2;
            s.y2 = s.y1;
            s.y1 = y;
            s.powerIn = powerIn[i] = alpha * s.powerIn + square[i];
            s.powerOut = powerOut[i] = alpha * s.powerOut + beta * (y * y);
        }
        s.x1 = x[count + 1];
        s.x2 = x[count];
        flag |= countSamples(s, classify(powerIn, powerOut), count);
    }
    return flag;
}

bool detect(State_16s& s, const Vsp16s* src, Vsp32s len) {
    const Vsp32s c0 = s.coeffs[0], c1 = s.coeffs[1], c2 = s.coeffs[2], c3 = s.coeffs[3];
    const Vsp64s alpha = s.alpha, beta = 16384 - s.alpha;
    Vsp16s x[2 + kBlock] = {};
    Vsp32s drive[kBlock], y1 = s.y1, y2 = s.y2, powerIn[kBlock] = {}, powerOut[kBlock] = {};
    Vsp64s square[kBlock], in = s.powerIn, out = s.powerOut;
    bool flag = false;
    for (Vsp32s n = 0; n < len; n += kBlock) {
        const int count = len - n < kBlock ? len - n : kBlock;
        x[0] = s.x2;
        x[1] = s.x1;
        copy(src + n, x + 2, count);
        for (int i = 0; i < kBlock; i++) {
            drive[i] = c0 * x[i + 2] + c1 * x[i] + 2048;
            square[i] = x[i + 2] * x[i + 2] * beta;
        }
        for (int i = 0; i < count; i++) {
            Vsp32s y = (drive[i] - c3 * y2 - c2 * y1) >> 12;
            if (y != Vsp16s(y)) [[unlikely]]
                y = sat_16s(y);
            y2 = y1;
            y1 = y;
            in = (square[i] + in * alpha) >> 14;
            out = (y * y * beta + out * alpha) >> 14;
            powerIn[i] = Vsp32s(in);
            powerOut[i] = Vsp32s(out);
        }
        s.x1 = x[count + 1];
        s.x2 = x[count];
        flag |= countSamples(s, classify(powerIn, powerOut), count);
    }
    s.y1 = Vsp16s(y1);
    s.y2 = Vsp16s(y2);
    s.powerIn = Vsp32s(in);
    s.powerOut = Vsp32s(out);
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
    *pFlag = detect(*aligned<State_32f>(pState), pSrc, len);
    return vspStsNoErr;
}

VspStatus vspsToneDetect_EC_16s(const Vsp16s* pSrc, Vsp32s len, Vsp32s* pFlag, VspToneDetectState_EC_16s* pState) {
    if (anyNull(pSrc, pFlag, pState)) return vspStsNullPtrErr;
    if (len < 1) return vspStsBadArgErr;
    *pFlag = detect(*aligned<State_16s>(pState), pSrc, len);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
