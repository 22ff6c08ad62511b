// Immittance spectral pairs and frequencies (3GPP TS 26.190 5.2.3, 5.2.4 and 5.2.6; `Az_isp`, `Isp_Az`, `Isp_isf`,
// `Isf_isp`, `Int_isp`).
#include "amrwb/exports.h"
#include "amrwb/lp_tables.h"
#include "arithmetic/standard_ops.h"
#include "common/lsp_roots.h"
#include "common/lsp_to_lpc.h"
#include "core/checks.h"
#include "vector/eight_32s.h"

namespace vsp::VSP_LEVEL {

static constexpr int kOrder = 16, kHalf = kOrder / 2, kHighOrder = 20;

static bool isOrder(Vsp32s order) { return order == kOrder || order == kHighOrder; }

VspStatus vspsLPCToISP_AMRWB_16s(const Vsp16s* pLPC, const Vsp16s* pPrevISP, Vsp16s* pISP) {
    if (anyNull(pLPC, pPrevISP, pISP)) return vspStsNullPtrErr;
    constexpr ChebyshevForm form{0, 0, 4096, 2048, 10};
    constexpr LspGrid grid{ispGrid, kIspGridPoints, 2};
    // Sums and differences, the latter divided by 1 - z^-2: of one order less, it begins with a coefficient 0.
    LspPolynomial<kHalf, true> polynomials[2];
    Vsp16s *const sums = polynomials[0].f, *const differences = polynomials[1].f + 1;
    polynomials[1].f[0] = 0;
    for (int i = 0; i < kHalf; i++) {
        const int a = pLPC[i], b = pLPC[kOrder - i];
        sums[i] = sat_16s((a + b + 1) >> 1);
        differences[i] = sat_16s((a - b + 1) >> 1);
        if (i >= 2) differences[i] = Add_16s(differences[i], differences[i - 2]);
    }
    sums[kHalf] = pLPC[kHalf];
    LspRootSearch<kHalf, true, kIspGridRoom> search{polynomials, form, grid};
    Vsp16s isp[kOrder];
    if (search.run(isp, kOrder - 1) == kOrder - 1)
        isp[kOrder - 1] = ShiftL_16s(pLPC[kOrder], 3);
    else
        for (int i = 0; i < kOrder; i++) isp[i] = pPrevISP[i];
    for (int i = 0; i < kOrder; i++) pISP[i] = isp[i];
    return vspStsNoErr;
}

// Polynomials of the even and the odd pairs, Q23.
template <int kFilterOrder>
static void ispProducts(const Vsp16s* isp, Vsp32s* even, Vsp32s* odd) {
    constexpr int kFilterHalf = kFilterOrder / 2, kFormat = kFilterOrder == kHighOrder ? 21 : 23;
    lspProduct<kFilterHalf, kFormat, true>(isp, even);
    lspProduct<kFilterHalf - 1, kFormat, true>(isp + 1, odd);
    if (kFilterOrder == kHighOrder) {
        for (int i = 0; i <= kFilterHalf; i++) even[i] = Mul4_32s(even[i]);
        for (int i = 0; i < kFilterHalf; i++) odd[i] = Mul4_32s(odd[i]);
    }
}

static void ispToLpc(const Vsp16s* isp, int order, bool adaptive, Vsp16s* lpc) {
    constexpr int kMaxHalf = kHighOrder / 2;
    const int half = order / 2;
    const Vsp16s last = isp[order - 1];
    Vsp32s even[kMaxHalf + 1], odd[kMaxHalf + 1];
    if (order == kOrder)
        ispProducts<kOrder>(isp, even, odd);
    else
        ispProducts<kHighOrder>(isp, even, odd);
    for (int i = half - 1; i >= 2; i--) odd[i] = Sub_32s(odd[i], odd[i - 2]);
    for (int i = 0; i < half; i++) {
        even[i] = Add_32s(even[i], mulSplit_32s16s(even[i], last));
        odd[i] = Sub_32s(odd[i], mulSplit_32s16s(odd[i], last));
    }
    int excess = 0;  // bits that the coefficients have more than Q12 can take
    if (adaptive) {
        Vsp32s bits = 1;
        for (int i = 1; i < half; i++) bits |= Abs_32s(Add_32s(even[i], odd[i])) | Abs_32s(Sub_32s(even[i], odd[i]));
        excess = 4 - norm_32s_Pos(bits);
        if (excess < 0) excess = 0;
    }
    const auto rounded = [shift = 12 + excess](Vsp32s a) { return Vsp16s((a >> shift) + ((a >> (shift - 1)) & 1)); };
    lpc[0] = Vsp16s(4096 >> excess);
    for (int i = 1; i < half; i++) {
        lpc[i] = rounded(Add_32s(even[i], odd[i]));
        lpc[order - i] = rounded(Sub_32s(even[i], odd[i]));
    }
    lpc[half] = rounded(Add_32s(even[half], mulSplit_32s16s(even[half], last)));
    lpc[order] = shrRound_16s(last, 3 + excess);
}

VspStatus vspsISPToLPC_AMRWB_16s(const Vsp16s* pISP, Vsp32s order, Vsp32s adaptive, Vsp16s* pLPC) {
    if (anyNull(pISP, pLPC)) return vspStsNullPtrErr;
    if (!isOrder(order)) return vspStsRangeErr;
    if (adaptive != 0 && adaptive != 1) return vspStsRangeErr;
    ispToLpc(pISP, order, adaptive == 1, pLPC);
    return vspStsNoErr;
}

VspStatus vspsISPToISF_AMRWB_16s(const Vsp16s* pISP, Vsp16s* pISF) {
    if (anyNull(pISP, pISF)) return vspStsNullPtrErr;
    int step = kIspSteps - 1;
    for (int i = kOrder - 1; i >= 0; i--) {
        if (i >= kOrder - 2) step = kIspSteps - 1;  // the last one is not in the order of the others
        const Vsp16s isp = pISP[i];
        while (step > 0 && isp_table[step] < isp) step--;
        const Vsp32s product = Mul2_16s32s(Sub_16s(isp, isp_table[step]), isp_slope[step]);
        pISF[i] = Add_16s(round_32s(shl_32s(product, 4)), Vsp16s(step << 7));
    }
    pISF[kOrder - 1] = Vsp16s(pISF[kOrder - 1] >> 1);
    return vspStsNoErr;
}

VspStatus vspsISFToISP_AMRWB_16s(const Vsp16s* pISF, Vsp32s order, Vsp16s* pISP) {
    if (anyNull(pISF, pISP)) return vspStsNullPtrErr;
    if (!isOrder(order)) return vspStsRangeErr;
    for (int i = 0; i < order; i++) {
        constexpr int kHighest = kIspSteps << 7;
        const int isf = i < order - 1 ? pISF[i] : 2 * pISF[i], bounded = isf < 0 ? 0 : isf > kHighest ? kHighest : isf;
        const int step = bounded >> 7, part = bounded & 127;
        const int rise = part == 0 ? 0 : isp_table[step + 1] - isp_table[step];
        pISP[i] = Vsp16s(isp_table[step] + (rise * part >> 7));
    }
    return vspStsNoErr;
}

// Several filters at a time, one in each element.
namespace {

constexpr int kSubframes = 4;
constexpr Vsp32u kExactLimit = 1 << 29;  // of the magnitudes of coefficients with which no step saturates

// mulSplit_32s16s() of a and 16-bit elements that stand in both halves of pairs; not of -1 and -1.
template <class V>
VSP_INLINE Wide<V> timesPairs(Wide<V> a, V pairs) {
    const Wide<V> high = dot2(V{a.v & Wide<V>::splat(-0x10000).v}, pairs);
    const Wide<V> low = dot2(V{shrU(a, 1).v & Wide<V>::splat(0x7FFF).v}, pairs), half = add(high, shr(low, 15));
    return add(half, half);
}

// The polynomials f up to coefficient i, without their factor number i, take it in (lspProduct, Q23).
template <class V>
VSP_INLINE void takeFactor(Wide<V>* f, int i, V cosines, Wide<V>& magnitudes) {
    const Wide<V> slope = dot2(cosines, V{Wide<V>::splat(512).v});  // the slope stands in the lower half of the pairs
    if (i == 1) {
        f[0] = Wide<V>::splat(1 << 23);
        f[1] = sub(Wide<V>::splat(0), slope);
        return;
    }
    f[i] = f[i - 2];
    for (int j = i; j >= 2; j--) {
        const Wide<V> product = timesPairs(f[j - 1], cosines);
        f[j] = add(sub(f[j], add(product, product)), f[j - 2]);
        magnitudes.v = magnitudes.v | magnitude(f[j]).v;
    }
    f[1] = sub(f[1], slope);
    magnitudes.v = magnitudes.v | magnitude(f[1]).v;
}

// Pairs i of four filters: as 16-bit elements in both halves of pairs.
struct FourOfEach {
    S16_128 pairs[kOrder];

    explicit FourOfEach(const Vsp16s (&isp)[kSubframes][kOrder]) {
        S16_128 m[8];
        for (int k = 0; k < kSubframes; k++) {
            m[k] = S16_128::load(isp[k]);
            m[kSubframes + k] = S16_128::load(isp[k] + 8);
        }
        transpose(m);
        for (int i = 0; i < 8; i++) {
            pairs[i].v = zipLo(m[i], m[i]).v;
            pairs[8 + i].v = zipHi(m[i], m[i]).v;
        }
    }
};

// Their LP filters. Returns whether no step saturates.
bool fourLpcs(const Vsp16s (&isp)[kSubframes][kOrder], Vsp16s* lpc) {
    const FourOfEach of(isp);
    S32_128 even[kHalf + 1], odd[kHalf], magnitudes = S32_128::splat(0);
#if defined(__AVX2__)
    S32_256 both[kHalf], largest = S32_256::splat(0);
    for (int i = 1; i < kHalf; i++) takeFactor(both, i, joined(of.pairs[2 * i - 2], of.pairs[2 * i - 1]), largest);
    const auto half = [](S32_256 a, int upper) {
        return S32_128{upper != 0 ? _mm256_extracti128_si256(a.v, 1) : _mm256_castsi256_si128(a.v)};
    };
    for (int i = 0; i < kHalf; i++) {
        even[i] = half(both[i], 0);
        odd[i] = half(both[i], 1);
    }
    magnitudes.v = half(largest, 0).v | half(largest, 1).v;
#else
    for (int i = 1; i < kHalf; i++) takeFactor(even, i, of.pairs[2 * i - 2], magnitudes);
    for (int i = 1; i < kHalf; i++) takeFactor(odd, i, of.pairs[2 * i - 1], magnitudes);
#endif
    takeFactor(even, kHalf, of.pairs[kOrder - 2], magnitudes);
    if (largestU(magnitudes) >= kExactLimit) [[unlikely]]
        return false;

    const S16_128 last = of.pairs[kOrder - 1];
    for (int i = kHalf - 1; i >= 2; i--) odd[i] = sub(odd[i], odd[i - 2]);
    const S32_128 one = S32_128::splat(1);
    const auto rounded = [one](S32_128 a) { return shr(add(shr(a, 11), one), 1); };
    S32_128 coefficients[kOrder + 1];
    for (int i = 1; i < kHalf; i++) {
        const S32_128 sum = add(even[i], timesPairs(even[i], last)), difference = sub(odd[i], timesPairs(odd[i], last));
        coefficients[i] = rounded(addSat32(sum, difference));
        coefficients[kOrder - i] = rounded(addSat32(sum, sub(S32_128::splat(0), difference)));
    }
    coefficients[kHalf] = rounded(add(even[kHalf], timesPairs(even[kHalf], last)));
    coefficients[kOrder] = shr(add(shr(S32_128{last.v}, 16 + 2), one), 1);
    S16_128 m[8];
    const auto lowerHalves = [](S32_128 a) { return S16_128{_mm_and_si128(a.v, _mm_set1_epi32(0xFFFF))}; };
    for (int i = 0; i < 8; i++)
        m[i].v = _mm_packus_epi32(lowerHalves(coefficients[1 + i]).v, lowerHalves(coefficients[9 + i]).v);
    transpose(m);
    for (int k = 0; k < kSubframes; k++) {
        Vsp16s* const filter = lpc + (kOrder + 1) * k;
        filter[0] = 4096;
        m[k].store(filter + 1);
        m[kSubframes + k].store(filter + 9);
    }
    return true;
}

}  // namespace

VspStatus vspsInterpolateISP_AMRWB_16s(const Vsp16s* pPrevISP, const Vsp16s* pISP, Vsp16s* pLPC) {
    constexpr Vsp16s kWeights[kSubframes - 1] = {14746, 26214, 31457};  // of the new pairs
    if (anyNull(pPrevISP, pISP, pLPC)) return vspStsNullPtrErr;
    Vsp16s isp[kSubframes][kOrder];
    for (int k = 0; k < kSubframes - 1; k++)
        for (int i = 0; i < kOrder; i++)
            isp[k][i] = Vsp16s((pPrevISP[i] * (32768 - kWeights[k]) + pISP[i] * kWeights[k] + 0x4000) >> 15);
    for (int i = 0; i < kOrder; i++) isp[kSubframes - 1][i] = pISP[i];
    if (!fourLpcs(isp, pLPC)) [[unlikely]]
        for (int k = 0; k < kSubframes; k++) ispToLpc(isp[k], kOrder, false, pLPC + k * (kOrder + 1));
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
