// The depth-first search of the four-pulse codebook (G.729 A.3.8.1).
#include "core/checks.h"
#include "g729/exports.h"
#include "g729/fixed_codebook.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr Best kNone{-1, 1};

using Pairs = Vsp16s[kPlaces][kPlaces];

S16_128 column(const Pairs& pairs, int place) {
    Vsp16s values[kPlaces];
    for (int i = 0; i < kPlaces; i++) values[i] = pairs[i][place];
    return S16_128::load(values);
}

S16_128 squares(Vsp16s sum, const Vsp16s* d) {
    const S16_128 ps = addSat(S16_128::splat(sum), S16_128::load(d));
    return mulShift15Sat(ps, ps);
}

// Energies of candidates as multiples of a power of two, rounded.
S16_128 rounded(Eight32s sum, int shift) { return narrowSat(shr(add(sum, Eight32s::splat(1 << (shift - 1))), shift)); }

Eight32s times(int factor, S16_128 a) {
    const Eight32s wide = widen(a);
    Eight32s sum = wide;
    for (int i = 1; i < factor; i *= 2) sum = add(sum, sum);
    return sum;
}

class Search {
  public:
    Search(const SignedTarget& target, const TrackCorrelations& correlations)
        : target_(target), correlations_(correlations) {
        for (int t = 0; t < 3; t++)
            for (int last = 3; last < kTracks; last++) signedPairs(t, last, last == 3 ? with3_[t] : with4_[t]);
        signedPairs(0, 1, with01_);
        signedPairs(0, 2, with02_);
        signedPairs(1, 2, with12_);
    }

    void run() {
        for (int last = 3; last < kTracks; last++) {
            fromTrack2(last);
            fromLastTrack(last);
        }
    }

    Pulse pulses[4] = {{0, 0}, {1, 0}, {2, 0}, {3, 0}};

  private:
    void signedPairs(int a, int b, Pairs& pairs) {
        const S16_128 negative = S16_128::load(target_.negative[b]);
        correlations_.pairs(a, b, pairs, [&](S16_128 row, int i) {
            const S16_128 differ{negative.v ^ S16_128::splat(target_.negative[a][i]).v};
            return select(differ, subSat(S16_128::splat(0), row), mulShift15(row, S16_128::splat(32767)));
        });
    }

    S16_128 diagonal(int track) const { return S16_128::load(correlations_.diagonal(track)); }

    // Two pulses: the first at one of the two largest places of its track, the second anywhere on its own.
    struct Pair {
        int first, second;
        Vsp16s sum, energy;
    };

    template <class Row>
    Pair bestPair(int firstTrack, int secondTrack, Row row) const {
        const Vsp16s* const d = target_.d[firstTrack];
        int firsts[2] = {0, 0};
        for (int place = 1; place < kPlaces; place++)
            if (d[place] > d[firsts[0]]) firsts[0] = place;
        firsts[1] = firsts[0] == 0 ? 1 : 0;
        for (int place = firsts[1] + 1; place < kPlaces; place++)
            if (place != firsts[0] && d[place] > d[firsts[1]]) firsts[1] = place;
        const Eight32s ofSecond = widen(diagonal(secondTrack));
        const auto candidates = [&](int i) {
            const Vsp32s ofFirst = correlations_.diagonal(firstTrack)[firsts[i]];
            const Eight32s sum = add(add(times(2, row(firsts[i])), ofSecond), Eight32s::splat(ofFirst));
            return Candidates{squares(d[firsts[i]], target_.d[secondTrack]), rounded(sum, 2)};
        };
        Pair pair{0, 0, 0, 1};
        pair.energy = bestOf(2, candidates, [&](int i, int place) {
                          pair.first = firsts[i];
                          pair.second = place;
                      }).energy;
        pair.sum = sat_16s(d[pair.first] + target_.d[secondTrack][pair.second]);
        return pair;
    }

    // The two remaining pulses: for every place of the outer track what `outer` gives, all places of the inner one.
    // Energies in sixteenths: 4 of the pair, 2 of a correlation, 1 of a diagonal element.
    template <class Outer, class Take>
    void bestOfBoth(const Pair& pair, int outerTrack, int innerTrack, const Pairs& cross, Outer outer, S16_128 inner,
                    Take take) {
        int outerPlace = 0, innerPlace = 0;
        const Eight32s ofInner = times(8, inner);
        const auto candidates = [&](int i) {
            const Vsp32s ofOuter = 4 * pair.energy + 2 * outer(i) + correlations_.diagonal(outerTrack)[i];
            const Eight32s sum = add(add(ofInner, Eight32s::splat(ofOuter)), times(2, S16_128::load(cross[i])));
            return Candidates{squares(sat_16s(pair.sum + target_.d[outerTrack][i]), target_.d[innerTrack]),
                              rounded(sum, 4)};
        };
        const Best best = bestOf(kPlaces, candidates, [&](int i, int place) {
            outerPlace = i;
            innerPlace = place;
        });
        if (!isBetter(best_, best)) return;
        best_ = best;
        take(outerPlace, innerPlace);
    }

    // What a place of the inner track adds without the outer pulse, an eighth: two correlations and a diagonal element.
    S16_128 innerEnergy(S16_128 a, S16_128 b, int track) const {
        return rounded(add(times(2, a), add(times(2, b), widen(diagonal(track)))), 3);
    }

    void fromTrack2(int last) {
        const Pairs(&with)[3] = last == 3 ? with3_ : with4_;
        const Pair pair = bestPair(2, last, [&](int place) { return S16_128::load(with[2][place]); });
        const int p2 = pair.first, p3 = pair.second;
        bestOfBoth(
            pair, 0, 1, with01_, [&](int p0) { return with02_[p0][p2] + with[0][p0][p3]; },
            innerEnergy(column(with12_, p2), column(with[1], p3), 1),
            [&](int p0, int p1) {
                take(p0, p1, p2, {last, p3});
            });
    }

    void fromLastTrack(int last) {
        const Pairs(&with)[3] = last == 3 ? with3_ : with4_;
        const Pair pair = bestPair(last, 0, [&](int place) { return column(with[0], place); });
        const int p3 = pair.first, p0 = pair.second;
        bestOfBoth(
            pair, 1, 2, with12_, [&](int p1) { return with[1][p1][p3] + with01_[p0][p1]; },
            innerEnergy(column(with[2], p3), S16_128::load(with02_[p0]), 2),
            [&](int p1, int p2) {
                take(p0, p1, p2, {last, p3});
            });
    }

    void take(int p0, int p1, int p2, Pulse p3) {
        pulses[0].place = p0;
        pulses[1].place = p1;
        pulses[2].place = p2;
        pulses[3] = p3;
    }

    const SignedTarget& target_;
    const TrackCorrelations& correlations_;
    Pairs with01_, with02_, with12_, with3_[3], with4_[3];
    Best best_ = kNone;
};

}  // namespace

VspStatus vspsFixedCodebookSearch_G729A_16s(const Vsp16s* pTarget, const Vsp16s* pImpulse, Vsp16s lag, Vsp16s sharp,
                                            Vsp16s* pCode, Vsp16s* pFiltered, Vsp16s* pIndex) {
    if (anyNull(pTarget, pImpulse, pCode, pFiltered, pIndex)) return vspStsNullPtrErr;
    if (!isLegalLag(lag)) return vspStsRangeErr;
    Subframe h(pImpulse);
    sharpen(h, lag, sharp);
    const SignedTarget target(pTarget, h.samples);
    TrackCorrelations correlations;
    formScaled<kOtherTracks>(h.samples, correlations);
    Search search(target, correlations);
    search.run();
    storePulses(search.pulses, target, h.samples, lag, sharp, pCode, pFiltered);
    storeIndex17(search.pulses, target, pIndex);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
