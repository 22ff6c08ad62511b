// The line spectral pairs of an LP filter: the roots of its sum and difference polynomials, found on a grid (Az_lsp).
#pragma once

#include "common/chebyshev.h"
#include "vector/sixteen_16s.h"

namespace vsp::VSP_LEVEL {

// Points from the largest cosine down; padded to the room that the search has.
struct LspGrid {
    const Vsp16s* points;
    int count;
    int bisections;  // of the interval in which a root lies: 2 or 4
};

template <int kHalf, bool kImmittance = false, int kGrid = kMaxLspGrid>
struct LspRootSearch {
    const LspPolynomial<kHalf, kImmittance> (&polynomials)[2];
    const ChebyshevForm& form;
    const LspGrid& grid;
    static constexpr int kMaxLeaves = 16, kWords = kGrid / 64;

    const bool safe;                // no value saturates on the way
    Vsp16s values[2][kGrid + 8];    // at the points of the grid
    Vsp64u signChanges[2][kWords];  // bit j: between the points j - 1 and j

    [[gnu::always_inline]] LspRootSearch(const LspPolynomial<kHalf, kImmittance> (&both)[2], const ChebyshevForm& f,
                                         const LspGrid& g)
        : polynomials(both), form(f), grid(g), safe(neverSaturates(both[0], f) && neverSaturates(both[1], f)) {}

    struct Point {
        Vsp16s x, y;
    };

    [[gnu::always_inline]] Point at(int polynomial, Vsp16s x) const {
        return {x, chebyshev(polynomials[polynomial], form, x)};
    }

    static constexpr bool changesSign(Vsp16s a, Vsp16s b) { return a * b <= 0; }

    [[gnu::always_inline]] void evaluateGrid() {
        for (int p = 0; p < 2; p++) {
            if (safe)
                chebyshevOnGrid<kGrid, true>(polynomials[p], form, grid.points, values[p]);
            else
                chebyshevOnGrid<kGrid, false>(polynomials[p], form, grid.points, values[p]);
            S16_128::splat(0).store(values[p] + kGrid);
            Vsp64u carried = 0;
            for (int w = 0; w < kWords; w++) {
                const Vsp16s* const word = values[p] + 64 * w;
                Vsp64u same = 0;  // bit j: at the points j and j + 1 of the word
                for (int j = 0; j < 64; j += 8)
                    same |= Vsp64u(sameSign(S16_128::load(word + j), S16_128::load(word + j + 1))) << j;
                const int points = grid.count - 64 * w;
                signChanges[p][w] = (~same << 1 | carried) & (points < 64 ? (1ULL << points) - 1 : ~0ULL);
                carried = ~same >> 63;
            }
        }
    }

    // The first sign change at point j or behind it; kGrid if there is none.
    [[gnu::always_inline]] int nextChange(int polynomial, Vsp32u j) const {
        Vsp32u word = kWords == 1 ? 0 : j / 64;
        const Vsp64u changes = signChanges[polynomial][word] >> (j % 64);
        if (changes != 0) return int(j) + __builtin_ctzll(changes);
        while (++word < kWords)
            if (signChanges[polynomial][word] != 0) return int(64 * word) + __builtin_ctzll(signChanges[polynomial][word]);
        return kGrid;
    }

    // The interval of the last bisection. All points that the bisections may need are evaluated at once, and nothing
    // depends on a branch, so that roots overlap in the processor.
    template <int kBisections>
    [[gnu::always_inline]] void bisect(int polynomial, Point& low, Point& high) const {
        constexpr int kLeaves = 1 << kBisections;
        const auto halfway = [](S16_128 a, S16_128 b) { return add(shr(a, 1), shr(b, 1)); };
        struct Leaves {
            S16_128 from, to;
        };
        // Each leaf takes the half of the interval that a bit of its number tells.
        const auto leavesOf = [&](Vsp16s from, Vsp16s to) {
            Leaves leaves{S16_128::splat(from), S16_128::splat(to)};
            S16_128 middle;
            if (kBisections > 2) {
                middle = halfway(leaves.from, leaves.to);
                leaves = {blend<0xF0>(leaves.from, middle), blend<0xF0>(middle, leaves.to)};
            }
            middle = halfway(leaves.from, leaves.to);
            leaves = {blend<0xCC>(leaves.from, middle), blend<0xCC>(middle, leaves.to)};
            middle = halfway(leaves.from, leaves.to);
            return Leaves{blend<0xAA>(leaves.from, middle), blend<0xAA>(middle, leaves.to)};
        };
        Vsp16s x[kMaxLeaves], end[kMaxLeaves], y[kMaxLeaves + 1];  // the lower and upper ends of the leaves
        const auto store = [&](const Leaves& leaves, int i) {
            leaves.from.store(x + i);
            leaves.to.store(end + i);
        };
        Vsp32u same;  // bit k: at the lower end of leaf k as at that of the first
        bool uncertain;
        if constexpr (kBisections == 4) {
            const Vsp16s middle = Vsp16s((low.x >> 1) + (high.x >> 1));
            const Leaves lower = leavesOf(low.x, middle), upper = leavesOf(middle, high.x);
            store(lower, 0);
            store(upper, 8);
            uncertain = evaluate(polynomial, lower.from, upper.from, y);
            same = sameSign(S16_128::load(y), S16_128::splat(low.y)) | sameSign(S16_128::load(y + 8), S16_128::splat(low.y))
                                                                           << 8;
        } else {
            const Leaves leaves = leavesOf(low.x, high.x);
            store(leaves, 0);
            auto outside = Wide<S16_128>::splat(0);
            const S16_128 atLeaves = chebyshev(polynomials[polynomial], form, leaves.from, outside);
            atLeaves.store(y);
            same = sameSign(atLeaves, S16_128::splat(low.y));
            uncertain = anyNegative(outside);
        }
        if (uncertain) [[unlikely]]
            return bisectSlowly(polynomial, low, high);
        y[0] = low.y;
        y[kLeaves] = high.y;
        int leaf = 0;
        for (int bit = kLeaves / 2; bit > 0; bit /= 2) leaf += int(same >> (leaf + bit) & 1) * bit;
        low = {x[leaf], y[leaf]};
        high = {end[leaf], y[leaf + 1]};
    }

    // The values at sixteen places. Returns whether one may have saturated on the way.
    [[gnu::always_inline]] bool evaluate(int polynomial, S16_128 x0, S16_128 x8, Vsp16s* y) const {
        auto outside = Wide<Sliding16>::splat(0);
#if defined(__AVX2__)
        chebyshev(polynomials[polynomial], form, joined(x0, x8), outside).store(y);
#else
        chebyshev(polynomials[polynomial], form, x0, outside).store(y);
        chebyshev(polynomials[polynomial], form, x8, outside).store(y + 8);
#endif
        return anyNegative(outside);
    }

    [[gnu::noinline]] void bisectSlowly(int polynomial, Point& low, Point& high) const {
        for (int i = 0; i < grid.bisections; i++) {
            const Point middle = at(polynomial, Vsp16s((low.x >> 1) + (high.x >> 1)));
            (changesSign(low.y, middle.y) ? high : low) = middle;
        }
    }

    [[gnu::noinline]] Vsp16s rootBetween(int polynomial, Point low, Point high) const {
        if (grid.bisections == 4)
            bisect<4>(polynomial, low, high);
        else
            bisect<2>(polynomial, low, high);
        return interpolated(low, high);
    }

    // Where the line through two points has its zero.
    [[gnu::always_inline]] static Vsp16s interpolated(Point low, Point high) {
        const Vsp16s x = sat_16s(high.x - low.x), y = sat_16s(high.y - low.y);
        if (y == 0) return low.x;
        const Vsp16s magnitude = Vsp16s(y == kMin16 ? kMax16 : y < 0 ? -y : y);
        const int e = norm_16s(magnitude);
        const Vsp16s inverse = Div_16s(16383, Vsp16s(magnitude << e));
        const Vsp16s rise = Vsp16s(Mul2_32s(x * inverse) >> (20 - e));
        const Vsp16s slope = y < 0 ? sat_16s(-rise) : rise;
        return sat_16s(low.x - Vsp16s(Mul2_32s(low.y * slope) >> 11));
    }

    // interpolated() of sixteen pairs of points, without a branch.
    [[gnu::always_inline]] static void interpolateSixteen(const Vsp16s* lowX, const Vsp16s* lowY, const Vsp16s* highX,
                                                          const Vsp16s* highY, Vsp16s* roots) {
        constexpr Vsp32s kDividend = 16383 << 15;
        const auto smaller = [](Vsp32s a, Vsp32s b) { return a < b ? a : b; };
        const auto clip = [&](Vsp32s a) { return -smaller(-smaller(a, kMax16), -kMin16); };
        for (int i = 0; i < 16; i++) {
            const Vsp32s x = clip(highX[i] - lowX[i]), y = clip(highY[i] - lowY[i]), sign = y >> 31;
            const Vsp32s positive = (y ^ sign) - sign, notZero = -positive >> 31;
            const Vsp32s magnitude = smaller(positive, kMax16) + 1 + notZero;
            const Vsp32s e = 141 - (__builtin_bit_cast(Vsp32s, Vsp32f(magnitude)) >> 23);  // norm_16s
            const Vsp32s divisor = magnitude << e;
            const Vsp32s quotient = Vsp32s(Vsp32f(kDividend) / Vsp32f(divisor));  // or one too much
            const Vsp32s inverse = quotient + ((kDividend - quotient * divisor) >> 31);
            const Vsp32s rise = Vsp16s((x * inverse) >> (19 - e)), slope = smaller((rise ^ sign) - sign, kMax16);
            const Vsp32s step = Vsp16s(smaller(lowY[i] * slope, (1 << 30) - 1) >> 10) & notZero;
            roots[i] = Vsp16s(clip(lowX[i] - step));
        }
    }

    // The values of both polynomials, or of `other` ones of them, at eight places of each. Returns whether one may have
    // saturated on the way.
    [[gnu::noinline]] bool evaluateBoth(bool other, const Vsp16s* x, Vsp16s* y) const {
        return safe ? evaluateBothAs<true>(other, x, y) : evaluateBothAs<false>(other, x, y);
    }

    template <bool kNever>
    [[gnu::always_inline]] bool evaluateBothAs(bool other, const Vsp16s* x, Vsp16s* y) const {
        const LspPolynomial<kHalf, kImmittance>&first = polynomials[other], &second = polynomials[!other];
#if defined(__AVX2__)
        using Addends = ChebyshevAddends<S32_256, kHalf, kImmittance>;
        Addends addends;
        for (int i = 0; i <= kHalf; i++)
            addends.of[i].v = _mm256_set_m128i(_mm_set1_epi32(Addends::addend(second, form, i)),
                                               _mm_set1_epi32(Addends::addend(first, form, i)));
        auto outside = S32_256::splat(0);
        chebyshev<kNever>(addends, form, S16_256::load(x), outside).store(y);
#else
        auto outside = S32_128::splat(0);
        chebyshev<kNever>(first, form, S16_128::load(x), outside).store(y);
        chebyshev<kNever>(second, form, S16_128::load(x + 8), outside).store(y + 8);
#endif
        return anyNegative(outside);
    }

    // The roots in intervals of the grid, up to eight of each polynomial, found together, and the values of the other
    // polynomial there.
    struct GridRoots {
        int interval[2][9];  // the points at their lower ends; kGrid behind the last one
        Vsp16s root[16], other[16];
    };

    [[gnu::always_inline]] void findGridRoots(GridRoots& found) const {
        Vsp16s lowX[16] = {}, lowY[16] = {}, highX[16] = {}, highY[16] = {}, y[16];
        for (int p = 0; p < 2; p++) {
            int n = 0, at = 8 * p;
            for (int j = nextChange(p, 1); j != kGrid && n < 8; j = nextChange(p, Vsp32u(j) + 1)) {
                found.interval[p][n++] = j;
                lowX[at] = grid.points[j];
                lowY[at] = values[p][j];
                highX[at] = grid.points[j - 1];
                highY[at++] = values[p][j - 1];
                if (j + 1 == kGrid) break;
            }
            for (; n < 9; n++) found.interval[p][n] = kGrid;
        }
        Sixteen16s low = Sixteen16s::load(lowX), yLow = Sixteen16s::load(lowY);
        Sixteen16s high = Sixteen16s::load(highX), yHigh = Sixteen16s::load(highY);
        bool uncertain = false;
        for (int i = 0; i < grid.bisections; i++) {
            const Sixteen16s middle = add(shr(low, 1), shr(high, 1)), zero = Sixteen16s::splat(0);
            middle.store(lowX);
            uncertain |= evaluateBoth(false, lowX, y);
            const Sixteen16s yMiddle = Sixteen16s::load(y), same = wherePositive(yLow, yMiddle, zero, zero);
            low = select(same, middle, low);
            yLow = select(same, yMiddle, yLow);
            high = select(same, high, middle);
            yHigh = select(same, yHigh, yMiddle);
        }
        low.store(lowX);
        yLow.store(lowY);
        high.store(highX);
        yHigh.store(highY);
        interpolateSixteen(lowX, lowY, highX, highY, found.root);
        uncertain |= evaluateBoth(true, found.root, found.other);
        if (uncertain) [[unlikely]]
            found.interval[0][0] = found.interval[1][0] = kGrid;
    }

    // Writes up to `wanted` roots, of the two polynomials in turn. Returns their number.
    [[gnu::always_inline]] int run(Vsp16s* roots, int wanted) {
        evaluateGrid();
        GridRoots ofGrid;
        findGridRoots(ofGrid);
        const int* next[2] = {ofGrid.interval[0], ofGrid.interval[1]};
        int found = 0, polynomial = 0, j = 0;
        Point reached = {grid.points[0], values[0][0]};
        while (j + 1 < grid.count) {
            j++;
            if (found == 0 || !changesSign(values[polynomial][j], reached.y)) {
                j = nextChange(polynomial, Vsp32u(j) + (found != 0));
                if (j == kGrid) break;
                reached = {grid.points[j - 1], values[polynomial][j - 1]};
                while (*next[polynomial] < j) next[polynomial]++;
                if (*next[polynomial] == j) {
                    const int i = 8 * polynomial + int(next[polynomial] - ofGrid.interval[polynomial]);
                    roots[found++] = ofGrid.root[i];
                    if (found == wanted) break;
                    reached = {ofGrid.root[i], ofGrid.other[i]};
                    polynomial = 1 - polynomial;
                    continue;
                }
            }
            const Vsp16s root = rootBetween(polynomial, {grid.points[j], values[polynomial][j]}, reached);
            roots[found++] = root;
            if (found == wanted) break;
            polynomial = 1 - polynomial;
            reached = at(polynomial, root);
        }
        return found;
    }
};

// The polynomials of a filter of order 2 * kHalf, divided by 1 + z^-1 and 1 - z^-1; `one` is their first coefficient and
// `shift` the right shift of the sums of two filter coefficients. Returns whether a coefficient saturated.
template <int kHalf>
VSP_INLINE bool lspPolynomials(const Vsp16s* lpc, Vsp16s one, int shift, LspPolynomial<kHalf> (&p)[2]) {
    bool saturated = false;
    const auto clip = [&saturated](int a) {
        saturated |= a != sat_16s(a);
        return sat_16s(a);
    };
    p[0].f[0] = p[1].f[0] = one;
    for (int i = 0; i < kHalf; i++) {
        const int a = lpc[i + 1], b = lpc[2 * kHalf - i];
        p[0].f[i + 1] = clip(((a + b) >> shift) - p[0].f[i]);
        p[1].f[i + 1] = clip(((a - b) >> shift) + p[1].f[i]);
    }
    return saturated;
}

}  // namespace vsp::VSP_LEVEL
