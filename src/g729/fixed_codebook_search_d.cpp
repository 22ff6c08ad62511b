// The search of the two-pulse codebook, 11 bits (G.729 Annex D).
#include "core/checks.h"
#include "g729/exports.h"
#include "g729/fixed_codebook.h"
#include "g729/tables.h"

namespace vsp::VSP_LEVEL {

namespace {

// Tracks in the order of the search. Pulse 0 lies on track 1 or 3, pulse 1 on any but track 3.
struct TrackPair {
    int outer, inner;
    bool outerIsPulse0;
};
constexpr TrackPair kTrackPairs[] = {{0, 1, false}, {1, 1, true},  {0, 3, false}, {3, 4, true},
                                     {1, 2, true},  {1, 3, false}, {1, 4, true},  {2, 3, false}};

void search(const SignedTarget& target, const TrackCorrelations& correlations, Pulse (&pulses)[2]) {
    Best best{0, kMax16};
    for (const auto& [outer, inner, outerIsPulse0] : kTrackPairs) {
        Vsp16s pairs[kPlaces][kPlaces];
        target.pairs(correlations, outer, inner, pairs);
        const S16_128 d = S16_128::load(target.d[inner]);
        const Eight32s diagonal = widen(S16_128::load(correlations.diagonal(inner)));
        for (int i = 0; i < kPlaces; i++) {
            const Eight32s crossed = widen(S16_128::load(pairs[i]));
            const Eight32s start = add(diagonal, Eight32s::splat(correlations.diagonal(outer)[i]));
            const S16_128 ps = addSat(S16_128::splat(target.d[outer][i]), d);
            const S16_128 energies = narrowSat(shr(add(start, add(crossed, crossed)), 4));
            compare(best, mulShift15Sat(ps, ps), energies,
                    [&, outer = outer, inner = inner, first = outerIsPulse0](int place) {
                        pulses[first ? 0 : 1] = {outer, i};
                        pulses[first ? 1 : 0] = {inner, place};
                    });
        }
    }
}

// The coded place of a pulse.
template <int Places>
int coded(const Vsp8u (&positions)[Places], const Pulse& pulse) {
    int place = 0;
    while (positions[place] != pulse.position()) place++;
    return place ^ place >> 1;  // gray code
}

}  // namespace

VspStatus vspsFixedCodebookSearch_G729D_16s(const Vsp16s* pTarget, const Vsp16s* pImpulse, Vsp16s lag, Vsp16s sharp,
                                            Vsp16s* pCode, Vsp16s* pFiltered, Vsp16s* pIndex) {
    if (anyNull(pTarget, pImpulse, pCode, pFiltered, pIndex)) return vspStsNullPtrErr;
    if (!isLegalLag(lag)) return vspStsRangeErr;
    Subframe h(pImpulse);
    sharpen(h, lag, sharp);
    const SignedTarget target(pTarget, h.samples);
    TrackCorrelations correlations;
    formScaled<kAllTracks>(h.samples, correlations);
    Pulse pulses[2] = {{1, 0}, {0, 0}};
    search(target, correlations, pulses);
    storePulses(pulses, target, h.samples, lag, sharp, pCode, pFiltered);
    pIndex[0] = Vsp16s(coded(trackTable0, pulses[0]) + (coded(trackTable1, pulses[1]) << 4));
    pIndex[1] = Vsp16s(int(!target.isNegative(pulses[0])) + 2 * int(!target.isNegative(pulses[1])));
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
