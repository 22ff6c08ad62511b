// LP filters of order 10, or 30 where the prediction is a backward one.
#pragma once

#include "codec/g729/library_states.h"

namespace vspv::g729 {

constexpr Vsp32s kMaxOrder = 30, kSubframe = 40;

// Coefficients, Q12, of a filter that somebody else keeps.
struct LpFilter {
    const Vsp16s* lpc;
    Vsp32s order;
};

// Coefficients of the filter A(z / gamma).
struct WeightedLpFilter {
    Vsp16s lpc[kMaxOrder + 1];
    Vsp32s order;

    WeightedLpFilter(const LpFilter& f, Vsp16s gamma) : order(f.order) {
        vspsMulPowerC_NR_16s_Sfs(f.lpc, gamma, lpc, order + 1, 15);
    }
    operator LpFilter() const { return {lpc, order}; }
};

// The source has as many samples before it as the order is.
inline void residual(const LpFilter& f, const Vsp16s* src, Vsp16s* dst) {
    if (f.order == 10)
        vspsResidualFilter_G729_16s(src, f.lpc, dst, kSubframe);
    else
        vspsResidualFilter_G729E_16s(src, f.lpc, dst, kSubframe, f.order);
}

// The destination may be the source. The memory is that of kMaxOrder samples, the newest last, and is only read. Whether
// some step saturated is the result.
inline bool synthesis(const LpFilter& f, const Vsp16s* src, Vsp16s* dst, const Vsp16s* memory) {
    const Vsp16s* newest = memory + kMaxOrder - f.order;
    if (f.order == 10) return vspsSynthesisFilter_NR_16s_Sfs(f.lpc, src, dst, kSubframe, 12, newest) == vspStsOverflow;
    if (src == dst) return vspsSynthesisFilter_G729E_16s_I(f.lpc, dst, kSubframe, f.order, newest) == vspStsOverflow;
    return vspsSynthesisFilter_G729E_16s(f.lpc, src, dst, kSubframe, f.order, newest) == vspStsOverflow;
}

inline void keepNewest(const Vsp16s* signal, Vsp16s* memory) { copy(signal + kSubframe - kMaxOrder, memory, kMaxOrder); }

// The filters of both subframes: the first one's is converted from the mean of the LSP vectors (G.729 3.2.5).
inline void interpolatedFilters(const Vsp16s* previousLsp, const Vsp16s* lsp, Vsp16s* lpc) {
    Vsp16s mean[10];
    vspsInterpolate_G729_16s(previousLsp, lsp, mean, 10);
    vspsLSPToLPC_G729_16s(mean, lpc);
    vspsLSPToLPC_G729_16s(lsp, lpc + 11);
}

}  // namespace vspv::g729
