// Memory of the weighting filter after a subframe (G.729 3.10).
#include "common/post_filter.h"
#include "core/checks.h"
#include "g729/exports.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsWeightedErrorUpdate_G729_16s(const Vsp16s* pTarget, const Vsp16s* pFilteredAdaptive,
                                           const Vsp16s* pFilteredFixed, const Vsp16s* pGain, Vsp16s* pMem) {
    if (anyNull(pTarget, pFilteredAdaptive, pFilteredFixed, pGain, pMem)) return vspStsNullPtrErr;
    constexpr int kMemory = 10;
    const S16_128 gainPitch = S16_128::splat(pGain[0]), gainCode = S16_128::splat(pGain[1]);  // Q14 and Q13
    const auto error = [&](int n) {
        const S16_128 adaptive = product<14, false>(S16_128::load(pFilteredAdaptive + n), gainPitch);
        const S16_128 fixed = product<13, false>(S16_128::load(pFilteredFixed + n), gainCode);
        return subSat(S16_128::load(pTarget + n), addSat(adaptive, fixed));
    };
    const S16_128 early = error(kL_subfr - kMemory), late = error(kL_subfr - S16_128::width);
    early.store(pMem);
    late.store(pMem + kMemory - S16_128::width);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
