// Step-size controllers of the sub-band filters, floating and fixed point.
#include "ec/subband_controller.h"

#include "core/checks.h"
#include "ec/exports.h"

namespace vsp::VSP_LEVEL {

namespace {

struct FloatSteps {
    using Band = Vsp32fc;
    using Step = Vsp64f;
    [[gnu::always_inline]] static void store(Vsp32f s, Vsp32f /*unit*/, Vsp64f* to) { *to = s; }
    [[gnu::always_inline]] static void store(const Sixteen& s, Vsp32f /*unit*/, Vsp64f* to) {
        Vsp32f values[Sixteen::width];
        VSP_LEVEL::store(s, values);
        for (int i = 0; i < Sixteen::width; i++) to[i] = values[i];
    }
};

// Mantissa and exponent, taken from the bits of the float.
struct FixedSteps {
    using Band = Vsp32sc;
    using Step = Vsp32sc;
    static constexpr int kMantissaBits = 23, kBias = 127, kShift = 30 - kMantissaBits;
    static constexpr Vsp32s kOne = 1 << kMantissaBits, kLargest = kMantissaBits + kShift + kBias;

    [[gnu::always_inline]] static void store(Vsp32f s, Vsp32f unit, Vsp32sc* to) {
        const Vsp32u bits = __builtin_bit_cast(Vsp32u, s * unit);
        const Vsp32u mantissa = (bits & (kOne - 1u)) | Vsp32u(kOne);
        const Vsp32s biased = Vsp32s(bits >> kMantissaBits) & 0xFF;
        if (biased == 0)
            *to = {0, 0};
        else
            *to = {Vsp32s(mantissa << kShift), kLargest - biased};
    }
    [[gnu::always_inline]] static void store(const Sixteen& s, Vsp32f unit, Vsp32sc* to) {
        const Sixteen scaled = s * unit;
        for (int i = 0; i < Sixteen::vectors; i++) {
            using Words = decltype(bitsOf(scaled.part[i]));
            const Words bits = bitsOf(scaled.part[i]), zero = Words::splat(0);
            const Words mantissa = {(bits.v & Words::splat(kOne - 1).v) | Words::splat(kOne).v};
            const Words biased = {shrU(bits, kMantissaBits).v & Words::splat(0xFF).v};
            const Words some = shr(sub(zero, biased), 31);
            storeAlternating({shl(mantissa, kShift).v & some.v}, {sub(Words::splat(kLargest), biased).v & some.v},
                             &to[i * F32::width].re);
        }
    }
};

VSP_INLINE bool areScales(Vsp32s bandScale, Vsp32s coefScale) {
    return bandScale >= -31 && bandScale <= 31 && coefScale >= 0 && coefScale <= 31;
}

template <class State>
VSP_INLINE SubbandController* controllerOf(State* state) {
    return reinterpret_cast<SubbandController*>(state);
}

VSP_INLINE VspStatus size(Vsp32s len, Vsp32s numSubbands, Vsp32s frameSize, Vsp32s rate, Vsp32s* pSize) {
    if (anyNull(pSize)) return vspStsNullPtrErr;
    if (!isController(len, numSubbands, frameSize, rate)) return vspStsBadArgErr;
    *pSize = controllerSize(len, numSubbands);
    return vspStsNoErr;
}

template <class State>
VSP_INLINE VspStatus initFixed(State* state, Vsp32s len, Vsp32s numSubbands, Vsp32s frameSize, Vsp32s rate,
                               Vsp32s bandScale, Vsp32s coefScale) {
    if (anyNull(state)) return vspStsNullPtrErr;
    if (!isController(len, numSubbands, frameSize, rate)) return vspStsBadArgErr;
    if (!areScales(bandScale, coefScale)) return vspStsBadArgErr;
    initController(controllerOf(state), len, numSubbands, frameSize, rate, Vsp32f(powerOfTwo(bandScale)),
                   Vsp32f(powerOfTwo(-coefScale)));
    return vspStsNoErr;
}

template <class State>
VSP_INLINE VspStatus reset(State* state, Vsp32s shift) {
    if (anyNull(state)) return vspStsNullPtrErr;
    resetController(controllerOf(state), shift);
    return vspStsNoErr;
}

}  // namespace

VspStatus vspsSubbandControllerGetSize_EC_32f(Vsp32s len, Vsp32s numSubbands, Vsp32s frameSize, Vsp32s rate,
                                              Vsp32s* pSize) {
    return size(len, numSubbands, frameSize, rate, pSize);
}
VspStatus vspsSubbandControllerGetSize_EC_16s(Vsp32s len, Vsp32s numSubbands, Vsp32s frameSize, Vsp32s rate,
                                              Vsp32s* pSize) {
    return size(len, numSubbands, frameSize, rate, pSize);
}
VspStatus vspsSubbandControllerDTGetSize_EC_16s(Vsp32s len, Vsp32s numSubbands, Vsp32s frameSize, Vsp32s rate,
                                                Vsp32s* pSize) {
    return size(len, numSubbands, frameSize, rate, pSize);
}

VspStatus vspsSubbandControllerInit_EC_32f(VspSubbandControllerState_EC_32f* pState, Vsp32s len, Vsp32s numSubbands,
                                           Vsp32s frameSize, Vsp32s rate) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    if (!isController(len, numSubbands, frameSize, rate)) return vspStsBadArgErr;
    initController(controllerOf(pState), len, numSubbands, frameSize, rate, 1, 1);
    return vspStsNoErr;
}
VspStatus vspsSubbandControllerInit_EC_16s(VspSubbandControllerState_EC_16s* pState, Vsp32s len, Vsp32s numSubbands,
                                           Vsp32s frameSize, Vsp32s rate, Vsp32s bandScale, Vsp32s coefScale) {
    return initFixed(pState, len, numSubbands, frameSize, rate, bandScale, coefScale);
}
VspStatus vspsSubbandControllerDTInit_EC_16s(VspSubbandControllerDTState_EC_16s* pState, Vsp32s len, Vsp32s numSubbands,
                                             Vsp32s frameSize, Vsp32s rate, Vsp32s bandScale, Vsp32s coefScale) {
    return initFixed(pState, len, numSubbands, frameSize, rate, bandScale, coefScale);
}

VspStatus vspsSubbandControllerReset_EC_32f(VspSubbandControllerState_EC_32f* pState, Vsp32s shift) {
    return reset(pState, shift);
}
VspStatus vspsSubbandControllerReset_EC_16s(VspSubbandControllerState_EC_16s* pState, Vsp32s shift) {
    return reset(pState, shift);
}
VspStatus vspsSubbandControllerDTReset_EC_16s(VspSubbandControllerDTState_EC_16s* pState, Vsp32s shift) {
    return reset(pState, shift);
}

VspStatus vspsSubbandControllerUpdate_EC_32f(const Vsp32fc* const* ppSrc, const Vsp32fc* pErr, const Vsp32fc* pEst,
                                             const Vsp32fc* const* ppCoef, Vsp32s cancelling, Vsp64f* const* ppStepSize,
                                             Vsp32s* pAdapt, Vsp32f* pResidual, Vsp32f* pLearning, Vsp32s* pDoubleTalk,
                                             VspSubbandControllerState_EC_32f* pState) {
    if (anyNull(ppSrc, pErr, pEst, ppCoef, ppStepSize, pAdapt, pResidual, pLearning, pDoubleTalk, pState))
        return vspStsNullPtrErr;
    const Verdict v = updateController<FloatSteps>(controllerOf(pState), ppSrc, pErr, pEst, ppCoef, cancelling != 0,
                                                   ppStepSize, pAdapt, pResidual);
    *pLearning = v.learning;
    *pDoubleTalk = v.doubleTalk ? 1 : 0;
    return vspStsNoErr;
}

VspStatus vspsSubbandControllerUpdate_EC_16s(const Vsp32sc* const* ppSrc, const Vsp32sc* pErr, const Vsp32sc* pEst,
                                             const Vsp32sc* const* ppCoef, Vsp32sc* const* ppStepSize, Vsp32s* pAdapt,
                                             Vsp32f* pResidual, Vsp32f* pLearning,
                                             VspSubbandControllerState_EC_16s* pState) {
    if (anyNull(ppSrc, pErr, pEst, ppCoef, ppStepSize, pAdapt, pResidual, pLearning, pState)) return vspStsNullPtrErr;
    *pLearning =
        updateController<FixedSteps>(controllerOf(pState), ppSrc, pErr, pEst, ppCoef, false, ppStepSize, pAdapt, pResidual)
            .learning;
    return vspStsNoErr;
}

VspStatus vspsSubbandControllerDTUpdate_EC_16s(const Vsp32sc* const* ppSrc, const Vsp32sc* pErr, const Vsp32sc* pEst,
                                               const Vsp32sc* const* ppCoef, Vsp32s cancelling, Vsp32sc* const* ppStepSize,
                                               Vsp32s* pAdapt, Vsp32f* pResidual, Vsp32f* pLearning, Vsp32s* pDoubleTalk,
                                               VspSubbandControllerDTState_EC_16s* pState) {
    if (anyNull(ppSrc, pErr, pEst, ppCoef, ppStepSize, pAdapt, pResidual, pLearning, pDoubleTalk, pState))
        return vspStsNullPtrErr;
    const Verdict v = updateController<FixedSteps>(controllerOf(pState), ppSrc, pErr, pEst, ppCoef, cancelling != 0,
                                                   ppStepSize, pAdapt, pResidual);
    *pLearning = v.learning;
    *pDoubleTalk = v.doubleTalk ? 1 : 0;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
