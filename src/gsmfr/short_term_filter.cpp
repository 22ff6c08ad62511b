// The short-term lattice filters (GSM 06.10 5.2.9, 5.2.10, 5.3.3 and 5.3.4).
#include "core/checks.h"
#include "gsmfr/exports.h"
#include "gsmfr/frame.h"
#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

namespace {

// Samples with the same coefficients: the first of each part, and the end.
constexpr int kParts = 4, kPartStart[kParts + 1] = {0, 13, 27, 40, kFrame};

VSP_INLINE S16_128 where(__m128i mask, S16_128 a, S16_128 b) { return {_mm_blendv_epi8(b.v, a.v, mask)}; }

// Log-area ratios to reflection coefficients, of which none is -32768.
VSP_INLINE S16_128 reflection(S16_128 lar) {
    const S16_128 x = max(lar, subSat(S16_128::splat(0), lar));
    const S16_128 large = addSat(shr(x, 2), S16_128::splat(26112)), middle = add(x, S16_128::splat(11059));
    const S16_128 upper = where(_mm_cmpgt_epi16(_mm_set1_epi16(20070), x.v), middle, large);
    const S16_128 r = where(_mm_cmpgt_epi16(_mm_set1_epi16(11059), x.v), add(x, x), upper);
    return {_mm_sign_epi16(r.v, lar.v)};
}

// The reflection coefficients of every part.
struct Coefficients {
    Vsp16s r[kParts][kOrder];

    [[gnu::always_inline]] Coefficients(const Vsp16s* prevLar, const Vsp16s* lar) {
        const S16_128 previous = S16_128::load(prevLar), current = S16_128::load(lar);
        const S16_128 quarters = addSat(shr(previous, 2), shr(current, 2));
        reflection(addSat(quarters, shr(previous, 1))).store(r[0]);
        reflection(addSat(shr(previous, 1), shr(current, 1))).store(r[1]);
        reflection(addSat(quarters, shr(current, 1))).store(r[2]);
        reflection(current).store(r[3]);
    }
};

using V = Sliding16;
constexpr int kMixed = 64;  // samples in whole vectors that have those of different coefficients
static_assert(kMixed >= kPartStart[3] && kMixed % V::width == 0 && kFrame % V::width == 0);

// The coefficients of one stage for the first samples, one for each.
VSP_INLINE void spread(const Coefficients& c, int stage, Vsp16s (&out)[kMixed]) {
    for (int part = 0; part < kParts; part++) {
        const S16_128 r = S16_128::splat(c.r[part][stage]);
        const int vectors = part < 3 ? 2 : 3;
        for (int i = 0; i < vectors; i++) r.store(out + kPartStart[part] + 8 * i);
    }
}
static_assert(kPartStart[3] + 3 * 8 == kMixed && kPartStart[1] <= 16 && kPartStart[3] - kPartStart[2] <= 16);

}  // namespace

// Without feedback, so that a stage takes the whole frame before the next one does.
VspStatus vspsShortTermAnalysisFilter_GSMFR_16s_I(const Vsp16s* pPrevLAR, const Vsp16s* pLAR, Vsp16s* pSrcDst,
                                                  Vsp16s* pMem) {
    if (anyNull(pPrevLAR, pLAR, pSrcDst, pMem)) return vspStsNullPtrErr;
    const Coefficients c(pPrevLAR, pLAR);
    Vsp16s lines[2][1 + kFrame];  // what the delay of a stage gets, one sample late: of this stage, and of the next one
    __builtin_memcpy(lines[0] + 1, pSrcDst, kFrame * sizeof(Vsp16s));
    for (int stage = 0; stage < kOrder; stage++) {
        Vsp16s* const delayed = lines[stage % 2];
        Vsp16s* const next = lines[(stage + 1) % 2] + 1;
        delayed[0] = pMem[stage];
        pMem[stage] = delayed[kFrame];
        const auto filter = [&](int n, V r) {
            const V d = V::load(pSrcDst + n), u = V::load(delayed + n);
            addSat(d, mulRoundWrap(r, u)).store(pSrcDst + n);
            addSat(u, mulRoundWrap(r, d)).store(next + n);
        };
        Vsp16s mixed[kMixed];
        spread(c, stage, mixed);
        for (int n = 0; n < kMixed; n += V::width) filter(n, V::load(mixed + n));
        const V r = V::splat(c.r[3][stage]);
        for (int n = kMixed; n < kFrame; n += V::width) filter(n, r);
    }
    return vspStsNoErr;
}

// With feedback, sample by sample. Vectors of which one element counts: their saturation is free.
VspStatus vspsShortTermSynthesisFilter_GSMFR_16s(const Vsp16s* pPrevLAR, const Vsp16s* pLAR, const Vsp16s* pSrc,
                                                 Vsp16s* pDst, Vsp16s* pMem) {
    if (anyNull(pPrevLAR, pLAR, pSrc, pDst, pMem)) return vspStsNullPtrErr;
    const Coefficients c(pPrevLAR, pLAR);
    S16_128 v[kOrder];
    for (int i = 0; i < kOrder; i++) v[i] = S16_128::splat(pMem[i]);
    for (int part = 0; part < kParts; part++) {
        S16_128 r[kOrder];
        for (int i = 0; i < kOrder; i++) r[i] = S16_128::splat(c.r[part][i]);
        for (int n = kPartStart[part]; n < kPartStart[part + 1]; n++) {
            S16_128 s = subSat(S16_128::splat(pSrc[n]), mulRoundWrap(r[kOrder - 1], v[kOrder - 1]));
            for (int i = kOrder - 2; i >= 0; i--) {
                s = subSat(s, mulRoundWrap(r[i], v[i]));
                v[i + 1] = addSat(v[i], mulRoundWrap(r[i], s));
            }
            v[0] = s;
            pDst[n] = first(s);
        }
    }
    for (int i = 0; i < kOrder; i++) pMem[i] = first(v[i]);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
