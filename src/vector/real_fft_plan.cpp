#include "vector/real_fft_plan.h"

#include <cmath>

namespace vsp {

// sin(2 pi k / n) for n a multiple of 8 and 0 <= k < 2n, exact where it can be, from the first eighth of a turn.
[[gnu::noinline]] static double sine(int k, int n) {
    constexpr double kTwoPi = 6.28318530717958647693;
    const int eighth = n / 8, part = k / eighth % 8, rest = k % eighth;
    const int angle = part % 2 == 0 ? rest : eighth - rest;
    const bool fromSine = part % 4 == 0 || part % 4 == 3;
    const double x = kTwoPi * angle / n, value = fromSine ? std::sin(x) : std::cos(x);
    return part < 4 ? value : -value;
}

static double cosine(int k, int n) { return sine(k + n / 4, n); }

template <class T>
static void tables(int order, T* to) {
    const int points = 1 << order, turn = points < 8 ? 8 : points, step = turn / points;
    const int bins = points / 4, binsGroup = smallerOf(kFftGroup, bins);
    for (int k = 0; k < bins; k++) {
        T* w = to + 2 * (k - k % binsGroup) + k % binsGroup;
        w[0] = T(-0.5 * sine(k * step, turn));
        w[binsGroup] = T(-0.5 * cosine(k * step, turn));
    }
    to += points / 2;

    const FftPlan& plan = kFftPlans[order - 1];
    int n = points / 2;
    for (int i = 0; i + 1 < plan.passes; i++) {
        const int radix = plan.radix[i], columns = n / radix, group = smallerOf(kFftGroup, columns);
        for (int c = 0; c < columns; c++) {
            T* w = to + 2 * (radix - 1) * (c - c % group) + c % group;
            for (int q = 1; q < radix; q++, w += 2 * group) {
                w[0] = T(cosine(c * q, n));
                w[group] = T(-sine(c * q, n));
            }
        }
        to += fftPassTableLen(n, radix);
        n = columns;
    }
}

void ownFftTables(int order, Vsp32f* to) { tables(order, to); }
void ownFftTables(int order, Vsp64f* to) { tables(order, to); }

void ownFftBlocks(int order, Vsp32s* blocks) {
    const FftPlan& plan = kFftPlans[order - 1];
    const int last = plan.radix[plan.passes - 1], count = (1 << (order - 1)) / last;
    for (int i = 0; i < count; i += 8) {
        int rest = i, n = 1 << (order - 1), at = 0;
        for (int pass = 0; pass + 1 < plan.passes; pass++) {
            n /= plan.radix[pass];
            at += rest % plan.radix[pass] * n;
            rest /= plan.radix[pass];
        }
        blocks[i / 8] = at;
    }
}

}  // namespace vsp
