// Coding and decoding of the log-area ratios (GSM 06.10 5.2.6 to 5.2.8).
#include "arithmetic/basic_ops.h"
#include "core/checks.h"
#include "gsmfr/exports.h"
#include "gsmfr/frame.h"
#include "gsmfr/tables.h"

namespace vsp::VSP_LEVEL {

static Vsp32s logAreaRatio(Vsp16s r) {
    const Vsp32s x = r == kMin16 ? kMax16 : r < 0 ? -r : r;
    const Vsp32s lar = x < 22118 ? x >> 1 : x < 31130 ? x - 11059 : (x - 26112) * 4;
    return r < 0 ? -lar : lar;
}

VspStatus vspsLARQuantEncode_GSMFR_16s(const Vsp16s* pSrc, Vsp16s* pDst) {
    if (anyNull(pSrc, pDst)) return vspStsNullPtrErr;
    for (int i = 0; i < kOrder; i++) {
        const LarQuantiser& q = larQuantisers[i];
        const Vsp32s level = (((q.a * logAreaRatio(pSrc[i])) >> 15) + q.b + 256) >> 9;
        const Vsp32s limited = level < q.minimum ? q.minimum : level > q.maximum ? q.maximum : level;
        pDst[i] = Vsp16s(limited - q.minimum);
    }
    return vspStsNoErr;
}

VspStatus vspsLARQuantDecode_GSMFR_16s(const Vsp16s* pSrc, Vsp16s* pDst) {
    if (anyNull(pSrc, pDst)) return vspStsNullPtrErr;
    for (int i = 0; i < kOrder; i++) {
        const LarQuantiser& q = larQuantisers[i];
        const Vsp32s code = pSrc[i] & (q.maximum - q.minimum);  // 2^bits - 1
        const Vsp16s level = sat_16s((code + q.minimum) * 1024 - 2 * q.b);
        pDst[i] = sat_16s(2 * mulRound_16s(q.inverseA, level));
    }
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
