// Autocorrelation of the past synthesis by the hybrid window of the backward analysis (G.729 E.3.2.1, autocorr_hyb_window).
#include "arithmetic/split_32.h"
#include "common/autocorrelation.h"
#include "core/checks.h"
#include "core/state_size.h"
#include "g729/exports.h"
#include "g729/lp_tables.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kLags = 31;
constexpr int kHistory = kLags - 1;
constexpr int kRecursive = 110;  // samples before the newest ones, which the recursive part does not have yet
static_assert((kRecursive - kHistory) % Sliding16::width == 0);  // for correlateLags
constexpr Vsp16s kFade = 10368;  // of the recursive part per frame, Q15: the fourth power of 0.75

struct State {
    Vsp32s recursive[kLags];
};
static_assert(sizeof(State) == 124);

// sum + the doubled products of x[n] and x[n - lag], n = 0 .. len-1, every product and partial sum saturated.
Vsp32s addProducts(Vsp32s sum, const Vsp16s* x, int lag, int len) {
    for (int n = 0; n < len; n++) sum = mac_32s(sum, x[n], x[n - lag]);
    return sum;
}

}  // namespace

VspStatus vspsWinHybridGetStateSize_G729E_16s(Vsp32s* pSize) { return fixedSize(pSize, sizeof(State)); }

VspStatus vspsWinHybridInit_G729E_16s(void* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    *static_cast<State*>(pState) = {};
    return vspStsNoErr;
}

VspStatus vspsWinHybrid_G729E_16s32s(const Vsp16s* pSrc, Vsp32s* pAutoCorr, void* pState) {
    if (anyNull(pSrc, pAutoCorr, pState)) return vspStsNullPtrErr;
    State& state = *static_cast<State*>(pState);
    constexpr int kNewest = kHybridWindow - kRecursive, kOlder = kRecursive - kHistory;
    constexpr int kBefore = wholeLagGroups(kLags) - kLags;  // lags beyond the last one are read, too
    Vsp16s buffer[kBefore + kHybridWindow + Sliding16::width] = {};
    Vsp16s* const windowed = buffer + kBefore;
    for (int n = 0; n < kHybridWindow; n++) windowed[n] = Vsp16s((pSrc[n] * hw[n]) >> 15);
    const Vsp16s* const older = windowed + kHistory;
    const Vsp16s* const newest = windowed + kRecursive;

    const Vsp64s largest = energy(windowed, kHybridWindow);  // no sum of products of different lags is larger
    Vsp32s olderSums[wholeLagGroups(kLags)], newestSums[wholeLagGroups(kLags)];
    correlateLags(older, kOlder, olderSums, kLags);
    correlateLags(newest, kNewest, newestSums, kLags);
    for (int k = 0; k < kLags; k++) {
        const Vsp32s added = largest < kEnergyLimit ? olderSums[k] : addProducts(0, older, k, kOlder) >> 1;
        Vsp32s& recursive = state.recursive[k];
        recursive = Add_32s(mulSplit_32s16s(recursive, kFade), added);
        const Vsp32s doubled = Mul2_32s(recursive);
        const bool fits = (doubled < 0 ? -Vsp64s(doubled) : doubled) + 2 * largest <= kMax32;
        pAutoCorr[k] = (fits ? doubled + 2 * newestSums[k] : addProducts(doubled, newest, k, kNewest)) >> 1;
    }
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
