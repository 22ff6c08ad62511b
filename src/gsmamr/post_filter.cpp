// The adaptive post-filter (`Post_Filter`; 3GPP TS 26.090, 6.2.1).
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

// The first reflection coefficient of the impulse response of both filters, times 0.8.
Vsp16s tiltOf(const Vsp16s* numerator, const Vsp16s* denominator) {
    constexpr int kLength = 22;
    constexpr Vsp16s kWeight = 26214;
    static constexpr Vsp16s kZero[kOrder] = {};
    Vsp16s impulse[kLength] = {}, h[kLength];
    for (int i = 0; i <= kOrder; i++) impulse[i] = numerator[i];
    vspsSynthesisFilter_NR_16s_Sfs(denominator, impulse, h, kLength, 12, kZero);
    const Vsp16s c0 = high_32s(dotSaturating(h, h, kLength)), c1 = high_32s(dotSaturating(h, h + 1, kLength - 1));
    return c1 <= 0 ? Vsp16s(0) : Div_16s(Mul_16s(c1, kWeight), c0);
}

void compensateTilt(Vsp16s tilt, Vsp16s* x, Vsp16s* memory) {
    const Vsp16s last = x[kL_subfr - 1];
    for (int i = kL_subfr - 1; i > 0; i--) x[i] = Sub_16s(x[i], Mul_16s(tilt, x[i - 1]));
    x[0] = Sub_16s(x[0], Mul_16s(tilt, *memory));
    *memory = last;
}

// Brings the output to the energy of the input, with a gain that moves slowly (`agc`).
void controlGain(const Vsp16s* in, Vsp16s* out, Vsp16s* gain) {
    constexpr Vsp16s kOld = 29491, kNew = 32767 - kOld;
    const Vsp32s present = ownSubframeEnergy(out);
    if (present == 0) {
        *gain = 0;
        return;
    }
    const Vsp16s step = Mul_16s(ownAmplitudeRatio(ownSubframeEnergy(in), present), kNew);
    for (int i = 0; i < kL_subfr; i++) {
        *gain = Add_16s(Mul_16s(*gain, kOld), step);
        out[i] = high_32s(shl_32s(Mul2_16s32s(out[i], *gain), 3));
    }
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
        Vsp16s numerator[kOrder + 1], denominator[kOrder + 1], residual[kL_subfr];
        weigh(pLPC, high ? gamma4 : gamma3, numerator);
        weigh(pLPC, high ? gamma4_high : gamma4, denominator);
        pLPC += kOrder + 1;
        ownResidual(in, numerator, kOrder, residual, kL_subfr, 12);
        compensateTilt(tiltOf(numerator, denominator), residual, &s.tilt);
        vspsSynthesisFilter_NR_16s_Sfs(denominator, residual, out, kL_subfr, 12, s.memory);
        for (int i = 0; i < kOrder; i++) s.memory[i] = out[kL_subfr - kOrder + i];
        controlGain(in, out, &s.gain);
    }
    for (int i = 0; i < kOrder; i++) s.past[i] = input[kFrame + i];
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
