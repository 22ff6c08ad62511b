// The filters at the ends of the coder (GSM 06.10 5.2.1 to 5.2.3 and 5.3.5 to 5.3.7).
#include "arithmetic/basic_ops.h"
#include "core/checks.h"
#include "gsmfr/exports.h"
#include "gsmfr/frame.h"
#include "vector/map.h"

namespace vsp::VSP_LEVEL {

static constexpr Vsp16s kEmphasis = 28180;

VspStatus vspsPreprocess_GSMFR_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s* pMem) {
    if (anyNull(pSrc, pDst, pMem)) return vspStsNullPtrErr;
    Vsp16s sof[1 + kFrame];
    Vsp16s z1 = Vsp16s(pMem[0]);
    Vsp32s l_z2 = pMem[1];
    sof[0] = Vsp16s(pMem[2]);
    for (int k = 0; k < kFrame; k++) {
        const Vsp16s so = Vsp16s((pSrc[k] >> 3) * 4);
        // The standard's product of the two parts of L_z2 is this rounded product.
        l_z2 = Cnvrt_64s32s(((l_z2 * Vsp64s(32735) + 0x4000) >> 15) + (so - z1) * Vsp64s(32768));
        z1 = so;
        sof[k + 1] = Vsp16s(Add_32s(l_z2, 0x4000) >> 15);
    }
    pMem[0] = z1;
    pMem[1] = l_z2;
    pMem[2] = sof[kFrame];
    const auto emphasised = [](auto sample, auto before) {
        return addSat(sample, mulRoundWrap(before, decltype(before)::splat(-kEmphasis)));
    };
    map(kFrame, emphasised, pDst, sof + 1, sof);
    return vspStsNoErr;
}

VspStatus vspsPostprocess_GSMFR_16s_I(Vsp16s* pSrcDst, Vsp16s* pMem) {
    if (anyNull(pSrcDst, pMem)) return vspStsNullPtrErr;
    S16_128 msr = S16_128::splat(*pMem);  // its first element counts
    for (int k = 0; k < kFrame; k++) {
        msr = addSat(S16_128::splat(pSrcDst[k]), mulRoundWrap(msr, S16_128::splat(kEmphasis)));
        pSrcDst[k] = first(msr);
    }
    *pMem = first(msr);
    const auto upscaled = [](auto sample) {
        const auto doubled = addSat(sample, sample);
        return sub(doubled, decltype(doubled){doubled.v & decltype(doubled)::splat(7).v});
    };
    map(kFrame, upscaled, pSrcDst, pSrcDst);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
