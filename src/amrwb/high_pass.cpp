// High-pass filters with a feedback in double precision: of the input, of the synthesis at 50 and 400 Hz, and of the
// weighted speech (3GPP TS 26.190 5.1, 5.4 and 6.1; `HP50_12k8`, `HP400_12k8`, `Hp_wsp`).
#include "amrwb/exports.h"
#include "arithmetic/standard_ops.h"
#include "core/checks.h"
#include "vector/correlate.h"
#include "vector/for_blocks.h"
#include "vector/magnitude.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kMaxOrder = 3, kBlock = 64;
constexpr Vsp16s kQ13 = 8192, kQ14 = 16384;

struct State {
    Vsp16s a[kMaxOrder + 1], b[kMaxOrder + 1];  // a[0]: the Q format; zeros behind a filter of order 2
    Vsp32s y[kMaxOrder];                        // earlier outputs in double precision, the newest first; bit 0 is 0
    Vsp16s x[kMaxOrder];                        // earlier inputs
    Vsp16s order;
    Vsp32s unused;
};
static_assert(sizeof(State) == 40);

template <int kOrder>
struct Filter {
    const State& state;
    Vsp16s a[kOrder], reversedB[kOrder + 1];
    int shift;  // to the left, of the sum
    Vsp64s halves[kOrder];

    [[gnu::always_inline]] explicit Filter(const State& s) : state(s), shift(s.a[0] == kQ13 ? 2 : 1) {
        for (int k = 0; k < kOrder; k++) {
            a[k] = s.a[k + 1];
            halves[k] = s.y[k] >> 1;
        }
        for (int k = 0; k <= kOrder; k++) reversedB[kOrder - k] = s.b[k];
    }

    // Whether the low words, which are not negative, cannot make their sum saturate.
    bool lowSumsFit() const {
        int positive = 0, negative = 0;
        for (const Vsp16s factor : a) (factor > 0 ? positive : negative) += factor;
        return positive <= kMax16 && negative >= -kMax16;
    }

    // The new sum; every step saturates.
    [[gnu::noinline]] Vsp32s sumSaturating(const Vsp16s* x) const {
        Vsp32s sum = 0x4000;
        for (int k = 0; k < kOrder; k++) sum = mac_32s(sum, Vsp16s(halves[k] & 0x7FFF), a[k]);
        sum >>= 15;
        for (int k = 0; k < kOrder; k++) sum = mac_32s(sum, Vsp16s(halves[k] >> 15), a[k]);
        for (int k = 0; k <= kOrder; k++) sum = mac_32s(sum, x[-k], reversedB[kOrder - k]);
        return sum;
    }

    [[gnu::always_inline]] void push(Vsp64s half) {
        for (int k = kOrder - 1; k > 0; k--) halves[k] = halves[k - 1];
        halves[0] = half;
    }

    // Whether no step before the last shift saturates where that does not. A sum of outputs is below what its own factors
    // allow, or below the whole sum and the rest of it.
    bool onlyResultsSaturate(Vsp64s fromInputs) const {
        constexpr Vsp64s kRange = 1LL << 31, kLow = 1 << 18;
        const Vsp64s whole = (kRange >> shift) + fromInputs;
        Vsp64s before = 0, after = 0;
        for (const Vsp16s factor : a) after += 65536LL * (factor < 0 ? -factor : factor);
        bool fits = lowSumsFit() && whole < kRange - kLow;
        for (const Vsp16s factor : a) {
            const Vsp64s part = 65536LL * (factor < 0 ? -factor : factor);
            before += part;
            after -= part;
            fits &= part < kRange && (before < whole + after ? before : whole + after) < kRange - kLow;
        }
        return fits;
    }

    // What the next output waits for is a product with the one before, an addition and a shift. Returns whether no result
    // was out of range; otherwise the outputs are not right.
    [[gnu::always_inline]] bool runUnsaturated(const Vsp32s* fed, Vsp32s* results, int len) {
        const Vsp64s newest = a[0] * (1LL << shift), limit = 1LL << (31 - shift);
        Vsp64s fromNewest = 2 * (halves[0] * a[0]);
        Vsp64u outside = 0;
        for (int n = 0; n < len; n++) {
            Vsp64s rest = 0x4000 + Vsp64s(fed[n]) * 65536;
            for (int k = 1; k < kOrder; k++) rest += 2 * (halves[k] * a[k]);
            const Vsp64s result = (fromNewest + rest) >> 15;
            fromNewest = result * newest;
            outside |= Vsp64u(result + limit);
            if (outside >= 2 * Vsp64u(limit)) [[unlikely]]
                return false;
            results[n] = Vsp32s(result);
            push(result * (1 << (shift - 1)));
        }
        return true;
    }

    // x: samples of a block, earlier ones before them.
    [[gnu::always_inline]] void run(const Vsp16s* x, Vsp16s* dst, int len) {
        Vsp32s fed[kBlock], results[kBlock];
        correlate(reversedB, kOrder + 1, x - kOrder, fed, len);
        Vsp64s magnitude = 0;
        for (const Vsp16s factor : reversedB) magnitude += factor < 0 ? -factor : factor;
        if (onlyResultsSaturate(2 * magnitude * maxMagnitude(x - kOrder, kOrder + len))) {
            Filter before = *this;
            if (runUnsaturated(fed, results, len)) {
                const int down = 17 - 2 * shift;
                const Vsp32s rounding = 1 << (down - 1);
                for (int n = 0; n < len; n++) dst[n] = sat_16s((results[n] + rounding) >> down);
                return;
            }
            for (int k = 0; k < kOrder; k++) halves[k] = before.halves[k];
        }
        runCarefully(x, dst, len);
    }

    [[gnu::noinline]] void runCarefully(const Vsp16s* x, Vsp16s* dst, int len) {
        Vsp32s fed[kBlock];
        correlate(reversedB, kOrder + 1, x - kOrder, fed, len);
        int magnitude = 0;
        for (const Vsp16s factor : reversedB) magnitude += factor < 0 ? -factor : factor;
        // Sums of inputs and sums of outputs, each below a half of the range less what their low words are rounded, are
        // below it together.
        constexpr Vsp64s kHalfRange = 1 << 30, kLow = 1 << 18;
        const bool ordinary =
            lowSumsFit() && 2 * Vsp64s(magnitude) * maxMagnitude(x - kOrder, kOrder + len) < kHalfRange - kLow;
        const auto biased = [](Vsp64s total) { return Vsp64u(total + (kHalfRange << 15)); };
        for (int n = 0; n < len; n++) {
            Vsp64s rest = 0x4000 + Vsp64s(fed[n]) * 65536, total = 2 * (halves[0] * a[0]);
            const Vsp64s newest = total;
            Vsp64u outside = biased(total);
            for (int k = 1; k < kOrder; k++) {
                const Vsp64s product = 2 * (halves[k] * a[k]);
                rest += product;
                total += product;
                outside |= biased(total);
            }
            Vsp64s y = ((newest + rest) >> 15) * (1 << shift);
            if (!ordinary || outside >> 46 != 0 || y != Vsp32s(y)) [[unlikely]]
                y = shl_32s(sumSaturating(x + n), shift);
            dst[n] = sat_16s(Vsp32s((y * (1 << (shift - 1)) + 0x8000) >> 16));
            push(y >> 1);
        }
    }
};

template <int kOrder>
VSP_INLINE void filter(Vsp16s* srcDst, Vsp32s len, State& state) {
    Filter<kOrder> filter(state);
    Vsp16s buffer[kOrder + kBlock];
    Vsp16s* const x = buffer + kOrder;
    for (int k = 0; k < kOrder; k++) x[-1 - k] = state.x[k];
    forBlocks(len, kBlock, [&](Vsp32s first, Vsp32s count) {
        for (int i = 0; i < count; i++) x[i] = srcDst[first + i];
        filter.run(x, srcDst + first, count);
        for (int i = 0; i < kOrder; i++) buffer[i] = x[count - kOrder + i];
    });
    for (int k = 0; k < kOrder; k++) {
        state.x[k] = x[-1 - k];
        state.y[k] = Vsp32s(2 * filter.halves[k]);
    }
}

}  // namespace

VspStatus vspsHighPassFilterGetSize_AMRWB_16s(Vsp32s mode, Vsp32s* pSize) {
    if (anyNull(pSize)) return vspStsNullPtrErr;
    if (mode != 2 && mode != 3) return vspStsRangeErr;
    *pSize = sizeof(State);
    return vspStsNoErr;
}

VspStatus vspsHighPassFilterInit_AMRWB_16s(const Vsp16s* pA, const Vsp16s* pB, Vsp32s mode, void* pState) {
    if (anyNull(pA, pB, pState)) return vspStsNullPtrErr;
    if (mode != 2 && mode != 3) return vspStsRangeErr;
    if (pA[0] != kQ13 && pA[0] != kQ14) return vspStsRangeErr;
    State state = {};
    for (int k = 0; k <= mode; k++) {
        state.a[k] = pA[k];
        state.b[k] = pB[k];
    }
    state.order = Vsp16s(mode);
    *static_cast<State*>(pState) = state;
    return vspStsNoErr;
}

VspStatus vspsHighPassFilter_AMRWB_16s_I(Vsp16s* pSrcDst, Vsp32s len, void* pState) {
    if (anyNull(pSrcDst, pState)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    State& state = *static_cast<State*>(pState);
    if (state.order == 3)
        filter<3>(pSrcDst, len, state);
    else
        filter<2>(pSrcDst, len, state);
    return vspStsNoErr;
}

VspStatus vspsHighPassFilterScale_AMRWB_16s(Vsp32s shift, void* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    if (shift < -31 || shift > 31) return vspStsRangeErr;
    State& state = *static_cast<State*>(pState);
    for (Vsp32s& y : state.y) y = shl_32s(y & ~1, shift) & ~1;
    for (Vsp16s& x : state.x) x = round_32s(shl_32s(x * 65536, shift));
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
