// Keeps the excitation of doubtful frames in background noise at the energy of those before (`Ex_ctrl`).
#include "arithmetic/standard_ops.h"
#include "common/history.h"
#include "common/lengths.h"
#include "common/median.h"
#include "core/checks.h"
#include "gsmamr/exports.h"
#include "gsmamr/frame_flags.h"
#include "gsmamr/mode_checks.h"
#include "gsmamr/square_root.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kHistory = 9;

Vsp16s rootEnergy(const Vsp16s* exc) {
    const SquareRoot root = ownSquareRoot(Cnvrt_64s32s(2 * energy(exc, kL_subfr)) >> 1);
    return Vsp16s((root.value >> ((root.exponent >> 1) + 15)) >> 2);
}

void control(const FrameFlags& flags, Vsp16s level, const Vsp16s* hist, Vsp16s* exc) {
    constexpr Vsp16s kCarefulScale = 3072;  // 3 in Q10
    Vsp16s target = medianOf<kHistory>(hist);
    if (level >= target || level <= 5) return;
    const Vsp16s mean = Vsp16s(Add_16s(hist[7], hist[8]) >> 1), least = hist[8] < mean ? hist[8] : mean;
    Vsp16s most = shl_16s(least, 2);
    if (flags.voicedHangover < 7 || flags.prevBad) most = Sub_16s(most, least);
    if (target > most) target = most;

    const int norm = norm_16s(level);
    const Vsp16s inverse = Div_16s(16383, shl_16s(level, norm));
    const Vsp32s exact = shr_32s(Mul2_16s32s(target, inverse), 20 - norm);
    Vsp16s scale = exact > kMax16 ? kMax16 : Vsp16s(exact);  // Q10
    if (flags.degraded && !flags.bad && scale > kCarefulScale) scale = kCarefulScale;
    for (int i = 0; i < kL_subfr; i++) exc[i] = Vsp16s(Mul2_16s32s(scale, exc[i]) >> 11);
}

}  // namespace

VspStatus vspsExcitationControl_GSMAMR_16s(const Vsp16s* pFlags, Vsp32s mode, Vsp32s bfState, Vsp16s* pExc, Vsp16s* pHist) {
    constexpr int kWorstState = 6;
    if (anyNull(pFlags, pExc, pHist)) return vspStsNullPtrErr;
    if (!isSpeechMode(mode) || bfState < 0 || bfState > kWorstState) return vspStsRangeErr;
    const FrameFlags flags(pFlags);
    const Vsp16s level = rootEnergy(pExc);
    if (isLowRate(mode) && flags.voicedHangover > 5 && flags.inNoise && bfState < 4 && flags.doubtful())
        control(flags, level, pHist, pExc);
    if (!(flags.inNoise && flags.badNow() && bfState < 4)) pushBack<kHistory>(pHist, level);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
