// Linear prediction in floating point (G.729 Annex C and C+). Every sum has one order, the same at all levels.
#include "core/checks.h"
#include "core/state_size.h"
#include "g729/exports.h"
#include "g729/lp_tables.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kOrder = 10, kHalf = kOrder / 2;

struct HighPassState {
    Vsp32f b0, b1, b2, a0, a1, a2, y1, y2, x1, x2;  // a0 is not used
};
static_assert(sizeof(HighPassState) == 40);

constexpr int kLags = 31;
struct HybridState {
    Vsp32f recursive[kLags];
};
static_assert(sizeof(HybridState) == 124);

VSP_INLINE Vsp32f chebyshev(const Vsp32f (&f)[kHalf + 1], Vsp32f x) {
    Vsp32f b2 = 1, b1 = 2 * x + f[1];
    for (int i = 2; i < kHalf; i++) {
        const Vsp32f b0 = 2 * x * b1 - b2 + f[i];
        b2 = b1;
        b1 = b0;
    }
    return x * b1 - b2 + 0.5f * f[kHalf];
}

// The roots of both polynomials in turn, from interval to interval; the one in which a root lay is searched once more, for
// the other polynomial.
void lpcToLsp(const Vsp32f* lpc, const Vsp32f* previous, const Vsp32f* grid, int intervals, int bisections, Vsp32f* dst) {
    Vsp32f f[2][kHalf + 1] = {{1}, {1}};
    for (int i = 1; i <= kHalf; i++) {
        f[0][i] = lpc[i] + lpc[kOrder + 1 - i] - f[0][i - 1];
        f[1][i] = lpc[i] - lpc[kOrder + 1 - i] + f[1][i - 1];
    }
    Vsp32f roots[kOrder];
    int found = 0;
    Vsp32f xLow = grid[0], yLow = chebyshev(f[0], xLow);
    for (int j = 1; j <= intervals && found < kOrder;) {
        const Vsp32f(&polynomial)[kHalf + 1] = f[found % 2];
        Vsp32f xHigh = xLow, yHigh = yLow;
        xLow = grid[j];
        yLow = chebyshev(polynomial, xLow);
        if (!(yLow * yHigh <= 0)) {
            j++;
            continue;
        }
        for (int i = 0; i < bisections; i++) {
            const Vsp32f x = 0.5f * (xLow + xHigh), y = chebyshev(polynomial, x);
            const bool lower = yLow * y <= 0;
            (lower ? xHigh : xLow) = x;
            (lower ? yHigh : yLow) = y;
        }
        xLow -= yLow * (xHigh - xLow) / (yHigh - yLow);
        roots[found++] = xLow;
        yLow = chebyshev(f[found % 2], xLow);
    }
    const Vsp32f* const lsp = found == kOrder ? roots : previous;
    for (int i = 0; i < kOrder; i++) dst[i] = lsp[i];
}

VSP_INLINE void lspProduct(const Vsp32f* lsp, Vsp32f* f) {
    f[0] = 1;
    f[1] = -2 * lsp[0];
    for (int i = 2; i <= kHalf; i++) {
        const Vsp32f b = -2 * lsp[2 * (i - 1)];
        f[i] = b * f[i - 1] + 2 * f[i - 2];
        for (int j = i - 1; j >= 2; j--) f[j] += b * f[j - 1] + f[j - 2];
        f[1] += b;
    }
}

// sums[k] += x[n] * x[n - k], n = first .. end-1. fromNewest has x from the newest sample back.
VSP_INLINE void addCorrelations(const Vsp32f* x, const Vsp32f* fromNewest, int first, int end, Vsp32f (&sums)[kLags + 1]) {
    for (int n = first; n < end; n++)
        for (int k = 0; k <= kLags; k++) sums[k] += x[n] * fromNewest[kHybridWindow - 1 - n + k];
}

}  // namespace

VspStatus vspsHighPassFilterSize_G729_32f(Vsp32s* pSize) { return fixedSize(pSize, sizeof(HighPassState)); }

VspStatus vspsHighPassFilterInit_G729_32f(const Vsp32f* pCoeff, void* pState) {
    if (anyNull(pCoeff, pState)) return vspStsNullPtrErr;
    *static_cast<HighPassState*>(pState) = {pCoeff[0], pCoeff[1], pCoeff[2], pCoeff[3], pCoeff[4], pCoeff[5], 0, 0, 0, 0};
    return vspStsNoErr;
}

VspStatus vspsHighPassFilter_G729_32f_I(Vsp32f* pSrcDst, Vsp32s len, void* pState) {
    if (anyNull(pSrcDst, pState)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    HighPassState& stored = *static_cast<HighPassState*>(pState);
    HighPassState s = stored;
    for (Vsp32s n = 0; n < len; n++) {
        const Vsp32f x = pSrcDst[n];
        const Vsp32f rest = s.a2 * s.y2 + (s.b0 * x + s.b1 * s.x1 + s.b2 * s.x2);
        const Vsp32f y = s.a1 * s.y1 + rest;
        pSrcDst[n] = y;
        s.y2 = s.y1;
        s.y1 = y;
        s.x2 = s.x1;
        s.x1 = x;
    }
    stored = s;
    return vspStsNoErr;
}

VspStatus vspsLevinsonDurbin_G729_32f(const Vsp32f* pAutoCorr, Vsp32f* pLPC, Vsp32f* pRC, Vsp32f* pErr) {
    if (anyNull(pAutoCorr, pLPC, pRC, pErr)) return vspStsNullPtrErr;
    Vsp32f a[kOrder + 1], rc[kOrder];
    a[0] = 1;
    a[1] = rc[0] = 0 - pAutoCorr[1] / pAutoCorr[0];
    Vsp32f err = pAutoCorr[0] + pAutoCorr[1] * rc[0];
    for (int i = 2; i <= kOrder; i++) {
        Vsp32f s = 0;
        for (int j = 0; j < i; j++) s += pAutoCorr[i - j] * a[j];
        const Vsp32f k = 0 - s / err;
        rc[i - 1] = k;
        for (int j = 1, m = i - 1; j <= m; j++, m--) {  // both of a pair from the values before
            const Vsp32f low = a[j] + k * a[m], high = a[m] + k * a[j];
            a[j] = low;
            a[m] = high;
        }
        a[i] = k;
        err += k * s;
        if (err <= 0) err = 0.001f;
    }
    for (int i = 0; i <= kOrder; i++) pLPC[i] = a[i];
    for (int i = 0; i < kOrder; i++) pRC[i] = rc[i];
    *pErr = err;
    return vspStsNoErr;
}

VspStatus vspsLPCToLSP_G729_32f(const Vsp32f* pLPC, const Vsp32f* pPrevLSP, Vsp32f* pLSP) {
    if (anyNull(pLPC, pPrevLSP, pLSP)) return vspStsNullPtrErr;
    lpcToLsp(pLPC, pPrevLSP, grid_32f, 60, 4, pLSP);
    return vspStsNoErr;
}

VspStatus vspsLPCToLSP_G729A_32f(const Vsp32f* pLPC, const Vsp32f* pPrevLSP, Vsp32f* pLSP) {
    if (anyNull(pLPC, pPrevLSP, pLSP)) return vspStsNullPtrErr;
    lpcToLsp(pLPC, pPrevLSP, gridAnnexA_32f, 50, 2, pLSP);
    return vspStsNoErr;
}

VspStatus vspsLSPToLPC_G729_32f(const Vsp32f* pLSP, Vsp32f* pLPC) {
    if (anyNull(pLSP, pLPC)) return vspStsNullPtrErr;
    Vsp32f f1[kHalf + 1], f2[kHalf + 1];
    lspProduct(pLSP, f1);
    lspProduct(pLSP + 1, f2);
    pLPC[0] = 1;
    for (int i = kHalf; i > 0; i--) {
        const Vsp32f sum = f1[i] + f1[i - 1], difference = f2[i] - f2[i - 1];
        pLPC[i] = 0.5f * (sum + difference);
        pLPC[kOrder + 1 - i] = 0.5f * (sum - difference);
    }
    return vspStsNoErr;
}

VspStatus vspsWinHybridGetStateSize_G729E_32f(Vsp32s* pSize) { return fixedSize(pSize, sizeof(HybridState)); }

VspStatus vspsWinHybridInit_G729E_32f(void* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    *static_cast<HybridState*>(pState) = {};
    return vspStsNoErr;
}

VspStatus vspsWinHybrid_G729E_32f(const Vsp32f* pSrc, Vsp32f* pAutoCorr, void* pState) {
    constexpr int kRecursive = 110;        // samples before the newest ones
    constexpr Vsp32f kFade = 0.31640625f;  // of the recursive part per frame: the fourth power of 0.75
    if (anyNull(pSrc, pAutoCorr, pState)) return vspStsNullPtrErr;
    HybridState& state = *static_cast<HybridState*>(pState);
    Vsp32f windowed[kHybridWindow], fromNewest[kHybridWindow + 1] = {};
    for (int n = 0; n < kHybridWindow; n++) windowed[n] = fromNewest[kHybridWindow - 1 - n] = pSrc[n] * hw_32f[n];
    Vsp32f sums[kLags + 1] = {}, newest[kLags + 1] = {};
    addCorrelations(windowed, fromNewest, kLags - 1, kRecursive, sums);
    addCorrelations(windowed, fromNewest, kRecursive, kHybridWindow, newest);
    for (int k = 0; k < kLags; k++) {
        state.recursive[k] = kFade * state.recursive[k] + sums[k];
        pAutoCorr[k] = state.recursive[k] + newest[k];
    }
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
