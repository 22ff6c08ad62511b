// The line spectral pairs of an LP filter: the roots of its sum and difference polynomials, found on a grid (Az_lsp).
#pragma once

#include "common/chebyshev.h"

namespace vsp::VSP_LEVEL {

// Points from the largest cosine down; padded to kMaxLspGrid.
struct LspGrid {
    const Vsp16s* points;
    int count;
    int bisections;  // of the interval in which a root lies
};

template <int kHalf>
struct LspRootSearch {
    const LspPolynomial<kHalf> (&polynomials)[2];
    const ChebyshevForm& form;
    const LspGrid& grid;
    Vsp16s values[2][kMaxLspGrid];  // at the points of the grid
    Vsp64u signChanges[2];          // bit j: between the points j - 1 and j

    struct Point {
        Vsp16s x, y;
    };

    [[gnu::always_inline]] Point at(int polynomial, Vsp16s x) const {
        return {x, chebyshev(polynomials[polynomial], form, x)};
    }

    static constexpr bool changesSign(Vsp16s a, Vsp16s b) { return a * b <= 0; }

    [[gnu::always_inline]] void evaluateGrid() {
        for (int p = 0; p < 2; p++) {
            chebyshevOnGrid(polynomials[p], form, grid.points, values[p]);
            signChanges[p] = 0;
            for (int j = 1; j < kMaxLspGrid; j++)
                signChanges[p] |= Vsp64u(changesSign(values[p][j - 1], values[p][j])) << j;
            signChanges[p] &= (1ULL << grid.count) - 1;
        }
    }

    [[gnu::always_inline]] Vsp16s rootBetween(int polynomial, Point low, Point high) const {
        for (int i = 0; i < grid.bisections; i++) {
            const Point middle = at(polynomial, Vsp16s((low.x >> 1) + (high.x >> 1)));
            (changesSign(low.y, middle.y) ? high : low) = middle;
        }
        const Vsp16s x = sat_16s(high.x - low.x), y = sat_16s(high.y - low.y);
        if (y == 0) return low.x;
        const Vsp16s magnitude = Vsp16s(y == kMin16 ? kMax16 : y < 0 ? -y : y);
        const int e = norm_16s(magnitude);
        const Vsp16s inverse = Div_16s(16383, Vsp16s(magnitude << e));
        const Vsp16s rise = Vsp16s(Mul2_32s(x * inverse) >> (20 - e));
        const Vsp16s slope = y < 0 ? sat_16s(-rise) : rise;
        return sat_16s(low.x - Vsp16s(Mul2_32s(low.y * slope) >> 11));
    }

    // Writes up to `wanted` roots, of the two polynomials in turn. Returns their number.
    [[gnu::always_inline]] int run(Vsp16s* roots, int wanted) {
        evaluateGrid();
        int found = 0, polynomial = 0, j = 0;
        Point reached = {grid.points[0], values[0][0]};
        while (j + 1 < grid.count) {
            j++;
            if (!changesSign(values[polynomial][j], reached.y)) {
                const Vsp64u further = signChanges[polynomial] >> j >> 1;
                if (further == 0) break;
                j += 1 + __builtin_ctzll(further);
                reached = {grid.points[j - 1], values[polynomial][j - 1]};
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
