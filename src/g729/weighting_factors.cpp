// Adaptation of the perceptual weighting (G.729 3.3, perc_var).
#include "arithmetic/basic_ops.h"
#include "core/checks.h"
#include "g729/exports.h"

namespace vsp::VSP_LEVEL {

namespace {

// Log area ratio of a reflection coefficient by four straight lines, Q11.
Vsp16s logAreaRatio(Vsp16s rc) {
    const int magnitude = (rc == kMin16 ? kMax16 : rc < 0 ? -rc : rc) >> 4, half = magnitude >> 1;
    int ratio;
    if (magnitude <= 1299)
        ratio = magnitude;
    else if (magnitude <= 1815)
        ratio = (2 * half * 4567 - 3271557) >> 11;
    else if (magnitude <= 1944)
        ratio = (2 * half * 11776 - 16357786) >> 11;
    else
        ratio = (2 * half * 27443 - 46808433) >> 11;
    return Vsp16s(rc < 0 ? -ratio : ratio);
}

// Smallest distance of neighbouring frequencies, which are doubled first.
Vsp16s smallestDistance(const Vsp16s* lsf) {
    const auto doubled = [](Vsp16s a) { return sat_16s(2 * a); };
    Vsp16s smallest = kMax16;
    for (int i = 1; i < 10; i++) {
        const Vsp16s distance = sat_16s(doubled(lsf[i]) - doubled(lsf[i - 1]));
        if (distance < smallest) smallest = distance;
    }
    return smallest;
}

}  // namespace

VspStatus vspsWeightingFactors_G729_16s(const Vsp16s* pLSFInt, const Vsp16s* pLSFNew, const Vsp16s* pRC, Vsp16s* pMem,
                                        Vsp16s* pGamma1, Vsp16s* pGamma2) {
    if (anyNull(pLSFInt, pLSFNew, pRC, pMem, pGamma1, pGamma2)) return vspStsNullPtrErr;
    const Vsp16s* const lsf[2] = {pLSFInt, pLSFNew};
    Vsp16s ratios[2][2];  // of the subframes
    for (int i = 0; i < 2; i++) {
        ratios[1][i] = logAreaRatio(pRC[i]);
        ratios[0][i] = Vsp16s(sat_16s(ratios[1][i] + pMem[i]) >> 1);
        pMem[i] = ratios[1][i];
    }
    Vsp16s& smooth = pMem[2];
    for (int k = 0; k < 2; k++) {
        if (smooth != 0) {
            if (ratios[k][0] < -3562 && ratios[k][1] > 1336) smooth = 0;
        } else if (ratios[k][0] > -3116 || ratios[k][1] < 890) {
            smooth = 1;
        }
        if (smooth != 0) {
            pGamma1[k] = 30802;
            pGamma2[k] = 19661;
        } else {
            const Vsp16s gamma = ShiftL_16s(sat_16s(1024 - ((19302 * smallestDistance(lsf[k])) >> 15)), 5);
            pGamma1[k] = 32113;
            pGamma2[k] = gamma > 22938 ? Vsp16s(22938) : gamma < 13107 ? Vsp16s(13107) : gamma;
        }
    }
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
