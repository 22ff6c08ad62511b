// The 128-point real transform: 64 complex points in six decimation-in-time stages, then the split into real and imaginary
// parts of the bins.
//
// The points stay in the order of the signal, as a matrix of 8 x 8 complex values of which a vector holds one row or half
// of one. In that order the first three stages combine rows with rows, and the last three do so after a transposition.
#include "arithmetic/basic_ops.h"
#include "core/checks.h"
#include "gsmamr/exports.h"
#include "gsmamr/tables.h"
#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

namespace {

using V = Sliding16;
using W = Wide<V>;
constexpr int kLanes = W::width;       // complex values in a vector
constexpr int kVectors = 64 / kLanes;  // of all values
constexpr int kPerRow = 8 / kLanes;    // vectors in a row

constexpr int kReversed[8] = {0, 4, 2, 6, 1, 5, 3, 7};

VSP_INLINE W wide(V a) { return {a.v}; }
VSP_INLINE V narrow(W a) { return {a.v}; }
VSP_INLINE V loadFactors(const Vsp16s (*pairs)[2], int part) { return V::load(pairs[part * kLanes]); }

// --- Permutations of whole complex values ------------------------------------------------------------------------------

#if defined(__AVX2__)
VSP_INLINE void transpose(V a[8]) {
    __m256i b[8];
    for (int i = 0; i < 8; i += 2) {
        b[i] = _mm256_unpacklo_epi32(a[i].v, a[i + 1].v);
        b[i + 1] = _mm256_unpackhi_epi32(a[i].v, a[i + 1].v);
    }
    __m256i c[8];
    for (int i = 0; i < 8; i += 4)
        for (int j = 0; j < 2; j++) {
            c[i + 2 * j] = _mm256_unpacklo_epi64(b[i + j], b[i + j + 2]);
            c[i + 2 * j + 1] = _mm256_unpackhi_epi64(b[i + j], b[i + j + 2]);
        }
    for (int i = 0; i < 4; i++) {
        a[i] = {_mm256_permute2x128_si256(c[i], c[i + 4], 0x20)};
        a[i + 4] = {_mm256_permute2x128_si256(c[i], c[i + 4], 0x31)};
    }
}
// The first value of b and then those of a from the last one down to the second.
VSP_INLINE V mirror(V a, V b) {
    return {_mm256_permutevar8x32_epi32(_mm256_blend_epi32(a.v, b.v, 1), _mm256_setr_epi32(0, 7, 6, 5, 4, 3, 2, 1))};
}
VSP_INLINE V withFirst(V a, Vsp32s value) { return {_mm256_blend_epi32(a.v, _mm256_set1_epi32(value), 1)}; }
VSP_INLINE Vsp32s firstValue(V a) { return _mm256_cvtsi256_si32(a.v); }
// -1 where the second part is -32768, else 0.
VSP_INLINE W secondIsLowest(V a) { return {_mm256_cmpeq_epi32(shr(wide(a), 16).v, _mm256_set1_epi32(-32768))}; }
#else
VSP_INLINE void transpose(V a[4]) {
    const __m128i b0 = _mm_unpacklo_epi32(a[0].v, a[1].v), b1 = _mm_unpackhi_epi32(a[0].v, a[1].v);
    const __m128i b2 = _mm_unpacklo_epi32(a[2].v, a[3].v), b3 = _mm_unpackhi_epi32(a[2].v, a[3].v);
    a[0] = {_mm_unpacklo_epi64(b0, b2)};
    a[1] = {_mm_unpackhi_epi64(b0, b2)};
    a[2] = {_mm_unpacklo_epi64(b1, b3)};
    a[3] = {_mm_unpackhi_epi64(b1, b3)};
}
VSP_INLINE V mirror(V a, V b) { return {_mm_shuffle_epi32(_mm_blend_epi16(a.v, b.v, 3), _MM_SHUFFLE(1, 2, 3, 0))}; }
VSP_INLINE V withFirst(V a, Vsp32s value) { return {_mm_blend_epi16(a.v, _mm_set1_epi32(value), 3)}; }
VSP_INLINE Vsp32s firstValue(V a) { return _mm_cvtsi128_si32(a.v); }
VSP_INLINE W secondIsLowest(V a) { return {_mm_cmpeq_epi32(shr(wide(a), 16).v, _mm_set1_epi32(-32768))}; }
#endif

// --- Butterflies -------------------------------------------------------------------------------------------------------

// upper and upper plus or minus lower, each halved.
VSP_INLINE void combine(V& upper, V& lower, V product) {
    lower = shr(subSat(upper, product), 1);
    upper = shr(addSat(upper, product), 1);
}

// times exp(0), which is 32767 / 32768
VSP_INLINE V timesOne(V a) { return mulRoundWrap(a, V::splat(32767)); }

// times exp(-i*pi/2): the imaginary part, and the real part negated with saturation
VSP_INLINE V timesMinusI(V a) {
    const V second = firstAndSecond(V::splat(0), V::splat(-1));
    return subSat({swapInPairs(a).v ^ second.v}, second);
}

VSP_INLINE V times(V a, const FftTwiddles& f, int part) {
    const W half = W::splat(0x4000);
    const W re = shr(sub(half, dot2(a, loadFactors(f.negRe, part))), 15);
    const W im = shr(add(half, dot2(a, loadFactors(f.im, part))), 15);
    return packSatAlternating(re, im);
}

// The stages that combine rows: a holds the same columns of all eight.
VSP_INLINE void rowStages(V a[8]) {
    for (int r = 0; r < 4; r++) combine(a[r], a[r + 4], timesOne(a[r + 4]));
    for (int r = 0; r < 2; r++) {
        combine(a[r], a[r + 2], timesOne(a[r + 2]));
        combine(a[r + 4], a[r + 6], timesMinusI(a[r + 6]));
    }
    combine(a[0], a[1], timesOne(a[1]));
    combine(a[2], a[3], timesMinusI(a[3]));
    combine(a[4], a[5], times(a[5], fftEighths[0], 0));
    combine(a[6], a[7], times(a[7], fftEighths[1], 0));
}

// The stages that combine columns: a holds the same rows of all eight, which have their own factors.
VSP_INLINE void columnStages(V a[8], int part) {
    for (int c = 0; c < 4; c++) combine(a[c], a[c + 4], times(a[c + 4], fftTwiddles[0], part));
    for (int c = 0; c < 2; c++)
        for (int j = 0; j < 2; j++)
            combine(a[4 * j + c], a[4 * j + c + 2], times(a[4 * j + c + 2], fftTwiddles[1 + j], part));
    for (int c = 0; c < 8; c += 2) combine(a[c], a[c + 1], times(a[c + 1], fftTwiddles[3 + kReversed[c]], part));
}

// Lanes have rows in bit-reversed order, so that the column stages leave the points in their natural order.
VSP_INLINE void points(const Vsp16s* src, V x[kVectors]) {
    V columns[8][kPerRow];
    for (int part = 0; part < kPerRow; part++) {
        V a[8];
        for (int r = 0; r < 8; r++) a[r] = V::load(src + 16 * r + 2 * kLanes * part);
        rowStages(a);
        for (int h = 0; h < kPerRow; h++) {
            V block[kLanes];
            for (int l = 0; l < kLanes; l++) block[l] = a[kReversed[kLanes * h + l]];
            transpose(block);
            for (int l = 0; l < kLanes; l++) columns[kLanes * part + l][h] = block[l];
        }
    }
    for (int h = 0; h < kPerRow; h++) {
        V a[8];
        for (int c = 0; c < 8; c++) a[c] = columns[c][h];
        columnStages(a, h);
        for (int c = 0; c < 8; c++) x[kReversed[c] * kPerRow + h] = a[c];
    }
}

// --- Split -------------------------------------------------------------------------------------------------------------

// Half the sum a + b, where a and the sum saturate before they are halved; rounding of the high half is added.
VSP_INLINE W halvedSum(W a, W b) {
    const W lowest = W::splat(-0x40000000), highest = W::splat(0x3FFFFFFF);
    const W sum = add(max(min(a, highest), lowest), b);
    return add(max(min(sum, highest), lowest), W::splat(0x8000));
}
VSP_INLINE V highHalves(W re, W im) { return firstAndSecond(narrow(shrU(re, 16)), narrow(im)); }
VSP_INLINE W negative(W a) { return sub(W::splat(0), a); }

// Points k in a and points 64 - k in b become the bins of the same numbers.
VSP_INLINE void split(V& a, V& b, const FftSplitFactors& f, int part) {
    const V sum = addSat(a, b);                                       // sr, si
    const V difference = firstAndSecond(subSat(b, a), subSat(a, b));  // dr, di
    const auto weighted = [part](V x, const Vsp16s(&pairs)[8][2]) { return dot2(x, loadFactors(pairs, part)); };
    const W sumIm = weighted(sum, f.imSum);
    const W re = halvedSum(negative(weighted(sum, f.reSum)), weighted(difference, f.reDiff));
    const W im = halvedSum(negative(weighted(difference, f.imDiff)), sumIm);
    const W mirrorRe = halvedSum(negative(weighted(sum, f.mirrorReSum)), weighted(difference, f.mirrorReDiff));
    // -65536 * di saturates as well, but only by one.
    const W mirrorIm = halvedSum(add(weighted(difference, f.mirrorImDiff), secondIsLowest(difference)), sumIm);
    a = highHalves(re, im);
    b = highHalves(mirrorRe, mirrorIm);
}

VSP_INLINE Vsp32s pairOf(Vsp32s first, Vsp32s second) { return Vsp32s(Vsp16u(first) | Vsp32u(second) << 16); }

// Bins 0 and 64, which are real.
VSP_INLINE Vsp32s outerBins(Vsp32s point0) {
    const Vsp16s re = Vsp16s(point0), im = Vsp16s(point0 >> 16);
    return pairOf(sat_16s(re + im), sat_16s(re - im));
}

// Bin 32, which is its own mirror.
VSP_INLINE Vsp32s middleBin(Vsp32s point32) {
    const Vsp16s re = Vsp16s(point32), im = Vsp16s(point32 >> 16);
    return pairOf((sat_16s(2 * re) + 1) >> 1, (1 - sat_16s(2 * im)) >> 1);
}

}  // namespace

VspStatus vspsFFTFwd_RToPerm_GSMAMR_16s_I(Vsp16s* pSrcDst) {
    if (anyNull(pSrcDst)) return vspStsNullPtrErr;
    V x[kVectors];
    points(pSrcDst, x);
    const Vsp32s outer = outerBins(firstValue(x[0])), middle = middleBin(firstValue(x[kVectors / 2]));

    V mirrored = V::splat(0);  // what was made of the vectors so far
    for (int i = kVectors / 2 - 1; i >= 0; i--) {
        V a = x[i], b = mirror(x[kVectors - 1 - i], x[(kVectors - i) % kVectors]);
        split(a, b, fftSplitFactors[i / kPerRow], i % kPerRow);
        (i == 0 ? withFirst(a, outer) : a).store(pSrcDst + 2 * kLanes * i);
        const V upper = mirror(b, mirrored);
        (i == kVectors / 2 - 1 ? withFirst(upper, middle) : upper).store(pSrcDst + 2 * kLanes * (kVectors - 1 - i));
        mirrored = b;
    }
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
