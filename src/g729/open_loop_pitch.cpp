// The open-loop pitch searches of G.729 (3.4, Pitch_ol) and its Annex A (A.3.4, Pitch_ol_fast).
#include "common/basic_ops.h"
#include "common/inv_sqrt.h"
#include "common/lag_max.h"
#include "core/checks.h"
#include "vector/correlate.h"
#include "vector/dot.h"
#include "vector/map.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kPitMax = 143;
constexpr int kL_frame = 80;
constexpr int kSignal = kPitMax + kL_frame;

// Of the energy of the signal, which is half the standard's doubled sum.
constexpr Vsp64s kLoud = 0x3FFFFFFF, kQuiet = 1 << 19;

// Shifted right by 3 if the doubled energy would leave 32 bits, left if it is small.
void scaleSignal(Vsp64s energyOfSignal, const Vsp16s* signal, Vsp16s* scaled, int n) {
    const auto timesEight = [](auto a) {
        a = addSat(a, a);
        a = addSat(a, a);
        return addSat(a, a);
    };
    if (energyOfSignal > kLoud)
        map(
            n, [](auto a) { return shr(a, 3); }, scaled, signal);
    else if (energyOfSignal >= kQuiet)
        map(
            n, [](auto a) { return a; }, scaled, signal);
    else
        map(n, timesEight, scaled, signal);
}

// Where the correlation of a section is largest, and that divided by the square root of the delayed signal's energy.
struct Section {
    int lag;
    Vsp16s normalised;
};

Vsp16s normalise(Vsp32s max, Vsp32s doubledEnergy) { return Vsp16s(Mpy_32(max, ownInvSqrt(doubledEnergy))); }

// Annex A sees every second sample of its vectors. So split a vector of even samples and one of odd ones hold all that it
// multiplies: the current frame begins at an odd one, even lags stay among the odd samples and odd lags lead to the even
// ones.
class DecimatedSignal {
  public:
    explicit DecimatedSignal(const Vsp16s* signal) {
        Vsp16s even[kHalf], odd[kHalf];
        for (int i = 0; i < kHalf - 1; i++) {
            even[i] = signal[2 * i];
            odd[i] = signal[2 * i + 1];
        }
        even[kHalf - 1] = signal[kSignal - 1];
        odd[kHalf - 1] = 0;
        const Vsp64s energyOfSignal = energy(even, kHalf);
        scaleSignal(energyOfSignal, even, even_, kHalf);
        scaleSignal(energyOfSignal, odd, odd_, kHalf);
    }

    // The samples of the current frame, those of any parity `lag` earlier, and their doubled products.
    const Vsp16s* current() const { return odd_ + kPitMax / 2; }
    const Vsp16s* delayed(int lag) const { return (lag % 2 == 0 ? odd_ : even_) + kPitMax / 2 - lag / 2; }
    Vsp64s correlation(int lag) const { return 2 * dot(current(), delayed(lag), kSamples); }
    Vsp64s delayedEnergy(int lag) const { return 2 * energy(delayed(lag), kSamples); }

    static constexpr int kSamples = kL_frame / 2;

  private:
    static constexpr int kHalf = (kSignal + 1) / 2;

    Vsp16s even_[kHalf], odd_[kHalf];
};

struct LagMax {
    Vsp32s max;
    int lag;
};

// The correlations of Annex A's three sections.
class DecimatedCorrelations {
  public:
    explicit DecimatedCorrelations(const DecimatedSignal& signal) : signal_(signal) {
        const Vsp16s* const current = signal.current();
        const Vsp64s currentEnergy = energy(current, kSamples);
        exact_ = doubledSumsFit(currentEnergy, energy(signal.delayed(kLongestEven), kSamples + kEven - 1)) &&
                 doubledSumsFit(currentEnergy, energy(signal.delayed(kLongestOdd), kSamples + kOdd - 1));
        if (!exact_) return;
        correlate(current, kSamples, signal.delayed(kLongestEven), even_, kEven);
        correlate(current, kSamples, signal.delayed(kLongestOdd), odd_, kOdd);
    }

    // The largest correlation of the lags shortest, shortest + step, ... below end, of equal ones that of the shortest lag;
    // shortest and end are even. A correlation that saturates ends the search, in either direction.
    LagMax largest(int shortest, int end, int step) const {
        if (!exact_) return searchSaturating(shortest, end, step);
        const int lags = (end - shortest) / 2;
        const Vsp32s* const even = even_ + (kLongestEven + 2 - end) / 2;
        const int i = ownLastMax(even, lags);
        const LagMax best{2 * even[i], end - 2 - 2 * i};
        if (step == 2) return best;
        const Vsp32s* const odd = odd_ + (kLongestOdd + 1 - end) / 2;
        const int j = ownLastMax(odd, lags);
        const LagMax bestOdd{2 * odd[j], end - 1 - 2 * j};
        return bestOdd.max > best.max || (bestOdd.max == best.max && bestOdd.lag < best.lag) ? bestOdd : best;
    }

  private:
    static constexpr int kSamples = DecimatedSignal::kSamples;
    static constexpr int kLongestEven = 142, kEven = (kLongestEven - 20) / 2 + 1;
    static constexpr int kLongestOdd = 79, kOdd = (kLongestOdd - 21) / 2 + 1;

    LagMax searchSaturating(int shortest, int end, int step) const {
        LagMax best{kMin32, shortest};
        for (int lag = shortest; lag < end; lag += step) {
            const Vsp64s value = signal_.correlation(lag);
            if (value != Cnvrt_64s32s(value)) return {kMax32, lag};
            if (value > best.max) best = {Vsp32s(value), lag};
        }
        return best;
    }

    const DecimatedSignal& signal_;
    bool exact_;
    Vsp32s even_[kEven], odd_[kOdd];  // the longest lag first, not doubled
};

}  // namespace

VspStatus vspsOpenLoopPitchSearch_G729_16s(const Vsp16s* pSrc, Vsp16s* pLag) {
    if (anyNull(pSrc, pLag)) return vspStsNullPtrErr;
    const Vsp16s* const signal = pSrc - kPitMax;
    Vsp16s scaled[kSignal];
    scaleSignal(energy(signal, kSignal), signal, scaled, kSignal);
    const Vsp16s* const current = scaled + kPitMax;

    constexpr int kPitMin = 20;
    Vsp32s sums[kPitMax - kPitMin + 1];
    ownLagSums(current, kL_frame, kPitMin, kPitMax, sums);
    const auto section = [&](int shortest, int longest) {
        const Vsp32s* const sectionSums = sums + (kPitMax - longest);
        const int i = ownLastMax(sectionSums, longest - shortest + 1), lag = longest - i;
        const Vsp64s delayedEnergy = energy(current - lag, kL_frame);
        return Section{lag, normalise(sectionSums[i], Cnvrt_64s32s(2 * delayedEnergy))};
    };

    constexpr Vsp32s THRESHPIT = 27853;  // 0.85 in Q15
    const auto favourShorter = [](Section longer, Section shorter) {
        return (longer.normalised * THRESHPIT) >> 15 < shorter.normalised ? shorter : longer;
    };
    const Section best = favourShorter(favourShorter(section(80, 143), section(40, 79)), section(20, 39));
    *pLag = Vsp16s(best.lag);
    return vspStsNoErr;
}

VspStatus vspsOpenLoopPitchSearch_G729A_16s(const Vsp16s* pSrc, Vsp16s* pLag) {
    if (anyNull(pSrc, pLag)) return vspStsNullPtrErr;
    const DecimatedSignal signal(pSrc - kPitMax);
    const DecimatedCorrelations correlations(signal);
    const LagMax best1 = correlations.largest(20, 40, 1), best2 = correlations.largest(40, 80, 1);
    LagMax best3 = correlations.largest(80, 144, 2);
    const int centre = best3.lag;
    for (int lag = centre + 1; lag >= centre - 1; lag -= 2) {
        const Vsp32s value = Cnvrt_64s32s(signal.correlation(lag));
        if (value > best3.max) best3 = {value, lag};
    }

    const auto normalised = [&](LagMax best) {
        return normalise(best.max, Cnvrt_64s32s(signal.delayedEnergy(best.lag) + 1));
    };
    const auto isMultiple = [](int times, int lag, int longer, int tolerance) {
        const int difference = times * lag - longer;
        return -tolerance < difference && difference < tolerance;
    };
    const int T1 = best1.lag, T2 = best2.lag, T3 = best3.lag;
    const int norm3 = normalised(best3);
    int norm2 = normalised(best2), norm1 = normalised(best1);
    if (isMultiple(2, T2, T3, 5) || isMultiple(3, T2, T3, 7)) norm2 += norm3 >> 2;
    if (isMultiple(2, T1, T2, 5) || isMultiple(3, T1, T2, 7)) norm1 += (norm2 * 6554) >> 15;  // 0.2 in Q15

    const bool second = norm1 < norm2;
    const bool third = (second ? norm2 : norm1) < norm3;
    *pLag = Vsp16s(third ? T3 : second ? T2 : T1);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
