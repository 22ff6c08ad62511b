#include "codec/g729/lp_analysis.h"

namespace vspv::g729 {

void LpAnalysis::reset() {
    *this = {};
    memory[0] = 4096;
    vspsHighPassFilterInit_G729(kInputFilter, filter_);
}

void LpAnalysis::analyse(const Vsp16s* samples, bool forDetector) {
    moveDown(speech_, 160, 80);
    copy(samples, speech_ + 160, 80);
    vspsHighPassFilter_G729_16s_ISfs(speech_ + 160, 80, kInputScale, filter_);

    const Vsp32s lags = forDetector ? 12 : 10;
    Vsp16s signal[240], error;
    Vsp32s norm;
    vspsAnalysisWindow_G729_16s(speech_, signal);
    vspsAutoCorr_NormE_16s32s(signal, 240, autocorr, lags + 1, &norm);
    exponent = Vsp16s(1 - norm);
    copy(autocorr, windowed, lags + 1);
    vspsLagWindow_G729_32s_I(windowed + 1, lags);
    vspsLevinsonDurbin_G729_32s16s(windowed, lpc, reflection, &error, memory);
}

}  // namespace vspv::g729
