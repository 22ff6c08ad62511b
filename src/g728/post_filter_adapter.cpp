// What the post-filter follows: the prediction residual, its pitch and the long-term coefficients (G.728 blocks 81 to 84).
#include "core/checks.h"
#include "core/state_size.h"
#include "g728/exact_sums.h"
#include "g728/exports.h"
#include "g728/pitch.h"
#include "vector/correlate.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

using namespace g728;

namespace {

constexpr int kOrder = 10, kDecimated = 60, kDecimation = 4, kResidual = 240, kWindow = 100, kBlock = 20;

struct State {
    Vsp16s speech[kOrder];  // past input of the inverse filter, the oldest first
    Vsp16s lowPass[3];      // past output of the low-pass filter
    Vsp16s decimated[kDecimated];
    Vsp16s unused[15];
};
static_assert(sizeof(State) == 176);

// The sums of products of 100 elements with eight vectors, of which each begins one element later.
void eightSums(const Vsp16s* x, const Vsp16s* z, Vsp32s* sum) {
    using V = Sliding16;
    constexpr int kWhole = kWindow / V::width * V::width, kFour = 4;
    static_assert(kWindow - kWhole == kFour);
    Wide<V> total[8];
    S32_128 rest[8];
    for (int n = 0; n < 8; n++) {
        total[n] = dot2(V::load(x), V::load(z + n));
        rest[n] = dot2(fourAt(x + kWhole), fourAt(z + n + kWhole));
    }
    for (int i = V::width; i < kWhole; i += V::width)
        for (int n = 0; n < 8; n++) total[n] = add(total[n], dot2(V::load(x + i), V::load(z + n + i)));
    for (int n = 0; n < 8; n += 4)
        add(sums(total[n], total[n + 1], total[n + 2], total[n + 3]), sums(rest[n], rest[n + 1], rest[n + 2], rest[n + 3]))
            .store(sum + n);
}

// The last of the largest ones of up to kMost values.
template <int kMost>
int lastLargest(const Vsp32s* x, int count) {
    S32_128 largest = S32_128::load(x);
    for (int i = 4; i < kMost; i += 4) largest = max(largest, S32_128::load(x + i));
    largest = max(largest, S32_128{_mm_shuffle_epi32(largest.v, 0x4E)});
    largest = max(largest, S32_128{_mm_shuffle_epi32(largest.v, 0xB1)});
    Vsp32u equal = 0;
    for (int i = 0; i < kMost; i += 4)
        equal |= Vsp32u(_mm_movemask_ps(_mm_castsi128_ps(_mm_cmpeq_epi32(largest.v, S32_128::load(x + i).v)))) << i;
    return 31 - __builtin_clz(equal & ((2U << (count - 1)) - 1));
}

// The lag of the strongest correlation, the smallest of several, of up to kMostLags, which are all looked at in vectors
// where no sum leaves 32 bits.
template <int kMostLags>
int strongest(const Vsp16s* x, int len, int from, int to, bool fits, Vsp32s* most) {
    Vsp32s correlations[kMostLags];  // the largest lag first
    const int count = to - from + 1;
    if (!fits)
        for (int i = 0; i < count; i++) correlations[i] = Cnvrt_64s32s(dot(x, x - to + i, len));
    else if (len == kWindow)
        for (int i = 0; i < kMostLags; i += 8) eightSums(x, x - to + i, correlations + i);
    else
        correlate(x, len, x - to, correlations, kMostLags);
    for (int i = count; i < kMostLags; i++) correlations[i] = kMin32;
    const int best = lastLargest<kMostLags>(correlations, count);
    *most = correlations[best];
    return to - best;
}

Vsp32s within(Vsp32s x, Vsp32s most) { return x < 0 ? 0 : x < most ? x : most; }

// Whether the lag near the old one predicts nearly as well as one that may be a multiple of it.
bool prefersOld(const Vsp16s* x, int lag, Vsp32s c1, int oldLag, Vsp32s c2) {
    constexpr Vsp64s kShare = 26214;  // 0.4, Q16
    const Vsp32s energy = Cnvrt_64s32s(::vsp::VSP_LEVEL::energy(x - lag, kWindow));
    const Vsp32s oldEnergy = Cnvrt_64s32s(::vsp::VSP_LEVEL::energy(x - oldLag, kWindow));
    const int shift = norm(energy > oldEnergy ? energy : oldEnergy, 32);
    const auto high = [&](Vsp32s value) { return shiftExact(value, shift) >> 16; };
    return high(within(c2, oldEnergy)) * high(energy) > (high(within(c1, energy)) * high(oldEnergy) >> 16) * kShare;
}

}  // namespace

VspStatus vspsPostFilterAdapterGetStateSize_G728(Vsp32s* pSize) { return fixedSize(pSize, sizeof(State)); }

VspStatus vspsPostFilterAdapterInit_G728(void* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    *static_cast<State*>(pState) = {};
    return vspStsNoErr;
}

VspStatus vspsLPCInverseFilter_G728_16s(const Vsp16s* pSrc, const Vsp16s* pCoeff, Vsp16s* pDst, void* pAdapter) {
    if (anyNull(pSrc, pCoeff, pDst, pAdapter)) return vspStsNullPtrErr;
    State& s = *static_cast<State*>(pAdapter);
    const S16_128 src = loadFive(pSrc);
    const Fifteen x(s.speech, src);
    ExactSums total;
    addTenTaps(total, pCoeff, x);
    total.add(shl(widen(src), 13));
    total.storeRounded(pDst);
    x.storeNewest(s.speech);
    return vspStsNoErr;
}

VspStatus vspsPitchExtract_G728_16s(const Vsp16s* pResidual, Vsp16s* pPitch, void* pAdapter) {
    constexpr int kNear = 6, kNewDecimated = kBlock / kDecimation, kDecimatedWindow = kWindow / kDecimation;
    if (anyNull(pResidual, pPitch, pAdapter)) return vspStsNullPtrErr;
    if (!isPitch(*pPitch)) return vspStsRangeErr;
    State& s = *static_cast<State*>(pAdapter);

    for (int i = 0; i < kDecimated - kNewDecimated; i++) s.decimated[i] = s.decimated[i + kNewDecimated];
    static constexpr Vsp16s kLowPass[] = {18721, -3668, -3668, 18721};
    Vsp32s sums[kBlock];
    correlate(kLowPass, 4, pResidual + kResidual - kBlock - 3, sums, kBlock);
    Vsp16s* const y = s.lowPass;  // the newest last
    for (int n = 0; n < kBlock; n++) {
        const Vsp32s t = (sums[n] >> 6) + 19172 * y[2] - 16481 * y[1] + 5031 * y[0];
        y[0] = y[1], y[1] = y[2];
        y[2] = sat16((t + 0x1000) >> 13);
        if (n % kDecimation == kDecimation - 1) s.decimated[kDecimated - kNewDecimated + n / kDecimation] = y[2];
    }

    Vsp32s c1, c2;
    const bool decimatedFit = energy(s.decimated, kDecimated) <= kMax32, fit = energy(pResidual, kResidual) <= kMax32;
    const int coarse =
        strongest<32>(s.decimated + kDecimated - kDecimatedWindow, kDecimatedWindow, 5, 35, decimatedFit, &c1);
    const auto from = [](int lag) { return lag > kMinPitch ? lag : kMinPitch; };
    const auto to = [](int lag) { return lag < kMaxPitch ? lag : kMaxPitch; };
    const Vsp16s* const newest = pResidual + kResidual - kWindow;
    const int reach = kDecimation - 1, centre = kDecimation * coarse;
    int pitch = strongest<8>(newest, kWindow, from(centre - reach), to(centre + reach), fit, &c1);
    const int old = *pPitch;
    if (old + kNear < pitch) {
        const int nearOld = strongest<16>(newest, kWindow, from(old - kNear), old + kNear, fit, &c2);
        if (prefersOld(newest, pitch, c1, nearOld, c2)) pitch = nearOld;
    }
    *pPitch = Vsp16s(pitch);
    return vspStsNoErr;
}

VspStatus vspsPitchTap_G728_16s(const Vsp16s* pPast, Vsp32s pitch, Vsp16s* pTap, Vsp16s* pGain) {
    constexpr int kLeastTap = 9830, kFactor = 9830;  // 0.6, Q14, and 0.15, Q16
    if (anyNull(pPast, pTap, pGain)) return vspStsNullPtrErr;
    if (!isPitch(pitch)) return vspStsRangeErr;
    const Vsp16s* const newest = pPast + kResidual - kWindow;
    const Vsp64s a = energy(newest - pitch, kWindow), c = dot(newest, newest - pitch, kWindow);
    Vsp16s tap = 0;
    if (a > 0 && c > 0) {
        const Float16 num = normalised(c), den = normalised(a);
        const Float16 ratio = divide(num.mantissa, num.scale, den.mantissa, den.scale);
        tap = c >= a ? Vsp16s(16384) : shift_16s(ratio.mantissa, 14 - ratio.scale);
    }
    const int product = tap < kLeastTap ? 0 : kFactor * tap, b = product >> 14;
    const Float16 gain = divide(16384, 14, Vsp16s((product >> 16) + 16384), 14);
    *pTap = tap;
    pGain[0] = Vsp16s(gain.mantissa >> (gain.scale - 14));
    pGain[1] = Vsp16s((gain.mantissa * b) >> gain.scale);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
