// Both sub-band ADPCM coders side by side: what encoder and decoder share (G.722 3.3 to 3.6). Every vector has pairs of a
// value of the low band and one of the high band.
#pragma once

#include "g722/exports.h"
#include "g722/tables.h"
#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

// The state of an encoder or a decoder.
struct SubBandState {
    Vsp16s b[8][2], d[8][2];  // zero predictor: coefficients, and quantised differences, newest first; six of each count
    Vsp16s a1[2], a2[2];      // pole predictor
    Vsp16s twiceR1[2];        // doubled reconstructed signal, one sample ago
    Vsp16s p1[2], p2[2];      // partially reconstructed signal, one and two samples ago: -1 if negative, else 0
    Vsp16s s[2], sz[2];       // prediction, and what the zero predictor has in it
    Vsp16s logScale[2];
    Vsp16s unused[24];
};
static_assert(sizeof(SubBandState) == 144 && alignof(SubBandState) <= 4);

VSP_INLINE S16_128 splatOf(const Vsp16s* pair) { return splatPair<S16_128>(pair); }

VSP_INLINE S16_128 splatOf(Vsp32s low, Vsp32s high) {
    return {_mm_set1_epi32(Vsp32s((Vsp32u(low) & 0xFFFF) | Vsp32u(high) << 16))};
}

VSP_INLINE void storeFirst(S16_128 a, Vsp16s* pair) {
    const Vsp32s both = _mm_cvtsi128_si32(a.v);
    __builtin_memcpy(pair, &both, sizeof both);
}

VSP_INLINE S16_128 limited(S16_128 a) { return min(max(a, S16_128::splat(-16384)), S16_128::splat(16383)); }

// The scale factor of the next sample, from what the code adds to the logarithmic one (LOGSCL, SCALEL; LOGSCH, SCALEH).
VSP_INLINE Vsp32s nextLogScale(Vsp32s logScale, Vsp32s step, Vsp32s logScaleMax) {
    const Vsp32s next = ((logScale * 32512) >> 15) + step;
    return next < 0 ? 0 : next > logScaleMax ? logScaleMax : next;
}
VSP_INLINE Vsp32s lowScale(Vsp32s logScale) { return scaleFactors.values[kLowScaleOffset + (logScale >> 6)]; }
VSP_INLINE Vsp32s highScale(Vsp32s logScale) { return scaleFactors.values[logScale >> 6]; }

class SubBands {
  public:
    [[gnu::always_inline]] explicit SubBands(const SubBandState& x)
        : b14_(S16_128::load(x.b[0])),
          b56_(S16_128::load(x.b[4])),
          d14_(S16_128::load(x.d[0])),
          d56_(S16_128::load(x.d[4])),
          a1_(splatOf(x.a1)),
          a2_(splatOf(x.a2)),
          twiceR1_(splatOf(x.twiceR1)),
          p1_(splatOf(x.p1)),
          p2_(splatOf(x.p2)),
          s_(splatOf(x.s)),
          sz_(splatOf(x.sz)) {}

    [[gnu::always_inline]] void store(SubBandState& x) const {
        b14_.store(x.b[0]);
        b56_.store(x.b[4]);
        d14_.store(x.d[0]);
        d56_.store(x.d[4]);
        storeFirst(a1_, x.a1);
        storeFirst(a2_, x.a2);
        storeFirst(twiceR1_, x.twiceR1);
        storeFirst(p1_, x.p1);
        storeFirst(p2_, x.p2);
        storeFirst(s_, x.s);
        storeFirst(sz_, x.sz);
    }

    S16_128 prediction() const { return s_; }

    // Adapts both predictors to the quantised differences, which every pair of the vector has, and predicts the next
    // sample.
    [[gnu::always_inline]] void adapt(S16_128 difference) {
        const S16_128 p0 = {_mm_srai_epi16(addSat(difference, sz_).v, 15)};
        adaptZeros(difference);
        adaptPoles(p0);
        const S16_128 r = addSat(s_, difference), twiceR = addSat(r, r);
        // The second coefficient can be doubled, the first one cannot.
        const S16_128 first = {
            _mm_or_si128(_mm_slli_epi16(mulHi(a1_, twiceR).v, 1), _mm_srli_epi16(mulLo(a1_, twiceR).v, 15))};
        const S16_128 second = mulHi(add(a2_, a2_), twiceR1_);
        s_ = addSat(addSat(first, second), sz_);
        twiceR1_ = twiceR;
    }

  private:
    // UPZERO, DELAYA and FILTEZ. A difference is below 2^14, so that its double does not saturate.
    [[gnu::always_inline]] void adaptZeros(S16_128 difference) {
        b14_ = adapted(b14_, d14_, difference, S16_128::splat(128));
        b56_ = adapted(b56_, d56_, difference, {_mm_setr_epi16(128, 128, 128, 128, 0, 0, 0, 0)});
        d56_ = {_mm_alignr_epi8(d56_.v, d14_.v, 12)};
        d14_ = {_mm_alignr_epi8(d14_.v, difference.v, 12)};
        const __m128i products14 = mulTwice(b14_, d14_).v, products56 = mulTwice(b56_, d56_).v;
        S16_128 sum = addSat({_mm_srli_si128(products56, 4)}, {products56});  // from the sixth on: each sum saturates
        sum = addSat(sum, {_mm_srli_si128(products14, 12)});
        sum = addSat(sum, {_mm_srli_si128(products14, 8)});
        sum = addSat(sum, {_mm_srli_si128(products14, 4)});
        sz_ = {_mm_shuffle_epi32(addSat(sum, {products14}).v, 0)};
    }

    // b * 255/256 rounded down, plus or minus the step: plus where the signs of difference and d agree, 0 if it is 0.
    [[gnu::always_inline]] static S16_128 adapted(S16_128 b, S16_128 d, S16_128 difference, S16_128 step) {
        const __m128i signedStep = _mm_sign_epi16(step.v, _mm_or_si128(d.v, _mm_set1_epi16(1)));
        return add(add(b, mulHi(b, S16_128::splat(-256))), {_mm_sign_epi16(signedStep, difference.v)});
    }

    // b * 2d >> 15
    [[gnu::always_inline]] static S16_128 mulTwice(S16_128 b, S16_128 d) {
        return {_mm_or_si128(_mm_slli_epi16(mulHi(b, d).v, 2), _mm_srli_epi16(mulLo(b, d).v, 14))};
    }

    // UPPOL2 and UPPOL1, for either sign of p0 while it is not known yet.
    [[gnu::always_inline]] void adaptPoles(S16_128 p0) {
        const __m128i negative = _mm_setr_epi16(0, 0, -1, -1, 0, 0, -1, -1), ones = _mm_set1_epi16(-1);
        const S16_128 same1 = {_mm_xor_si128(_mm_xor_si128(p1_.v, negative), ones)};
        const S16_128 other2 = {_mm_xor_si128(p2_.v, negative)};
        const S16_128 twice = addSat(a1_, a1_), four = addSat(twice, twice);
        const S16_128 fromA1 = {_mm_srai_epi16(negatedSat(four, same1).v, 7)};
        const S16_128 steps = add(fromA1, negated(S16_128::splat(128), other2));
        const S16_128 a2 = add(add(a2_, mulHi(a2_, S16_128::splat(-512))), steps);  // a2 * 127/128
        const S16_128 limitedA2 = min(max(a2, S16_128::splat(-12288)), S16_128::splat(12288));
        const S16_128 limit = sub(S16_128::splat(15360), limitedA2);
        const S16_128 a1 = add(add(a1_, mulHi(a1_, S16_128::splat(-256))), negated(S16_128::splat(-192), same1));
        const S16_128 limitedA1 = min(max(a1, sub(S16_128::splat(0), limit)), limit);
        a1_ = chosen(limitedA1, p0);
        a2_ = chosen(limitedA2, p0);
        p2_ = p1_;
        p1_ = p0;
    }

    // -a where the mask is -1
    [[gnu::always_inline]] static S16_128 negated(S16_128 a, S16_128 mask) {
        return sub({_mm_xor_si128(a.v, mask.v)}, mask);
    }
    [[gnu::always_inline]] static S16_128 negatedSat(S16_128 a, S16_128 mask) {
        return subSat({_mm_xor_si128(a.v, mask.v)}, mask);
    }

    // The first pair where the mask is 0, the second one where it is -1, in every pair.
    [[gnu::always_inline]] static S16_128 chosen(S16_128 pairs, S16_128 mask) {
        return {_mm_blendv_epi8(_mm_shuffle_epi32(pairs.v, 0), _mm_shuffle_epi32(pairs.v, 0x55), mask.v)};
    }

    S16_128 b14_, b56_, d14_, d56_, a1_, a2_, twiceR1_, p1_, p2_, s_, sz_;
};

}  // namespace vsp::VSP_LEVEL
