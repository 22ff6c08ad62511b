// What the searches of the algebraic codebooks of AMR-WB share (3GPP TS 26.190, 5.8): 64 positions on two or four tracks,
// position p = tracks * place + track; a target with signs, and the comparison of candidates, sixteen places at a time.
#pragma once

#include "amrwb/lengths.h"
#include "amrwb/normalised.h"
#include "vector/sixteen_16s.h"

namespace vsp::VSP_LEVEL {

constexpr int kPlaces16 = 16;

// The target filtered backwards (`cor_h_x`), and with signs chosen by a mean of it and the residual.
struct PulseTarget {
    Vsp16s d[kWideSubframe], mean[kWideSubframe];  // with the signs; the mean is not negative
    Vsp16s sign[kWideSubframe];                    // 32767 or -32768

    // weight: of the target in the mean, Q15.
    PulseTarget(const Vsp16s* target, const Vsp16s* residual, const Vsp16s* h, Vsp16s weight);
};

// The correlation of the response at two positions with the factor of their signs, of which that of q stands for a
// positive p.
VSP_INLINE Vsp16s withSigns(Vsp16s correlation, Vsp16s signOfP, Vsp16s signOfQ) {
    return Mul_16s(correlation, Vsp16s(signOfP < 0 ? ~signOfQ : signOfQ));
}

// The best candidate so far: the larger square / energy wins, compared as products, of equal ones the first.
struct BestPulses {
    Vsp16s square = -1, energy = 1;

    [[gnu::always_inline]] bool isBeatenBy(BestPulses candidate) const {
        return energy * candidate.square > square * candidate.energy;
    }
};

// The sixteen best of rows of candidates with positive energies, each of its lane.
class LaneWinners {
  public:
    // Rows come in their order, and none has an energy below 1, or the result is nothing.
    [[gnu::always_inline]] void take(int row, Sixteen16s square, Sixteen16s energy) {
        const Sixteen16s better = wherePositive(square, energy_, minusSquare_, energy);
        minusSquare_ = select(better, sub(Sixteen16s::splat(0), square), minusSquare_);
        energy_ = select(better, energy, energy_);
        row_ = select(better, Sixteen16s::splat(Vsp16s(row)), row_);
        least_ = min(least_, energy);
    }
    [[gnu::always_inline]] bool areAllPositive() const { return allPositive(least_); }

    // Takes the first of the best in the order of rows, and of lanes within a row. Lanes begin with lane `first`.
    [[gnu::always_inline]] void settle(int first, BestPulses& best, int& bestRow, int& bestLane) const {
        Vsp16s minusSquares[kPlaces16], energies[kPlaces16], rows[kPlaces16];
        minusSquare_.store(minusSquares);
        energy_.store(energies);
        row_.store(rows);
        // Rounding keeps the order of the quotients, so that the largest is among the largest rounded ones.
        Eight32f quotients[2];
        for (int i = 0; i < 2; i++)
            quotients[i] = quotient(toFloat(widen(S16_128::load(minusSquares + 8 * i))),
                                    toFloat(widen(sub(S16_128::splat(0), S16_128::load(energies + 8 * i)))));
        const Eight32f most = Eight32f::splat(largest(max(quotients[0], quotients[1])));
        for (Vsp32u lanes = atLeast(quotients[0], most) | atLeast(quotients[1], most) << 8; lanes != 0;
             lanes &= lanes - 1) {
            const int lane = __builtin_ctz(lanes);
            const BestPulses candidate{Vsp16s(-minusSquares[lane]), energies[lane]};
            const bool equal = best.energy * candidate.square == best.square * candidate.energy;
            if (!best.isBeatenBy(candidate) && !(equal && rows[lane] < bestRow)) continue;
            best = candidate;
            bestRow = rows[lane];
            bestLane = first + lane;
        }
    }

  private:
    Sixteen16s minusSquare_ = Sixteen16s::splat(1), energy_ = Sixteen16s::splat(1), row_ = Sixteen16s::splat(0);
    Sixteen16s least_ = Sixteen16s::splat(kMax16);
};

// mult(s, s) of sums that are not -32768.
VSP_INLINE Sixteen16s squareOf(Sixteen16s s) {
    const Sixteen16s m = magnitude(s);
    return mulHiU(m, add(m, m));
}

// What a search finds.
struct FoundWidePulses {
    int count;
    int position[24];
    Vsp16s amplitude;         // of the code
    Vsp16s y[kWideSubframe];  // the filtered code
};

// 12 bits (`ACELP_2t64_fx`).
void ownSearchTwoTracks(const PulseTarget& target, const Vsp16s* h, FoundWidePulses& found);

// How four tracks are searched.
struct FourTrackSearch {
    int pulses, passes;
    int begun;           // pulses at the largest means
    Vsp16s weight;       // of the target in the mean, Q15
    int candidates[10];  // places of the first track of each pair
    bool lastOnFirst;    // the last two pulses are on the first two tracks
};

// 20 to 88 bits (`ACELP_4t64_fx`).
void ownSearchFourTracks(const FourTrackSearch& search, const PulseTarget& target, const Vsp16s* impulse,
                         FoundWidePulses& found);

}  // namespace vsp::VSP_LEVEL
