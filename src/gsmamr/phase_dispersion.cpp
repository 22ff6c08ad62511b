// Spreads the pulses of the code where the pitch gain is low, and forms the excitation (`ph_disp`; 3GPP TS 26.090, 6.1).
#include "arithmetic/standard_ops.h"
#include "common/history.h"
#include "common/lengths.h"
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

void spread(const Vsp16s* response, Vsp16s* code) {
    Vsp16s pulses[kL_subfr];
    for (int i = 0; i < kL_subfr; i++) {
        pulses[i] = code[i];
        code[i] = 0;
    }
    for (int position = 0; position < kL_subfr; position++) {
        const Vsp16s pulse = pulses[position];
        if (pulse == 0) continue;
        for (int i = 0; i < position; i++) code[i] = Add_16s(code[i], Mul_16s(pulse, response[kL_subfr - position + i]));
        for (int i = position; i < kL_subfr; i++) code[i] = Add_16s(code[i], Mul_16s(pulse, response[i - position]));
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
    for (int i = 0; i < kL_subfr; i++)
        pExc[i] = round_32s(shl_32s(mac_32s(Mul2_16s32s(pExc[i], factor), pCode[i], gainCode), shift));
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
