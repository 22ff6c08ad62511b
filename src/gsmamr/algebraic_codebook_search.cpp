// The search of the algebraic codebook (`cbsearch`; 3GPP TS 26.090, 5.7).
#include "core/checks.h"
#include "gsmamr/algebraic_search.h"
#include "gsmamr/exports.h"
#include "gsmamr/mode_checks.h"
#include "gsmamr/pitch_range.h"
#include "gsmamr/pulses.h"

namespace vsp::VSP_LEVEL {

namespace {

// --- The filtered code -------------------------------------------------------------------------------------------------

template <class Weight>
void filterSaturating(const Vsp16s* h, const FoundPulses& pulses, int count, Weight weight, Vsp16s* y) {
    for (int i = 0; i < kL_subfr; i++) {
        Vsp32s sum = 0;
        for (int n = 0; n < count; n++)
            if (pulses.position[n] <= i) sum = mac_32s(sum, h[i - pulses.position[n]], weight(pulses.negative[n]));
        y[i] = round_32s(sum);
    }
}

// Pulses of 32767 and -32768 / 32768: the rounded sum is that of the responses with their signs, less one where those of
// the positive pulses add up to more than a half of 32768, and one more where they do so to less than minus that.
void filterUnitPulses(const Vsp16s* h, const FoundPulses& pulses, int count, Vsp16s* y) {
    constexpr int kLargest = 32000;
    const ShiftedResponse shifted(h);
    Vsp16s positive[kL_subfr] = {};
    Vsp16u largest = 0;
    for (int i = 0; i < kL_subfr; i++) y[i] = 0;
    for (int n = 0; n < count; n++) {
        shifted.addTo(y, pulses.position[n], !pulses.negative[n]);
        if (!pulses.negative[n]) shifted.addTo(positive, pulses.position[n], true);
        S16_128 peaks = S16_128::splat(0);
        for (int i = 0; i < kL_subfr; i += S16_128::width)
            peaks = maxU(peaks, maxU(magnitude(S16_128::load(y + i)), magnitude(S16_128::load(positive + i))));
        largest = largestU(peaks) > largest ? largestU(peaks) : largest;
    }
    if (largest > kLargest) {
        filterSaturating(
            h, pulses, count, [](bool negative) { return negative ? kMin16 : kMax16; }, y);
        return;
    }
    for (int i = 0; i < kL_subfr; i++) y[i] = Vsp16s(y[i] + ((16384 - positive[i]) >> 15));
}

// An even number of pulses of +-8192 / 32768.
void filterQuarterPulses(const Vsp16s* h, const FoundPulses& pulses, int count, Vsp16s* y) {
    constexpr int kLargest = 13000;  // ten such samples do not saturate
    for (int i = 0; i < kL_subfr; i++)
        if (h[i] < -kLargest || h[i] > kLargest) {
            filterSaturating(
                h, pulses, count, [](bool negative) { return Vsp16s(negative ? -8192 : 8192); }, y);
            return;
        }
    // The exact sums of pulse after pulse, two at a time.
    using V = Sliding16;
    constexpr int kVectors = (kL_subfr + V::width - 1) / V::width;
    const ShiftedResponse shifted(h);
    Wide<V> lo[kVectors], hi[kVectors];
    for (int i = 0; i < kVectors; i++) lo[i] = hi[i] = Wide<V>::splat(2);
    for (int n = 0; n < count; n += 2) {
        const Vsp16s* const a = shifted.at(pulses.position[n]);
        const Vsp16s* const b = shifted.at(pulses.position[n + 1]);
        const int ofA = pulses.negative[n] ? 0xFFFF : 1, ofB = pulses.negative[n + 1] ? -65536 : 65536;
        const V signs{Wide<V>::splat(ofA | ofB).v};
        for (int i = 0; i < kVectors; i++) {
            const V ofFirst = V::load(a + V::width * i), ofSecond = V::load(b + V::width * i);
            lo[i] = add(lo[i], dot2(V{zipLo(ofFirst, ofSecond).v}, signs));
            hi[i] = add(hi[i], dot2(V{zipHi(ofFirst, ofSecond).v}, signs));
        }
    }
    Vsp16s filtered[kVectors * V::width];
    for (int i = 0; i < kVectors; i++) packSat(shr(lo[i], 2), shr(hi[i], 2)).store(filtered + V::width * i);
    for (int i = 0; i < kL_subfr; i++) y[i] = filtered[i];
}

// --- The indices -------------------------------------------------------------------------------------------------------

// Positions and signs of two to four pulses. place(n, track, p) is what a pulse adds to the index, bit(n, track) the place
// of its sign.
template <class PlaceCode, class SignBit>
void storeSingle(const FoundPulses& pulses, int count, int start, PlaceCode place, SignBit bit, Vsp16s* code,
                 Vsp16s* index) {
    int positions = start, signs = 0;
    for (int n = 0; n < count; n++) {
        const int position = pulses.position[n], track = position % 5;
        positions += place(n, track, position / 5);
        if (!pulses.negative[n]) signs += 1 << bit(n, track);
        code[position] = pulses.negative[n] ? -8192 : 8191;
    }
    index[0] = Vsp16s(positions);
    index[1] = Vsp16s(signs);
}

void store9(const FoundPulses& pulses, int half, Vsp16s* code, Vsp16s* index) {
    const auto place = [](int n, int, int p) { return n == 0 ? p : p << 3; };
    storeSingle(
        pulses, 2, half << 6, place, [](int n, int) { return n; }, code, index);
}

void store11(const FoundPulses& pulses, Vsp16s* code, Vsp16s* index) {
    const auto isFirst = [](int n, int track) { return track == 3 || (track == 1 && n == 0); };
    const auto place = [&](int n, int track, int p) {
        static constexpr int kSecondTrack[5] = {0, 1, 2, 0, 3};
        return isFirst(n, track) ? (p << 1) + (track == 3) : (p << 6) + (kSecondTrack[track] << 4);
    };
    storeSingle(
        pulses, 2, 0, place, [&](int n, int track) { return isFirst(n, track) ? 0 : 1; }, code, index);
}

void store14(const FoundPulses& pulses, Vsp16s* code, Vsp16s* index) {
    static constexpr int kShift[5] = {0, 4, 8, 4, 8}, kOffset[5] = {0, 0, 0, 8, 128}, kSign[5] = {0, 1, 2, 1, 2};
    const auto place = [](int, int track, int p) { return (p << kShift[track]) + kOffset[track]; };
    storeSingle(
        pulses, 3, 0, place, [](int, int track) { return kSign[track]; }, code, index);
}

void store17(const FoundPulses& pulses, Vsp16s* code, Vsp16s* index) {
    static constexpr int kShift[5] = {0, 3, 6, 10, 10}, kSign[5] = {0, 1, 2, 3, 3};
    const auto place = [](int, int track, int p) { return (gray[p] << kShift[track]) + (track == 4 ? 512 : 0); };
    storeSingle(
        pulses, 4, 0, place, [](int, int track) { return kSign[track]; }, code, index);
}

// The two pulses of each track in the order that tells the sign of the second.
template <int Tracks>
struct OrderedPulses {
    int place[2 * Tracks];
    bool negative[Tracks];  // the first of them

    OrderedPulses(const FoundPulses& pulses, Vsp16s amplitude, Vsp16s* code) {
        struct {
            int place;
            bool negative;
        } ofTrack[Tracks][2];
        int found[Tracks] = {};
        for (int n = 0; n < 2 * Tracks; n++) {
            const int position = pulses.position[n], track = position % Tracks;
            code[position] = Vsp16s(code[position] + (pulses.negative[n] ? -amplitude : amplitude));
            ofTrack[track][found[track]++ & 1] = {position / Tracks, pulses.negative[n]};
        }
        for (int t = 0; t < Tracks; t++) {
            const auto [a, b] = ofTrack[t];
            const bool inOrder = (a.place <= b.place) == (a.negative == b.negative);
            place[t] = inOrder ? a.place : b.place;
            place[t + Tracks] = inOrder ? b.place : a.place;
            negative[t] = inOrder ? a.negative : b.negative;
        }
    }
};

void store31(const FoundPulses& pulses, Vsp16s* code, Vsp16s* index) {
    const OrderedPulses<4> ordered(pulses, 8191, code);
    const int* const p = ordered.place;
    for (int t = 0; t < 4; t++) index[t] = ordered.negative[t];
    const auto pack = [&](int a, int b, int c) {
        return Vsp16s(8 * (p[a] / 2 + 5 * (p[b] / 2) + 25 * (p[c] / 2)) + (p[a] & 1) + 2 * (p[b] & 1) + 4 * (p[c] & 1));
    };
    index[4] = pack(0, 4, 1);
    index[5] = pack(2, 6, 5);
    const int column = p[7] / 2 % 2 != 0 ? 4 - p[3] / 2 : p[3] / 2;
    const int packed = (32 * (column + 5 * (p[7] / 2)) + 12) / 25;
    index[6] = Vsp16s(4 * packed + (p[3] & 1) + 2 * (p[7] & 1));
}

void store35(const FoundPulses& pulses, Vsp16s* code, Vsp16s* index) {
    const OrderedPulses<5> ordered(pulses, 4096, code);
    for (int t = 0; t < 5; t++) {
        index[t] = Vsp16s(gray[ordered.place[t]] | int(ordered.negative[t]) << 3);
        index[t + 5] = gray[ordered.place[t + 5]];
    }
}

// ----------------------------------------------------------------------------------------------------------------------

void search(const Vsp16s* target, const Vsp16s* residual, const Vsp16s* h, Vsp32s mode, Vsp32s subframe, Vsp16s* code,
            Vsp16s* y, Vsp16s* index) {
    FoundPulses found;
    Vsp16s d[kL_subfr];
    if (mode == kMode102)
        filterBackwards<4>(target, h, 2, d);
    else
        filterBackwards<5>(target, h, mode == kMode122 ? 2 : 1, d);
    switch (mode) {
        case kMode122:
            ownSearchTen(d, residual, h, found);
            store35(found, code, index);
            filterQuarterPulses(h, found, 10, y);
            break;
        case kMode102:
            ownSearchEight(d, residual, h, found);
            store31(found, code, index);
            filterUnitPulses(h, found, 8, y);
            break;
        case kMode795:
        case kMode740:
            ownSearchFour(d, h, found);
            store17(found, code, index);
            filterUnitPulses(h, found, 4, y);
            break;
        case kMode670:
            ownSearchThree(d, h, found);
            store14(found, code, index);
            filterUnitPulses(h, found, 3, y);
            break;
        case kMode590:
            ownSearchTwo(d, h, found);
            store11(found, code, index);
            filterUnitPulses(h, found, 2, y);
            break;
        default: store9(found, ownSearchTwoOfPairs(d, h, subframe, found), code, index); filterUnitPulses(h, found, 2, y);
    }
}

}  // namespace

VspStatus vspsAlgebraicCodebookSearch_GSMAMR_16s(const Vsp16s* pTarget, const Vsp16s* pResidual, const Vsp16s* pImpulse,
                                                 Vsp32s mode, Vsp32s subframe, Vsp16s lag, Vsp16s sharp, Vsp16s* pCode,
                                                 Vsp16s* pY, Vsp16s* pIndex) {
    if (anyNull(pTarget, pImpulse, pCode, pY)) return vspStsNullPtrErr;
    if (!isMode(mode) || !isSubframe(subframe) || lag < kFirstLag || lag > kLastLag) return vspStsRangeErr;
    if ((mode == kMode102 || mode == kMode122) && anyNull(pResidual)) return vspStsNullPtrErr;
    if (mode != kModeSID && anyNull(pIndex)) return vspStsNullPtrErr;
    Subframe h(pImpulse);
    sharpen(h, lag, sharp);
    Subframe code(h);
    for (Vsp16s& sample : code.samples) sample = 0;
    if (mode == kModeSID) {
        for (int i = 0; i < kL_subfr; i++) pY[i] = 0;
    } else {
        search(pTarget, pResidual, h.samples, mode, subframe, code.samples, pY, pIndex);
        sharpen(code, lag, sharp);
    }
    for (int i = 0; i < kL_subfr; i++) pCode[i] = code.samples[i];
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
