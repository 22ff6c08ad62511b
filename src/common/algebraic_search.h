// What the searches of algebraic codebooks share (G.729 3.8 and its annexes, GSM-AMR): a subframe of 40 samples whose
// positions are divided into five tracks, position p = 5 * place + track; correlations of a filter's impulse response by
// pairs of tracks; the comparison of candidates, eight places of a track at a time.
#pragma once

#include "arithmetic/basic_ops.h"
#include "common/cross_correlation.h"
#include "common/lengths.h"
#include "vector/dot.h"
#include "vector/eight_32s.h"

namespace vsp::VSP_LEVEL {

constexpr int kTracks = 5, kPlaces = 8;
static_assert(kTracks * kPlaces == kL_subfr && kPlaces == S16_128::width);

constexpr int positionOf(int track, int place) { return kTracks * place + track; }

// A subframe, and room for a last vector of samples that begins in it.
struct Subframe {
    Vsp16s samples[kL_subfr + S16_128::width];

    [[gnu::always_inline]] explicit Subframe(const Vsp16s* from) {
        for (int i = 0; i < kL_subfr; i++) samples[i] = from[i];
    }
};

// x[i] += x[i - lag] * gain, i ascending: the pitch sharpening. gain is Q14, lag 17 or more.
VSP_INLINE void sharpen(Subframe& x, int lag, Vsp16s gain) {
    static_assert(S16_128::width <= 17);
    const S16_128 factor = S16_128::splat(ShiftL_16s(gain, 1));
    for (int i = lag; i < kL_subfr; i += S16_128::width) {
        Vsp16s* const at = x.samples + i;
        addSat(S16_128::load(at), mulShift15Sat(S16_128::load(at - lag), factor)).store(at);
    }
}

// The target correlated with the impulse response, scaled by the largest magnitudes of the tracks (`cor_h_x`, G.729 Annex E
// and GSM-AMR).
template <int Tracks>
VSP_INLINE void filterBackwards(const Vsp16s* target, const Vsp16s* impulse, int headroom, Vsp16s* d) {
    static_assert(Tracks <= kPlaces);
    Vsp32s sums[kL_subfr + kPlaces] = {};
    ownCrossCorr_32s(target, impulse, kL_subfr, sums);
    // A track has an element of each vector that begins with a position of the first.
    Eight32s most = Eight32s::splat(0), least = most;
    for (int i = 0; i < kL_subfr; i += Tracks) {
        most = max(most, Eight32s::load(sums + i));
        least = min(least, Eight32s::load(sums + i));
    }
    Vsp32s mostOf[kPlaces], leastOf[kPlaces];
    most.store(mostOf);
    least.store(leastOf);
    Vsp32s total = 5;
    for (int t = 0; t < Tracks; t++) {
        const Vsp32s magnitude = Abs_32s(leastOf[t]);
        total = Add_32s(total, (mostOf[t] > magnitude ? mostOf[t] : magnitude) >> 1);
    }
    // No sum is larger than twice the total, which has more leading bits than it is shifted by.
    const int shift = norm_32s_Pos(total) - headroom;
    for (int i = 0; i < kL_subfr; i += kPlaces) {
        const Eight32s x = Eight32s::load(sums + i), scaled = shift < 0 ? shr(x, -shift) : shl(x, shift);
        narrowSat(shr(add(shr(scaled, 15), Eight32s::splat(1)), 1)).store(d + i);
    }
}

// The samples by tracks.
VSP_INLINE void byTracks(const Vsp16s* x, Vsp16s (&tracks)[kTracks][kPlaces]) {
    for (int t = 0; t < kTracks; t++)
        for (int i = 0; i < kPlaces; i++) tracks[t][i] = x[positionOf(t, i)];
}

// The autocorrelations of an impulse response h that fall to pairs of positions: of p <= q the high half of
// start + the sum of 2 * h[k] * h[k + q - p] + rounding, k = 0 .. 39 - q ascending, products and partial sums saturated.
class TrackCorrelations {
  public:
    // Of the pairs of tracks whose difference modulo 5 has its bit in Differences. The diagonal has a start of its own.
    template <unsigned Differences>
    [[gnu::always_inline]] void form(const Vsp16s* h, Vsp32s start, Vsp32s diagonalStart, Vsp32s rounding = 0) {
        // No partial sum is larger than the energy.
        if (2 * energy(h, kL_subfr) + start + diagonalStart + rounding <= kMax32)
            formExact<Differences>(h, (start + rounding) >> 1, (diagonalStart + rounding) >> 1);
        else
            formSaturating(h, start, diagonalStart, rounding);
    }

    // With the eight places of a track: the energy of the response from there on.
    [[gnu::always_inline]] const Vsp16s* diagonal(int track) const { return diagonal_[track]; }

    // correlations[i] = op(row, i) with row that of place i on track a with the places of track b.
    template <class Op>
    [[gnu::always_inline]] void pairs(int a, int b, Vsp16s (&correlations)[kPlaces][kPlaces], Op op) const {
        static constexpr Vsp16s kBefore[3 * kPlaces] = {-1, -1, -1, -1, -1, -1, -1, -1};
        S16_128 after[kPlaces];
        for (int i = 0; i < kPlaces; i++) after[i] = S16_128::load(row(b, a, i));
        transpose(after);
        for (int i = 0; i < kPlaces; i++) {
            const S16_128 before = S16_128::load(kBefore + kPlaces - i - (b < a));
            op(select(before, S16_128::load(row(a, b, i)), after[i]), i).store(correlations[i]);
        }
    }

  private:
    // Rows of a track with a track, the later position's place first. Only positions before it are there. The vectors that
    // are stored end with the last of them and begin in the row before, which is written afterwards, or before the first.
    struct Rows {
        Vsp16s cells[kPlaces + kPlaces * kPlaces];
    };

    [[gnu::always_inline]] Vsp16s* row(int later, int earlier, int place) {
        return rows_[later][earlier].cells + kPlaces + kPlaces * place;
    }
    [[gnu::always_inline]] const Vsp16s* row(int later, int earlier, int place) const {
        return rows_[later][earlier].cells + kPlaces + kPlaces * place;
    }

    // Sums of single products: half of what is meant, exact. Lane i of the sums of a difference r has the distance
    // r + 5 * (7 - i).
    template <unsigned Differences>
    [[gnu::always_inline]] void formExact(const Vsp16s* h, Vsp32s start, Vsp32s diagonalStart) {
        alignas(64) Vsp32s mirrored[kTracks][2 * kPlaces];
        for (int t = 0; t < kTracks; t++)
            for (int i = 0; i < kPlaces; i++) {
                mirrored[t][i] = 0;
                mirrored[t][kPlaces + i] = h[positionOf(t, kPlaces - 1 - i)];
            }
        Eight32s sums[kTracks];
        for (Eight32s& sum : sums) sum = Eight32s::splat(start);
        Vsp32s diagonalSum = diagonalStart;
        for (int i = 0; i < kPlaces; i++) {
            const int place = kPlaces - 1 - i;
#pragma GCC unroll 5
            for (int u = 0; u < kTracks; u++) {
                const Vsp16s sample = h[positionOf(u, i)];
                const int track = kTracks - 1 - u;
                diagonalSum += sample * sample;
                diagonal_[track][place] = Vsp16s(diagonalSum >> 15);
#pragma GCC unroll 5
                for (int r = 0; r < kTracks; r++) {
                    if ((Differences >> r & 1) == 0) continue;
                    const int wrapped = u + r >= kTracks;
                    const int t = u + r - kTracks * wrapped;
                    sums[r] = add(sums[r], mulLower(Eight32s::load(mirrored[t] + kPlaces - i - wrapped), sample));
                    narrowSat(shr(sums[r], 15)).store(row(track, kTracks - 1 - t, place) + place - wrapped - (kPlaces - 1));
                }
            }
        }
    }

    [[gnu::noinline]] void formSaturating(const Vsp16s* h, Vsp32s start, Vsp32s diagonalStart, Vsp32s rounding) {
        for (int distance = 0; distance < kL_subfr; distance++) {
            Vsp32s sum = distance == 0 ? diagonalStart : start;
            for (int k = 0; k + distance < kL_subfr; k++) {
                sum = mac_32s(sum, h[k], h[k + distance]);
                const int q = kL_subfr - 1 - k, p = q - distance;
                const Vsp16s rounded = Vsp16s(Add_32s(sum, rounding) >> 16);
                row(q % kTracks, p % kTracks, q / kTracks)[p / kTracks] = rounded;
                if (distance == 0) diagonal_[q % kTracks][q / kTracks] = rounded;
            }
        }
    }

    Rows rows_[kTracks][kTracks];
    Vsp16s diagonal_[kTracks][kPlaces];
};

// The best candidate so far: the larger square / energy wins, compared as products, of equal ones the first.
struct Best {
    Vsp16s square, energy;
};

// Bit i tells whether candidate i is better. Squares and -best.square - 1 are not negative.
VSP_INLINE Vsp32u betterThan(Best best, S16_128 square, S16_128 energy) {
    const S16_128 factors{S32_128::splat(Vsp32s(Vsp16u(best.energy) | Vsp32u(-best.square) << 16)).v};
    const S16_128 differences =
        packSat(dot2(S16_128{zipLo(square, energy).v}, factors), dot2(S16_128{zipHi(square, energy).v}, factors));
    return Vsp32u(
        _mm_movemask_epi8(_mm_packs_epi16(_mm_cmpgt_epi16(differences.v, _mm_setzero_si128()), _mm_setzero_si128())));
}

// Compares eight candidates in their order with the best. take is called with the place of each that is better.
template <class Take>
VSP_INLINE void compare(Best& best, S16_128 square, S16_128 energy, Take take) {
    Vsp32u better = betterThan(best, square, energy);
    if (better == 0) return;
    Vsp16s squares[kPlaces], energies[kPlaces];
    square.store(squares);
    energy.store(energies);
    do {
        const int place = __builtin_ctz(better);
        best = {squares[place], energies[place]};
        take(place);
        better = betterThan(best, square, energy) & ~1u << place;
    } while (better != 0);
}

// Eight candidates for each of some outer places.
struct Candidates {
    S16_128 squares, energies;
};

// The best of candidates(0), candidates(1), ... in their order, from a square of -1 over an energy of 1 on. take is called
// with its outer place and its own, perhaps after others. Where all energies are positive, the quotients are in order: then
// every lane finds its best, and of these the best, the first of equal ones, is the one.
template <class Generate, class Take>
VSP_INLINE Best bestOf(int outerPlaces, Generate candidates, Take take) {
    const S16_128 zero = S16_128::splat(0);
    Candidates best = candidates(0);
    S16_128 minusSquares = sub(zero, best.squares), places = zero, smallest = best.energies;
    for (int i = 1; i < outerPlaces; i++) {
        const Candidates c = candidates(i);
        const auto difference = [&](auto zip) {
            return dot2(S16_128{zip(c.squares, c.energies).v}, S16_128{zip(best.energies, minusSquares).v});
        };
        const S16_128 better{_mm_cmpgt_epi16(packSat(difference([](S16_128 a, S16_128 b) { return zipLo(a, b); }),
                                                     difference([](S16_128 a, S16_128 b) { return zipHi(a, b); }))
                                                 .v,
                                             zero.v)};
        minusSquares = select(better, sub(zero, c.squares), minusSquares);
        best.energies = select(better, c.energies, best.energies);
        places = select(better, S16_128::splat(Vsp16s(i)), places);
        smallest = min(smallest, c.energies);
    }
    if (_mm_movemask_epi8(_mm_cmpgt_epi16(smallest.v, zero.v)) == 0xFFFF) {
        // Of two lanes with equal quotients the one with the lower number 8 * outer place + place is the first.
        const S16_128 numbers = add(shl(places, 3), S16_128{_mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7)});
        const S16_128 squares = sub(zero, minusSquares);
        S32_128 pairs = zipLo(squares, best.energies), crossed = zipLo(best.energies, minusSquares),
                number = zipLo(numbers, zero);
        const auto meet = [&](S32_128 otherPairs, S32_128 otherCrossed, S32_128 otherNumber) {
            const __m128i difference = dot2(S16_128{otherPairs.v}, S16_128{crossed.v}).v;
            const __m128i equal = _mm_cmpeq_epi32(difference, zero.v), before = _mm_cmplt_epi32(otherNumber.v, number.v);
            const __m128i better = _mm_or_si128(_mm_cmpgt_epi32(difference, zero.v), _mm_and_si128(equal, before));
            pairs.v = _mm_blendv_epi8(pairs.v, otherPairs.v, better);
            crossed.v = _mm_blendv_epi8(crossed.v, otherCrossed.v, better);
            number.v = _mm_blendv_epi8(number.v, otherNumber.v, better);
        };
        const auto upper = [](S32_128 a) { return S32_128{_mm_unpackhi_epi64(a.v, a.v)}; };
        meet(zipHi(squares, best.energies), zipHi(best.energies, minusSquares), zipHi(numbers, zero));
        meet(upper(pairs), upper(crossed), upper(number));
        meet(splatElement<1>(pairs), splatElement<1>(crossed), splatElement<1>(number));
        const int pair = _mm_cvtsi128_si32(pairs.v), found = _mm_cvtsi128_si32(number.v);
        take(found / kPlaces, found % kPlaces);
        return {Vsp16s(pair), Vsp16s(pair >> 16)};
    }
    Best found{-1, 1};
    for (int i = 0; i < outerPlaces; i++) {
        const Candidates c = candidates(i);
        compare(found, c.squares, c.energies, [&](int place) { take(i, place); });
    }
    return found;
}

VSP_INLINE bool isBetter(Best best, Best candidate) {
    return best.energy * candidate.square > best.square * candidate.energy;
}

// An impulse response that is added to y with a pulse at any position.
class ShiftedResponse {
  public:
    [[gnu::always_inline]] explicit ShiftedResponse(const Vsp16s* h) {
        for (int i = 0; i < kL_subfr; i++) {
            padded_[i] = 0;
            padded_[kL_subfr + i] = h[i];
        }
        for (int i = 0; i < kPlaces; i++) padded_[2 * kL_subfr + i] = 0;
    }
    [[gnu::always_inline]] const Vsp16s* at(int position) const { return padded_ + kL_subfr - position; }

    [[gnu::always_inline]] void addTo(Vsp16s* y, int position, bool positive) const {
        const Vsp16s* const h = at(position);
        for (int i = 0; i < kL_subfr; i += S16_128::width) {
            const S16_128 a = S16_128::load(y + i), b = S16_128::load(h + i);
            (positive ? addSat(a, b) : subSat(a, b)).store(y + i);
        }
    }

  private:
    Vsp16s padded_[2 * kL_subfr + kPlaces];  // there to be read by the last of wide vectors
};

}  // namespace vsp::VSP_LEVEL
