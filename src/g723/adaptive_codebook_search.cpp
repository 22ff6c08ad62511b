// The search of the adaptive codebook with its five-tap gains (G.723.1 2.14, `Find_Acbk`).
#include "core/checks.h"
#include "g723/convolution.h"
#include "g723/correlations.h"
#include "g723/exports.h"
#include "g723/pitch_gains.h"
#include "g723/residual.h"
#include "vector/nearest.h"
#include "vector/signs.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kLen = 60, kPadded = 64, kTaps = 5, kValues = 20, kMostLags = 4;

// A vector of a subframe, zeros behind it, and its energy.
struct Filtered {
    alignas(64) Vsp16s samples[kPadded];
    Vsp64s squares;

    void measure() {
        for (int i = kLen; i < kPadded; i++) samples[i] = 0;
        squares = energy(samples, kPadded);
    }
};

// The sum of single products, saturated at every step.
Vsp32s singleProducts(const Filtered& a, const Filtered& b) {
    if (doubledSumsFit(a.squares, b.squares)) return Vsp32s(dot(a.samples, b.samples, kPadded));
    Vsp32s sum = 0;
    for (int i = 0; i < kLen; i++) sum = Add_32s(sum, Mul2_16s32s(a.samples[i], b.samples[i]) >> 1);
    return sum;
}

// The last tap's residual through the impulse response.
void filterLast(const Vsp16s* residual, const PaddedResponse& h, Vsp16s* filtered) {
    if (doubledSumsFit(energy(residual, kLen), h.squares)) {
        Vsp32s sums[kLen];
        h.convolve(residual, sums);
        for (int i = 0; i < kLen; i++) filtered[i] = sat_16s((sums[i] + 0x4000) >> 15);
        return;
    }
    for (int n = 0; n < kLen; n++) {
        Vsp32s sum = 0;
        for (int j = 0; j <= n; j++) sum = mac_32s(sum, residual[j], h.response()[n - j]);
        filtered[n] = round_32s(sum);
    }
}

// The vector of a tap from that of the next one: one sample later, with the residual's sample before it.
void filterNext(const Vsp16s* next, Vsp16s sample, const PaddedResponse& h, Vsp16s* filtered) {
    Vsp16s shifted[kPadded];
    shifted[0] = 0;
    for (int i = 1; i < kPadded; i++) shifted[i] = next[i - 1];
    const S16 x = S16::splat(sample);
    for (int i = 0; i < kPadded; i += S16::width)
        addSat(S16::load(shifted + i), mulRoundWrap(S16::load(h.response() + i), x)).store(filtered + i);
    if (sample == kMin16)  // whose product with itself is the exception
        for (int i = 1; i < kLen; i++) filtered[i] = round_32s(mac_32s(next[i - 1] * 65536, sample, h.response()[i]));
    filtered[0] = mulRound_16s(sample, 0x2000);
}

// Correlations of a lag: with the target, energies, and of one tap's vector with another.
void correlateLag(const Filtered& target, const PaddedResponse& h, const Vsp16s* past, int lag, Vsp32s* values) {
    Vsp16s residual[kResidual];
    repeatExcitation(past, lag, residual);
    Filtered f[kTaps];
    filterLast(residual + kTaps - 1, h, f[kTaps - 1].samples);
    f[kTaps - 1].measure();
    for (int i = kTaps - 2; i >= 0; i--) {
        filterNext(f[i + 1].samples, residual[i], h, f[i].samples);
        f[i].measure();
    }
    for (int i = 0; i < kTaps; i++) {
        values[i] = Mul2_32s(singleProducts(target, f[i]));
        values[kTaps + i] = Cnvrt_64s32s(2 * f[i].squares);
    }
    Vsp32s* crosses = values + 2 * kTaps;
    for (int i = 1; i < kTaps; i++)
        for (int j = 0; j < i; j++) *crosses++ = Mul4_32s(singleProducts(f[i], f[j]));
}

// The correlations of one lag, which are weighed with the factors of an entry of a codebook: the sum of 20 products,
// saturated at every step.
class LagCorrelations {
  public:
    [[gnu::always_inline]] explicit LagCorrelations(const Vsp16s* corr) {
        for (int p = 0; p < kPairs; p++) pairs_[p] = splatPair<S16>(corr + 2 * p);
        Vsp64s most = 0;
        for (int i = 0; i < kValues; i++) most += (corr[i] < 0 ? -corr[i] : corr[i]) * g723::largestPitchGains[i];
        fits_ = most <= kMax32;
    }

    // As many entries as a vector has, from one on.
    template <int kEntries>
    [[gnu::always_inline]] S32 weigh(const g723::PitchGains<kEntries>& codebook, int first) const {
        S32 sum = S32::splat(0);
        for (int p = 0; p < kPairs; p++) sum = add(sum, dot2(S16::load(codebook.factors[p][first]), pairs_[p]));
        if (!fits_ && mayOverflow(codebook, first)) return weighSaturating(codebook, first);
        return sum;
    }

  private:
    static constexpr int kPairs = kValues / 2;

    // Whether the magnitudes add up to more than 31 bits; as -32768 counts one less, with a little more.
    template <int kEntries>
    [[gnu::always_inline]] bool mayOverflow(const g723::PitchGains<kEntries>& codebook, int first) const {
        const auto positive = [](S16 a) { return max(a, subSat(S16::splat(0), a)); };
        S32 most = S32::splat(1 << 17);
        for (int p = 0; p < kPairs; p++)
            most = add(most, dot2(positive(S16::load(codebook.factors[p][first])), positive(pairs_[p])));
        return anyNegative(most);
    }

    template <int kEntries>
    [[gnu::noinline]] S32 weighSaturating(const g723::PitchGains<kEntries>& codebook, int first) const {
        const S32 lower = S32::splat(0xFFFF), upper = S32::splat(-0x10000);
        S32 sum = S32::splat(0);
        for (int p = 0; p < kPairs; p++) {
            const S16 factors = S16::load(codebook.factors[p][first]);
            sum = addSat32(sum, dot2(factors, S16{pairs_[p].v & lower.v}));
            sum = addSat32(sum, dot2(factors, S16{pairs_[p].v & upper.v}));
        }
        return sum;
    }

    S16 pairs_[kPairs];
    bool fits_;
};

// Offers the first entries of a codebook by their negative sums.
template <int kEntries>
VSP_INLINE void offerEntries(const g723::PitchGains<kEntries>& codebook, const Vsp16s* corr, int entries, int firstIndex,
                             Smallest& best) {
    const LagCorrelations correlations(corr);
    Vsp32s numbers[2 * S32::width];
    for (int i = 0; i < 2 * S32::width; i++) numbers[i] = i;
    const S32 zero = S32::splat(0), end = S32::splat(entries), base = S32::splat(firstIndex);
    const S32 lowest = S32::splat(-kMax32);
    for (int i = 0; i < entries; i += 2 * S32::width) {
        const auto value = [&](int first) { return sub(zero, max(correlations.weigh(codebook, first), lowest)); };
        const S32 lo = add(S32::load(numbers), S32::splat(i)), hi = add(S32::load(numbers + S32::width), S32::splat(i));
        best.offer(whereGreater(end, lo, value(i), zero), whereGreater(end, hi, value(i + S32::width), zero), add(lo, base),
                   add(hi, base));
    }
}

struct Choice {
    int lag, entry;
};

constexpr int kIndicesPerLag = 256;

class GainSearch {
  public:
    GainSearch(const Vsp16s* corr, Vsp16s lag, Vsp32s subframe, Vsp16s taming, Vsp32s rate)
        : corr_(corr), lag_(lag), subframe_(subframe), taming_(taming), rate_(rate) {}

    Choice run() const {
        Smallest best(0);  // only what is positive is taken; the indices begin with 1
        for (int k = 0; k < g723::triedLags(subframe_); k++) {
            const Vsp16s* const corr = corr_ + k * kValues;
            if (isShort(k))
                offerEntries(g723::pitchGains85, corr, entries(k), k * kIndicesPerLag + 1, best);
            else
                offerEntries(g723::pitchGains170, corr, entries(k), k * kIndicesPerLag + 1, best);
        }
        const int index = best.index();
        if (index == 0) return {1, 0};
        return {(index - 1) / kIndicesPerLag, (index - 1) % kIndicesPerLag};
    }

  private:
    bool isShort(int k) const { return g723::usesShortCodebook(rate_, g723::isEven(subframe_) ? lag_ - 1 + k : lag_); }
    int entries(int k) const {
        const int limit = isShort(k) ? 51 + 4 * taming_ : 93 + 8 * taming_;
        const int all = isShort(k) ? g723::kShortCodebook : g723::kLongCodebook;
        return limit < all ? limit : all;
    }

    const Vsp16s* corr_;
    int lag_, subframe_, taming_, rate_;
};

}  // namespace

VspStatus vspsAdaptiveCodebookCorr_G723_16s(const Vsp16s* pTarget, const Vsp16s* pImpulse, const Vsp16s* pPastExc,
                                            Vsp16s lag, Vsp32s subframe, Vsp16s* pDst) {
    if (anyNull(pTarget, pImpulse, pPastExc, pDst)) return vspStsNullPtrErr;
    if (subframe < 0 || subframe > 3) return vspStsRangeErr;
    if (!g723::isSearchedLag(lag, subframe)) return vspStsRangeErr;
    Filtered target;
    for (int i = 0; i < kLen; i++) target.samples[i] = pTarget[i];
    target.measure();
    const PaddedResponse h(pImpulse);
    Vsp32s values[kMostLags * kValues];
    const int lags = g723::triedLags(subframe);
    for (int k = 0; k < lags; k++) correlateLag(target, h, pPastExc, lag - 1 + k, values + k * kValues);
    normaliseTogether(values, lags * kValues, pDst);
    return vspStsNoErr;
}

VspStatus vspsGainQuant_G723_16s(const Vsp16s* pCorr, Vsp16s lag, Vsp32s subframe, Vsp16s taming, Vsp32s rate,
                                 Vsp16s* pOffset, Vsp16s* pIndex) {
    if (anyNull(pCorr, pOffset, pIndex)) return vspStsNullPtrErr;
    if (!g723::isRate(rate)) return vspStsBadArgErr;
    if (subframe < 0 || subframe > 3) return vspStsRangeErr;
    if (!g723::isSearchedLag(lag, subframe)) return vspStsRangeErr;
    if (taming < 0 || taming > 255) return vspStsRangeErr;
    const Choice best = GainSearch(pCorr, lag, subframe, taming, rate).run();
    *pOffset = Vsp16s(best.lag);
    *pIndex = Vsp16s(best.entry);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
