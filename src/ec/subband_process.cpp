// The filter bank: analysis splits a signal into the bands of a uniform DFT, synthesis joins them (weighted overlap-add).
#include "arithmetic/basic_ops.h"
#include "core/checks.h"
#include "ec/align.h"
#include "ec/exports.h"
#include "ec/subband_state.h"
#include "vector/complex_vector.h"

namespace vsp::VSP_LEVEL {

namespace {

// One sample, for transforms that are shorter than a vector.
struct S16_1 {
    static constexpr int width = 1;
    Vsp16s v;
    [[gnu::always_inline]] static S16_1 splat(Vsp16s x) { return {x}; }
    [[gnu::always_inline]] static S16_1 load(const Vsp16s* p) { return {*p}; }
    [[gnu::always_inline]] void store(Vsp16s* p) const { *p = v; }
};

template <class V>
VSP_INLINE V reverse(V a) {
    return reversed(a);
}
VSP_INLINE S16_1 reverse(S16_1 a) { return a; }

// sum + x * w
template <class V>
VSP_INLINE V accumulated(V sum, V x, V w) {
    if constexpr (requires { typename V::Elem; }) {
        return add(sum, mul(x, w));
    } else {  // w in Q13; rounded and saturated: the sum goes into the rounding
        using Wide = Wide<V>;
        const V one = V::splat(1 << 13);
        const auto half = [](Wide samples, Wide factors) {
            return shr(add(dot2(V{samples.v}, V{factors.v}), Wide::splat(1 << 12)), 13);
        };
        return packSat(half(zipLo(x, sum), zipLo(w, one)), half(zipHi(x, sum), zipHi(w, one)));
    }
}
VSP_INLINE S16_1 accumulated(S16_1 sum, S16_1 x, S16_1 w) { return {sat_16s(sum.v + ((x.v * w.v + (1 << 12)) >> 13))}; }

// The same without a sum before, which would make a zero of a negative one.
template <class V>
VSP_INLINE V firstTerm(V x, V w) {
    if constexpr (requires { typename V::Elem; })
        return mul(x, w);
    else
        return accumulated(V::splat(0), x, w);
}

// Calls op.operator()<V>() with the vectors that a transform's length is a multiple of.
template <class Op>
VSP_INLINE void withVectors(const SubbandState_32f& s, Op op) {
    if (s.fftLen % Sliding32f::width == 0)
        op.template operator()<Sliding32f>();
    else
        op.template operator()<F32_1>();
}
template <class Op>
VSP_INLINE void withVectors(const SubbandState_16s& s, Op op) {
    if (s.fftLen % Sliding16::width == 0)
        op.template operator()<Sliding16>();
    else
        op.template operator()<S16_1>();
}

// Moves the line on by a frame, and folds it under the window into a transform's length.
template <class State, class Sample>
VSP_INLINE void takeFrame(const State& s, const Sample* src, Sample* folded) {
    const Vsp32s kept = s.windowLen - s.frameSize;
    __builtin_memmove(s.line, s.line + s.frameSize, unsigned(kept) * sizeof(Sample));
    __builtin_memcpy(s.line + kept, src, unsigned(s.frameSize) * sizeof(Sample));
    withVectors(s, [&s, folded]<class V>() {
        const Sample *const line = s.line, *const window = s.window;
        const Vsp32s len = s.windowLen, fftLen = s.fftLen;
        for (Vsp32s i = 0; i < fftLen; i += V::width) {
            V sum = firstTerm(V::load(line + i), V::load(window + i));
            for (Vsp32s k = i + fftLen; k < len; k += fftLen)
                sum = accumulated(sum, V::load(line + k), V::load(window + k));
            sum.store(folded + i);
        }
    });
}

// Moves the line on by a frame, adds the samples to it, again and again under the window read backwards, and gives its
// first frame.
template <class State, class Sample>
VSP_INLINE void giveFrame(const State& s, const Sample* samples, Sample* dst) {
    withVectors(s, [&s, samples]<class V>() {
        Sample* const line = s.line;
        const Sample* const window = s.window + s.windowLen - V::width;
        const Vsp32s len = s.windowLen, frameSize = s.frameSize, kept = len - frameSize, fftMask = s.fftLen - 1;
        const auto put = [=](Vsp32s k, V old) {
            accumulated(old, V::load(samples + (k & fftMask)), reverse(V::load(window - k))).store(line + k);
        };
        Vsp32s k = 0;
        for (; kept - k >= V::width; k += V::width) put(k, V::load(line + k + frameSize));
        if (k < kept) {
            Sample last[V::width] = {};
            for (Vsp32s i = 0; i < kept - k; i++) last[i] = line[k + frameSize + i];
            put(k, V::load(last));
            k += V::width;
        }
        for (; k < len; k += V::width) put(k, V::splat(0));
    });
    __builtin_memcpy(dst, s.line, unsigned(s.frameSize) * sizeof(Sample));
}

}  // namespace

VspStatus vspsSubbandAnalysis_32f32fc(const Vsp32f* pSrc, Vsp32fc* pDst, VspSubbandProcessState_32f* pState, Vsp8u* pBuf) {
    if (anyNull(pSrc, pDst, pState, pBuf)) return vspStsNullPtrErr;
    SubbandState_32f& s = *aligned<SubbandState_32f>(pState);
    Vsp32f* const u = aligned<Vsp32f>(pBuf);
    takeFrame(s, pSrc, u);
    if (ownRealFftFwd_32f(u, pDst, s.fft, reinterpret_cast<Vsp8u*>(u + s.fftLen)) != vspStsNoErr) return vspStsTransformErr;
    return vspStsNoErr;
}

VspStatus vspsSubbandAnalysis_16s32sc_Sfs(const Vsp16s* pSrc, Vsp32sc* pDst, VspSubbandProcessState_16s* pState,
                                          Vsp32s scaleFactor, Vsp8u* pBuf) {
    if (anyNull(pSrc, pDst, pState, pBuf)) return vspStsNullPtrErr;
    SubbandState_16s& s = *aligned<SubbandState_16s>(pState);
    Vsp16s* const u = aligned<Vsp16s>(pBuf);
    takeFrame(s, pSrc, u);
    Vsp8u* const work = reinterpret_cast<Vsp8u*>(u + 2 * s.fftLen);
    if (ownRealFftFwd_16s32s_Sfs(u, pDst, s.fft, scaleFactor, work) != vspStsNoErr) return vspStsTransformErr;
    return vspStsNoErr;
}

VspStatus vspsSubbandSynthesis_32fc32f(const Vsp32fc* pSrc, Vsp32f* pDst, VspSubbandProcessState_32f* pState, Vsp8u* pBuf) {
    if (anyNull(pSrc, pDst, pState, pBuf)) return vspStsNullPtrErr;
    SubbandState_32f& s = *aligned<SubbandState_32f>(pState);
    Vsp32f* const y = aligned<Vsp32f>(pBuf);
    if (ownRealFftInv_32f(pSrc, y, s.fft, reinterpret_cast<Vsp8u*>(y + s.fftLen)) != vspStsNoErr) return vspStsTransformErr;
    giveFrame(s, y, pDst);
    return vspStsNoErr;
}

VspStatus vspsSubbandSynthesis_32sc16s_Sfs(const Vsp32sc* pSrc, Vsp16s* pDst, VspSubbandProcessState_16s* pState,
                                           Vsp32s scaleFactor, Vsp8u* pBuf) {
    if (anyNull(pSrc, pDst, pState, pBuf)) return vspStsNullPtrErr;
    SubbandState_16s& s = *aligned<SubbandState_16s>(pState);
    Vsp16s* const y = aligned<Vsp16s>(pBuf);
    Vsp8u* const work = reinterpret_cast<Vsp8u*>(y + 2 * s.fftLen);
    if (ownRealFftInv_32s16s_Sfs(pSrc, y, s.fft, scaleFactor, work) != vspStsNoErr) return vspStsTransformErr;
    giveFrame(s, y, pDst);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
