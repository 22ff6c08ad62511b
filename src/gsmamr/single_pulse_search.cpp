// The searches of two to four pulses on tracks of their own, one after the other (`search_2i40` to `search_4i40`).
#include "gsmamr/algebraic_search.h"
#include "gsmamr/pulses.h"

namespace vsp::VSP_LEVEL {

namespace {

struct Pulse {
    int track, place;
};

// Pulses found so far: their correlation with the target and their energy.
struct Sums {
    Vsp16s ps, alp;
};

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

    [[gnu::always_inline]] void needPair(int a, int b) {
        const S16_128 signs = S16_128::load(negative_[b]);
        correlations_.pairs(a, b, crossed_[a][b], [&](S16_128 row, int i) {
            return withSigns(row, {signs.v ^ S16_128::splat(negative_[a][i]).v});
        });
        if (a == b)
            for (int i = 0; i < kPlaces; i++) crossed_[a][b][i][i] = correlations_.diagonal(a)[i];
    }

    // The places of a track but the given number of those with the smallest magnitudes, of equal ones the first.
    [[gnu::always_inline]] unsigned largest(int track, int without) const {
        unsigned left = 0xFF;
        for (int n = 0; n < without; n++) {
            int smallest = -1;
            for (int i = 0; i < kPlaces; i++)
                if ((left >> i & 1) != 0 && magnitude_[track][i] < (smallest < 0 ? kMax16 : magnitude_[track][smallest]))
                    smallest = i;
            if (smallest >= 0) left &= ~(1u << smallest);
        }
        return left;
    }

    // Each adds the best pulse of a track to those before, and is given their places.
    [[gnu::always_inline]] Best second(Pulse p0, int track, Pulse& p, Sums& sums) const {
        const Vsp32s energy0 = correlations_.diagonal(p0.track)[p0.place];
        const S16_128 own = S16_128::load(correlations_.diagonal(track));
        const Weighted sum(energy0 * 8192, own, row(p0, track), 8192, 16384);
        return best(sum.rounded(), magnitude_[p0.track][p0.place], track, p, sums);
    }
    [[gnu::always_inline]] Best third(Pulse p0, Pulse p1, int track, Pulse& p, Sums& sums) const {
        const S16_128 own = S16_128::load(correlations_.diagonal(track));
        Weighted sum(sums.alp * 8192, own, row(p1, track), 2048, 4096);
        sum.add(row(p0, track), S16_128::splat(0), 4096, 0);
        return best(sum.rounded(), sums.ps, track, p, sums);
    }
    [[gnu::always_inline]] Best fourth(Pulse p0, Pulse p1, Pulse p2, int track, Pulse& p, Sums& sums) const {
        const S16_128 own = S16_128::load(correlations_.diagonal(track));
        Weighted sum(sums.alp * 32768, own, row(p2, track), 2048, 4096);
        sum.add(row(p1, track), row(p0, track), 4096, 4096);
        return best(sum.rounded(), sums.ps, track, p, sums);
    }

    [[gnu::always_inline]] void take(int count, const Pulse* pulses, FoundPulses& found) const {
        for (int n = 0; n < count; n++) {
            found.position[n] = positionOf(pulses[n].track, pulses[n].place);
            found.negative[n] = negative_[pulses[n].track][pulses[n].place] != 0;
        }
    }

  private:
    // Halves of sums of doubled products, with 15 bits after the point. None of them leaves 32 bits.
    struct Weighted {
        S32_128 lo, hi;

        [[gnu::always_inline]] Weighted(Vsp32s start, S16_128 a, S16_128 b, int ofA, int ofB)
            : lo(S32_128::splat(start + 0x4000)), hi(lo) {
            add(a, b, ofA, ofB);
        }
        [[gnu::always_inline]] void add(S16_128 a, S16_128 b, int ofA, int ofB) {
            const S16_128 weights{S32_128::splat(ofA | ofB << 16).v};
            lo = vsp::VSP_LEVEL::add(lo, dot2(S16_128{zipLo(a, b).v}, weights));
            hi = vsp::VSP_LEVEL::add(hi, dot2(S16_128{zipHi(a, b).v}, weights));
        }
        [[gnu::always_inline]] S16_128 rounded() const { return packSat(shr(lo, 15), shr(hi, 15)); }
    };

    [[gnu::always_inline]] S16_128 row(Pulse p, int track) const {
        return S16_128::load(crossed_[p.track][track][p.place]);
    }

    [[gnu::always_inline]] Best best(S16_128 energies, Vsp16s ps, int track, Pulse& p, Sums& sums) const {
        Best result = kNoCandidate;
        p = {track, 0};
        sums.ps = 0;
        const S16_128 sum = addSat(S16_128::splat(ps), S16_128::load(magnitude_[track]));
        Vsp16s ofPlace[kPlaces];
        sum.store(ofPlace);
        compare(result, mulShift15Sat(sum, sum), energies, [&](int place) {
            p.place = place;
            sums.ps = ofPlace[place];
        });
        sums.alp = result.energy;
        return result;
    }

    const TrackCorrelations& correlations_;
    Vsp16s negative_[kTracks][kPlaces], magnitude_[kTracks][kPlaces];
    Vsp16s crossed_[kTracks][kTracks][kPlaces][kPlaces];
};

// Of pulses that no candidate has replaced.
constexpr Pulse kStart[4] = {{0, 0}, {1, 0}, {2, 0}, {3, 0}};

// Runs over the starts of the first pulse. Returns whether something better was found.
template <int Count>
VSP_INLINE bool searchTracks(const Search& search, const int* tracks, unsigned places, Best& best, Pulse* pulses) {
    bool found = false;
    for (unsigned left = places; left != 0; left &= left - 1) {
        Pulse p[4] = {{tracks[0], __builtin_ctz(left)}, {}, {}, {}};
        Sums sums{};
        Best candidate = search.second(p[0], tracks[1], p[1], sums);
        if constexpr (Count > 2) candidate = search.third(p[0], p[1], tracks[2], p[2], sums);
        if constexpr (Count > 3) candidate = search.fourth(p[0], p[1], p[2], tracks[3], p[3], sums);
        if (!isBetter(best, candidate)) continue;
        best = candidate;
        found = true;
        for (int n = 0; n < Count; n++) pulses[n] = p[n];
    }
    return found;
}

// All rotations of the tracks, of which each begins with the last of the one before.
template <int Count>
VSP_INLINE void searchRotations(const Search& search, const int (&tracks)[Count], const unsigned* places, Best& best,
                                Pulse* pulses) {
    int rotated[Count];
    for (int rotation = 0; rotation < Count; rotation++) {
        for (int n = 0; n < Count; n++) rotated[n] = tracks[(n + Count - rotation) % Count];
        searchTracks<Count>(search, rotated, places[rotated[0]], best, pulses);
    }
}

constexpr unsigned kAllPlaces = 0xFF;

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
        if (searchTracks<2>(search, tracks, kAllPlaces, best, pulses)) half = t;
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
            searchTracks<2>(search, tracks, kAllPlaces, best, pulses);
        }
    search.take(2, pulses, found);
}

void ownSearchThree(const Vsp16s* d, const Vsp16s* h, FoundPulses& found) {
    TrackCorrelations correlations;
    Search::form<0x1E>(correlations, h);
    Search search(d, correlations);
    static constexpr int kGroups[3][2] = {{0, 0}, {1, 3}, {2, 4}};
    for (int a = 0; a < 3; a++)
        for (int b = 0; b < 3; b++)
            for (int i = 0; i < (a == b ? 0 : a == 0 ? 1 : 2); i++)
                for (int j = 0; j < (b == 0 ? 1 : 2); j++) search.needPair(kGroups[a][i], kGroups[b][j]);
    unsigned places[kTracks];
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
    for (int a = 0; a < kTracks; a++)
        for (int b = 0; b < kTracks; b++)
            if (a != b && (a < 3 || b < 3)) search.needPair(a, b);
    unsigned places[kTracks];
    for (int t = 0; t < kTracks; t++) places[t] = search.largest(t, 4);
    Best best = kNoCandidate;
    Pulse pulses[4] = {kStart[0], kStart[1], kStart[2], kStart[3]};
    for (int last = 3; last <= 4; last++) searchRotations(search, {0, 1, 2, last}, places, best, pulses);
    search.take(4, pulses, found);
}

}  // namespace vsp::VSP_LEVEL
