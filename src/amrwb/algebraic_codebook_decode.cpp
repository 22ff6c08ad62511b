// The code from its indices (`DEC_ACELP_2t64_fx`, `DEC_ACELP_4t64_fx`), and one at random.
#include "amrwb/exports.h"
#include "amrwb/lengths.h"
#include "amrwb/pulse_codebooks.h"
#include "amrwb/track_code.h"
#include "common/random.h"
#include "core/checks.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr Vsp16s kAmplitude = 512;  // 1 in Q9

void addPulse(Vsp16s* code, int position, bool negative) {
    code[position] = Vsp16s(code[position] + (negative ? -kAmplitude : kAmplitude));
}

}  // namespace

VspStatus vspsAlgebraicCodebookDecode_AMRWB_16s(const Vsp16s* pIndex, Vsp32s mode, Vsp16s* pCode) {
    if (anyNull(pIndex, pCode)) return vspStsNullPtrErr;
    const PulseCodebook codebook = pulseCodebook(mode);
    if (codebook.bits == 0) return vspStsRangeErr;
    for (int i = 0; i < codebook.indices; i++)
        if (pIndex[i] < 0 || pIndex[i] >> codebook.wordBits(i) != 0) return vspStsRangeErr;
    for (int i = 0; i < kWideSubframe; i++) pCode[i] = 0;
    if (codebook.bits == 12) {
        const int index = pIndex[0];
        addPulse(pCode, 2 * (index >> 6 & 31), (index >> 11) != 0);
        addPulse(pCode, 2 * (index & 31) + 1, (index >> 5 & 1) != 0);
        return vspStsNoErr;
    }
    for (int t = 0; t < kPulseTracks; t++) {
        const int low = codebook.lowBits[t];
        const int code = codebook.isSplit() ? (pIndex[t] << low) + pIndex[kPulseTracks + t] : pIndex[t];
        decodeTrack(code, codebook.pulses[t],
                    [=](int place, bool negative) { addPulse(pCode, kPulseTracks * place + t, negative); });
    }
    return vspStsNoErr;
}

VspStatus vspsAlgebraicCodebookRandom_AMRWB_16s(Vsp16s* pSeed, Vsp16s* pCode) {
    if (anyNull(pSeed, pCode)) return vspStsNullPtrErr;
    for (int i = 0; i < kWideSubframe; i++) pCode[i] = Vsp16s(ownRandom(pSeed) >> 3);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
