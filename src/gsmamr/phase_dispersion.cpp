// Spreads the pulses of the code where the pitch gain is low, and forms the excitation (`ph_disp`; 3GPP TS 26.090, 6.1).
#include "common/history.h"
#include "common/post_filter.h"
#include "core/checks.h"
#include "gsmamr/exports.h"
#include "gsmamr/mode_checks.h"
#include "gsmamr/phase_dispersion_tables.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kGains = 5, kPrevFilter = 5, kPrevGain = 6, kOnset = 7;  // words of the memory
constexpr Vsp16s kLowGain = 9830, kHighGain = 14746;                   // 0.6, 0.9 in Q14
constexpr int kNoFilter = 2;

int chooseFilter(Vsp16s gainPitch, Vsp16s gainCode, bool lock, Vsp16s* mem) {
    constexpr Vsp16s kOnsetLength = 2, kAudible = 10;
    pushFront<kGains>(mem, gainPitch);
    int filter = gainPitch >= kHighGain ? kNoFilter : gainPitch > kLowGain ? 1 : 0;
    if (gainCode > round_32s(Mul4_32s(Mul2_16s32s(mem[kPrevGain], 16384))))
        mem[kOnset] = kOnsetLength;
    else if (mem[kOnset] > 0)
        mem[kOnset]--;
    if (mem[kOnset] == 0) {
        int low = 0;
        for (int i = 0; i < kGains; i++) low += mem[i] < kLowGain;
        if (low > 2) filter = 0;
        if (filter > mem[kPrevFilter] + 1) filter--;
    } else if (mem[kOnset] > 0 && filter < kNoFilter) {
        filter++;
    }
    if (gainCode < kAudible) filter = kNoFilter;
    if (lock) filter = 0;
    mem[kPrevFilter] = Vsp16s(filter);
    mem[kPrevGain] = gainCode;
    return filter;
}

// The cyclic convolution of the pulses with a response, every product and partial sum saturated.
void spread(const Vsp16s* response, Vsp16s* code) {
    constexpr int kVectors = kL_subfr / S16_128::width;
    Vsp16s twice[2 * kL_subfr];
    for (int i = 0; i < kL_subfr; i++) twice[i] = twice[kL_subfr + i] = response[i];
    S16_128 sums[kVectors];
    for (S16_128& sum : sums) sum = S16_128::splat(0);
    for (int position = 0; position < kL_subfr; position++) {
        if (code[position] == 0) continue;
        const S16_128 pulse = S16_128::splat(code[position]);
        const Vsp16s* const shifted = twice + kL_subfr - position;
        for (int v = 0; v < kVectors; v++)
            sums[v] = addSat(sums[v], mulShift15Sat(pulse, S16_128::load(shifted + v * S16_128::width)));
    }
    for (int v = 0; v < kVectors; v++) sums[v].store(code + v * S16_128::width);
}

// round(L_shl(exc * factor + code * gainCode, shift)) with doubled products; where a sum leaves 32 bits, so does the
// result.
void formExcitation(Vsp16s factor, Vsp16s gainCode, int shift, const Vsp16s* code, Vsp16s* exc) {
    if (factor == kMin16 || gainCode == kMin16) {  // whose products may saturate on their own
        for (int i = 0; i < kL_subfr; i++)
            exc[i] = round_32s(shl_32s(mac_32s(Mul2_16s32s(exc[i], factor), code[i], gainCode), shift));
        return;
    }
    const S16_128 factors{S32_128::splat(Vsp32s(Vsp16u(factor) | Vsp32u(gainCode) << 16)).v};
    const S32_128 half = S32_128::splat(1 << (14 - shift));
    for (int i = 0; i < kL_subfr; i += S16_128::width) {
        const S16_128 e = S16_128::load(exc + i), c = S16_128::load(code + i);
        packSat(shr(add(dot2(S16_128{zipLo(e, c).v}, factors), half), 15 - shift),
                shr(add(dot2(S16_128{zipHi(e, c).v}, factors), half), 15 - shift))
            .store(exc + i);
    }
}

}  // namespace

VspStatus vspsPhaseDispersion_GSMAMR_16s(Vsp16s gainPitch, Vsp16s gainCode, Vsp32s mode, Vsp32s lock, Vsp16s* pExc,
                                         Vsp16s* pCode, Vsp16s* pMem) {
    if (anyNull(pExc, pCode, pMem)) return vspStsNullPtrErr;
    if (!isSpeechMode(mode)) return vspStsRangeErr;
    const int filter = chooseFilter(gainPitch, gainCode, lock != 0, pMem);
    if (filter < kNoFilter && mode != kMode740 && mode != kMode102 && mode != kMode122)
        spread(mode == kMode795 ? ph_imp_MR795[filter] : ph_imp[filter], pCode);

    const Vsp16s factor = mode == kMode122 ? Vsp16s(gainPitch >> 1) : gainPitch;
    const int shift = mode == kMode122 ? 2 : 1;
    formExcitation(factor, gainCode, shift, pCode, pExc);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
