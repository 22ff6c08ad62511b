// The excitation filtered by an impulse response for one lag after the other, in the closed-loop pitch searches.
#pragma once

#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

// The filtered excitation moves through a row of cells: that of the first lag fills the last ones, as many as a subframe
// has samples, each further lag begins one cell earlier. A cell then only ever grows by what the new sample contributes to
// it, and no element moves. Cells behind the subframe are stale. Impulse response, target and a mask of a subframe lie
// between zeros, to be read at any offset from the cells.
template <int kCells>
struct Padded {
    alignas(64) Vsp16s cells[2 * kCells];

    [[gnu::always_inline]] Vsp16s* middle() { return cells + kCells; }
    [[gnu::always_inline]] const Vsp16s* from(int first) const { return cells + kCells - first; }
};

// What a lag gives: <x, f> modulo 2^32 and <f, f>.
struct Products {
    Vsp32s targetFiltered;
    Vsp64s filteredFiltered;
};

// cells[i] += contribution(h[i]), saturated, and the products of the new filtered excitation.
template <int kCells, class Contribution>
VSP_INLINE Products addSample(Vsp16s* cells, const Vsp16s* h, const Vsp16s* x, const Vsp16s* mask,
                              Contribution contribution) {
    S32 xf = S32::splat(0);
    S64 ff = S64::splat(0);
    for (int i = 0; i < kCells; i += S16::width) {
        const S16 f = addSat(S16::load(cells + i), contribution(S16::load(h + i)));
        f.store(cells + i);
        xf = add(xf, dot2(f, S16::load(x + i)));
        const S16 current{f.v & S16::load(mask + i).v};
        ff = add(ff, addHalves(S64{dot2(current, current).v}));  // unsigned: 2 * (-32768)^2 is 2^31
    }
    return {sum(xf), sum(ff)};
}

}  // namespace vsp::VSP_LEVEL
