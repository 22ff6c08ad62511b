// Voice activity detector (`Comp_Vad`; G.723.1 A.2).
#include "common/residual_filter.h"
#include "core/checks.h"
#include "core/state_size.h"
#include "g723/exports.h"
#include "g723/operators.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kFrame = 240, kLen = 180, kOrder = 10;  // the energy is that of the last kLen samples
constexpr int kLags = 4;

struct State {
    Vsp32s energy, level;  // of the last frame's residual; of the noise
    Vsp16s hangover, speechFrames, adaptation;
    Vsp16s noiseLpc[kOrder];
    Vsp16s reserved[3];
};
static_assert(sizeof(State) == 40);

// Whether exactly four of the lags are about multiples of the smallest one, counted for each multiple.
bool isVoiced(const Vsp16s* lag) {
    Vsp16s smallest = 145;
    for (int i = 0; i < kLags; i++) smallest = lag[i] < smallest ? lag[i] : smallest;
    int hits = 0;
    for (int i = 0; i < kLags; i++) {
        Vsp16s multiple = smallest;
        for (int k = 0; k < 8; k++, multiple = Add_16s(multiple, smallest)) hits += Abs_16s(Sub_16s(multiple, lag[i])) <= 3;
    }
    return hits == kLags;
}

// What the filter of the noise leaves, with the one coefficient that has no negative (-4 in Q13) taken as it is.
void residualOf(const Vsp16s* src, const Vsp16s* lpc, Vsp16s* residual) {
    Vsp16s inverse[kOrder + 1] = {0x2000};
    bool representable = true;
    for (int j = 0; j < kOrder; j++) {
        inverse[j + 1] = Negate_16s(lpc[j]);
        representable &= lpc[j] != kMin16;
    }
    if (representable) return ownResidual(src, inverse, kOrder, residual, kLen, 15);
    for (int i = 0; i < kLen; i++) {
        Vsp32s sum = Mul2_16s32s(src[i], 0x2000);
        for (int j = 0; j < kOrder; j++) sum = msu_32s(sum, src[i - 1 - j], lpc[j]);
        residual[i] = round_32s(sum);
    }
}

Vsp32s residualEnergy(const Vsp16s* src, const Vsp16s* lpc) {
    Vsp16s residual[kLen];
    residualOf(src + kFrame - kLen, lpc, residual);
    return g723::mul_32s16s_Q15(Cnvrt_64s32s(2 * energy(residual, kLen)), 2913);
}

void adaptLevel(State& s) {
    constexpr Vsp32s kLowest = 128, kHighest = 131071;
    if (s.level > s.energy) s.level = Add_32s(Sub_32s(s.energy, s.energy >> 2), s.level >> 2);
    if (s.adaptation == 0)
        s.level = Add_32s(s.level, s.level >> 5);
    else
        s.level = Sub_32s(s.level, s.level >> 11);
    s.level = s.level < kLowest ? kLowest : s.level > kHighest ? kHighest : s.level;
}

// The lower the noise, the further above it speech must be.
Vsp32s threshold(Vsp32s level) {
    static constexpr Vsp16s kFactors[11] = {9170, 9170, 9170, 9170, 10289, 11544, 12953, 14533, 16306, 18296, 20529};
    const Vsp32s scaled = level << 13;
    const int norm = norm_32s(scaled);
    const Vsp16s fraction = high_32s((scaled << norm & 0x3F000000) << 1);
    // NOLINTNEXTLINE(clang-analyzer-core.*): norm is from 1 to 10, as adaptLevel() limits the level
    Vsp32s factor = mac_32s(kFactors[norm] * 0x10000, fraction, kFactors[norm - 1]);
    factor = msu_32s(factor, fraction, kFactors[norm]);
    return Mul2_16s32s(Vsp16s(level >> 2), high_32s(factor)) >> 11;
}

bool decide(State& s, bool speech) {
    constexpr Vsp16s kBurst = 2, kHangover = 6;
    s.speechFrames = Add_16s(s.speechFrames, speech ? 1 : -1);
    if (s.speechFrames < 0) s.speechFrames = 0;
    if (speech) s.hangover = Add_16s(s.hangover, 1);
    if (s.speechFrames >= kBurst) {
        s.hangover = kHangover;
        if (s.speechFrames > kBurst) s.speechFrames = kBurst + 1;
    }
    if (s.hangover == 0) return false;
    if (s.speechFrames == 0) s.hangover = Sub_16s(s.hangover, 1);
    return true;
}

}  // namespace

VspStatus vspsVADGetSize_G723_16s(Vsp32s* pSize) { return fixedSize(pSize, sizeof(State)); }

VspStatus vspsVADInit_G723_16s(void* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    State& s = *static_cast<State*>(pState);
    s = {};
    s.energy = s.level = 1024;
    s.hangover = 3;
    return vspStsNoErr;
}

VspStatus vspsVAD_G723_16s(const Vsp16s* pSrc, const Vsp16s* pLag, Vsp16s sine, Vsp16s* pVad, void* pState) {
    if (anyNull(pSrc, pLag, pVad, pState)) return vspStsNullPtrErr;
    State& s = *static_cast<State*>(pState);
    const int adaptation = s.adaptation + (isVoiced(pLag) || sine < 0 ? 2 : -1);
    s.adaptation = Vsp16s(adaptation < 0 ? 0 : adaptation > 6 ? 6 : adaptation);
    const Vsp32s energy = residualEnergy(pSrc, s.noiseLpc);
    adaptLevel(s);
    s.energy = energy;
    *pVad = Vsp16s(decide(s, threshold(s.level) <= energy));
    return vspStsNoErr;
}

VspStatus vspsVADUpdate_G723_16s(const Vsp16s* pLPC, void* pState) {
    if (anyNull(pLPC, pState)) return vspStsNullPtrErr;
    State& s = *static_cast<State*>(pState);
    if (s.adaptation != 0) return vspStsNoErr;
    for (int i = 0; i < kOrder; i++) s.noiseLpc[i] = pLPC[i];
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
