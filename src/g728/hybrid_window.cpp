// Hybrid windows of the backward adaptation and the autocorrelation behind them (G.728 blocks 36, 43 and 49).
#include "common/autocorrelation.h"
#include "core/checks.h"
#include "g728/block_float.h"
#include "g728/exports.h"
#include "g728/tables.h"
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
constexpr int kMaxSamples = kSynthesis.samples(), kMaxOrder = kSynthesis.order, kMaxBlock = kSynthesis.block,
              kMaxNonRecursive = kSynthesis.nonRecursive;

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

// Sums of products of len samples of w with those up to maxLag before.
struct Correlations {
    static constexpr int kLags = wholeLagGroups(kMaxOrder + 1);
    Vsp64s sums[kLags];

    Correlations(const Vsp16s* w, int len, int maxLag, bool fits) {
        if (!fits) {
            for (int lag = 0; lag <= maxLag; lag++) sums[lag] = dot(w, w - lag, len);
            return;
        }
        Vsp16s padded[kLags + kMaxBlock + kMaxNonRecursive + Sliding16::width] = {};
        for (int i = -maxLag; i < len; i++) padded[kLags + i] = w[i];
        Vsp32s narrow[kLags];
        correlateLags(padded + kLags, len, narrow, maxLag + 1);
        for (int lag = 0; lag <= maxLag; lag++) sums[lag] = narrow[lag];
    }
};

// The autocorrelation of windowed samples of scale q.
VspStatus correlate(const Shape& s, const Vsp16s* w, int q, const State& state, Vsp16s* dst) {
    const Vsp64s level = 2 * q, factor = 0x10000 - (0x10000 >> s.decay);
    const Vsp16s *const recursive = w + s.order, *const newest = recursive + s.block;
    const bool fits = energy(w, s.samples()) <= kMax32;  // and so does every sum
    const Correlations ofRecursive(recursive, s.block, s.order, fits), ofNewest(newest, s.nonRecursive, s.order, fits);
    Vsp64s scale = state.header->scale;
    const Vsp64s past = 1 + (scale > level ? scale - level : 0), present = 1 + (scale < level ? level - scale : 0);
    scale = scale > level ? level : scale;

    const auto recursion = [&](int lag) {
        return shiftRight(state.recursive[lag] * factor, past) + shiftRight(ofRecursive.sums[lag], present);
    };
    Vsp64s a = recursion(0);
    const int recursiveShift = norm(a, 32);
    state.recursive[0] = Vsp16s(roundHigh(shiftExact(a, recursiveShift)));
    scale += recursiveShift - 1;

    const Vsp64s old = 1 + (scale > level ? scale - level : 0), now = 1 + (scale < level ? level - scale : 0);
    const auto total = [&](int lag) {
        return shiftRight(state.recursive[lag] * 0x10000LL, old) + shiftRight(ofNewest.sums[lag], now);
    };
    a = total(0);
    a += a >> 8;  // white noise 24 dB below
    const int shift = norm(a, 32);
    dst[0] = Vsp16s(roundHigh(shiftExact(a, shift)));
    Vsp32s last = 0;
    for (int lag = 1; lag <= s.order; lag++) {
        state.recursive[lag] = Vsp16s(roundHigh(shift_32s(recursion(lag), recursiveShift)));
        last = shift_32s(total(lag), shift);
        dst[lag] = Vsp16s(roundHigh(last));
    }
    if (&s == &kWeighting && scale > 41) scale = 41;
    state.header->scale = Vsp32s(scale);
    return last == 0 ? vspStsWinHybridWarn : vspStsNoErr;
}

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
    const Shape& s = found == &kWeighting ? kWeighting : kLogGain;
    const State state(pState, s);
    const int samples = s.samples();
    Vsp16s block[kMaxBlock], w[kMaxSamples];
    for (int i = 0; i < s.block; i++) block[i] = pSrc[i];
    for (int i = 0; i < samples - s.block; i++) state.samples[i] = state.samples[i + s.block];
    for (int i = 0; i < s.block; i++) state.samples[samples - s.block + i] = block[i];
    for (int i = 0; i < samples; i++) w[i] = state.samples[i];
    const int shift = normalise(w, samples, 15);
    for (int i = 0; i < samples; i++) {
        const Vsp64s product = state.samples[i] * s.window[samples - 1 - i];
        w[i] = Vsp16s(roundHigh(shiftExact(product, shift)));
    }
    return correlate(s, w, shift, state, pDst);
}

VspStatus vspsWinHybridBlock_G728_16s(const Vsp16s* pSrc, const Vsp16s* pScale, Vsp16s* pDst, void* pState) {
    if (anyNull(pSrc, pScale, pDst, pState)) return vspStsNullPtrErr;
    constexpr const Shape& s = kSynthesis;
    constexpr int kSamples = s.samples(), kVectors = s.vectors(), kNew = s.block / kVector;
    const State state(pState, s);
    Vsp16s block[kMaxBlock], scales[kNew], w[kMaxSamples];
    for (int i = 0; i < s.block; i++) block[i] = pSrc[i];
    for (int i = 0; i < kNew; i++) scales[i] = pScale[i];
    for (int i = 0; i < kSamples - s.block; i++) state.samples[i] = state.samples[i + s.block];
    for (int i = 0; i < s.block; i++) state.samples[kSamples - s.block + i] = block[i];
    for (int i = 0; i < kVectors - kNew; i++) state.scales[i] = state.scales[i + kNew];
    for (int i = 0; i < kNew; i++) state.scales[kVectors - kNew + i] = scales[i];
    int least = state.scales[0];
    for (int i = 1; i < kVectors; i++) least = state.scales[i] < least ? state.scales[i] : least;
    for (int i = 0; i < kSamples; i++) {
        const Vsp64s product = state.samples[i] * s.window[kSamples - 1 - i];
        const int shift = state.scales[i / kVector] - least - 1;
        w[i] = Vsp16s(roundHigh(shift < 0 ? 2 * product : shiftRight(product, shift)));
    }
    return correlate(s, w, least, state, pDst);
}

}  // namespace vsp::VSP_LEVEL
