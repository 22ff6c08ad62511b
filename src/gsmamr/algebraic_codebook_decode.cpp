// The pulses of the algebraic codebooks from their indices (`decode_2i40_9bits` to `dec_10i40_35bits`).
#include "core/checks.h"
#include "gsmamr/code_sharpening.h"
#include "gsmamr/exports.h"
#include "gsmamr/mode_checks.h"
#include "gsmamr/pitch_range.h"
#include "gsmamr/pulses.h"

namespace vsp::VSP_LEVEL {

namespace {

struct IndexBits {
    int count;
    Vsp8u bits[10];
};

IndexBits indexBits(Vsp32s mode) {
    switch (mode) {
        case kMode475:
        case kMode515: return {2, {7, 2}};
        case kMode590: return {2, {9, 2}};
        case kMode670: return {2, {11, 3}};
        case kMode740:
        case kMode795: return {2, {13, 4}};
        case kMode102: return {7, {1, 1, 1, 1, 10, 10, 7}};
        case kMode122: return {10, {4, 4, 4, 4, 4, 3, 3, 3, 3, 3}};
        default: return {0, {}};
    }
}

bool fits(const Vsp16s* index, IndexBits bits) {
    for (int i = 0; i < bits.count; i++)
        if (index[i] < 0 || index[i] >> bits.bits[i] != 0) return false;
    return true;
}

// Up to 7.95 kbit/s: one pulse after the other, of which a later one replaces an earlier one, with the signs in one word.
class SinglePulses {
  public:
    SinglePulses(Vsp16s* code, int signs) : code_(code), signs_(signs) {}
    void put(int position) {
        code_[position] = (signs_ & 1) != 0 ? 8191 : -8192;
        signs_ >>= 1;
    }

  private:
    Vsp16s* code_;
    int signs_;
};

void decode9(int index, int subframe, SinglePulses pulses) {
    const auto& start = startPos[index >> 6 & 1][subframe];
    pulses.put(start[0] + 5 * (index & 7));
    pulses.put(start[1] + 5 * (index >> 3 & 7));
}

void decode11(int index, SinglePulses pulses) {
    static constexpr int kSecondTrack[4] = {0, 1, 2, 4};
    pulses.put(5 * (index >> 1 & 7) + ((index & 1) != 0 ? 3 : 1));
    pulses.put(5 * (index >> 6 & 7) + kSecondTrack[index >> 4 & 3]);
}

void decode14(int index, SinglePulses pulses) {
    pulses.put(5 * (index & 7));
    pulses.put(5 * (index >> 4 & 7) + ((index >> 3 & 1) != 0 ? 3 : 1));
    pulses.put(5 * (index >> 8 & 7) + ((index >> 7 & 1) != 0 ? 4 : 2));
}

void decode17(int index, SinglePulses pulses) {
    pulses.put(5 * dgray[index & 7]);
    pulses.put(5 * dgray[index >> 3 & 7] + 1);
    pulses.put(5 * dgray[index >> 6 & 7] + 2);
    pulses.put(5 * dgray[index >> 10 & 7] + 3 + (index >> 9 & 1));
}

// The second pulse of a track, whose sign is that of the first unless it comes before it.
void putPair(Vsp16s* code, int first, int second, Vsp16s pulse) {
    code[first] = pulse;
    code[second] = Vsp16s(code[second] + (second < first ? -pulse : pulse));
}

void decode31(const Vsp16s* index, Vsp16s* code) {
    Vsp16s places[8];
    const auto unpack = [&](int word, int a, int b, int c) {
        const int whole = word >> 3 < 124 ? word >> 3 : 124, rest = whole % 25;
        places[a] = Vsp16s(2 * (rest % 5) + (word & 1));
        places[b] = Vsp16s(2 * (rest / 5) + (word >> 1 & 1));
        places[c] = Vsp16s(2 * (whole / 25) + (word >> 2 & 1));
    };
    unpack(index[4], 0, 4, 1);
    unpack(index[5], 2, 6, 5);
    const int last = ((index[6] >> 2) * 25 + 12) >> 5, row = last / 5, column = last % 5;
    places[3] = Vsp16s(2 * (row % 2 != 0 ? 4 - column : column) + (index[6] & 1));
    places[7] = Vsp16s(2 * row + (index[6] >> 1 & 1));
    for (int track = 0; track < 4; track++)
        putPair(code, 4 * places[track] + track, 4 * places[track + 4] + track, index[track] != 0 ? -8191 : 8191);
}

void decode35(const Vsp16s* index, Vsp16s* code) {
    for (int track = 0; track < 5; track++)
        putPair(code, 5 * dgray[index[track] & 7] + track, 5 * dgray[index[track + 5]] + track,
                (index[track] & 8) != 0 ? -4096 : 4096);
}

}  // namespace

VspStatus vspsAlgebraicCodebookDecode_GSMAMR_16s(const Vsp16s* pIndex, Vsp32s mode, Vsp32s subframe, Vsp16s lag,
                                                 Vsp16s sharp, Vsp16s* pCode) {
    if (anyNull(pCode)) return vspStsNullPtrErr;
    if (!isMode(mode) || !isSubframe(subframe) || lag < kFirstLag || lag > kLastLag) return vspStsRangeErr;
    if (mode != kModeSID) {
        if (anyNull(pIndex)) return vspStsNullPtrErr;
        if (!fits(pIndex, indexBits(mode))) return vspStsRangeErr;
    }
    for (int i = 0; i < kL_subfr; i++) pCode[i] = 0;
    if (mode == kModeSID) return vspStsNoErr;
    if (mode == kMode122) {
        decode35(pIndex, pCode);
    } else if (mode == kMode102) {
        decode31(pIndex, pCode);
    } else {
        const SinglePulses pulses(pCode, pIndex[1]);
        switch (mode) {
            case kMode590: decode11(pIndex[0], pulses); break;
            case kMode670: decode14(pIndex[0], pulses); break;
            case kMode740:
            case kMode795: decode17(pIndex[0], pulses); break;
            default: decode9(pIndex[0], subframe, pulses);
        }
    }
    ownSharpen(pCode, lag, sharp);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
