// The depth-first search of the four-pulse codebook (G.729 A.3.8.1).
#include "core/checks.h"
#include "g729/exports.h"
#include "g729/fixed_codebook.h"
#include "vector/four_32s.h"
#include "vector/nearest.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr Best kNone{-1, 1};
constexpr int kLasts = 2;  // the last pulse is on track 3 or 4: both are searched side by side, each in its own blocks

using Row = Vsp16s[kPlaces];
using Pairs = Row[kPlaces];
using V = Sliding16;
using W = Wide<V>;

// One block from each, or that of last track v.
template <class X>
X blocks(const Vsp16s* ofFirst, const Vsp16s* ofSecond, int v) {
    if constexpr (kBlocks<X> == 1) return X::load(v == 0 ? ofFirst : ofSecond);
    VSP_IF_256(else return {_mm256_set_m128i(S16_128::load(ofSecond).v, S16_128::load(ofFirst).v)};)
}

S16_128 column(const Pairs& pairs, int place) {
    return {_mm_setr_epi16(pairs[0][place], pairs[1][place], pairs[2][place], pairs[3][place], pairs[4][place],
                           pairs[5][place], pairs[6][place], pairs[7][place])};
}

Eight32s doubled(Eight32s a) { return add(a, a); }

// The places of the two largest elements, of equal ones the first; none is negative.
void findLargestTwo(const Row& d, int (&places)[2]) {
    S16_128 distances = sub(S16_128::splat(kMax16), S16_128::load(d));
    const auto nearest = [&] { return _mm_extract_epi16(_mm_minpos_epu16(distances.v), 1); };
    places[0] = nearest();
    const S16_128 numbers{_mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7)};
    distances.v = _mm_or_si128(distances.v, _mm_cmpeq_epi16(numbers.v, S16_128::splat(Vsp16s(places[0])).v));
    places[1] = nearest();
}

struct Winner {
    Best best;
    int outer, inner;  // places, the outer one -1 where no candidate was better than kNone
};

// Candidates of the outer places with the eight inner ones, for both last tracks: squares of sums, which are not negative;
// energies of the outer place, the inner one times 2^kInner and twice a correlation, shifted right by kShift and rounded.
template <int kShift, int kInner>
struct Contest {
    Row outerSums[kLasts], innerSums[kLasts], innerEnergies[kLasts];
    Vsp32s outerEnergies[kLasts][kPlaces];

    // cross(last, i): the correlations of outer place i.
    template <class Cross>
    [[gnu::always_inline]] void hold(int outerPlaces, Cross cross, Winner (&winners)[kLasts]) const {
        for (int v = 0; v < kLasts; v += kBlocks<V>) holdVector(v, outerPlaces, cross, winners + v);
    }

  private:
    template <class Cross>
    [[gnu::always_inline]] void holdVector(int v, int outerPlaces, Cross cross, Winner* winners) const {
        const V zero = V::splat(0), inner = V::load(innerEnergies[v]), sums = V::load(innerSums[v]);
        const auto shifted = [](W a, int down) { return shr(a, down); };
        const W rounding = W::splat(1 << (kShift - 1));
        const W lower = add(shifted({zipLo(zero, inner).v}, 16 - kInner), rounding),
                upper = add(shifted({zipHi(zero, inner).v}, 16 - kInner), rounding);
        struct Vectors {
            V square, energy;
        };
        const auto candidates = [&](int i) {
            const Vsp16s outerSum[kLasts] = {outerSums[0][i], outerSums[1][i]};
            const Vsp32s outerEnergy[kLasts] = {outerEnergies[0][i], outerEnergies[1][i]};
            const V sum = addSat(splatInBlocks<V, 1>(outerSum + v), sums), c = blocks<V>(cross(0, i), cross(1, i), v);
            const W outer = splatInBlocks<W, 1>(outerEnergy + v);
            return Vectors{mulHiU(sum, add(sum, sum)),
                           packSat(shifted(add(add(lower, outer), shifted({zipLo(zero, c).v}, 15)), kShift),
                                   shifted(add(add(upper, outer), shifted({zipHi(zero, c).v}, 15)), kShift))};
        };
        // Every lane has its best: minus the square below the energy.
        Vectors c = candidates(0);
        V smallest = c.energy;
        W best[2] = {zipLo(sub(zero, c.square), c.energy), zipHi(sub(zero, c.square), c.energy)};
        W numbers[2] = {inEveryBlock<W>(0, 1, 2, 3), inEveryBlock<W>(4, 5, 6, 7)}, number[2] = {numbers[0], numbers[1]};
        const W none = W::splat(0);
        for (int i = 1; i < outerPlaces; i++) {
            c = candidates(i);
            smallest = min(smallest, c.energy);
            const W ratios[2] = {zipLo(c.energy, c.square), zipHi(c.energy, c.square)};
            const W these[2] = {zipLo(sub(zero, c.square), c.energy), zipHi(sub(zero, c.square), c.energy)};
            for (int k = 0; k < 2; k++) {
                const W gain = dot2(V{ratios[k].v}, V{best[k].v});
                numbers[k] = add(numbers[k], W::splat(kPlaces));
                best[k] = whereGreater(gain, none, these[k], best[k]);
                number[k] = whereGreater(gain, none, numbers[k], number[k]);
            }
        }
        if (anyBit(W{subSat(smallest, V::splat(1)).v & V::splat(kMin16).v})) [[unlikely]] {  // no order of quotients
            for (int block = 0; block < kBlocks<V>; block++) winners[block] = inTurn(v + block, outerPlaces, cross);
            return;
        }
        // Of two lanes with equal quotients the one with the lower number is the first.
        const auto meet = [&](W other, W otherNumber) {
            const W upperHalves = W::splat(-0x10000);
            const V ratio = sub(V{swapInPairs(V{other.v}).v ^ upperHalves.v}, V{upperHalves.v});
            const W threshold = whereGreater(number[0], otherNumber, W::splat(-1), none), gain = dot2(ratio, V{best[0].v});
            best[0] = whereGreater(gain, threshold, other, best[0]);
            number[0] = whereGreater(gain, threshold, otherNumber, number[0]);
        };
        using D = typename Related<V>::Sum;
        const auto secondHalf = [](W a) { return W{zipHi(D{a.v}, D{a.v}).v}; };
        const auto secondElement = [](W a) { return W{shrU(D{a.v}, 32).v}; };
        meet(best[1], number[1]);
        meet(secondHalf(best[0]), secondHalf(number[0]));
        meet(secondElement(best[0]), secondElement(number[0]));
        Vsp32s pairs[W::width], places[W::width];
        best[0].store(pairs);
        number[0].store(places);
        for (int block = 0; block < kBlocks<V>; block++) {
            const int pair = pairs[4 * block], place = places[4 * block];
            winners[block] = {{Vsp16s(-Vsp16s(pair)), Vsp16s(pair >> 16)}, place / kPlaces, place % kPlaces};
        }
    }

    // One candidate after the other.
    template <class Cross>
    [[gnu::noinline]] Winner inTurn(int last, int outerPlaces, Cross cross) const {
        Winner winner{kNone, -1, 0};
        for (int i = 0; i < outerPlaces; i++)
            for (int place = 0; place < kPlaces; place++) {
                const int sum = sat_16s(outerSums[last][i] + innerSums[last][place]);
                const int energy = outerEnergies[last][i] + innerEnergies[last][place] * (1 << kInner) +
                                   2 * cross(last, i)[place] + (1 << (kShift - 1));
                const Best candidate{Vsp16s((sum * sum) >> 15), sat_16s(energy >> kShift)};
                if (isBetter(winner.best, candidate)) winner = {candidate, i, place};
            }
        return winner;
    }
};

class Search {
  public:
    Search(const SignedTarget& target, const TrackCorrelations& correlations)
        : target_(target), correlations_(correlations) {
        for (int last = 0; last < kLasts; last++) {
            signedPairs(3 + last, 0, withLast0_[last]);
            signedPairs(3 + last, 1, withLast1_[last]);
            signedPairs(2, 3 + last, withLast2_[last]);
        }
        signedPairs(0, 1, with01_);
        signedPairs(0, 2, with02_);
        signedPairs(1, 2, with12_);
    }

    void run() {
        Found found[2][kLasts];
        fromTrack2(found[0]);
        fromLastTrack(found[1]);
        Best best = kNone;
        for (int last = 0; last < kLasts; last++)
            for (const auto& start : found) {
                if (!isBetter(best, start[last].best)) continue;
                best = start[last].best;
                for (int i = 0; i < 4; i++) pulses[i] = {i < 3 ? i : 3 + last, start[last].places[i]};
            }
    }

    Pulse pulses[4] = {{0, 0}, {1, 0}, {2, 0}, {3, 0}};

  private:
    struct Found {
        Best best;
        int places[4];
    };
    // Two pulses: the first at one of the two largest places of its track, the second anywhere on its own.
    struct Pair {
        int first, second;
        Vsp16s sum, energy;
    };

    // By places of track a. A correlation that keeps its sign is times 32767 in Q15, another one is negated.
    void signedPairs(int a, int b, Pairs& pairs) {
        const S16_128 negative = S16_128::load(target_.negative[b]), lowest = S16_128::splat(-kMax16);
        correlations_.pairs(a, b, pairs, [&](S16_128 row, int i) {
            const __m128i differ = negative.v ^ S16_128::splat(target_.negative[a][i]).v;
            const S16_128 less{_mm_andnot_si128(differ, _mm_cmpgt_epi16(row.v, _mm_setzero_si128()))};
            return max(subSat({add(row, less).v ^ differ}, {differ}), lowest);
        });
    }

    S16_128 diagonal(int track) const { return S16_128::load(correlations_.diagonal(track)); }
    S16_128 sums(int track) const { return S16_128::load(target_.d[track]); }

    // firsts: the places of the first pulse; secondTrack and firstTrack: of each last track.
    template <class Cross>
    void findPairs(const int (&firstTrack)[kLasts], const int (&secondTrack)[kLasts], const int (&firsts)[kLasts][2],
                   Cross cross, Pair (&pairs)[kLasts]) const {
        Contest<2, 0> contest;
        for (int last = 0; last < kLasts; last++) {
            sums(secondTrack[last]).store(contest.innerSums[last]);
            diagonal(secondTrack[last]).store(contest.innerEnergies[last]);
            for (int i = 0; i < 2; i++) {
                const int place = firsts[last][i];
                contest.outerSums[last][i] = target_.d[firstTrack[last]][place];
                contest.outerEnergies[last][i] = correlations_.diagonal(firstTrack[last])[place];
            }
        }
        Winner winners[kLasts];
        contest.hold(2, cross, winners);
        for (int last = 0; last < kLasts; last++) {
            const Winner& w = winners[last];
            const int first = w.outer < 0 ? 0 : firsts[last][w.outer];
            const Vsp16s sum = sat_16s(target_.d[firstTrack[last]][first] + target_.d[secondTrack[last]][w.inner]);
            pairs[last] = {first, w.inner, sum, w.best.energy};
        }
    }

    // The two remaining pulses. Energies in sixteenths: 4 of the pair, 2 of a correlation, 1 of a diagonal element.
    // outerA, outerB: the correlations of the outer places with the two pulses; innerA, innerB: those of the inner ones.
    struct Rest {
        int outerTrack, innerTrack;
        const Pairs& cross;
        S16_128 outerA[kLasts], outerB[kLasts], innerA[kLasts], innerB[kLasts];
    };

    void findRest(const Pair (&pairs)[kLasts], const Rest& rest, Winner (&winners)[kLasts]) const {
        Contest<4, 3> contest;
        const auto correlations = [](S16_128 a, S16_128 b) { return doubled(add(widen(a), widen(b))); };
        const S16_128 outerDiagonal = diagonal(rest.outerTrack), innerDiagonal = diagonal(rest.innerTrack);
        for (int last = 0; last < kLasts; last++) {
            addSat(S16_128::splat(pairs[last].sum), sums(rest.outerTrack)).store(contest.outerSums[last]);
            add(add(correlations(rest.outerA[last], rest.outerB[last]), widen(outerDiagonal)),
                Eight32s::splat(4 * pairs[last].energy))
                .store(contest.outerEnergies[last]);
            sums(rest.innerTrack).store(contest.innerSums[last]);
            const Eight32s inner = add(correlations(rest.innerA[last], rest.innerB[last]), widen(innerDiagonal));
            narrowSat(shr(add(inner, Eight32s::splat(4)), 3)).store(contest.innerEnergies[last]);
        }
        contest.hold(
            kPlaces, [&](int, int i) { return rest.cross[i]; }, winners);
        for (Winner& w : winners) w.outer = w.outer < 0 ? 0 : w.outer;
    }

    void fromTrack2(Found (&found)[kLasts]) const {
        int firsts[kLasts][2];
        findLargestTwo(target_.d[2], firsts[0]);
        for (int i = 0; i < 2; i++) firsts[1][i] = firsts[0][i];
        Pair pairs[kLasts];
        findPairs(
            {2, 2}, {3, 4}, firsts, [&](int last, int i) { return withLast2_[last][firsts[last][i]]; }, pairs);
        Rest rest{0, 1, with01_, {}, {}, {}, {}};
        for (int last = 0; last < kLasts; last++) {
            rest.outerA[last] = column(with02_, pairs[last].first);
            rest.outerB[last] = S16_128::load(withLast0_[last][pairs[last].second]);
            rest.innerA[last] = column(with12_, pairs[last].first);
            rest.innerB[last] = S16_128::load(withLast1_[last][pairs[last].second]);
        }
        Winner winners[kLasts];
        findRest(pairs, rest, winners);
        for (int last = 0; last < kLasts; last++)
            found[last] = {winners[last].best,
                           {winners[last].outer, winners[last].inner, pairs[last].first, pairs[last].second}};
    }

    void fromLastTrack(Found (&found)[kLasts]) const {
        int firsts[kLasts][2];
        for (int last = 0; last < kLasts; last++) findLargestTwo(target_.d[3 + last], firsts[last]);
        Pair pairs[kLasts];
        findPairs(
            {3, 4}, {0, 0}, firsts, [&](int last, int i) { return withLast0_[last][firsts[last][i]]; }, pairs);
        Rest rest{1, 2, with12_, {}, {}, {}, {}};
        for (int last = 0; last < kLasts; last++) {
            rest.outerA[last] = S16_128::load(withLast1_[last][pairs[last].first]);
            rest.outerB[last] = S16_128::load(with01_[pairs[last].second]);
            rest.innerA[last] = column(withLast2_[last], pairs[last].first);
            rest.innerB[last] = S16_128::load(with02_[pairs[last].second]);
        }
        Winner winners[kLasts];
        findRest(pairs, rest, winners);
        for (int last = 0; last < kLasts; last++)
            found[last] = {winners[last].best,
                           {pairs[last].second, winners[last].outer, winners[last].inner, pairs[last].first}};
    }

    const SignedTarget& target_;
    const TrackCorrelations& correlations_;
    Pairs with01_, with02_, with12_;
    Pairs withLast0_[kLasts], withLast1_[kLasts];  // by places of the last track
    Pairs withLast2_[kLasts];                      // by places of track 2
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
