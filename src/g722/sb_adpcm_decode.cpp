// The sub-band ADPCM decoder of G.722 (4.2 to 4.4).
#include "core/checks.h"
#include "core/state_size.h"
#include "g722/sub_bands.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsSBADPCMDecodeStateSize_G722_16s(Vsp32s* pSize) { return fixedSize(pSize, sizeof(SubBandState)); }

VspStatus vspsSBADPCMDecodeInit_G722_16s(void* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    __builtin_memset(pState, 0, sizeof(SubBandState));
    return vspStsNoErr;
}

VspStatus vspsSBADPCMDecode_G722_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len, Vsp32s mode, void* pState) {
    if (anyNull(pSrc, pDst, pState)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (mode < 1 || mode > 3) return vspStsRangeErr;
    auto& state = *static_cast<SubBandState*>(pState);
    const Vsp16s* const outputLevels = lowOutput.levels[mode - 1];
    SubBands bands(state);
    Vsp32s logLow = state.logScale[0], logHigh = state.logScale[1];
    for (Vsp32s n = 0; n < len; n++) {
        const int codeLow = pSrc[n] & 63, codeHigh = (pSrc[n] >> 6) & 3;
        const QuantiserStep &low = lowQuantiser.byCode[codeLow], &high = highQuantiser[codeHigh];
        const Vsp32s scaleLow = lowScale(logLow), scaleHigh = highScale(logHigh);
        const Vsp32s differenceHigh = (scaleHigh * high.level) >> 15;

        const S16_128 output = splatOf((scaleLow * outputLevels[codeLow]) >> 15, differenceHigh);
        storeFirst(limited(addSat(bands.prediction(), output)), pDst + 2 * Vsp64s(n));

        bands.adapt(splatOf((scaleLow * low.level) >> 15, differenceHigh));
        logLow = nextLogScale(logLow, low.logStep, kLowLogScaleMax);
        logHigh = nextLogScale(logHigh, high.logStep, kHighLogScaleMax);
    }
    bands.store(state);
    state.logScale[0] = Vsp16s(logLow);
    state.logScale[1] = Vsp16s(logHigh);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
