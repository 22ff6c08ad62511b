// The search of the algebraic codebook (`ACELP_2t64_fx`, `ACELP_4t64_fx`; 3GPP TS 26.190, 5.8).
#include "amrwb/exports.h"
#include "amrwb/pulse_codebooks.h"
#include "amrwb/pulse_search.h"
#include "amrwb/track_code.h"
#include "core/checks.h"

namespace vsp::VSP_LEVEL {

namespace {

FourTrackSearch settings(int bits, Vsp32s mode) {
    constexpr Vsp32s kQuick = 21;
    switch (bits) {
        case 20: return {4, 4, 0, 8192, {4, 8}, false};
        case 28: return {6, 4, 0, 4096, {6, 6, 8}, true};
        case 36: return {8, 4, 2, 4096, {4, 8, 8}, false};
        case 44: return {10, 4, 2, 4096, {4, 6, 8, 8}, true};
        case 52: return {12, 4, 4, 4096, {4, 6, 8, 8}, false};
        case 64: return {16, 3, 4, 3277, {4, 4, 6, 6, 8, 8}, false};
        case 72: return {18, 3, 4, 3072, {2, 3, 4, 5, 6, 7, 8}, true};
        default: return {24, mode == kQuick ? 1 : 2, 4, 2048, {2, 2, 3, 4, 5, 6, 7, 8, 8, 8}, false};
    }
}

// The pulses of each track in the order in which they were found.
void store(const PulseCodebook& codebook, const FoundWidePulses& found, const Vsp16s* sign, Vsp16s* code, Vsp16s* index) {
    int pulses[kPulseTracks][kMaxTrackPulses], counts[kPulseTracks] = {};
    for (int i = 0; i < kWideSubframe; i++) code[i] = 0;
    for (int i = 0; i < found.count; i++) {
        const int position = found.position[i], track = position % kPulseTracks;
        const int minus = sign[position] >> 15;  // -1 for a negative one: no branch, which nothing could predict
        code[position] = Vsp16s(code[position] + (found.amplitude ^ minus) - minus);
        pulses[track][counts[track]++] = position / kPulseTracks + (kNegative & minus);
    }
    for (int t = 0; t < kPulseTracks; t++) {
        const int word = encodeTrack(pulses[t], codebook.pulses[t]);
        if (!codebook.isSplit()) {
            index[t] = Vsp16s(word);
            continue;
        }
        const int low = codebook.lowBits[t];
        index[t] = Vsp16s(word >> low);
        index[kPulseTracks + t] = Vsp16s(word & ((1 << low) - 1));
    }
}

void storeTwo(const FoundWidePulses& found, const Vsp16s* sign, Vsp16s* code, Vsp16s* index) {
    int word = 0;
    for (int i = 0; i < kWideSubframe; i++) code[i] = 0;
    for (int t = 0; t < 2; t++) {
        const int position = found.position[t];
        const bool negative = sign[position] < 0;
        code[position] = negative ? Vsp16s(-found.amplitude) : found.amplitude;
        word = 64 * word + position / 2 + (negative ? 32 : 0);
    }
    *index = Vsp16s(word);
}

}  // namespace

VspStatus vspsAlgebraicCodebookSearch_AMRWB_16s(const Vsp16s* pTarget, const Vsp16s* pResidual, const Vsp16s* pImpulse,
                                                Vsp32s mode, Vsp16s* pCode, Vsp16s* pY, Vsp16s* pIndex) {
    if (anyNull(pTarget, pResidual, pImpulse, pCode, pY, pIndex)) return vspStsNullPtrErr;
    const PulseCodebook codebook = pulseCodebook(mode);
    if (codebook.bits == 0) return vspStsRangeErr;
    FoundWidePulses found;
    if (codebook.bits == 12) {
        const PulseTarget target(pTarget, pResidual, pImpulse, 8192);
        ownSearchTwoTracks(target, pImpulse, found);
        storeTwo(found, target.sign, pCode, pIndex);
    } else {
        const FourTrackSearch search = settings(codebook.bits, mode);
        const PulseTarget target(pTarget, pResidual, pImpulse, search.weight);
        ownSearchFourTracks(search, target, pImpulse, found);
        store(codebook, found, target.sign, pCode, pIndex);
    }
    for (int i = 0; i < kWideSubframe; i++) pY[i] = found.y[i];
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
