// The choice between forward and backward linear prediction (G.729 Annex E).
#include "arithmetic/standard_ops.h"
#include "core/checks.h"
#include "g729/constants.h"
#include "g729/exports.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kForwardOrder = 10, kBackwardOrder = 30;
constexpr int kForward = kForwardOrder + 1, kBackward = kBackwardOrder + 1;  // coefficients of a filter

constexpr Vsp16s kFirstInterpolation = 4506;  // 1.1 in Q12: the filter of a first backward frame is the last one
constexpr Vsp16s kQuiet = 8192;               // decibels / 10, Q11

// Memory of the encoder; that of the decoder has the dominance alone.
enum { dominant, cInt, globStat, statBwd, valStatBwd, countBwd, countFwd };

// ener_dB: common logarithm of half the doubled energy, Q11.
Vsp16s logEnergy(const Vsp16s* x) {
    static constexpr Vsp16s kTabLog[17] = {2466, 2520, 2571, 2619, 2665, 2708, 2749, 2789, 2827,
                                           2863, 2898, 2931, 2964, 2995, 3025, 3054, 3083};  // of 16 .. 32
    static_assert(kTabLog[16] - kTabLog[0] == 617);
    constexpr int kOctave = 617;
    Vsp32s level = Cnvrt_64s32s(2 * energy(x, kL_frame) + 1) >> 1;
    int octaves = 0;
    for (; level > 32; octaves++) level >>= 1;
    if (level < 16) return 1;
    return Vsp16s(kOctave * (octaves > 1 ? octaves : 1) + kTabLog[level - 16]);
}

// Int_bwd: moves the new filter away from the last one the more frames there were since the first backward one, and puts
// the filter half way between before it.
void interpolate(const Vsp16s* previous, Vsp16s* lpc, Vsp16s* fraction) {
    const Vsp16s c = *fraction > 410 ? Vsp16s(*fraction - 410) : Vsp16s(0);
    for (int i = 0; i < kBackward; i++) {
        const Vsp16s a = Add_16s(Vsp16s((lpc[kBackward + i] * (4096 - c)) >> 12), Vsp16s((previous[i] * c) >> 12));
        lpc[kBackward + i] = a;
        lpc[i] = Add_16s(Vsp16s(a >> 1), Vsp16s(previous[i] >> 1));
    }
    *fraction = c;
}

// tst_bwd_dominant: whether backward frames have prevailed in the last fifty to a hundred.
void countMode(int mode, Vsp16s* isDominant, Vsp16s* backward, Vsp16s* forward) {
    Vsp16s& count = mode == 1 ? *backward : *forward;
    count = Add_16s(count, 1);
    const Vsp16s sum = Add_16s(*backward, *forward);
    if (sum == 100) {
        *backward = Vsp16s(*backward >> 1);
        *forward = Vsp16s(*forward >> 1);
    }
    *isDominant = sum >= 10 && *backward > ShiftL_16s(*forward, 2);
}

// Prediction gain of two filters of the same order, one for each subframe.
Vsp16s gainOf(const Vsp16s* speech, Vsp16s level, const Vsp16s* lpc, const Vsp16s* lpc2, int order) {
    Vsp16s residual[kL_frame];
    vspsResidualFilter_G729E_16s(speech, lpc, residual, kL_subfr, order);
    vspsResidualFilter_G729E_16s(speech + kL_subfr, lpc2, residual + kL_subfr, kL_subfr, order);
    return Sub_16s(level, logEnergy(residual));
}

struct Gains {
    int backward, interpolated, forward;
};

struct Step {
    int difference;
    Vsp16s change;
};

// calc_stat: how stationary the signal is, 0 .. 32000.
void updateStationarity(const Gains& g, int mode, int previousMode, Vsp16s* mem) {
    Vsp16s stat = mem[globStat];
    if (mode == 1) {
        mem[statBwd] = Add_16s(mem[statBwd], 1);
        mem[valStatBwd] = Add_16s(mem[valStatBwd], 250);
        if (mem[statBwd] >= 20) stat = Add_16s(stat, mem[statBwd] == 20 ? 2500 : 500);
    } else if (previousMode == 1) {
        if (mem[statBwd] < 20) stat = Sub_16s(stat, Sub_16s(5000, mem[valStatBwd]));
        mem[statBwd] = mem[valStatBwd] = 0;
    }
    static constexpr Step kRise[] = {{819, 3200}, {614, 2400}, {410, 1600}, {205, 800}, {0, 400}};
    static constexpr Step kFall[] = {{955, 6400}, {819, 3200}, {614, 1600}, {410, 800}, {205, 400}};
    if (stat < 13000)
        for (const Step& step : kRise)
            if (g.backward > g.forward + step.difference) {
                stat = Add_16s(stat, step.change);
                break;
            }
    for (const Step& step : kFall)
        if (g.backward < g.forward - step.difference) {
            stat = Sub_16s(stat, step.change);
            break;
        }
    mem[globStat] = stat < 0 ? Vsp16s(0) : stat > 32000 ? Vsp16s(32000) : stat;
}

// Whether the LSP have hardly changed, where the signal is as stationary as can be.
bool unchanged(const Vsp16s* lsp, const Vsp16s* previous, Vsp16s stationarity) {
    if (stationarity < 32000) return false;
    Vsp32s distance = 0;
    for (int i = 0; i < kForwardOrder; i++) {
        const Vsp16s difference = Sub_16s(lsp[i], previous[i]);
        distance = mac_32s(distance, difference, difference);
    }
    return distance < 64424509;
}

int choose(const Gains& g, bool unchangedLSP, int previousMode, Vsp16s stationarity) {
    if (stationarity < 13000 || g.backward <= 0 || g.interpolated <= 0) return 0;
    const int needed = g.forward - Add_16s(Vsp16s((stationarity >> 7) * 3), 205);
    return (g.interpolated > needed && g.backward > needed) || (unchangedLSP && previousMode == 1);
}

}  // namespace

VspStatus vspsLPCModeDecide_G729E_16s(const Vsp16s* pSpeech, const Vsp16s* pLpcFwd, Vsp16s* pLpcBwd, const Vsp16s* pLSP,
                                      const Vsp16s* pPrevLSP, const Vsp16s* pPrevLPC, Vsp16s prevMode, Vsp16s* pMem,
                                      Vsp16s* pMode) {
    if (anyNull(pSpeech, pLpcFwd, pLpcBwd, pLSP, pPrevLSP, pPrevLPC, pMem, pMode)) return vspStsNullPtrErr;
    if (prevMode != 0 && prevMode != 1) return vspStsRangeErr;
    const Vsp16s level = logEnergy(pSpeech);
    Gains g{};
    Vsp16s* const newest = pLpcBwd + kBackward;
    g.backward = gainOf(pSpeech, level, newest, newest, kBackwardOrder);
    interpolate(pPrevLPC, pLpcBwd, pMem + cInt);
    g.interpolated = gainOf(pSpeech, level, pLpcBwd, newest, kBackwardOrder);
    g.forward = gainOf(pSpeech, level, pLpcFwd, pLpcFwd + kForward, kForwardOrder);

    int mode = choose(g, unchanged(pLSP, pPrevLSP, pMem[globStat]), prevMode, pMem[globStat]);
    if (level < kQuiet) {
        mode = 0;
        if (pMem[globStat] > 13000) pMem[globStat] = 13000;
    } else {
        countMode(mode, pMem + dominant, pMem + countBwd, pMem + countFwd);
        updateStationarity(g, mode, prevMode, pMem);
    }
    if (mode == 0) pMem[cInt] = kFirstInterpolation;
    *pMode = Vsp16s(mode);
    return vspStsNoErr;
}

VspStatus vspsLPCModeUpdate_G729E_16s(Vsp16s* pMem) {
    if (anyNull(pMem)) return vspStsNullPtrErr;
    if (pMem[globStat] > 10000) pMem[globStat] = Vsp16s(pMem[globStat] > 12621 ? pMem[globStat] - 2621 : 10000);
    pMem[dominant] = 0;
    pMem[cInt] = kFirstInterpolation;
    return vspStsNoErr;
}

VspStatus vspsLPCModeTrack_G729E_16s(const Vsp16s* pSyn, Vsp16s mode, Vsp16s* pMem) {
    if (anyNull(pSyn, pMem)) return vspStsNullPtrErr;
    if (mode != 0 && mode != 1) return vspStsRangeErr;
    if (logEnergy(pSyn) >= kQuiet) countMode(mode, pMem, pMem + 1, pMem + 2);
    return vspStsNoErr;
}

VspStatus vspsInterpolateLPC_G729E_16s(const Vsp16s* pPrevLPC, Vsp16s* pLPC, Vsp16s* pCInt) {
    if (anyNull(pPrevLPC, pLPC, pCInt)) return vspStsNullPtrErr;
    interpolate(pPrevLPC, pLPC, pCInt);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
