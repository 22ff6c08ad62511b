// The pitch post-filter, which strengthens the periods of the excitation by the one before or the one after (G.723.1 3.6).
#include "core/checks.h"
#include "g723/correlations.h"
#include "g723/exports.h"
#include "g723/operators.h"
#include "g723/pitch_gains.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kLen = 60, kHistory = 145, kFrame = 240, kLongestDelay = 142, kAround = 3;

int room(int subframe) { return kFrame - kLen * (subframe + 1); }  // samples behind the subframe

// The samples at a delay, positive for later ones, and their correlation with the subframe.
struct Direction {
    int delay = 0;
    Vsp32s cross = 0, energy = 0;

    void offer(const Segment& subframe, int d) {
        const Segment delayed(subframe.samples + d, kLen);
        const Vsp32s tried = correlation(subframe, delayed);
        if (tried <= cross) return;
        cross = tried;
        energy = delayed.energy32();
        delay = d;
    }
};

}  // namespace

// `Comp_Lpf`
VspStatus vspsPitchPostFilterSearch_G723_16s(const Vsp16s* pExc, Vsp16s lag, Vsp32s subframe, Vsp32s rate, Vsp16s* pDelay,
                                             Vsp16s* pGain, Vsp16s* pScale) {
    if (anyNull(pExc, pDelay, pGain, pScale)) return vspStsNullPtrErr;
    if (!g723::isRate(rate)) return vspStsRangeErr;
    if (subframe < 0 || subframe > 3) return vspStsRangeErr;
    if (lag < 18 || lag > 145) return vspStsRangeErr;
    const Segment target(pExc + kHistory + kLen * subframe, kLen);
    const int middle = lag < kLongestDelay ? lag : kLongestDelay;
    Direction backward, forward;
    for (int d = middle - kAround; d <= middle + kAround; d++) {
        backward.offer(target, -d);
        if (d <= room(subframe)) forward.offer(target, d);
    }
    *pDelay = *pGain = 0;
    *pScale = kMax16;
    if (backward.delay == 0 && forward.delay == 0) return vspStsNoErr;

    const Vsp32s values[] = {target.energy32(), backward.cross, backward.energy, forward.cross, forward.energy};
    Vsp32s largest = 0;
    for (const Vsp32s x : values) largest = x > largest ? x : largest;
    const int norm = norm_32s(largest);
    const auto high = [norm](Vsp32s x) { return high_32s(shl_32s(x, norm)); };
    const auto square = [&](const Direction& d) { return Vsp32s(mulRound_16s(high(d.cross), high(d.cross))); };
    const bool isBackward = forward.delay == 0 || (backward.delay != 0 && square(backward) * high(forward.energy) >
                                                                              square(forward) * high(backward.energy));
    const Direction& chosen = isBackward ? backward : forward;
    const Vsp16s own = high(target.energy32()), cross = high(chosen.cross), energy = high(chosen.energy);
    *pDelay = Vsp16s(chosen.delay);
    if (Mul2_16s32s(cross, cross) <= Mul2_16s32s(own, energy) >> 2) return vspStsNoErr;

    const Vsp16s weight = rate == g723::kRate63 ? 6144 : 8192;
    const Vsp16s gain = cross >= energy ? weight : Mul_16s(Div_16s(cross, energy), weight);
    const Vsp32s half = own * 32768;
    const Vsp16s filtered = round_32s(Add_32s(mac_32s(half, cross, gain), Mul2_16s32s(energy, Mul_16s(gain, gain)) >> 1));
    const Vsp16s ratio = half >= filtered * 65536 ? kMax16 : g723::divLong(half, filtered);
    *pScale = g723::squareRoot(ratio * 65536);
    *pGain = Mul_16s(gain, *pScale);
    return vspStsNoErr;
}

// `Filt_Lpf`
VspStatus vspsPitchPostFilter_G723_16s(const Vsp16s* pExc, Vsp16s delay, Vsp16s gain, Vsp16s scale, Vsp32s subframe,
                                       Vsp16s* pDst) {
    if (anyNull(pExc, pDst)) return vspStsNullPtrErr;
    if (subframe < 0 || subframe > 3) return vspStsRangeErr;
    if (delay < -kHistory || delay > kHistory || delay > room(subframe)) return vspStsRangeErr;
    const Vsp16s* const exc = pExc + kHistory + kLen * subframe;
    for (int n = 0; n < kLen; n++) pDst[n] = round_32s(mac_32s(Mul2_16s32s(exc[n], scale), exc[n + delay], gain));
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
