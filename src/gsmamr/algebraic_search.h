// What the searches of the algebraic codebooks have in common (3GPP TS 26.090, 5.7).
#pragma once

#include "arithmetic/standard_ops.h"
#include "common/algebraic_search.h"
#include "common/inv_sqrt.h"

namespace vsp::VSP_LEVEL {

constexpr int kMaxPulses = 10;
constexpr Best kNoCandidate{-1, 1};

// What a search finds: the positions of the pulses, and whether each is negative.
struct FoundPulses {
    int position[kMaxPulses];
    bool negative[kMaxPulses];
};

// The impulse response with nearly the energy 1 (`cor_h`).
struct ScaledResponse {
    Vsp16s h[kL_subfr];

    explicit ScaledResponse(const Vsp16s* impulse) {
        const Vsp32s total = Cnvrt_64s32s(2 * energy(impulse, kL_subfr) + 2);
        if (total >> 16 == kMax16) {
            for (int i = 0; i < kL_subfr; i++) h[i] = Vsp16s(impulse[i] >> 1);
            return;
        }
        const Vsp16s factor = Mul_16s(high_32s(shl_32s(ownInvSqrt(total >> 1), 7)), 32440);
        for (int i = 0; i < kL_subfr; i++) h[i] = round_32s(shl_32s(Mul2_16s32s(impulse[i], factor), 9));
    }
};

// mult(a, s) with s the product of two signs of +-32767; which has all bits set where they differ.
VSP_INLINE S16_128 withSigns(S16_128 a, S16_128 which) {
    return mulShift15(a, select(which, S16_128::splat(-32767), S16_128::splat(32766)));
}

// Finds the best of up to Rows rows of eight candidates, as comparing them in their order does. Where all energies are
// positive the order of the quotients square / energy is the same; estimates of them tell which few may be the best.
template <int Rows>
class PrunedCandidates {
  public:
    static constexpr int kAtOnce = Sliding16::width / kPlaces;  // rows in a vector
    static_assert(Rows % kAtOnce == 0);

    // Where a row is not full its squares and energies are 0, which are never better, and its divisors 1; else the
    // energies.
    [[gnu::always_inline]] void add(Sliding16 square, Sliding16 energy, Sliding16 divisor) {
        square.store(squares_[rows_]);
        energy.store(energies_[rows_]);
        least_ = min(least_, divisor);
        for (int i = 0; i < kAtOnce; i++) {
            const Eight32f quotient = mul(toFloat(widen(block(square, i))), reciprocal(toFloat(widen(block(divisor, i)))));
            quotient.store(quotients_[rows_++]);
            largest_ = max(largest_, quotient);
        }
    }

    // Returns the number of the candidate, 8 * row + lane, or -1 if there is none.
    [[gnu::always_inline]] int best(Best& best) const {
        int found = -1;
        const auto consider = [&](int number) {
            const Best candidate{squares_[number / kPlaces][number % kPlaces],
                                 energies_[number / kPlaces][number % kPlaces]};
            if (!isBetter(best, candidate)) return;
            best = candidate;
            found = number;
        };
        if (anyNotPositive()) [[unlikely]] {
            for (int number = 0; number < kPlaces * rows_; number++) consider(number);
            return found;
        }
        constexpr Vsp32f kNearly = 1 - 1.0f / 512;  // each of two quotients is wrong by less than 2^-11
        const Eight32f threshold = Eight32f::splat(largest(largest_) * kNearly);
        for (int first = 0; first < rows_; first += kPlaces) {  // as many rows as a word has octets
            Vsp64u near = 0;
            for (int row = first; row < rows_ && row < first + kPlaces; row++)
                near |= Vsp64u(atLeast(Eight32f::load(quotients_[row]), threshold)) << (kPlaces * (row - first));
            for (; near != 0; near &= near - 1) consider(kPlaces * first + __builtin_ctzll(near));
        }
        return found;
    }

  private:
    [[gnu::always_inline]] bool anyNotPositive() const {
        Vsp16s lanes[Sliding16::width];
        least_.store(lanes);
        bool any = false;
        for (const Vsp16s lane : lanes) any |= lane <= 0;
        return any;
    }

    Vsp16s squares_[Rows][kPlaces], energies_[Rows][kPlaces];
    Vsp32f quotients_[Rows][kPlaces];
    Sliding16 least_ = Sliding16::splat(kMax16);
    Eight32f largest_ = Eight32f::splat(0);
    int rows_ = 0;
};

// The searches. d is the target filtered backwards, h the impulse response with pitch sharpening.
int ownSearchTwoOfPairs(const Vsp16s* d, const Vsp16s* h, int subframe, FoundPulses& found);  // returns the half found
void ownSearchTwo(const Vsp16s* d, const Vsp16s* h, FoundPulses& found);
void ownSearchThree(const Vsp16s* d, const Vsp16s* h, FoundPulses& found);
void ownSearchFour(const Vsp16s* d, const Vsp16s* h, FoundPulses& found);
void ownSearchEight(const Vsp16s* d, const Vsp16s* residual, const Vsp16s* h, FoundPulses& found);
void ownSearchTen(const Vsp16s* d, const Vsp16s* residual, const Vsp16s* h, FoundPulses& found);

}  // namespace vsp::VSP_LEVEL
