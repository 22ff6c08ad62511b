// Spreads the pulses of the code where the pitch gain is low (`Phase_dispersion`; 3GPP TS 26.190, 6.1).
#include "amrwb/exports.h"
#include "amrwb/lengths.h"
#include "amrwb/modes.h"
#include "amrwb/phase_dispersion_tables.h"
#include "arithmetic/standard_ops.h"
#include "common/history.h"
#include "core/checks.h"
#include "vector/map.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kPrevState = 0, kPrevGain = 1, kPitchGains = 2, kGains = 6;  // words of the memory
constexpr Vsp16s kLowGain = 9830, kHighGain = 14746;                       // 0.6, 0.9 in Q14
constexpr int kUnvoiced = 0, kVoiced = 2;

int chooseState(Vsp16s gainPitch, Vsp16s gainCode, Vsp16s* mem) {
    int state = gainPitch < kLowGain ? kUnvoiced : gainPitch < kHighGain ? 1 : kVoiced;
    pushFront<kGains>(mem + kPitchGains, gainPitch);
    const Vsp16s rise = Sub_16s(gainCode, mem[kPrevGain]);
    if (Sub_16s(rise, shl_16s(mem[kPrevGain], 1)) > 0) {
        if (state < kVoiced) state++;
    } else {
        int low = 0;
        for (int i = 0; i < kGains; i++) low += mem[kPitchGains + i] < kLowGain;
        if (low > 2) state = kUnvoiced;
        if (state > mem[kPrevState] + 1) state--;
    }
    mem[kPrevGain] = gainCode;
    mem[kPrevState] = Vsp16s(state);
    return state;
}

void spread(const Vsp16s* response, Vsp16s* code) {
    Vsp16s sum[2 * kWideSubframe] = {};
    for (int position = 0; position < kWideSubframe; position++) {
        const Vsp16s pulse = code[position];
        if (pulse == 0) continue;
        const auto addResponse = [pulse](auto s, auto r) { return addSat(s, mulRound(r, decltype(r)::splat(pulse))); };
        map(kWideSubframe, addResponse, sum + position, sum + position, response);
    }
    map(
        kWideSubframe, [](auto a, auto b) { return addSat(a, b); }, code, sum, sum + kWideSubframe);
}

}  // namespace

VspStatus vspsPhaseDispersion_AMRWB_16s_I(Vsp16s gainPitch, Vsp16s gainCode, Vsp32s mode, Vsp16s* pCode, Vsp16s* pMem) {
    if (anyNull(pCode, pMem)) return vspStsNullPtrErr;
    if (!isWideMode(mode)) return vspStsRangeErr;
    const int weaker = mode == kMode660 ? 0 : mode == kMode885 ? 1 : 2;
    const int strength = chooseState(gainPitch, gainCode, pMem) + weaker;
    if (strength == 0 || strength == 1) spread(wideDispersion[strength], pCode);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
