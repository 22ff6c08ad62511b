// The 2100 Hz answer tone with phase reversals (ITU-T G.168, V.25): a resonator whose output power is compared with that of
// the input. A reversal makes the output collapse for a moment.
#include "arithmetic/basic_ops.h"
#include "core/checks.h"
#include "ec/align.h"
#include "ec/exports.h"
#include "ec/tables.h"
#include "ec/tone_detect_state.h"
#include "vector/for_blocks.h"
#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr ToneCounts initialCounts(Vsp32s rate) { return {0, rate / 1000 * 413, rate / 1000 * 466, 0, rate / 100 * 2, 0}; }

constexpr bool supported(Vsp32s rate) { return rate == 8000 || rate == 16000; }

// The signal is taken in blocks, and these in groups: the recursions run sample by sample, what they give is classified a
// group at a time, and then the stretches of samples of the same class are counted.
constexpr int kBlock = 32, kGroup = 4;

// One bit for each sample of a block: the tone is there; it is low; so low that a tone before it may have been reversed.
struct Classes {
    Vsp32u tone = 0, low = 0, deep = 0;
};

VSP_INLINE int lowestOne(Vsp32u bits) { return bits == 0 ? kBlock : __builtin_ctz(bits); }

// Counts some samples at which the tone is low. Tells whether a second or later reversal is among them.
VSP_INLINE bool countLow(ToneCounts& c, int samples, Vsp32u deep) {
    const Vsp32s untilCleared = c.maxDip - c.dip;
    const Vsp32s reversal = c.minRun < c.run && c.run < c.maxRun ? lowestOne(deep) : kBlock;
    bool flag = false;
    if (reversal < samples && reversal <= untilCleared) {
        flag = c.reversals >= 1;
        c.reversals = Add_32s(c.reversals, 1);
        c.run = 0;
    }
    c.dip += samples;
    if (samples > untilCleared) {
        c.reversals = c.run = 0;
        c.dip = samples - 1 - untilCleared;
    }
    return flag;
}

// Counts the first samples of a block, stretch by stretch.
VSP_INLINE bool countSamples(ToneCounts& c, const Classes& classes, int samples) {
    bool flag = false;
    for (int i = 0; i < samples;) {
        const Vsp32u tone = classes.tone >> i, low = classes.low >> i;
        const Vsp32u same = (tone & 1) != 0 ? tone : (low & 1) != 0 ? low : ~(tone | low);
        const int end = lowestOne(~same), stretch = end < samples - i ? end : samples - i;
        if ((tone & 1) != 0) {
            c.run = Add_32s(c.run, stretch);
            c.dip = 0;
        } else if ((low & 1) != 0) {
            flag |= countLow(c, stretch, classes.deep >> i);
        } else {
            c.run = c.dip = 0;
        }
        i += stretch;
    }
    return flag;
}

// A resonator and the powers of its input and output, in the registers of a call. filter() takes up to four samples, of
// which four can be read.
class Resonator_32f {
  public:
    explicit Resonator_32f(const ToneDetectState_32f& s)
        : c0_(s.coeffs[0]),
          c1_(s.coeffs[1]),
          c2_(s.coeffs[2]),
          c3_(s.coeffs[3]),
          alpha_(s.alpha),
          beta_(1 - s.alpha),
          x1_(s.x1),
          x2_(s.x2),
          y1_(s.y1),
          y2_(s.y2),
          powerIn_(s.powerIn),
          powerOut_(s.powerOut) {}

    [[gnu::always_inline]] void keep(ToneDetectState_32f& s) const {
        s.x1 = x1_;
        s.x2 = x2_;
        s.y1 = y1_;
        s.y2 = y2_;
        s.powerIn = powerIn_;
        s.powerOut = powerOut_;
    }

    [[gnu::always_inline]] Classes filter(const Vsp32f* x, int samples) {
        Vsp32f in[kGroup] = {}, out[kGroup] = {};
        for (int i = 0; i < samples; i++) {
            const Vsp32f y = c0_ * x[i] + c1_ * x2_ - c2_ * y1_ - c3_ * y2_;
            x2_ = x1_;
            x1_ = x[i];
            y2_ = y1_;
            y1_ = y;
            in[i] = powerIn_ = alpha_ * powerIn_ + beta_ * (x[i] * x[i]);
            out[i] = powerOut_ = alpha_ * powerOut_ + beta_ * (y * y);
        }
        return classify(vectorOf(in), vectorOf(out));
    }

  private:
    [[gnu::always_inline]] static Classes classify(F32_128 in, F32_128 out) {
        const FourDoubles wideIn = toDouble(in), wideOut = toDouble(out);
        const auto part = [wideIn](Vsp64f factor) { return mul(FourDoubles::splat(factor), wideIn); };
        Classes c;
        c.tone = greater(wideOut, part(0.8)) & greater(mul(F32_128::splat(10000), in), out);
        c.low = greater(wideOut, part(0.0008)) & greater(in, out) & ~c.tone;
        c.deep = greater(part(0.48), wideOut);
        return c;
    }

    const Vsp32f c0_, c1_, c2_, c3_, alpha_, beta_;
    Vsp32f x1_, x2_, y1_, y2_, powerIn_, powerOut_;
};

class Resonator_16s {
  public:
    explicit Resonator_16s(const ToneDetectState_16s& s)
        : c0_(s.coeffs[0]),
          c2_(s.coeffs[2]),
          c3_(s.coeffs[3]),
          alpha_(S64_128::splat(s.alpha)),
          beta_(S64_128::splat(16384 - s.alpha)),
          x1_(s.x1),
          x2_(s.x2),
          y1_(s.y1),
          y2_(s.y2),
          powers_{_mm_set_epi64x(s.powerOut, s.powerIn)} {}

    [[gnu::always_inline]] void keep(ToneDetectState_16s& s) const {
        s.x1 = Vsp16s(x1_);
        s.x2 = Vsp16s(x2_);
        s.y1 = Vsp16s(y1_);
        s.y2 = Vsp16s(y2_);
        s.powerIn = Vsp32s(powers_.v[0]);
        s.powerOut = Vsp32s(powers_.v[1]);
    }

    [[gnu::always_inline]] Classes filter(const Vsp16s* x, int samples) {
        Vsp32s y[kGroup] = {};
        for (int i = 0; i < samples; i++) {
            y[i] = (c0_ * (x[i] - x2_) + 2048 - c3_ * y2_ - c2_ * y1_) >> 12;  // c1 is -c0
            if (y[i] != Vsp16s(y[i])) [[unlikely]]
                y[i] = sat_16s(y[i]);
            x2_ = x1_;
            x1_ = x[i];
            y2_ = y1_;
            y1_ = y[i];
        }
        const S32_128 wideX = loadFour(x), wideY = vectorOf(y), xx = mulLo(wideX, wideX), yy = mulLo(wideY, wideY);
        const S64_128 evenX = mulLo(S64_128{xx.v}, beta_), oddX = mulLo(shrU(S64_128{xx.v}, 32), beta_);
        const S64_128 evenY = mulLo(S64_128{yy.v}, beta_), oddY = mulLo(shrU(S64_128{yy.v}, 32), beta_);
        S64_128 p[kGroup] = {zipLo(evenX, evenY), zipLo(oddX, oddY), zipHi(evenX, evenY), zipHi(oddX, oddY)};
        for (int i = 0; i < samples; i++) p[i] = powers_ = shrU(add(p[i], mulLo(powers_, alpha_)), 14);
        const auto four = [&p](auto zip) {
            const auto two = [&](int i) { return S64_128{zip(S32_128{p[i].v}, S32_128{p[i + 1].v}).v}; };
            return toDouble(S32_128{zipLo(two(0), two(2)).v});
        };
        return classify(four([](S32_128 a, S32_128 b) { return zipLo(a, b); }),
                        four([](S32_128 a, S32_128 b) { return zipHi(a, b); }));
    }

  private:
    // Products of the powers and the Q14 factors are exact.
    [[gnu::always_inline]] static Classes classify(FourDoubles in, FourDoubles out) {
        const auto part = [in](Vsp32s factor) { return mul(FourDoubles::splat(factor / 16384.0), in); };
        Classes c;
        c.tone = greater(out, part(13107));  // out > (13107 in) >> 14
        c.low = ~c.tone & 0xF;
        c.deep = ~greater(add(out, FourDoubles::splat(1)), part(7864)) & 0xF;  // out < (7864 in) >> 14
        return c;
    }

    const Vsp32s c0_, c2_, c3_;
    const S64_128 alpha_, beta_;
    Vsp32s x1_, x2_, y1_, y2_;
    S64_128 powers_;  // of input and output
};

template <class Resonator, class State, class T>
bool detect(State& s, const T* src, Vsp32s len) {
    Resonator resonator(s);
    bool flag = false;
    forBlocks(len, kBlock, [&](Vsp32s n, Vsp32s count) {
        const int whole = count & -kGroup;
        Classes block;
        const auto addGroup = [&](int i, const T* x, int samples) {
            const Classes group = resonator.filter(x, samples);
            block.tone |= group.tone << i;
            block.low |= group.low << i;
            block.deep |= group.deep << i;
        };
        for (int i = 0; i < whole; i += kGroup) addGroup(i, src + n + i, kGroup);
        if (whole < count) {
            T rest[kGroup] = {};
            for (int i = whole; i < count; i++) rest[i - whole] = src[n + i];
            addGroup(whole, rest, count - whole);
        }
        flag |= countSamples(s.counts, block, count);
    });
    resonator.keep(s);
    return flag;
}

}  // namespace

VspStatus vspsToneDetectGetStateSize_EC_32f(Vsp32s rate, Vsp32s* pSize) {
    if (anyNull(pSize)) return vspStsNullPtrErr;
    if (!supported(rate)) return vspStsRangeErr;
    *pSize = sizeof(ToneDetectState_32f) + kAlignment;
    return vspStsNoErr;
}

VspStatus vspsToneDetectGetStateSize_EC_16s(Vsp32s rate, Vsp32s* pSize) {
    if (anyNull(pSize)) return vspStsNullPtrErr;
    if (!supported(rate)) return vspStsRangeErr;
    *pSize = sizeof(ToneDetectState_16s) + kAlignment;
    return vspStsNoErr;
}

VspStatus vspsToneDetectInit_EC_32f(VspToneDetectState_EC_32f* pState, Vsp32s rate) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    if (!supported(rate)) return vspStsRangeErr;
    ToneDetectState_32f& s = *aligned<ToneDetectState_32f>(pState);
    s = {};
    s.coeffs = rate == 8000 ? td_iir_coeffs_8_32f : td_iir_coeffs_16_32f;
    s.alpha = rate == 8000 ? 0.96f : 0.92f;
    s.counts = initialCounts(rate);
    return vspStsNoErr;
}

VspStatus vspsToneDetectInit_EC_16s(VspToneDetectState_EC_16s* pState, Vsp32s rate) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    if (!supported(rate)) return vspStsRangeErr;
    ToneDetectState_16s& s = *aligned<ToneDetectState_16s>(pState);
    s = {};
    s.coeffs = rate == 8000 ? td_iir_coeffs_8_16s : td_iir_coeffs_16_16s;
    s.alpha = rate == 8000 ? 15728 : 15073;
    s.counts = initialCounts(rate);
    return vspStsNoErr;
}

VspStatus vspsToneDetect_EC_32f(const Vsp32f* pSrc, Vsp32s len, Vsp32s* pFlag, VspToneDetectState_EC_32f* pState) {
    if (anyNull(pSrc, pFlag, pState)) return vspStsNullPtrErr;
    if (len < 1) return vspStsBadArgErr;
    *pFlag = detect<Resonator_32f>(*aligned<ToneDetectState_32f>(pState), pSrc, len);
    return vspStsNoErr;
}

VspStatus vspsToneDetect_EC_16s(const Vsp16s* pSrc, Vsp32s len, Vsp32s* pFlag, VspToneDetectState_EC_16s* pState) {
    if (anyNull(pSrc, pFlag, pState)) return vspStsNullPtrErr;
    if (len < 1) return vspStsBadArgErr;
    *pFlag = detect<Resonator_16s>(*aligned<ToneDetectState_16s>(pState), pSrc, len);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
