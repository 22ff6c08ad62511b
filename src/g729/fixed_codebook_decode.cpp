// The code vectors of the four-pulse codebook (G.729 4.1.4) and the two-pulse codebook (Annex D), and the codes that stand
// for those of an erased frame (4.4.4).
#include "core/checks.h"
#include "g729/exports.h"
#include "g729/fixed_codebook.h"
#include "g729/random.h"
#include "g729/tables.h"

namespace vsp::VSP_LEVEL {

namespace {

struct CodedPulse {
    int position;
    bool positive;
};

template <int Pulses>
void storeCode(const CodedPulse (&pulses)[Pulses], Vsp16s lag, Vsp16s sharp, Vsp16s* pCode) {
    for (int i = 0; i < kL_subfr; i++) pCode[i] = 0;
    for (const CodedPulse& pulse : pulses)
        pCode[pulse.position] = Vsp16s(pCode[pulse.position] + (pulse.positive ? 8191 : -8192));
    sharpenCode(pCode, lag, sharp);
}

int fromGray(int code) {
    for (int shift = 1; shift < 8; shift *= 2) code ^= code >> shift;
    return code;
}

VspStatus randomIndex(Vsp16s* pSeed, Vsp16s* pIndex, Vsp16s positions, Vsp16s signs) {
    if (anyNull(pSeed, pIndex)) return vspStsNullPtrErr;
    pIndex[0] = Vsp16s(ownRandom(pSeed) & positions);
    pIndex[1] = Vsp16s(ownRandom(pSeed) & signs);
    return vspStsNoErr;
}

}  // namespace

VspStatus vspsFixedCodebookDecode_G729_16s(const Vsp16s* pIndex, Vsp16s lag, Vsp16s sharp, Vsp16s* pCode) {
    if (anyNull(pIndex, pCode)) return vspStsNullPtrErr;
    if (!isLegalLag(lag)) return vspStsRangeErr;
    const int positions = pIndex[0], signs = pIndex[1];
    CodedPulse pulses[4];
    for (int i = 0; i < 3; i++) pulses[i] = {positionOf(i, positions >> 3 * i & 7), (signs >> i & 1) != 0};
    pulses[3] = {positionOf(3 + (positions >> 9 & 1), positions >> 10 & 7), (signs >> 3 & 1) != 0};
    storeCode(pulses, lag, sharp, pCode);
    return vspStsNoErr;
}

VspStatus vspsFixedCodebookDecode_G729D_16s(const Vsp16s* pIndex, Vsp16s lag, Vsp16s sharp, Vsp16s* pCode) {
    if (anyNull(pIndex, pCode)) return vspStsNullPtrErr;
    if (!isLegalLag(lag)) return vspStsRangeErr;
    const int positions = pIndex[0], signs = pIndex[1];
    const CodedPulse pulses[] = {{trackTable0[fromGray(positions & 15)], (signs & 1) != 0},
                                 {trackTable1[fromGray(positions >> 4 & 31)], (signs & 2) != 0}};
    storeCode(pulses, lag, sharp, pCode);
    return vspStsNoErr;
}

VspStatus vspsFixedCodebookRandom_G729_16s(Vsp16s* pSeed, Vsp16s* pIndex) {
    return randomIndex(pSeed, pIndex, 0x1FFF, 0x000F);
}

VspStatus vspsFixedCodebookRandom_G729D_16s(Vsp16s* pSeed, Vsp16s* pIndex) {
    return randomIndex(pSeed, pIndex, 0x01FF, 0x0003);
}

}  // namespace vsp::VSP_LEVEL
