// The phase dispersion of the decoder's excitation at 6.4 kbit/s (G.729 Annex D).
#include "arithmetic/standard_ops.h"
#include "core/checks.h"
#include "core/state_size.h"
#include "g729/constants.h"
#include "g729/exports.h"
#include "g729/tables.h"
#include "vector/eight_32s.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kGains = 6;
constexpr int kStrong = 0, kNone = 2;  // strengths of the dispersion; between them is a medium one

struct State {
    Vsp16s pitchGains[kGains];  // the newest first, Q14
    Vsp16s strength, codeGain, onset, unused;
};
static_assert(sizeof(State) == 20);

State& stateOf(VspPhaseDispersionState_G729D_16s* pState) { return *reinterpret_cast<State*>(pState); }

void keep(State& state, const Vsp16s* gain, int strength, int onset) {
    state.strength = Vsp16s(strength);
    state.codeGain = gain[1];
    state.onset = Vsp16s(onset);
}

void keepPitchGain(State& state, Vsp16s gain) {
    for (int i = kGains - 1; i > 0; i--) state.pitchGains[i] = state.pitchGains[i - 1];
    state.pitchGains[0] = gain;
}

// The strength for this subframe, by the pitch gains and by how the code gain rises.
int adapt(State& state, const Vsp16s* gain) {
    keepPitchGain(state, gain[0]);
    int strength = gain[0] <= 9830 ? kStrong : gain[0] < 14745 ? 1 : kNone;
    int onset = state.onset > 1 ? state.onset - 1 : 0;
    if (gain[1] >> 1 > state.codeGain) onset = 2;
    if (onset == 0) {
        int small = 0;
        for (const Vsp16s g : state.pitchGains) small += g < 9830;
        if (small > 2) strength = kStrong;
        if (strength > kStrong && strength > state.strength + 1) strength--;
    } else if (strength < kNone) {
        strength++;
    }
    keep(state, gain, strength, onset);
    return strength;
}

S16_128 scaledCode(S16_128 gain, S16_128 code) {
    Vsp16s g[S16_128::width], c[S16_128::width];
    gain.store(g);
    code.store(c);
    for (int i = 0; i < S16_128::width; i++) c[i] = round_32s(Mul2_32s(Mul2_16s32s(g[i], c[i])));
    return S16_128::load(c);
}

}  // namespace

VspStatus vspsPhaseDispersionGetStateSize_G729D_16s(Vsp32s* pSize) { return fixedSize(pSize, sizeof(State)); }

VspStatus vspsPhaseDispersionInit_G729D_16s(VspPhaseDispersionState_G729D_16s* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    stateOf(pState) = {};
    return vspStsNoErr;
}

VspStatus vspsPhaseDispersionUpdate_G729D_16s(const Vsp16s* pGain, VspPhaseDispersionState_G729D_16s* pState) {
    if (anyNull(pGain, pState)) return vspStsNullPtrErr;
    keepPitchGain(stateOf(pState), pGain[0]);
    keep(stateOf(pState), pGain, kNone, 0);
    return vspStsNoErr;
}

VspStatus vspsPhaseDispersion_G729D_16s(const Vsp16s* pExcitation, const Vsp16s* pGain, const Vsp16s* pCode, Vsp16s* pDst,
                                        VspPhaseDispersionState_G729D_16s* pState) {
    if (anyNull(pExcitation, pGain, pCode, pDst, pState)) return vspStsNullPtrErr;
    const Vsp16s* const response = phaseResponses.ofStrength[adapt(stateOf(pState), pGain)];
    constexpr int W = S16_128::width;
    const S16_128 codeGain = S16_128::splat(pGain[1]);

    // The circular convolution of the code with the response, which is there twice.
    Vsp16s dispersed[kL_subfr] = {};
    for (int place = 0; place < kL_subfr; place++) {
        if (pCode[place] == 0) continue;
        const S16_128 pulse = S16_128::splat(pCode[place]);
        for (int n = 0; n < kL_subfr; n += W) {
            const S16_128 echo = mulShift15Sat(S16_128::load(response + kL_subfr - place + n), pulse);
            addSat(S16_128::load(dispersed + n), echo).store(dispersed + n);
        }
    }
    for (int n = 0; n < kL_subfr; n += W) {
        const S16_128 pitchPart = subSat(S16_128::load(pExcitation + n), scaledCode(codeGain, S16_128::load(pCode + n)));
        addSat(pitchPart, scaledCode(codeGain, S16_128::load(dispersed + n))).store(dispersed + n);
    }
    for (int n = 0; n < kL_subfr; n++) pDst[n] = dispersed[n];
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
