// Random parameters for frames that did not arrive (`build_CN_param`).
#include "common/random.h"
#include "common/tables.h"
#include "core/checks.h"
#include "gsmamr/exports.h"
#include "gsmamr/mode_checks.h"
#include "gsmamr/parameter_bits.h"

namespace vsp::VSP_LEVEL {

static int rateNumber(Vsp32s mode) {
    static constexpr Vsp8u kNumbers[kMode122 + 1] = {0, 1, 0, 2, 0, 0, 3, 4, 5, 0, 0, 6, 7};
    return kNumbers[mode];
}

VspStatus vspsRandomParameters_GSMAMR_16s(Vsp32s mode, Vsp16s* pSeed, Vsp16s* pParam) {
    if (anyNull(pSeed, pParam)) return vspStsNullPtrErr;
    if (!isSpeechMode(mode)) return vspStsRangeErr;
    ownRandom(pSeed);
    const Vsp16s* const values = hammingCosine + (*pSeed & 127);
    const ParameterBits& parameters = parameterBits[rateNumber(mode)];
    for (int i = 0; i < parameters.count; i++) pParam[i] = Vsp16s(values[i] & ((1 << parameters.bits[i]) - 1));
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
