// The searches of two to four pulses on tracks of their own, one after the other (`search_2i40` to `search_4i40`).
#include "gsmamr/algebraic_search.h"
#include "gsmamr/pulses.h"

namespace vsp::VSP_LEVEL {

namespace {

struct Pulse {
    int track, place;
};

// How a step of the search weighs the energy of the pulses before, that of the pulse itself and its correlation with one
// before.
struct Weights {
    int before, own, crossed;
};
constexpr Weights kWeights[3] = {{8192, 8192, 16384}, {8192, 2048, 4096}, {32768, 2048, 4096}};

class Search {
  public:
    template <unsigned Differences>
    [[gnu::always_inline]] static void form(TrackCorrelations& correlations, const Vsp16s* h) {
        const ScaledResponse response(h);
        correlations.form<Differences>(response.h, 0, 0, 0x8000);
    }

    Search(const Vsp16s* d, const TrackCorrelations& correlations) : correlations_(correlations) {
        for (int t = 0; t < kTracks; t++)
            for (int i = 0; i < kPlaces; i++) {
                const Vsp16s x = d[positionOf(t, i)];
                negative_[t][i] = Vsp16s(x < 0 ? -1 : 0);
                magnitude_[t][i] = Abs_16s(x);
            }
    }

    // Pulses on both tracks are to be searched together.
    [[gnu::always_inline]] void needPair(int a, int b) {
        formPairs(correlations_, a, b, negative_[a], TrackSigns(negative_[b]), crossed_[a][b], crossed_[b][a]);
    }

    // The places of a track but the given number of those with the smallest magnitudes, of equal ones the first.
    [[gnu::always_inline]] S16_128 largest(int track, int without) const {
        const __m128i numbers = _mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7);
        S16_128 left = S16_128::load(magnitude_[track]), out = S16_128::splat(0);
        for (int n = 0; n < without; n++) {
            const __m128i smallest = _mm_minpos_epu16(left.v);
            if (Vsp16s(_mm_cvtsi128_si32(smallest)) == kMax16) break;
            out.v |= _mm_cmpeq_epi16(numbers, S16_128::splat(Vsp16s(_mm_extract_epi16(smallest, 1))).v);
            left = maxU(left, out);
        }
        return {~out.v};
    }

    // Pulses for each place of the first: elements of vectors.
    template <int Count>
    struct Attempts {
        const int* tracks;
        S16_128 places[Count];  // but of the first
        S16_128 ps, minusSquare, energy;
    };

    // For each of the first places with its bits set, in their order, adds the best pulse of each further track to those
    // before. Returns whether one of the results was better than what is known.
    template <int Count>
    [[gnu::always_inline]] bool run(const int* tracks, S16_128 firstPlaces, Best& best, Pulse* pulses) const {
        Attempts<Count> attempts{
            tracks, {}, S16_128::load(magnitude_[tracks[0]]), {}, S16_128::load(correlations_.diagonal(tracks[0]))};
        addPulse<1>(attempts);
        if constexpr (Count > 2) addPulse<2>(attempts);
        if constexpr (Count > 3) addPulse<3>(attempts);
        // What is 0 and has no energy is never better.
        const S16_128 squares{sub(S16_128::splat(0), attempts.minusSquare).v & firstPlaces.v};
        int first = -1;
        compare(best, squares, {attempts.energy.v & firstPlaces.v}, [&](int place) { first = place; });
        if (first < 0) return false;
        pulses[0] = {tracks[0], first};
        for (int n = 1; n < Count; n++) {
            Vsp16s places[kPlaces];
            attempts.places[n].store(places);
            pulses[n] = {tracks[n], places[first]};
        }
        return true;
    }

    [[gnu::always_inline]] void take(int count, const Pulse* pulses, FoundPulses& found) const {
        for (int n = 0; n < count; n++) {
            found.position[n] = positionOf(pulses[n].track, pulses[n].place);
            found.negative[n] = negative_[pulses[n].track][pulses[n].place] != 0;
        }
    }

  private:
    // Place after place of the track of pulse n is compared with the best so far.
    template <int n, int Count>
    [[gnu::always_inline]] void addPulse(Attempts<Count>& attempts) const {
        constexpr Weights kOf = kWeights[n - 1];
        const int track = attempts.tracks[n];
        const S16_128 zero = S16_128::splat(0), halves = S16_128::splat(Vsp16s(kOf.before / 2));
        const S32_128 half = S32_128::splat(0x4000);
        const S32_128 lo = add(dot2(S16_128{zipLo(attempts.energy, attempts.energy).v}, halves), half);
        const S32_128 hi = add(dot2(S16_128{zipHi(attempts.energy, attempts.energy).v}, halves), half);
        S16_128 octets[Count];  // of the places in a row
        for (int k = 1; k < n; k++)
            octets[k] = add(mulLo(attempts.places[k], S16_128::splat(0x0202)), S16_128::splat(0x0100));

        const S16_128 weights = S16_128::splat(Vsp16s(kOf.crossed));
        S16_128 minusSquare = S16_128::splat(1), energy = minusSquare, places = zero, ps = zero;
#pragma GCC unroll 8
        for (int i = 0; i < kPlaces; i++) {
            const auto with = [&](int k) {
                const S16_128 row = S16_128::load(crossed_[track][attempts.tracks[k]][i]);
                return k == 0 ? row : S16_128{_mm_shuffle_epi8(row.v, octets[k].v)};
            };
            const S16_128 a = with(0), b = n > 1 ? with(1) : zero;
            const S32_128 own = S32_128::splat(correlations_.diagonal(track)[i] * kOf.own);
            S32_128 sumLo = add(add(lo, own), dot2(S16_128{zipLo(a, b).v}, weights));
            S32_128 sumHi = add(add(hi, own), dot2(S16_128{zipHi(a, b).v}, weights));
            if constexpr (n > 2) {
                const S16_128 c = with(2);
                sumLo = add(sumLo, dot2(S16_128{zipLo(c, zero).v}, weights));
                sumHi = add(sumHi, dot2(S16_128{zipHi(c, zero).v}, weights));
            }
            const S16_128 candidate = packSat(shr(sumLo, 15), shr(sumHi, 15));
            const S16_128 sum = addSat(attempts.ps, S16_128::splat(magnitude_[track][i]));
            const S16_128 square = mulHiU(add(sum, sum), sum);
            const S16_128 gain = packSat(dot2(S16_128{zipLo(square, candidate).v}, S16_128{zipLo(energy, minusSquare).v}),
                                         dot2(S16_128{zipHi(square, candidate).v}, S16_128{zipHi(energy, minusSquare).v}));
            const S16_128 better{_mm_cmpgt_epi16(gain.v, zero.v)};
            minusSquare = select(better, sub(zero, square), minusSquare);
            energy = select(better, candidate, energy);
            places = select(better, S16_128::splat(Vsp16s(i)), places);
            ps = select(better, sum, ps);
        }
        attempts.places[n] = places;
        attempts.ps = ps;
        attempts.minusSquare = minusSquare;
        attempts.energy = energy;
    }

    const TrackCorrelations& correlations_;
    Vsp16s negative_[kTracks][kPlaces], magnitude_[kTracks][kPlaces];
    Vsp16s crossed_[kTracks][kTracks][kPlaces][kPlaces];
};

// Of pulses that no candidate has replaced.
constexpr Pulse kStart[4] = {{0, 0}, {1, 0}, {2, 0}, {3, 0}};

// All rotations of the tracks, of which each begins with the last of the one before.
template <int Count>
VSP_INLINE void searchRotations(const Search& search, const int (&tracks)[Count], const S16_128* places, Best& best,
                                Pulse* pulses) {
    int rotated[Count];
    for (int rotation = 0; rotation < Count; rotation++) {
        for (int n = 0; n < Count; n++) rotated[n] = tracks[(n + Count - rotation) % Count];
        search.run<Count>(rotated, places[rotated[0]], best, pulses);
    }
}

}  // namespace

int ownSearchTwoOfPairs(const Vsp16s* d, const Vsp16s* h, int subframe, FoundPulses& found) {
    constexpr unsigned kTwoApart = 0xC;
    TrackCorrelations correlations;
    Search::form<kTwoApart>(correlations, h);
    Search search(d, correlations);
    Best best = kNoCandidate;
    Pulse pulses[2] = {kStart[0], kStart[1]};
    int half = 0;
    for (int t = 0; t < 2; t++) {
        const int tracks[2] = {startPos[t][subframe][0], startPos[t][subframe][1]};
        search.needPair(tracks[0], tracks[1]);
        if (search.run<2>(tracks, S16_128::splat(-1), best, pulses)) half = t;
    }
    search.take(2, pulses, found);
    return half;
}

void ownSearchTwo(const Vsp16s* d, const Vsp16s* h, FoundPulses& found) {
    TrackCorrelations correlations;
    Search::form<0x1F>(correlations, h);
    Search search(d, correlations);
    Best best = kNoCandidate;
    Pulse pulses[2] = {kStart[0], kStart[1]};
    for (int first = 1; first <= 3; first += 2)
        for (int second = 0; second < kTracks; second++) {
            if (second == 3) continue;
            const int tracks[2] = {first, second};
            search.needPair(first, second);
            search.run<2>(tracks, S16_128::splat(-1), best, pulses);
        }
    search.take(2, pulses, found);
}

void ownSearchThree(const Vsp16s* d, const Vsp16s* h, FoundPulses& found) {
    TrackCorrelations correlations;
    Search::form<0x1E>(correlations, h);
    Search search(d, correlations);
    for (int b = 1; b < kTracks; b++)
        for (int a = 0; a < b; a++)
            if (a == 0 || b - a != 2) search.needPair(a, b);
    S16_128 places[kTracks];
    for (int t = 0; t < kTracks; t++) places[t] = search.largest(t, 2);
    Best best = kNoCandidate;
    Pulse pulses[3] = {kStart[0], kStart[1], kStart[2]};
    for (int a = 1; a <= 3; a += 2)
        for (int b = 2; b <= 4; b += 2) searchRotations(search, {0, a, b}, places, best, pulses);
    search.take(3, pulses, found);
}

void ownSearchFour(const Vsp16s* d, const Vsp16s* h, FoundPulses& found) {
    TrackCorrelations correlations;
    Search::form<0x1E>(correlations, h);
    Search search(d, correlations);
    for (int b = 1; b < kTracks; b++)
        for (int a = 0; a < b && a < 3; a++) search.needPair(a, b);
    S16_128 places[kTracks];
    for (int t = 0; t < kTracks; t++) places[t] = search.largest(t, 4);
    Best best = kNoCandidate;
    Pulse pulses[4] = {kStart[0], kStart[1], kStart[2], kStart[3]};
    for (int last = 3; last <= 4; last++) searchRotations(search, {0, 1, 2, last}, places, best, pulses);
    search.take(4, pulses, found);
}

}  // namespace vsp::VSP_LEVEL
