// The sub-band ADPCM encoder of G.722 (3.2 to 3.6).
#include "core/checks.h"
#include "core/state_size.h"
#include "g722/sub_bands.h"

namespace vsp::VSP_LEVEL {

namespace {

// Decision levels of the low band at a scale factor, those after the last one 0.
struct ScaledThresholds {
    static constexpr int kVectors = 32 / Sliding16::width;
    Sliding16 vectors[kVectors];

    [[gnu::always_inline]] explicit ScaledThresholds(Vsp32s scale) {
        for (int i = 0; i < kVectors; i++) {
            const auto* levels = reinterpret_cast<const Vsp16s*>(lowThresholds.values);
            vectors[i] = mulHiU(Sliding16::load(levels + i * Sliding16::width), Sliding16::splat(Vsp16s(scale)));
        }
    }

    // How many of the decision levels the magnitude does not reach.
    [[gnu::always_inline]] int above(Sliding16 magnitude) const { return countGreater(vectors, magnitude); }
};

}  // namespace

VspStatus vspsSBADPCMEncodeStateSize_G722_16s(Vsp32s* pSize) { return fixedSize(pSize, sizeof(SubBandState)); }

VspStatus vspsSBADPCMEncodeInit_G722_16s(void* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    __builtin_memset(pState, 0, sizeof(SubBandState));
    return vspStsNoErr;
}

VspStatus vspsSBADPCMEncode_G722_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len, void* pState) {
    if (anyNull(pSrc, pDst, pState)) return vspStsNullPtrErr;
    if (len < 2 || len % 2 != 0) return vspStsSizeErr;
    auto& state = *static_cast<SubBandState*>(pState);
    SubBands bands(state);
    Vsp32s logLow = state.logScale[0], logHigh = state.logScale[1];
    for (Vsp32s n = 0; n < len / 2; n++) {
        const Vsp32s scaleLow = lowScale(logLow), scaleHigh = highScale(logHigh);
        const ScaledThresholds thresholds(scaleLow);
        const S16_128 difference = subSat(splatOf(pSrc + 2 * n), bands.prediction());
        const S16_128 magnitudes = {_mm_xor_si128(difference.v, _mm_srai_epi16(difference.v, 15))};  // one's complement
        const Vsp32s both = _mm_cvtsi128_si32(difference.v), magnitudeHigh = _mm_extract_epi16(magnitudes.v, 1);

        const int reached = kLowThresholds - thresholds.above(splatFirst<Sliding16>(magnitudes));
        const QuantiserStep& low = lowQuantiser.byThresholds[(both >> 15) & 1][reached];
        const int step = magnitudeHigh >= ((kHighThreshold * scaleHigh) >> 15);
        const QuantiserStep& high = highQuantiser[(both < 0 ? 1 : 3) - step];
        pDst[n] = Vsp16s(low.code | high.code);

        bands.adapt(splatOf((scaleLow * low.level) >> 15, (scaleHigh * high.level) >> 15));
        logLow = nextLogScale(logLow, low.logStep, kLowLogScaleMax);
        logHigh = nextLogScale(logHigh, high.logStep, kHighLogScaleMax);
    }
    bands.store(state);
    state.logScale[0] = Vsp16s(logLow);
    state.logScale[1] = Vsp16s(logHigh);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
