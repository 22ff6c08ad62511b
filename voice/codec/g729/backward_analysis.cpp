#include "codec/g729/backward_analysis.h"

namespace vspv::g729 {

void BackwardAnalysis::reset() {
    *this = {};
    memory_[0] = last_[0] = 4096;
    vspsWinHybridInit_G729E_16s(window_);
}

void BackwardAnalysis::analyse(Vsp16s* lpc) {
    constexpr Vsp16s kExpansion = 32113;  // 0.98 in Q15
    Vsp32s autocorr[kMaxOrder + 1];
    Vsp16s reflection[kMaxOrder], error;
    vspsWinHybrid_G729E_16s32s(past_, autocorr, window_);
    vspsLagWindow_G729E_32s_I(autocorr);
    vspsLevinsonDurbin_G729E_32s16s(autocorr, lpc, reflection, &error, memory_);
    bool saturated = false;
    for (Vsp32s i = 0; i <= kMaxOrder; i++) saturated = saturated || lpc[i] == 32767;
    if (saturated)
        copy(last_, lpc, kMaxOrder + 1);
    else
        copy(lpc, last_, kMaxOrder + 1);
    vspsMulPowerC_NR_16s_Sfs(lpc, kExpansion, lpc, kMaxOrder + 1, 15);
}

void BackwardAnalysis::synthesised(const Vsp16s* frame) {
    moveDown(past_, 65, 80);
    copy(frame, past_ + 65, 80);
}

}  // namespace vspv::g729
