// The adaptive post-filter (`Post_Filter`; 3GPP TS 26.090, 6.2.1).
#include "common/post_filter.h"
#include "common/exports.h"
#include "common/residual_filter.h"
#include "core/checks.h"
#include "core/state_size.h"
#include "gsmamr/exports.h"
#include "gsmamr/gain_control.h"
#include "gsmamr/mode_checks.h"
#include "gsmamr/post_filter_tables.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kOrder = 10, kFrame = 160;

struct State {
    Vsp16s memory[kOrder];  // of the synthesis filter
    Vsp16s tilt, gain;
    Vsp16s past[kOrder];  // of the input
};
static_assert(sizeof(State) == 44);

void weigh(const Vsp16s* lpc, const Vsp16s* factors, Vsp16s* weighted) {
    weighted[0] = lpc[0];
    for (int i = 1; i <= kOrder; i++) weighted[i] = mulRound_16s(lpc[i], factors[i - 1]);
}

Vsp16s tiltOf(const Vsp16s* numerator, const Vsp16s* denominator) {
    static constexpr Vsp16s kZero[kOrder] = {};
    Vsp16s impulse[kTiltResponse] = {}, h[kTiltRoom] = {};
    for (int i = 0; i <= kOrder; i++) impulse[i] = numerator[i];
    vspsSynthesisFilter_NR_16s_Sfs(denominator, impulse, h, kTiltResponse, 12, kZero);
    return responseTilt(h);
}

// Brings the output to the energy of the input, with a gain that moves slowly (`agc`).
void controlGain(const Vsp16s* in, Vsp16s* out, Vsp16s* gain) {
    constexpr Vsp16s kNew = 3276;
    const Vsp32s present = ownSubframeEnergy(out);
    if (present == 0) {
        *gain = 0;
        return;
    }
    followGain(Mul_16s(ownAmplitudeRatio(ownSubframeEnergy(in), present), kNew), *gain, out);
}

}  // namespace

VspStatus vspsPostFilterGetStateSize_GSMAMR_16s(Vsp32s* pSize) { return fixedSize(pSize, sizeof(State)); }

VspStatus vspsPostFilterInit_GSMAMR_16s(void* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    *static_cast<State*>(pState) = {{}, 0, 4096, {}};
    return vspStsNoErr;
}

VspStatus vspsPostFilter_GSMAMR_16s(const Vsp16s* pSrc, const Vsp16s* pLPC, Vsp32s mode, Vsp16s* pDst, void* pState) {
    if (anyNull(pSrc, pLPC, pDst, pState)) return vspStsNullPtrErr;
    if (!isSpeechMode(mode)) return vspStsRangeErr;
    State& s = *static_cast<State*>(pState);
    const bool high = mode == kMode102 || mode == kMode122;
    Vsp16s input[kOrder + kFrame];
    for (int i = 0; i < kOrder; i++) input[i] = s.past[i];
    for (int i = 0; i < kFrame; i++) input[kOrder + i] = pSrc[i];
    for (int n = 0; n < kFrame; n += kL_subfr) {
        const Vsp16s* const in = input + kOrder + n;
        Vsp16s* const out = pDst + n;
        Vsp16s numerator[kOrder + 1], denominator[kOrder + 1], residual[1 + kL_subfr], compensated[kL_subfr];
        weigh(pLPC, high ? gamma4 : gamma3, numerator);
        weigh(pLPC, high ? gamma4_high : gamma4, denominator);
        pLPC += kOrder + 1;
        ownResidual(in, numerator, kOrder, residual + 1, kL_subfr, 12);
        residual[0] = s.tilt;
        s.tilt = residual[kL_subfr];
        compensateTilt(tiltOf(numerator, denominator), residual + 1, compensated);
        vspsSynthesisFilter_NR_16s_Sfs(denominator, compensated, out, kL_subfr, 12, s.memory);
        for (int i = 0; i < kOrder; i++) s.memory[i] = out[kL_subfr - kOrder + i];
        controlGain(in, out, &s.gain);
    }
    for (int i = 0; i < kOrder; i++) s.past[i] = input[kFrame + i];
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
