// Hybrid windows of the backward adaptation and the autocorrelation behind them (G.728 blocks 36, 43 and 49).
#include "core/checks.h"
#include "g728/block_float.h"
#include "g728/exports.h"
#include "g728/tables.h"
#include "vector/correlate.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

using namespace g728;

namespace {

struct Shape {
    Vsp32s order, nonRecursive, block, decay;  // the recursive part is multiplied by 1 - 2^-decay with each block
    const Vsp16s* window;
    constexpr int samples() const { return order + nonRecursive + block; }
    constexpr int vectors() const { return (samples() + kVector - 1) / kVector; }
};
constexpr Shape kSynthesis{50, 35, 20, 2, kSynthesisWindow}, kWeighting{10, 30, 20, 1, kWeightingWindow},
    kLogGain{10, 20, 4, 2, kLogGainWindow};

// Behind it the recursive parts, order + 1, the samples, and of each vector of these its scale.
struct Header {
    Vsp32s order, nonRecursive, block, scale;
};

constexpr Vsp32s stateBytes(const Shape& s) {
    const int bytes = int(sizeof(Header)) + 2 * (s.order + 1 + s.samples() + s.vectors());
    return (bytes + 15) / 16 * 16;
}
static_assert(stateBytes(kSynthesis) == 384 && stateBytes(kWeighting) == 192 && stateBytes(kLogGain) == 128);

const Shape* find(Vsp32s order, Vsp32s nonRecursive, Vsp32s block) {
    static constexpr const Shape* kShapes[] = {&kSynthesis, &kWeighting, &kLogGain};
    for (const Shape* s : kShapes)
        if (order == s->order && nonRecursive == s->nonRecursive && block == s->block) return s;
    return nullptr;
}

VspStatus check(Vsp32s order, Vsp32s nonRecursive, Vsp32s block) {
    if (nonRecursive < 1 || block < 1) return vspStsSizeErr;
    return find(order, nonRecursive, block) == nullptr ? vspStsRangeErr : vspStsNoErr;
}

struct State {
    Header* header;
    Vsp16s *recursive, *samples, *scales;
    State(void* memory, const Shape& s)
        : header(static_cast<Header*>(memory)),
          recursive(reinterpret_cast<Vsp16s*>(header + 1)),
          samples(recursive + s.order + 1),
          scales(samples + s.samples()) {}
};

// Shifts of sums, which have 32 bits unless the samples are too large together.
VSP_INLINE Vsp32s lower(Vsp32s x, Vsp64s n) { return x >> (n < 31 ? n : 31); }
VSP_INLINE Vsp64s lower(Vsp64s x, Vsp64s n) { return shiftRight(x, n); }
VSP_INLINE Vsp32s raised(Vsp32s x, int n) {
    const Vsp32s product = Vsp32s(Vsp32u(x) << n);
    return product >> n == x ? product : x < 0 ? kMin32 : kMax32;
}
VSP_INLINE Vsp32s raised(Vsp64s x, int n) { return shift_32s(x, n); }

// Times 2^n, clipped to 32 bits.
template <class Sum>
VSP_INLINE Vsp32s shifted(Sum x, int n) {
    return raised(lower(x, n < 0 ? -n : 0), n < 0 ? 0 : n);
}

VSP_INLINE Vsp16s rounded(Vsp32s x) {
    const Vsp32s high = (x >> 16) + (x >> 15 & 1);
    return Vsp16s(high < kMax16 ? high : kMax16);
}

// From the sums of products with the samples so far earlier, lag after lag: of those that enter the recursive part, and of
// the newest ones.
template <const Shape& s, class Sum>
VspStatus adapt(const Sum* ofRecursive, const Sum* ofNewest, int q, const State& state, Vsp16s* dst) {
    constexpr Vsp32s kFactor = 0x10000 - (0x10000 >> s.decay);
    const Vsp64s level = 2 * q;
    Vsp64s scale = state.header->scale;
    const Vsp64s past = 1 + (scale > level ? scale - level : 0), present = 1 + (scale < level ? level - scale : 0);
    scale = scale > level ? level : scale;

    Vsp16s recursive[s.order + 1], r[s.order + 1];
    Sum sums[s.order + 1];
    for (int lag = 0; lag <= s.order; lag++)
        sums[lag] = lower(state.recursive[lag] * kFactor, past) + lower(ofRecursive[lag], present);
    const int recursiveShift = norm(sums[0], 32);
    scale += recursiveShift - 1;
    for (int lag = 0; lag <= s.order; lag++) recursive[lag] = rounded(shifted(sums[lag], recursiveShift));

    const Vsp64s old = 1 + (scale > level ? scale - level : 0), now = 1 + (scale < level ? level - scale : 0);
    for (int lag = 0; lag <= s.order; lag++) sums[lag] = lower(recursive[lag] * 0x10000, old) + lower(ofNewest[lag], now);
    const Vsp64s energy = sums[0] + Vsp64s(sums[0] >> 8);  // white noise 24 dB below
    const int shift = norm(energy, 32);
    for (int lag = 1; lag <= s.order; lag++) r[lag] = rounded(shifted(sums[lag], shift));
    r[0] = Vsp16s(roundHigh(shiftExact(energy, shift)));

    for (int lag = 0; lag <= s.order; lag++) {
        state.recursive[lag] = recursive[lag];
        dst[lag] = r[lag];
    }
    if (&s == &kWeighting && scale > 41) scale = 41;
    state.header->scale = Vsp32s(scale);
    return shifted(sums[s.order], shift) == 0 ? vspStsWinHybridWarn : vspStsNoErr;
}

// Windowed samples, the newest first, and zeros behind.
template <const Shape& s>
struct Windowed {
    static constexpr int kLags = (s.order + Sliding16::width) / Sliding16::width * Sliding16::width;
    static constexpr int kLength = s.nonRecursive + s.block + kLags;
    Vsp16s w[kLength];

    Windowed() {
        for (int i = s.samples(); i < kLength; i++) w[i] = 0;
    }
    VspStatus correlate(int q, const State& state, Vsp16s* dst) const {
        const Vsp16s* const recursive = w + s.nonRecursive;
        if (energy(w, s.samples()) <= kMax32) {  // and so is every sum
            Vsp32s ofRecursive[kLags], ofNewest[kLags];
            VSP_LEVEL::correlate(recursive, s.block, recursive, ofRecursive, kLags);
            VSP_LEVEL::correlate(w, s.nonRecursive, w, ofNewest, kLags);
            return adapt<s>(ofRecursive, ofNewest, q, state, dst);
        }
        Vsp64s ofRecursive[kLags], ofNewest[kLags];
        for (int lag = 0; lag <= s.order; lag++) {
            ofRecursive[lag] = dot(recursive, recursive + lag, s.block);
            ofNewest[lag] = dot(w, w + lag, s.nonRecursive);
        }
        return adapt<s>(ofRecursive, ofNewest, q, state, dst);
    }
};

// The samples with a new block behind them; returned the newest first.
template <const Shape& s>
VSP_INLINE void take(const Vsp16s* src, const State& state, Vsp16s* newestFirst) {
    constexpr int kSamples = s.samples(), kKept = kSamples - s.block;
    Vsp16s samples[kSamples];
    for (int i = 0; i < kKept; i++) samples[i] = state.samples[i + s.block];
    for (int i = 0; i < s.block; i++) samples[kKept + i] = src[i];
    for (int i = 0; i < kSamples; i++) state.samples[i] = samples[i];
    for (int i = 0; i < kSamples; i++) newestFirst[i] = samples[kSamples - 1 - i];
}

template <const Shape& s>
VspStatus windowSamples(const Vsp16s* src, Vsp16s* dst, const State& state) {
    constexpr int kSamples = s.samples();
    Windowed<s> windowed;
    Vsp16s x[kSamples];
    take<s>(src, state, x);
    for (int i = 0; i < kSamples; i++) windowed.w[i] = x[i];
    const int shift = normalise(windowed.w, kSamples, 15);
    if (shift < 0)
        for (int i = 0; i < kSamples; i++) windowed.w[i] = Vsp16s(((x[i] * s.window[i] >> -shift) + 0x8000) >> 16);
    else
        for (int i = 0; i < kSamples; i++) windowed.w[i] = Vsp16s((x[i] * s.window[i] * (1 << shift) + 0x8000) >> 16);
    return windowed.correlate(shift, state, dst);
}

// The samples with a new block behind them, windowed, vector after vector on the way to the smallest scale; the newest
// first.
#if defined(__AVX512BW__)
struct Scales {
    Vsp16s of[kSynthesis.samples()];  // the scale of each sample
};
constexpr Scales scalesOfSamples() {
    Scales scales{};
    for (int i = 0; i < kSynthesis.samples(); i++) scales.of[i] = Vsp16s(kSynthesis.vectors() - 1 - i / kVector);
    return scales;
}
constexpr Scales kScales = scalesOfSamples();

void takeWindowed(const Vsp16s* src, const Vsp16s* scales, int least, const State& state, Vsp16s* windowed) {
    constexpr const Shape& s = kSynthesis;
    constexpr int kWidth = S16_256::width, kKept = s.samples() - s.block;
    constexpr int kPlaces[] = {0, 16, 32, 48, 64, kKept - kWidth, kKept, s.samples() - kWidth}, kBlocks = 8;
    S16_256 samples[kBlocks];
    for (int i = 0; i < kBlocks; i++)
        samples[i] = S16_256::load(kPlaces[i] < kKept ? state.samples + s.block + kPlaces[i] : src + kPlaces[i] - kKept);
    const __m512i all = _mm512_maskz_loadu_epi16((1U << s.vectors()) - 1, scales);
    const __m512i differences =
        _mm512_min_epu16(_mm512_sub_epi16(all, _mm512_set1_epi16(Vsp16s(least))), _mm512_set1_epi16(31));
    for (int i = 0; i < kBlocks; i++) {
        samples[i].store(state.samples + kPlaces[i]);
        const int at = s.samples() - kWidth - kPlaces[i];
        const __m256i which = S16_256::load(kScales.of + at).v;
        const __m256i shifts = _mm512_castsi512_si256(_mm512_permutexvar_epi16(_mm512_castsi256_si512(which), differences));
        const S32_512 x{_mm512_cvtepi16_epi32(reversed(samples[i]).v)},
            weight{_mm512_cvtepi16_epi32(S16_256::load(s.window + at).v)};
        const S32_512 product = mulLo(x, weight),
                      shifted{_mm512_srav_epi32(add(product, product).v, _mm512_cvtepi16_epi32(shifts))};
        S16_256{_mm512_cvtepi32_epi16(shr(add(shifted, S32_512::splat(0x8000)), 16).v)}.store(windowed + at);
    }
}
#else
void takeWindowed(const Vsp16s* src, const Vsp16s* scales, int least, const State& state, Vsp16s* windowed) {
    constexpr const Shape& s = kSynthesis;
    constexpr int kVectors = s.vectors();
    Vsp16s x[s.samples()];
    take<s>(src, state, x);
    const auto shift = [&](int v) {
        const int difference = scales[kVectors - 1 - v] - least;
        return difference < 31 ? difference : 31;
    };
    for (int v = 0; v < kVectors - 1; v++) {  // and three samples of the next one
        const S16_128 sample = S16_128::load(x + kVector * v), weight = S16_128::load(s.window + kVector * v);
        const S16_128 low = mulLo(sample, weight), high = mulHi(sample, weight);
        const auto windowedBy = [n = shift(v)](S32_128 product) {
            return shr(add(shr(add(product, product), n), S32_128::splat(0x8000)), 16);
        };
        packSat(windowedBy(zipLo(low, high)), windowedBy(zipHi(low, high))).store(windowed + kVector * v);
    }
    for (int i = kVector * (kVectors - 1); i < s.samples(); i++)
        windowed[i] = Vsp16s(((x[i] * s.window[i] * 2 >> shift(kVectors - 1)) + 0x8000) >> 16);
}
#endif

}  // namespace

VspStatus vspsWinHybridGetStateSize_G728_16s(Vsp32s order, Vsp32s nonRec, Vsp32s block, Vsp32s* pSize) {
    if (anyNull(pSize)) return vspStsNullPtrErr;
    if (const VspStatus status = check(order, nonRec, block); status != vspStsNoErr) return status;
    *pSize = stateBytes(*find(order, nonRec, block));
    return vspStsNoErr;
}

VspStatus vspsWinHybridInit_G728_16s(Vsp32s order, Vsp32s nonRec, Vsp32s block, void* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    if (const VspStatus status = check(order, nonRec, block); status != vspStsNoErr) return status;
    const Shape& s = *find(order, nonRec, block);
    const State state(pState, s);
    *state.header = {order, nonRec, block, 31};
    for (int i = 0; i <= s.order; i++) state.recursive[i] = 0;
    for (int i = 0; i < s.samples(); i++) state.samples[i] = 0;
    for (int i = 0; i < s.vectors(); i++) state.scales[i] = 16;
    return vspStsNoErr;
}

VspStatus vspsWinHybrid_G728_16s(const Vsp16s* pSrc, Vsp16s* pDst, void* pState) {
    if (anyNull(pSrc, pDst, pState)) return vspStsNullPtrErr;
    const Header& header = *static_cast<const Header*>(pState);
    const Shape* const found = find(header.order, header.nonRecursive, header.block);
    return found == &kWeighting ? windowSamples<kWeighting>(pSrc, pDst, State(pState, kWeighting))
                                : windowSamples<kLogGain>(pSrc, pDst, State(pState, kLogGain));
}

VspStatus vspsWinHybridBlock_G728_16s(const Vsp16s* pSrc, const Vsp16s* pScale, Vsp16s* pDst, void* pState) {
    if (anyNull(pSrc, pScale, pDst, pState)) return vspStsNullPtrErr;
    constexpr const Shape& s = kSynthesis;
    constexpr int kVectors = s.vectors(), kNew = s.block / kVector;
    const State state(pState, s);
    Vsp16s scales[kVectors];
    for (int i = 0; i < kVectors - kNew; i++) scales[i] = state.scales[i + kNew];
    for (int i = 0; i < kNew; i++) scales[kVectors - kNew + i] = pScale[i];
    for (int i = 0; i < kVectors; i++) state.scales[i] = scales[i];
    int least = scales[0];
    for (int i = 1; i < kVectors; i++) least = scales[i] < least ? scales[i] : least;
    Windowed<s> windowed;
    takeWindowed(pSrc, scales, least, state, windowed.w);
    return windowed.correlate(least, state, pDst);
}

}  // namespace vsp::VSP_LEVEL
