// The open-loop pitch searches of G.729 (3.4, Pitch_ol) and its Annex A (A.3.4, Pitch_ol_fast).
#include "arithmetic/basic_ops.h"
#include "common/open_loop.h"
#include "core/checks.h"
#include "g729/constants.h"
#include "g729/decimated_signal.h"
#include "g729/exports.h"
#include "vector/correlate.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kSignal = kPitMax + kL_frame;

using Decimated = DecimatedSignal<Vsp16s>;
using Largest = LagMax<Vsp32s>;

// The correlations of Annex A's three sections.
class DecimatedCorrelations {
  public:
    explicit DecimatedCorrelations(const Decimated& signal) : signal_(signal) {
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
    Largest largest(int shortest, int end, int step) const {
        if (!exact_) return searchSaturating(shortest, end, step);
        const int lags = (end - shortest) / 2;
        const Vsp32s* const even = even_ + (kLongestEven + 2 - end) / 2;
        const int i = ownLastMax(even, lags);
        const Largest best{2 * even[i], end - 2 - 2 * i};
        if (step == 2) return best;
        const Vsp32s* const odd = odd_ + (kLongestOdd + 1 - end) / 2;
        const int j = ownLastMax(odd, lags);
        const Largest bestOdd{2 * odd[j], end - 1 - 2 * j};
        return best.lag < bestOdd.lag ? larger(best, bestOdd) : larger(bestOdd, best);
    }

    Vsp64s correlation(int lag) const { return 2 * dot(signal_.current(), signal_.delayed(lag), kSamples); }

  private:
    static constexpr int kSamples = Decimated::kSamples;
    static constexpr int kLongestEven = 142, kEven = (kLongestEven - 20) / 2 + 1;
    static constexpr int kLongestOdd = 79, kOdd = (kLongestOdd - 21) / 2 + 1;

    Largest searchSaturating(int shortest, int end, int step) const {
        Largest best{kMin32, shortest};
        for (int lag = shortest; lag < end; lag += step) {
            const Vsp64s value = correlation(lag);
            if (value != Cnvrt_64s32s(value)) return {kMax32, lag};
            if (value > best.max) best = {Vsp32s(value), lag};
        }
        return best;
    }

    const Decimated& signal_;
    bool exact_;
    Vsp32s even_[kEven], odd_[kOdd];  // the longest lag first, not doubled
};

}  // namespace

VspStatus vspsOpenLoopPitchSearch_G729_16s(const Vsp16s* pSrc, Vsp16s* pLag) {
    if (anyNull(pSrc, pLag)) return vspStsNullPtrErr;
    const Vsp16s* const signal = pSrc - kPitMax;
    Vsp16s scaled[kSignal];
    shiftSignal(openLoopShift(energy(signal, kSignal)), signal, scaled, kSignal);
    const Vsp16s* const current = scaled + kPitMax;

    Vsp32s sums[kPitMax - kPitMin + 1];
    ownLagSums(current, kL_frame, kPitMin, kPitMax, sums);
    const LagScan scan{current, kL_frame, kPitMax, sums};
    const Candidate sections[3] = {scan.largest(80, 143), scan.largest(40, 79), scan.largest(20, 39)};
    Vsp16s values[3];
    for (int i = 0; i < 3; i++) values[i] = Vsp16s(normalised(sections[i]));
    *pLag = Vsp16s(sections[favourShorter(values)].lag);
    return vspStsNoErr;
}

VspStatus vspsOpenLoopPitchSearch_G729A_16s(const Vsp16s* pSrc, Vsp16s* pLag) {
    if (anyNull(pSrc, pLag)) return vspStsNullPtrErr;
    Decimated signal(pSrc - kPitMax);
    const int shift = openLoopShift(energy(signal.even, Decimated::kHalf));
    shiftSignal(shift, signal.even, signal.even, Decimated::kHalf);
    shiftSignal(shift, signal.odd, signal.odd, Decimated::kHalf);

    const DecimatedCorrelations correlations(signal);
    Largest best1 = correlations.largest(20, 40, 1), best2 = correlations.largest(40, 80, 1);
    Largest best3 = correlations.largest(80, 144, 2);
    const int centre = best3.lag;
    for (int lag = centre + 1; lag >= centre - 1; lag -= 2)
        best3 = larger(best3, {Cnvrt_64s32s(correlations.correlation(lag)), lag});

    const auto normalise = [&signal](Largest best) {
        const Vsp64s delayedEnergy = 2 * energy(signal.delayed(best.lag), Decimated::kSamples);
        return Largest{Vsp16s(normalised({best.lag, best.max, Cnvrt_64s32s(delayedEnergy + 1)})), best.lag};
    };
    best1 = normalise(best1);
    best2 = normalise(best2);
    best3 = normalise(best3);
    if (divides(best2.lag, best3.lag)) best2.max += best3.max >> 2;
    if (divides(best1.lag, best2.lag)) best1.max += (best2.max * 6554) >> 15;  // 0.2 in Q15
    *pLag = Vsp16s(larger(larger(best1, best2), best3).lag);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
