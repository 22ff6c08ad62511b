// Loops for AVX-512 written by hand, without checks and dispatch: they stand for what the machine can do. Each keeps to the
// limit of two vector loads a cycle from the first-level cache as closely as its arithmetic allows; tails are masked.
#include "common/hand_tuned_common.h"

#include <immintrin.h>

#include "common/tables.h"

namespace {

__mmask32 firstLanes(int n) { return __mmask32((1ull << n) - 1); }

template <class Op>
[[gnu::always_inline]] inline void loop(const Vsp16s* src1, const Vsp16s* src2, Vsp16s* dst, int len, Op op) {
    int i = 0;
    for (; i <= len - 32; i += 32)
        _mm512_storeu_si512(dst + i, op(_mm512_loadu_si512(src1 + i), _mm512_loadu_si512(src2 + i)));
    if (i < len) {
        const __mmask32 tail = firstLanes(len - i);
        _mm512_mask_storeu_epi16(dst + i, tail,
                                 op(_mm512_maskz_loadu_epi16(tail, src1 + i), _mm512_maskz_loadu_epi16(tail, src2 + i)));
    }
}

__m512i roundQ15(__m512i a, __m512i b) {
    const __m512i low = _mm512_set1_epi16(-0x8000), product = _mm512_mulhrs_epi16(a, b);
    return _mm512_mask_mov_epi16(product, _mm512_cmpeq_epi16_mask(product, low), _mm512_set1_epi16(0x7FFF));
}

struct RoundShift {
    __m512i rounding;
    __m128i shift;
    explicit RoundShift(int sf) : rounding(_mm512_set1_epi32(1 << (sf - 1))), shift(_mm_cvtsi32_si128(sf)) {}
    __m512i operator()(__m512i a, __m512i b) const {
        const __m512i lo = _mm512_mullo_epi16(a, b), hi = _mm512_mulhi_epi16(a, b);
        const __m512i even = _mm512_add_epi32(_mm512_unpacklo_epi16(lo, hi), rounding);
        const __m512i odd = _mm512_add_epi32(_mm512_unpackhi_epi16(lo, hi), rounding);
        return _mm512_packs_epi32(_mm512_sra_epi32(even, shift), _mm512_sra_epi32(odd, shift));
    }
};

VspStatus mulC(const Vsp16s* src, Vsp16s val, Vsp16s* dst, Vsp32s len, Vsp32s scaleFactor) {
    const __m512i factor = _mm512_set1_epi16(val);
    if (scaleFactor == 15) {
        loop(src, src, dst, len, [factor](__m512i a, __m512i) { return roundQ15(a, factor); });
    } else {
        const RoundShift op(scaleFactor);
        loop(src, src, dst, len, [=](__m512i a, __m512i) { return op(a, factor); });
    }
    return vspStsNoErr;
}

VspStatus mulCInPlace(Vsp16s val, Vsp16s* srcDst, Vsp32s len, Vsp32s scaleFactor) {
    return mulC(srcDst, val, srcDst, len, scaleFactor);
}

VspStatus mul(const Vsp16s* src1, const Vsp16s* src2, Vsp16s* dst, Vsp32s len, Vsp32s scaleFactor) {
    if (scaleFactor == 15)
        loop(src1, src2, dst, len, roundQ15);
    else
        loop(src1, src2, dst, len, RoundShift(scaleFactor));
    return vspStsNoErr;
}

VspStatus mulInPlace(const Vsp16s* src, Vsp16s* srcDst, Vsp32s len, Vsp32s scaleFactor) {
    return mul(src, srcDst, srcDst, len, scaleFactor);
}

VspStatus interpolate(const Vsp16s* src1, const Vsp16s* src2, Vsp16s* dst, Vsp32s len) {
    loop(src1, src2, dst, len,
         [](__m512i a, __m512i b) { return _mm512_add_epi16(_mm512_srai_epi16(a, 1), _mm512_srai_epi16(b, 1)); });
    return vspStsNoErr;
}

VspStatus interpolateC(const Vsp16s* src1, Vsp16s w1, const Vsp16s* src2, Vsp16s w2, Vsp16s* dst, Vsp32s len, Vsp32s sf) {
    const __m512i weight1 = _mm512_set1_epi16(w1), weight2 = _mm512_set1_epi16(w2);
    const __m128i shift = _mm_cvtsi32_si128(sf);
    loop(src1, src2, dst, len, [=](__m512i a, __m512i b) {
        const __m512i loA = _mm512_mullo_epi16(a, weight1), hiA = _mm512_mulhi_epi16(a, weight1);
        const __m512i loB = _mm512_mullo_epi16(b, weight2), hiB = _mm512_mulhi_epi16(b, weight2);
        const auto shifted = [shift](__m512i x) { return _mm512_sra_epi32(x, shift); };
        return _mm512_packs_epi32(
            _mm512_add_epi32(shifted(_mm512_unpacklo_epi16(loA, hiA)), shifted(_mm512_unpacklo_epi16(loB, hiB))),
            _mm512_add_epi32(shifted(_mm512_unpackhi_epi16(loA, hiA)), shifted(_mm512_unpackhi_epi16(loB, hiB))));
    });
    return vspStsNoErr;
}

VspStatus interpolateRounded(const Vsp16s* src1, Vsp16s w1, const Vsp16s* src2, Vsp16s w2, Vsp16s* dst, Vsp32s len,
                             Vsp32s sf) {
    const __m512i weights = _mm512_set1_epi32(Vsp32s(Vsp16u(w1) | Vsp32u(Vsp16u(w2)) << 16));
    const __m512i rounding = _mm512_set1_epi32(1 << (sf - 1));
    const __m128i shift = _mm_cvtsi32_si128(sf);
    loop(src1, src2, dst, len, [=](__m512i a, __m512i b) {
        const auto weighted = [=](__m512i pairs) {
            return _mm512_sra_epi32(_mm512_add_epi32(_mm512_madd_epi16(pairs, weights), rounding), shift);
        };
        return _mm512_packs_epi32(weighted(_mm512_unpacklo_epi16(a, b)), weighted(_mm512_unpackhi_epi16(a, b)));
    });
    return vspStsNoErr;
}

VspStatus interpolateScaled(const Vsp16s* src1, Vsp16s val1, Vsp32s sf1, const Vsp16s* src2, Vsp16s val2, Vsp32s sf2,
                            Vsp16s* dst, Vsp32s len) {  // scale factors up to 15
    const int m = sf1 < sf2 ? sf1 : sf2;
    const __m512i weight1 = _mm512_set1_epi16(val1), weight2 = _mm512_set1_epi16(val2);
    const __m512i rounding = _mm512_set1_epi32((1 << (15 - m)) - (1 << 16)), offset = _mm512_set1_epi32(1 << m);
    const __m128i shift1 = _mm_cvtsi32_si128(sf1 - m), shift2 = _mm_cvtsi32_si128(sf2 - m),
                  shift = _mm_cvtsi32_si128(16 - m);
    loop(src1, src2, dst, len, [=](__m512i a, __m512i b) {
        const __m512i loA = _mm512_mullo_epi16(a, weight1), hiA = _mm512_mulhi_epi16(a, weight1);
        const __m512i loB = _mm512_mullo_epi16(b, weight2), hiB = _mm512_mulhi_epi16(b, weight2);
        const auto weighted = [=](__m512i productA, __m512i productB) {
            const __m512i sum = _mm512_add_epi32(_mm512_sra_epi32(productA, shift1), _mm512_sra_epi32(productB, shift2));
            return _mm512_add_epi32(_mm512_sra_epi32(_mm512_add_epi32(sum, rounding), shift), offset);
        };
        return _mm512_packs_epi32(weighted(_mm512_unpacklo_epi16(loA, hiA), _mm512_unpacklo_epi16(loB, hiB)),
                                  weighted(_mm512_unpackhi_epi16(loA, hiA), _mm512_unpackhi_epi16(loB, hiB)));
    });
    return vspStsNoErr;
}

// Exact in 64 bits for any input: with the bias every pair is an unsigned 32-bit value.
template <class Op>
[[gnu::always_inline]] inline Vsp64s dot(const Vsp16s* src1, const Vsp16s* src2, Vsp32s len, Op op) {
    const __m512i bias = _mm512_set1_epi32(0x7FFF0000), low = _mm512_set1_epi64(0xFFFFFFFF);
    __m512i evenSum = _mm512_setzero_si512(), oddSum = evenSum;
    const auto accumulate = [&](__m512i a, __m512i b) {
        const __m512i pairs = _mm512_add_epi32(op(a, b), bias);
        evenSum = _mm512_add_epi64(evenSum, _mm512_and_si512(pairs, low));
        oddSum = _mm512_add_epi64(oddSum, _mm512_srli_epi64(pairs, 32));
    };
    int i = 0;
    for (; i <= len - 32; i += 32) accumulate(_mm512_loadu_si512(src1 + i), _mm512_loadu_si512(src2 + i));
    if (i < len) {
        const __mmask32 tail = firstLanes(len - i);
        accumulate(_mm512_maskz_loadu_epi16(tail, src1 + i), _mm512_maskz_loadu_epi16(tail, src2 + i));
    }
    return _mm512_reduce_add_epi64(_mm512_add_epi64(evenSum, oddSum)) - (len + 31) / 32 * 16LL * 0x7FFF0000;
}

VspStatus dotProd(const Vsp16s* src1, const Vsp16s* src2, Vsp32s len, Vsp32s* result) {
    const Vsp64s sum = 2 * dot(src1, src2, len, [](__m512i a, __m512i b) { return _mm512_madd_epi16(a, b); });
    *result = sum > 0x7FFFFFFF ? 0x7FFFFFFF : sum < -0x80000000LL ? Vsp32s(-0x80000000LL) : Vsp32s(sum);
    return vspStsNoErr;
}

VspStatus dotProdAutoScale(const Vsp16s* src1, const Vsp16s* src2, Vsp32s len, Vsp32s* result, Vsp32s* scale) {
    for (int shifts = 0;; shifts++) {
        const int shift1 = shifts / 2, shift2 = shifts - shift1;
        const __m128i count1 = _mm_cvtsi32_si128(shift1), count2 = _mm_cvtsi32_si128(shift2);
        const auto products = [=](__m512i a, __m512i b) {
            return _mm512_madd_epi16(_mm512_sra_epi16(a, count1), _mm512_sra_epi16(b, count2));
        };
        const Vsp64s sum = 2 * dot(src1, src2, len, products) - (src1[0] >> shift1) * (src2[0] >> shift2);
        if (sum != Vsp32s(sum)) continue;
        *result = Vsp32s(sum);
        *scale = shifts;
        return vspStsNoErr;
    }
}

VspStatus autoScale(const Vsp16s* src, Vsp16s* dst, Vsp32s len, Vsp32s* scale) {
    __m512i largest = _mm512_setzero_si512();
    int i = 0;
    for (; i <= len - 32; i += 32) largest = _mm512_max_epu16(largest, _mm512_abs_epi16(_mm512_loadu_si512(src + i)));
    if (i < len)
        largest = _mm512_max_epu16(largest, _mm512_abs_epi16(_mm512_maskz_loadu_epi16(firstLanes(len - i), src + i)));
    const __m512i pairs =
        _mm512_max_epu32(_mm512_srli_epi32(largest, 16), _mm512_and_si512(largest, _mm512_set1_epi32(0xFFFF)));
    const unsigned peak = _mm512_reduce_max_epu32(pairs);
    const int left = (peak > 0x7FFF ? 0 : __builtin_clz(peak) - 17) - *scale;
    *scale = left;
    if (left >= 0)
        loop(src, src, dst, len, [left](__m512i a, __m512i) { return _mm512_sll_epi16(a, _mm_cvtsi32_si128(left)); });
    else
        loop(src, src, dst, len, [left](__m512i a, __m512i) { return _mm512_sra_epi16(a, _mm_cvtsi32_si128(-left)); });
    return vspStsNoErr;
}

VspStatus autoScaleInPlace(Vsp16s* srcDst, Vsp32s len, Vsp32s* scale) { return autoScale(srcDst, srcDst, len, scale); }

VspStatus lagWindow(Vsp32s* srcDst, Vsp32s len) {
    const __mmask16 lags = __mmask16((1u << len) - 1);
    const __m512i x = _mm512_maskz_loadu_epi32(lags, srcDst), w = _mm512_maskz_loadu_epi32(lags, vsp::wlag);
    const auto low = [](__m512i v) { return _mm512_and_si512(_mm512_srli_epi32(v, 1), _mm512_set1_epi32(0x7FFF)); };
    const __m512i hiX = _mm512_srai_epi32(x, 16), hiW = _mm512_srai_epi32(w, 16);
    const __m512i cross = _mm512_add_epi32(_mm512_srai_epi32(_mm512_mullo_epi32(hiX, low(w)), 15),
                                           _mm512_srai_epi32(_mm512_mullo_epi32(low(x), hiW), 15));
    const __m512i product = _mm512_add_epi32(_mm512_mullo_epi32(hiX, hiW), cross);
    _mm512_mask_storeu_epi32(srcDst, lags, _mm512_add_epi32(product, product));
    return vspStsNoErr;
}

// Sixteen elements at a time; a 32-bit lane holds two of the twelve generator values of its element.
struct Steps {
    Vsp16s mul[6][32], add[6][32];
};

constexpr Steps makeSteps() {
    Steps t{};
    unsigned mul = 1, add = 0;
    for (int step = 0; step < 12 * 16; step++) {
        mul = mul * 31821 & 0xFFFF;
        add = (add * 31821 + 13849) & 0xFFFF;
        const int lane = step / 12 * 2 + step % 2;
        t.mul[step % 12 / 2][lane] = Vsp16s(mul);
        t.add[step % 12 / 2][lane] = Vsp16s(add);
    }
    return t;
}

alignas(64) constexpr Steps kSteps = makeSteps();

VspStatus randomNoise(Vsp16s* seed, Vsp16s* dst, Vsp32s len) {
    for (int i = 0; i < len; i += 16) {
        const int count = len - i < 16 ? len - i : 16;
        const __m512i seeds = _mm512_set1_epi16(*seed);
        __m512i sum = _mm512_setzero_si512(), values = sum;
        for (int k = 0; k < 6; k++) {
            values = _mm512_add_epi16(_mm512_mullo_epi16(seeds, _mm512_load_si512(kSteps.mul[k])),
                                      _mm512_load_si512(kSteps.add[k]));
            sum = _mm512_add_epi32(sum, _mm512_madd_epi16(values, _mm512_set1_epi16(1)));
        }
        _mm512_mask_cvtepi32_storeu_epi16(dst + i, __mmask16((1u << count) - 1), _mm512_srai_epi32(sum, 7));
        alignas(64) Vsp16s last[32];
        _mm512_store_si512(last, values);
        *seed = last[2 * count - 1];
    }
    return vspStsNoErr;
}

// The lag scan of G.729 3.4 without regard to saturation: a pair of samples of the frame against 16 lags at a time, 64 lags
// in registers. A tie goes to the shortest lag.
VspStatus lagScan(const Vsp16s* src, Vsp32s len, Vsp32s lagMin, Vsp32s lagMax, Vsp32s* max, Vsp32s* lag) {
    *max = -0x7FFFFFFF - 1;
    for (int longest = lagMax; longest >= lagMin; longest -= 64) {
        const Vsp16s* history = src - longest;
        __m512i even[2] = {}, odd[2] = {};  // lags longest - 0, 2, 4, ... and longest - 1, 3, 5, ...
        for (int n = 0; n < len; n += 2) {
            Vsp32s pair;
            __builtin_memcpy(&pair, src + n, sizeof pair);
            const __m512i factor = _mm512_set1_epi32(pair);
            for (int half = 0; half < 2; half++) {
                const Vsp16s* at = history + n + 32 * half;
                even[half] = _mm512_add_epi32(even[half], _mm512_madd_epi16(_mm512_loadu_si512(at), factor));
                odd[half] = _mm512_add_epi32(odd[half], _mm512_madd_epi16(_mm512_loadu_si512(at + 1), factor));
            }
        }
        alignas(64) Vsp32s sums[2][32];
        for (int half = 0; half < 2; half++) {
            _mm512_store_si512(sums[0] + 16 * half, even[half]);
            _mm512_store_si512(sums[1] + 16 * half, odd[half]);
        }
        const int lags = longest - lagMin + 1 < 64 ? longest - lagMin + 1 : 64;
        for (int i = 0; i < lags; i++)
            if (2 * sums[i % 2][i / 2] >= *max) {
                *max = 2 * sums[i % 2][i / 2];
                *lag = longest - i;
            }
    }
    return vspStsNoErr;
}

}  // namespace

void bench::addHandTunedCommon(vsp::Api& api) {
    api.vspsMulC_NR_16s_Sfs = mulC;
    api.vspsMulC_NR_16s_ISfs = mulCInPlace;
    api.vspsMul_NR_16s_Sfs = mul;
    api.vspsMul_NR_16s_ISfs = mulInPlace;
    api.vspsInterpolate_G729_16s = interpolate;
    api.vspsInterpolateC_G729_16s_Sfs = interpolateC;
    api.vspsInterpolateC_NR_G729_16s_Sfs = interpolateRounded;
    api.vspsInterpolateC_NR_16s = interpolateScaled;
    api.vspsDotProd_G729A_16s32s = dotProd;
    api.vspsDotProdAutoScale_16s32s_Sfs = dotProdAutoScale;
    api.vspsAutoScale_16s = autoScale;
    api.vspsAutoScale_16s_I = autoScaleInPlace;
    api.vspsLagWindow_G729_32s_I = lagWindow;
    api.vspsRandomNoiseExcitation_G729B_16s = randomNoise;
    api.vspsAutoCorrLagMax_Inv_16s = lagScan;
}
