// The code vectors of the four-pulse codebook (G.729 4.1.4) and those of Annexes D and E, and the codes that stand for
// those of an erased frame (4.4.4).
#include "common/random.h"
#include "core/checks.h"
#include "g729/exports.h"
#include "g729/fixed_codebook.h"
#include "g729/tables.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr Vsp16s amplitudeOf(bool positive) { return positive ? 8191 : -8192; }

template <int Pulses>
void storeCode(const CodedPulse (&pulses)[Pulses], Vsp16s lag, Vsp16s sharp, Vsp16s* pCode) {
    storeSum(pulses, pCode);
    sharpenCode(pCode, lag, sharp);
}

int fromGray(int code) {
    for (int shift = 1; shift < 8; shift *= 2) code ^= code >> shift;
    return code;
}

// Pulses of magnitude 1/2 on one track. The first has a sign of its own; the order tells the sign of a further one.
void storeTrack(int index, int track, int pulses, Vsp16s* pCode) {
    int place = index & 7;
    Vsp16s amplitude = Vsp16s((index >> 3 & 1) != 0 ? -4096 : 4096);
    pCode[positionOf(track, place)] = amplitude;
    for (int n = 1; n < pulses; n++) {
        const int next = index >> (1 + 3 * n) & 7;
        if (next > place) amplitude = Vsp16s(-amplitude);
        place = next;
        pCode[positionOf(track, place)] = Vsp16s(pCode[positionOf(track, place)] + amplitude);
    }
}

template <class... Masks>
VspStatus randomIndex(Vsp16s* pSeed, Vsp16s* pIndex, Masks... masks) {
    if (anyNull(pSeed, pIndex)) return vspStsNullPtrErr;
    ((*pIndex++ = Vsp16s(ownRandom(pSeed) & masks)), ...);
    return vspStsNoErr;
}

}  // namespace

VspStatus vspsFixedCodebookDecode_G729_16s(const Vsp16s* pIndex, Vsp16s lag, Vsp16s sharp, Vsp16s* pCode) {
    if (anyNull(pIndex, pCode)) return vspStsNullPtrErr;
    if (!isLegalLag(lag)) return vspStsRangeErr;
    const int positions = pIndex[0], signs = pIndex[1];
    CodedPulse pulses[4];
    for (int i = 0; i < 3; i++) pulses[i] = {positionOf(i, positions >> 3 * i & 7), amplitudeOf((signs >> i & 1) != 0)};
    pulses[3] = {positionOf(3 + (positions >> 9 & 1), positions >> 10 & 7), amplitudeOf((signs >> 3 & 1) != 0)};
    storeCode(pulses, lag, sharp, pCode);
    return vspStsNoErr;
}

VspStatus vspsFixedCodebookDecode_G729D_16s(const Vsp16s* pIndex, Vsp16s lag, Vsp16s sharp, Vsp16s* pCode) {
    if (anyNull(pIndex, pCode)) return vspStsNullPtrErr;
    if (!isLegalLag(lag)) return vspStsRangeErr;
    const int positions = pIndex[0], signs = pIndex[1];
    const CodedPulse pulses[] = {{trackTable0[fromGray(positions & 15)], amplitudeOf((signs & 1) != 0)},
                                 {trackTable1[fromGray(positions >> 4 & 31)], amplitudeOf((signs & 2) != 0)}};
    storeCode(pulses, lag, sharp, pCode);
    return vspStsNoErr;
}

VspStatus vspsFixedCodebookDecode_G729E_16s(Vsp16s mode, const Vsp16s* pIndex, Vsp16s lag, Vsp16s sharp, Vsp16s* pCode) {
    if (anyNull(pIndex, pCode)) return vspStsNullPtrErr;
    if (mode != 0 && mode != 1) return vspStsRangeErr;
    if (!isLegalLag(lag)) return vspStsRangeErr;
    int track = mode == 0 ? 0 : pIndex[0] >> 10 & 7;
    track = track > 4 ? 4 : track;
    const int triples = mode == 0 ? 0 : 2;
    Vsp16s code[kL_subfr] = {};
    for (int i = 0; i < kTracks; i++) storeTrack(pIndex[i], (track + i) % kTracks, i < triples ? 3 : 2, code);
    sharpenCode(code, lag, sharp);
    for (int i = 0; i < kL_subfr; i++) pCode[i] = code[i];
    return vspStsNoErr;
}

VspStatus vspsFixedCodebookRandom_G729_16s(Vsp16s* pSeed, Vsp16s* pIndex) {
    return randomIndex(pSeed, pIndex, 0x1FFF, 0x000F);
}

VspStatus vspsFixedCodebookRandom_G729D_16s(Vsp16s* pSeed, Vsp16s* pIndex) {
    return randomIndex(pSeed, pIndex, 0x01FF, 0x0003);
}

VspStatus vspsFixedCodebookRandom_G729E_16s(Vsp16s* pSeed, Vsp16s* pIndex) {
    return randomIndex(pSeed, pIndex, 0x1FFF, 0x03FF, 0x007F, 0x007F, 0x007F);
}

}  // namespace vsp::VSP_LEVEL
