#include "common/scalar_lp.h"

#include "common/lp_definitions.h"
#include "common/tables.h"
#include "g729/lp_tables.h"

namespace {

namespace plain = vsp::plain::lp;

VspStatus autoCorrNormE(const Vsp16s* src, Vsp32s len, Vsp32s* dst, Vsp32s lenDst, Vsp32s* norm) {
    return plain::autoCorr(src, len, dst, lenDst, norm) ? vspStsOverflow : vspStsNoErr;
}

VspStatus residual(const Vsp16s* src, const Vsp16s* lpc, Vsp16s* dst, Vsp32s len) {
    plain::residual(src, lpc, 10, dst, len);
    return vspStsNoErr;
}

VspStatus residualE(const Vsp16s* src, const Vsp16s* lpc, Vsp16s* dst, Vsp32s len, Vsp32s order) {
    plain::residual(src, lpc, order, dst, len);
    return vspStsNoErr;
}

VspStatus synthesisE(const Vsp16s* lpc, const Vsp16s* src, Vsp16s* dst, Vsp32s len, Vsp32s order, const Vsp16s* mem) {
    return plain::synthesis(lpc, src, dst, len, order, mem) ? vspStsOverflow : vspStsNoErr;
}

VspStatus levinsonE(const Vsp32s* r, Vsp16s* lpc, Vsp16s*, Vsp16s* err, Vsp16s*) {
    std::vector<Vsp32s> a, k;
    const bool stable = plain::levinson(r, 30, true, a, k, *err);
    for (int i = 1; i <= 30; i++) lpc[i] = plain::round16(plain::lShl(a[static_cast<std::size_t>(i)], 1));
    return stable ? vspStsNoErr : vspStsOverflow;
}

VspStatus lpcToLsp(const Vsp16s* lpc, const Vsp16s*, Vsp16s* lsp) {
    return plain::lpcToLsp(lpc, vsp::lspGrid, {61, 4, false}, lsp) ? vspStsNoErr : vspStsOverflow;
}

VspStatus lpcToLspA(const Vsp16s* lpc, const Vsp16s*, Vsp16s* lsp) {
    return plain::lpcToLsp(lpc, vsp::gridAnnexA, {51, 2, false}, lsp) ? vspStsNoErr : vspStsOverflow;
}

}  // namespace

void bench::addScalarLp(vsp::Api& api) {
    api.vspsAutoCorr_NormE_16s32s = autoCorrNormE;
    api.vspsResidualFilter_G729_16s = residual;
    api.vspsResidualFilter_G729E_16s = residualE;
    api.vspsSynthesisFilter_G729E_16s = synthesisE;
    api.vspsLevinsonDurbin_G729E_32s16s = levinsonE;
    api.vspsLPCToLSP_G729_16s = lpcToLsp;
    api.vspsLPCToLSP_G729A_16s = lpcToLspA;
}
