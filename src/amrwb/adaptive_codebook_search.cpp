// The closed-loop search of the lag (`Pitch_fr4`; 3GPP TS 26.190, 5.7).
#include "amrwb/adaptive_vector.h"
#include "amrwb/exports.h"
#include "amrwb/filtered_excitation.h"
#include "amrwb/modes.h"
#include "amrwb/normalised.h"
#include "amrwb/pitch_range.h"
#include "amrwb/pitch_tables.h"
#include "common/filtered_lags.h"
#include "core/checks.h"
#include "vector/eight_32s.h"
#include "vector/magnitude.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kMargin = kCorrelationTaps / 2;  // lags beyond the range that the interpolation needs
constexpr int kLags = kLagsOfRange + 2 * kMargin;
constexpr int kCells = 96;
constexpr int kFirst = kCells - kWideSubframe;
static_assert(kLags <= kFirst + 1);

// The correlation of the target with the filtered excitation, over the root of the energy of the latter.
class NormalisedCorrelation {
  public:
    explicit NormalisedCorrelation(const Vsp16s* target)
        : target_(target),
          targetEnergy_(energy(target, kWideSubframe)),
          scale_(-((ownNormalisedEnergy(target, kWideSubframe).exponent + 2) >> 1)) {}

    Vsp16s operator()(const Products& products, const Vsp16s* filtered) const {
        const Vsp32s sum = doubledSumsFit(targetEnergy_, products.filteredFiltered) ? 2 * products.targetFiltered + 1
                                                                                    : saturating(filtered);
        const Normalised correlation = normalisedSum(sum);
        const Normalised root = ownInverseSqrt(normalisedSum(Cnvrt_64s32s(1 + 2 * products.filteredFiltered)));
        const Vsp32s product = Mul2_16s32s(high_32s(correlation.value), high_32s(root.value));
        return round_32s(shl_32s(product, correlation.exponent + root.exponent + scale_));
    }

  private:
    [[gnu::noinline]] Vsp32s saturating(const Vsp16s* filtered) const {
        Vsp32s sum = 1;
        for (int i = 0; i < kWideSubframe; i++) sum = mac_32s(sum, target_[i], filtered[i]);
        return sum;
    }

    const Vsp16s* target_;
    Vsp64s targetEnergy_;
    int scale_;
};

// correlations[k - first] of the lags k = first .. first + kLags - 1 (`Norm_Corr`).
void correlate(const Vsp16s* target, const Vsp16s* h, const Vsp16s* exc, int first, Vsp16s* correlations) {
    alignas(64) Vsp16s cells[kCells] = {};
    Padded<kCells> response{}, x{}, mask{};
    const bool fits = maxMagnitude(h, kWideSubframe) < 0x4000;  // when doubled
    for (int i = 0; i < kWideSubframe; i++) {
        response.middle()[i] = Vsp16s(h[i] << fits);
        x.middle()[i] = target[i];
        mask.middle()[i] = -1;
    }
    const NormalisedCorrelation normalised(target);
    ownFilterExcitation(exc - first, h, cells + kFirst);
    const auto run = [&](auto product) {
        for (int i = 0; i < kLags; i++) {
            const int at = kFirst - i;
            const S16 sample = S16::splat(i == 0 ? Vsp16s(0) : exc[-first - i]);
            const Products products = addSample<kCells>(cells, response.from(at), x.from(at), mask.from(at),
                                                        [&](S16 a) { return product(a, sample); });
            correlations[i] = normalised(products, cells + at);
        }
    };
    // (a * sample) >> 15
    if (fits)
        run([](S16 doubled, S16 sample) { return mulHi(doubled, sample); });
    else
        run([](S16 a, S16 sample) { return mulShift15Sat(a, sample); });
}

// Between the correlations of lags, at a fraction of -4 .. 3 quarters (`Interpol_4`).
Vsp16s interpolate(const Vsp16s* correlation, int fraction) {
    const int earlier = fraction < 0 ? 1 : 0;
    const Vsp16s* const taps = inter4_1[fraction + 4 * earlier];
    const Vsp16s* const x = correlation - earlier - (kMargin - 1);
    Vsp32s sum = 0x2000;
    for (int i = 0; i < kCorrelationTaps; i++) sum += x[i] * taps[i];
    return sat_16s(sum >> 14);
}

}  // namespace

VspStatus vspsAdaptiveCodebookSearch_AMRWB_16s(const Vsp16s* pTarget, const Vsp16s* pImpulse, const Vsp16s* pExc,
                                               Vsp16s lagMin, Vsp16s relative, Vsp32s mode, Vsp16s* pDelay) {
    if (anyNull(pTarget, pImpulse, pExc, pDelay)) return vspStsNullPtrErr;
    if (lagMin < kShortestLag || lagMin > kLargestLagMin) return vspStsRangeErr;
    if (relative != 0 && relative != 1) return vspStsRangeErr;
    if (!isWideMode(mode)) return vspStsRangeErr;

    Vsp16s correlations[kLags];
    correlate(pTarget, pImpulse, pExc, lagMin - kMargin, correlations);
    const Vsp16s* const ofRange = correlations + kMargin;
    int best = 0;
    for (int i = 1; i < kLagsOfRange; i++)
        if (ofRange[i] >= ofRange[best]) best = i;
    int lag = lagMin + best, fraction = 0;

    const bool absolute = relative == 0, low = isLowWideMode(mode);
    const Resolution resolution = low ? kLowResolution : kResolution;
    if (!absolute || lag < resolution.whole) {
        const int step = low || (absolute && lag >= resolution.halves) ? 2 : 1;
        fraction = best == 0 ? 0 : step == 2 ? -2 : -3;
        Vsp16s largest = interpolate(ofRange + best, fraction);
        for (int f = fraction + step; f <= 3; f += step) {
            const Vsp16s correlation = interpolate(ofRange + best, f);
            if (correlation <= largest) continue;
            largest = correlation;
            fraction = f;
        }
    }
    pDelay[0] = Vsp16s(fraction < 0 ? lag - 1 : lag);
    pDelay[1] = Vsp16s(fraction & 3);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
