// The search of the four-pulse codebook, 17 bits (G.729 3.8).
#include "common/exports.h"
#include "core/checks.h"
#include "g729/exports.h"
#include "g729/fixed_codebook.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kSearches = 75, kFirstExtra = 30;  // visits of the last tracks in a subframe, and more for the first
constexpr Vsp16s kThreshold = 13107;             // 0.4

// How far the sum of the first three pulses has to be above the average.
Vsp16s threshold(const SignedTarget& target) {
    Vsp16s max = 0;
    Vsp32s sum = 0;
    for (int t = 0; t < 3; t++) {
        Vsp16s largest = 0;
        for (const Vsp16s d : target.d[t]) {
            largest = d > largest ? d : largest;
            sum += d;
        }
        max = sat_16s(max + largest);
    }
    const Vsp16s average = Vsp16s(sum >> 3);
    return sat_16s(average + ((sat_16s(max - average) * kThreshold) >> 15));
}

class Search {
  public:
    Search(const SignedTarget& target, const TrackCorrelations& correlations)
        : target_(target), correlations_(correlations) {
        const auto signedPairs = [&](int a, int b, auto& pairs) { target.pairs(correlations, a, b, pairs); };
        signedPairs(0, 1, with01_);
        signedPairs(0, 2, with02_);
        signedPairs(1, 2, with12_);
        for (int last = 0; last < 2; last++)
            for (int t = 0; t < 3; t++) signedPairs(t, 3 + last, withLast_[last][t]);
    }

    // Returns the time left.
    int run(int time) {
        const S16_128 limit = S16_128::splat(threshold(target_)), d2 = S16_128::load(target_.d[2]);
        for (int p0 = 0; p0 < kPlaces; p0++)
            for (int p1 = 0; p1 < kPlaces; p1++) {
                const S16_128 sums = addSat(S16_128::splat(sat_16s(target_.d[0][p0] + target_.d[1][p1])), d2);
                Vsp32u above = maskAbove(sums, limit);
                if (above == 0) continue;
                Vsp16s starts[kPlaces];
                sums.store(starts);
                for (; above != 0; above &= above - 1) {
                    visit(p0, p1, __builtin_ctz(above), starts);
                    if (--time <= 0) return time;
                }
            }
        return time;
    }

    Pulse pulses[4] = {{0, 0}, {1, 0}, {2, 0}, {3, 0}};

  private:
    static Vsp32u maskAbove(S16_128 a, S16_128 limit) {
        return Vsp32u(_mm_movemask_epi8(_mm_packs_epi16(_mm_cmpgt_epi16(a.v, limit.v), _mm_setzero_si128())));
    }

    // All places of the last two tracks with the first three pulses.
    void visit(int p0, int p1, int p2, const Vsp16s* starts) {
        const Vsp32s start = correlations_.diagonal(0)[p0] + correlations_.diagonal(1)[p1] + correlations_.diagonal(2)[p2] +
                             2 * (with01_[p0][p1] + with02_[p0][p2] + with12_[p1][p2]);
        for (int last = 0; last < 2; last++) {
            const auto& with = withLast_[last];
            const auto row = [](const Vsp16s(&r)[kPlaces]) { return widen(S16_128::load(r)); };
            const Eight32s crossed = add(row(with[0][p0]), add(row(with[1][p1]), row(with[2][p2])));
            const S16_128 diagonal = S16_128::load(correlations_.diagonal(3 + last));
            const Eight32s sum = add(add(widen(diagonal), Eight32s::splat(start)), add(crossed, crossed));
            const S16_128 ps = addSat(S16_128::splat(starts[p2]), S16_128::load(target_.d[3 + last]));
            compare(best_, mulShift15Sat(ps, ps), narrowSat(shr(sum, 4)), [&](int place) {
                pulses[0].place = p0;
                pulses[1].place = p1;
                pulses[2].place = p2;
                pulses[3] = {3 + last, place};
            });
        }
    }

    const SignedTarget& target_;
    const TrackCorrelations& correlations_;
    Vsp16s with01_[kPlaces][kPlaces], with02_[kPlaces][kPlaces], with12_[kPlaces][kPlaces];
    Vsp16s withLast_[2][3][kPlaces][kPlaces];
    Best best_{0, kMax16};
};

}  // namespace

VspStatus vspsFixedCodebookSearch_G729_16s(const Vsp16s* pTarget, const Vsp16s* pImpulse, Vsp16s lag, Vsp16s sharp,
                                           Vsp16s subframe, Vsp16s* pExtra, Vsp16s* pCode, Vsp16s* pFiltered,
                                           Vsp16s* pIndex) {
    if (anyNull(pTarget, pImpulse, pExtra, pCode, pFiltered, pIndex)) return vspStsNullPtrErr;
    if (!isLegalLag(lag)) return vspStsRangeErr;
    if (subframe != 0 && subframe != 1) return vspStsRangeErr;
    Subframe h(pImpulse);
    sharpen(h, lag, sharp);
    const SignedTarget target(pTarget, h.samples);
    TrackCorrelations correlations;
    formScaled<kOtherTracks>(h.samples, correlations);
    Search search(target, correlations);
    *pExtra = Vsp16s(search.run(sat_16s(kSearches + (subframe == 0 ? kFirstExtra : *pExtra))));
    storePulses(search.pulses, target, h.samples, lag, sharp, pCode, pFiltered);
    storeIndex17(search.pulses, target, pIndex);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
