// Step-size controllers of the full-band filters, floating and fixed point: the rule of the sub-band filters
// (subband_controller.h) with one uncertainty for all taps. Sums are taken in double precision, or are exact.
#include "core/checks.h"
#include "core/state_size.h"
#include "ec/exports.h"
#include "ec/near_speech.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr Vsp32s kSize_32f = 72, kSize_16s = 96;

struct FullbandController {
    Vsp32s taps;
    Vsp32f noiseShare, leakageShare, drift;
    Vsp32f uncertainty;  // summed over the taps, as a share of the path that is loudest
    Vsp32f noise, cross, estimate, chance;
    NearSpeech nearSpeech;
};
static_assert(sizeof(FullbandController) <= kSize_32f);

template <class State>
VSP_INLINE FullbandController* controllerOf(State* state) {
    return reinterpret_cast<FullbandController*>(state);
}

struct FloatFilter {
    using Sample = Vsp32f;
    using Step = Vsp32f;
    static constexpr Vsp64f kTap = 1;
    [[gnu::always_inline]] static Step step(Vsp64f s, Vsp64f /*peak*/, Vsp64f /*refPeak*/) { return Step(s); }
    [[gnu::always_inline]] static Vsp64f product(const Sample* a, const Sample* b, Vsp32s len) {
        constexpr int kSums = 8;
        Vsp64f sums[kSums] = {};
        Vsp32s n = 0;
        for (; len - n >= kSums; n += kSums)
            for (int i = 0; i < kSums; i++) sums[i] += Vsp64f(a[n + i]) * b[n + i];
        for (int i = 0; n + i < len; i++) sums[i] += Vsp64f(a[n + i]) * b[n + i];
        for (int half = kSums / 2; half > 0; half /= 2)
            for (int i = 0; i < half; i++) sums[i] += sums[i + half];
        return sums[0];
    }
};

struct FixedFilter {
    using Sample = Vsp16s;
    using Step = Vsp32s;
    static constexpr Vsp64f kTap = 32768;  // Q15
    // A tap grows by error * step / 2^11 * reference / 2^13 / 2^15. No product may leave 32 bits.
    [[gnu::always_inline]] static Step step(Vsp64f s, Vsp64f peak, Vsp64f refPeak) {
        const Vsp64f a = 0x1p29 / (peak + 1), b = 0x1p40 / ((peak + 1) * (refPeak + 1)), most = a < b ? a : b;
        const Vsp64f wanted = s * 0x1p39, rounded = (wanted < most ? wanted : most) + 0.5;
        return Step(rounded);
    }
    [[gnu::always_inline]] static Vsp64f product(const Sample* a, const Sample* b, Vsp32s len) {
        return Vsp64f(dot(a, b, len));
    }
};

VSP_INLINE void smooth(Vsp32f& value, Vsp32f now, Vsp32f share) { value += share * (now - value); }

VSP_INLINE constexpr bool isController(Vsp32s taps, Vsp32s frameSize, Vsp32s rate) {
    return taps >= 1 && frameSize >= 1 && frameSize <= rate && (rate == 8000 || rate == 16000);
}

VSP_INLINE VspStatus init(FullbandController* s, Vsp32s taps, Vsp32s frameSize, Vsp32s rate) {
    if (anyNull(s)) return vspStsNullPtrErr;
    if (!isController(taps, frameSize, rate)) return vspStsBadArgErr;
    constexpr Vsp32f kNoiseTime = 0.02f;    // s, smoothing of the error power
    constexpr Vsp32f kLeakageTime = 0.25f;  // s, over which error and echo estimate are compared
    constexpr Vsp32f kDriftTime = 3e4f;     // s in which an echo path becomes another one
    const Vsp32f frameRate = Vsp32f(rate) / Vsp32f(frameSize);
    *s = {};
    s->taps = taps;
    s->noiseShare = 1 - decay(kNoiseTime, frameRate);
    s->leakageShare = 1 - decay(kLeakageTime, frameRate);
    s->drift = 1 / (kDriftTime * frameRate);
    s->uncertainty = 1;
    initNearSpeech(s->nearSpeech, frameRate);
    return vspStsNoErr;
}

// Of the taps that have moved, a share is unknown.
VSP_INLINE VspStatus reset(FullbandController* s, Vsp32s shift) {
    if (anyNull(s)) return vspStsNullPtrErr;
    const Vsp64f moved = shift < 0 ? -Vsp64f(shift) : Vsp64f(shift);
    s->uncertainty = larger(s->uncertainty, moved < s->taps ? Vsp32f(moved / s->taps) : 1);
    return vspStsNoErr;
}

// What the error and the estimate of a block have in common, per sample.
struct BlockPowers {
    Vsp64f error, estimate, correlation;
};

VSP_INLINE Vsp32f leakage(FullbandController* s, const BlockPowers& b) {
    constexpr Vsp32f kChance = 8;  // leakage that comes about by chance, in units of its expectation
    constexpr Vsp32f kNothing = 0.1f;
    const Vsp32f share = s->leakageShare;
    smooth(s->cross, Vsp32f(b.correlation), share);
    smooth(s->estimate, Vsp32f(b.estimate), share);
    smooth(s->chance, share * Vsp32f(b.error * b.estimate), share);
    const Vsp32f square = s->cross * s->cross - kChance * s->chance;
    return square > 0 ? smaller(1, square / (s->estimate * s->estimate + kNothing)) : 0;
}

struct Verdict {
    Vsp32f step;  // normalised, 0 to 1
    bool doubleTalk;
};

VSP_INLINE Verdict update(FullbandController* s, const BlockPowers& b, Vsp64f tapEnergy, Vsp64f farEnergy, Vsp64f farPower,
                          Vsp32s samples, bool cancelling) {
    constexpr Vsp32f kCorrelated = 0.15f;  // samples are correlated: one teaches less than if they were not
    constexpr Vsp32f kNothing = 0.1f;      // power of a sample
    const Vsp32f energy = Vsp32f(tapEnergy), far = Vsp32f(farEnergy) / Vsp32f(s->taps);
    s->uncertainty = larger(s->uncertainty + energy * s->drift, leakage(s, b) * energy);
    smooth(s->noise, Vsp32f(b.error), s->noiseShare);
    const Vsp32f predicted = s->uncertainty * far, step = predicted / (predicted + s->noise + kNothing);
    s->uncertainty *= 1 - smaller(1, kCorrelated * step * Vsp32f(samples) / Vsp32f(s->taps));
    const HeardPowers heard = {Vsp32f(b.error + b.estimate + 2 * b.correlation),
                               larger(Vsp32f(farPower), far),
                               s->noise,
                               Vsp32f(b.estimate),
                               s->noise,
                               predicted};
    return {step, hearNearSpeech(s->nearSpeech, heard, cancelling)};
}

// A block whose powers are not finite teaches nothing.
template <class Filter>
VSP_INLINE VspStatus controlBlock(const typename Filter::Sample* ref, const typename Filter::Sample* near,
                                  const typename Filter::Sample* err, Vsp32s len, const typename Filter::Sample* taps,
                                  Vsp32s cancelling, typename Filter::Step* steps, Vsp32f* learning, Vsp32s* doubleTalk,
                                  FullbandController* s) {
    if (anyNull(ref, near, err, taps, steps, learning, doubleTalk, s)) return vspStsNullPtrErr;
    if (len < 1) return vspStsBadArgErr;
    constexpr Vsp32f kSmallStep = 1e-5f;  // not worth an update
    constexpr Vsp64f kMost = 1e18;
    BlockPowers b = {};
    Vsp64f peak = 0;
    for (Vsp32s n = 0; n < len; n++) {
        const Vsp64f e = err[n], y = Vsp64f(near[n]) - e, magnitude = e < 0 ? -e : e;
        b.error += e * e;
        b.estimate += y * y;
        b.correlation += e * y;
        if (magnitude > peak) peak = magnitude;
    }
    const Vsp64f unit = Filter::kTap;
    b = {b.error / len, b.estimate / len, b.correlation / len};
    const Vsp64f tapEnergy = Filter::product(taps, taps, s->taps) / (unit * unit);
    const Vsp64f farEnergy = Filter::product(ref + len - s->taps, ref + len - s->taps, s->taps);
    Vsp64f power = Filter::product(ref - s->taps, ref - s->taps, s->taps);
    const bool finite =
        b.error <= kMost && b.estimate <= kMost && tapEnergy <= kMost && farEnergy <= kMost && power <= kMost;
    const Verdict v = finite
                          ? update(s, b, tapEnergy, farEnergy, Filter::product(ref, ref, len) / len, len, cancelling != 0)
                          : Verdict{0, false};
    const bool adapts = v.step >= kSmallStep;
    for (Vsp32s n = 0; n < len; n++) {
        power += Vsp64f(ref[n]) * ref[n] - Vsp64f(ref[n - s->taps]) * ref[n - s->taps];
        const Vsp64f least = power > 0 ? power : 0;
        steps[n] = adapts ? Filter::step(v.step / (least + 1), 2 * peak, __builtin_sqrt(least)) : 0;
    }
    *learning = adapts ? v.step : 0;
    *doubleTalk = v.doubleTalk ? 1 : 0;
    return vspStsNoErr;
}

}  // namespace

VspStatus vspsFullbandControllerGetSize_EC_32f(Vsp32s* pSize) { return fixedSize(pSize, kSize_32f); }
VspStatus vspsFullbandControllerGetSize_EC_16s(Vsp32s* pSize) { return fixedSize(pSize, kSize_16s); }

VspStatus vspsFullbandControllerInit_EC_32f(VspFullbandControllerState_EC_32f* pState, Vsp32s numTaps, Vsp32s frameSize,
                                            Vsp32s rate) {
    return init(controllerOf(pState), numTaps, frameSize, rate);
}
VspStatus vspsFullbandControllerInit_EC_16s(VspFullbandControllerState_EC_16s* pState, Vsp32s numTaps, Vsp32s frameSize,
                                            Vsp32s rate) {
    return init(controllerOf(pState), numTaps, frameSize, rate);
}

VspStatus vspsFullbandControllerReset_EC_32f(VspFullbandControllerState_EC_32f* pState, Vsp32s shift) {
    return reset(controllerOf(pState), shift);
}
VspStatus vspsFullbandControllerReset_EC_16s(VspFullbandControllerState_EC_16s* pState, Vsp32s shift) {
    return reset(controllerOf(pState), shift);
}

VspStatus vspsFullbandControllerUpdate_EC_32f(const Vsp32f* pRef, const Vsp32f* pNear, const Vsp32f* pErr, Vsp32s len,
                                              const Vsp32f* pTaps, Vsp32s cancelling, Vsp32f* pStepSize, Vsp32f* pLearning,
                                              Vsp32s* pDoubleTalk, VspFullbandControllerState_EC_32f* pState) {
    return controlBlock<FloatFilter>(pRef, pNear, pErr, len, pTaps, cancelling, pStepSize, pLearning, pDoubleTalk,
                                     controllerOf(pState));
}
VspStatus vspsFullbandControllerUpdate_EC_16s(const Vsp16s* pRef, const Vsp16s* pNear, const Vsp16s* pErr, Vsp32s len,
                                              const Vsp16s* pTaps, Vsp32s cancelling, Vsp32s* pStepSize, Vsp32f* pLearning,
                                              Vsp32s* pDoubleTalk, VspFullbandControllerState_EC_16s* pState) {
    return controlBlock<FixedFilter>(pRef, pNear, pErr, len, pTaps, cancelling, pStepSize, pLearning, pDoubleTalk,
                                     controllerOf(pState));
}

}  // namespace vsp::VSP_LEVEL
