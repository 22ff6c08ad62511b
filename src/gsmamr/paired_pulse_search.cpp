// The searches of two pulses a track, pair after pair (`search_8i40`, `search_10i40`).
#include "gsmamr/algebraic_search.h"

namespace vsp::VSP_LEVEL {

namespace {

// Positions by tracks. Rows of places are padded to whole vectors of eight.
template <int Tracks>
struct Layout {
    static constexpr int places = kL_subfr / Tracks, width = places == 8 ? 8 : 16;
    static constexpr int position(int track, int place) { return Tracks * place + track; }
};

struct Pulse {
    int track, place;
};

// The target filtered backwards, with the signs that a mean of it and the residual has, and the largest place of each
// track (`set_sign12k2`).
template <int Tracks>
struct SignedTarget {
    using L = Layout<Tracks>;
    Vsp16s d[Tracks][L::width] = {}, negative[Tracks][L::width] = {};
    int maximumPlace[Tracks], firstTrack;

    SignedTarget(const Vsp16s* filtered, const Vsp16s* residual) {
        const auto normalisation = [](const Vsp16s* x) {
            return high_32s(shl_32s(ownInvSqrt(Cnvrt_64s32s(2 * energy(x, kL_subfr) + 256)), 5));
        };
        // The mean round(L_shl(sum, 10)) of the residual and the target; the factors are not negative.
        Vsp16s means[kL_subfr];
        const S16_128 factors{S32_128::splat(Vsp16u(normalisation(residual)) | normalisation(filtered) << 16).v};
        const S32_128 half = S32_128::splat(16);
        for (int n = 0; n < kL_subfr; n += S16_128::width) {
            const S16_128 r = S16_128::load(residual + n), x = S16_128::load(filtered + n);
            packSat(shr(add(dot2(S16_128{zipLo(r, x).v}, factors), half), 5),
                    shr(add(dot2(S16_128{zipHi(r, x).v}, factors), half), 5))
                .store(means + n);
        }
        int largest = -1;
        for (int t = 0; t < Tracks; t++) {
            int maximum = -1;
            for (int i = 0; i < L::places; i++) {
                const int n = L::position(t, i);
                const Vsp16s mean = means[n];
                negative[t][i] = Vsp16s(mean < 0 ? -1 : 0);
                d[t][i] = mean < 0 ? Negate_16s(filtered[n]) : filtered[n];
                if (Abs_16s(mean) <= maximum) continue;
                maximum = Abs_16s(mean);
                maximumPlace[t] = i;
            }
            if (maximum <= largest) continue;
            largest = maximum;
            firstTrack = t;
        }
    }
};

// The correlations of the scaled response at any two positions, with the signs of these.
template <int Tracks>
class Correlations {
    using L = Layout<Tracks>;

  public:
    Correlations(const Vsp16s* impulse, const SignedTarget<Tracks>& target);

    // Of a pulse with the places of a track.
    const Vsp16s* row(Pulse p, int track) const { return crossed_[p.track][track][p.place]; }
    const Vsp16s* diagonal(int track) const { return diagonal_[track]; }

  private:
    Vsp16s crossed_[Tracks][Tracks][L::places][L::width];
    Vsp16s diagonal_[Tracks][L::width] = {};
};

constexpr Vsp16s kTenPlaces[2 * kPlaces] = {-1, -1, -1, -1, -1, -1, -1, -1, -1, -1};

template <>
Correlations<5>::Correlations(const Vsp16s* impulse, const SignedTarget<5>& target) {
    const ScaledResponse response(impulse);
    TrackCorrelations correlations;
    correlations.form<0x1F>(response.h, 0, 0, 0x8000);
    for (int a = 0; a < kTracks; a++)
        for (int b = 0; b < kTracks; b++) {
            const S16_128 signs = S16_128::load(target.negative[b]);
            correlations.pairs(a, b, crossed_[a][b], [&](S16_128 row, int i) {
                return withSigns(row, {signs.v ^ S16_128::splat(target.negative[a][i]).v});
            });
        }
    for (int t = 0; t < kTracks; t++)
        for (int i = 0; i < kPlaces; i++) diagonal_[t][i] = crossed_[t][t][i][i] = correlations.diagonal(t)[i];
}

// Row by row of the later position: lane i of a track's sums has the distance of the row to place i, so that from one row
// to the next the sums move along their array.
template <>
Correlations<4>::Correlations(const Vsp16s* impulse, const SignedTarget<4>& target) {
    constexpr int kLanes = 2 * kPlaces;
    const ScaledResponse response(impulse);
    const Vsp16s* const h = response.h;
    const bool exact = 2 * energy(h, kL_subfr) + 0x8000 <= kMax32;
    alignas(64) Vsp32s sums[4][11 + kLanes] = {}, mirrored[4][kLanes] = {};
    for (int n = 0; n < kL_subfr; n++) mirrored[n % 4][n / 4] = Vsp16u(h[kL_subfr - 1 - n]);
    for (int k = 0; k < kL_subfr; k++) {
        const int later = kL_subfr - 1 - k, track = later % 4, place = later / 4;
        for (int a = 0; a < 4; a++) {
            Vsp32s* const at = sums[(k + a) % 4] + (k + a) / 4;
            Vsp16s* const cells = crossed_[track][a][place];
            if (!exact) {
                for (int i = 0; i < kLanes; i++) cells[i] = 0;
                for (int i = 0; 4 * i + a <= later; i++) {
                    at[i] = mac_32s(at[i], h[k], Vsp16s(mirrored[a][i]));
                    cells[i] = round_32s(at[i]);
                }
                continue;
            }
            for (int i = 0; i < kLanes; i += kPlaces) {
                const Eight32s sum = add(Eight32s::load(at + i), mulLower(Eight32s::load(mirrored[a] + i), h[k]));
                sum.store(at + i);
                S16_128 rounded = narrowSat(shr(add(sum, Eight32s::splat(0x4000)), 15));
                if (i > 0) rounded.v &= S16_128::load(kTenPlaces + kPlaces).v;
                rounded.store(cells + i);
            }
        }
    }
    for (int p = 0; p < kL_subfr; p++) {
        diagonal_[p % 4][p / 4] = crossed_[p % 4][p % 4][p / 4][p / 4];
        for (int q = 0; q < p; q++) {
            const bool differ = target.negative[p % 4][p / 4] != target.negative[q % 4][q / 4];
            Vsp16s& cell = crossed_[p % 4][q % 4][p / 4][q / 4];
            cell = Vsp16s((cell * (differ ? -32767 : 32766)) >> 15);
            crossed_[q % 4][p % 4][q / 4][p / 4] = cell;
        }
    }
}

// The weights of the search of a pair, as halves of doubled products: of the energy of the pulse at the first track and
// twice of its correlations with those before, of the mean v of the second track, of the correlation of the two; and the
// shift that gives v from the energy and twice the correlations.
struct Weights {
    int own, v, crossed, shiftOfV;
};
constexpr Weights kWeights[4] = {{2048, 16384, 4096, 3}, {1024, 8192, 2048, 3}, {512, 8192, 1024, 4}, {256, 4096, 512, 4}};

template <int Tracks>
class Search {
    using L = Layout<Tracks>;
    static constexpr int kGroups = L::width / kPlaces;
    static constexpr int kPulses = 2 * Tracks;

  public:
    Search(const SignedTarget<Tracks>& target, const Correlations<Tracks>& correlations)
        : target_(target), correlations_(correlations) {}

    void run(FoundPulses& found) {
        // The second pulse goes through the other tracks, and those behind it follow. The attempts take turns, so that what
        // one waits for the processor can do for the next.
        Attempt attempts[Tracks - 1];
        int order[2 * Tracks];
        for (int i = 0; i < 2 * Tracks; i++) order[i] = (target_.firstTrack + i) % Tracks;
        for (Attempt& attempt : attempts) {
            begin(attempt, order);
            const int second = order[1];
            for (int i = 1; i + 1 < 2 * Tracks; i++) order[i] = order[i + 1];
            order[2 * Tracks - 1] = second;
        }
        for (int pair = 1; pair < Tracks; pair++)
            for (Attempt& attempt : attempts) addBestPair(attempt, pair);

        Pulse best[kPulses];
        for (int i = 0; i < kPulses; i++) best[i] = {i % Tracks, i / Tracks};
        Best bestSums = kNoCandidate;
        for (const Attempt& attempt : attempts) {
            if (!isBetter(bestSums, attempt.best)) continue;
            bestSums = attempt.best;
            for (int i = 0; i < kPulses; i++) best[i] = attempt.pulses[i];
        }
        for (int i = 0; i < kPulses; i++) {
            found.position[i] = L::position(best[i].track, best[i].place);
            found.negative[i] = target_.negative[best[i].track][best[i].place] != 0;
        }
    }

  private:
    struct Attempt {
        Pulse pulses[kPulses];  // those to come have their track
        Vsp16s ps;
        Vsp32s alp;
        Best best;
    };
    struct Sums {
        Eight32s v[kGroups];
    };

    Vsp16s d(Pulse p) const { return target_.d[p.track][p.place]; }
    Vsp16s own(Pulse p) const { return correlations_.diagonal(p.track)[p.place]; }
    Vsp16s crossed(Pulse p, Pulse q) const { return correlations_.row(p, q.track)[q.place]; }

    // Two pulses at the largest places.
    void begin(Attempt& attempt, const int* order) const {
        Pulse* const pulses = attempt.pulses;
        for (int i = 0; i < kPulses; i++) pulses[i] = {order[i], target_.maximumPlace[order[i]]};
        attempt.ps = Add_16s(d(pulses[0]), d(pulses[1]));
        attempt.alp = (own(pulses[0]) + own(pulses[1])) * 2048 + crossed(pulses[0], pulses[1]) * 4096;
    }

    // The energy of a pulse and twice its correlations with the pulses before, for the places of a track, and the largest
    // sum of the positive ones.
    Sums withEarlier(const Pulse* pulses, int track, int count, int* largest) const {
        Sums sums;
        Eight32s peaks = Eight32s::splat(0);
        for (int g = 0; g < kGroups; g++) {
            Eight32s crossed = Eight32s::splat(0), positive = crossed;
            for (int n = 0; n < count; n++) {
                const Eight32s row = widen(S16_128::load(correlations_.row(pulses[n], track) + kPlaces * g));
                crossed = add(crossed, row);
                positive = add(positive, max(row, Eight32s::splat(0)));
            }
            const Eight32s own = widen(S16_128::load(correlations_.diagonal(track) + kPlaces * g));
            sums.v[g] = add(own, add(crossed, crossed));
            peaks = max(peaks, add(own, add(positive, positive)));
        }
        if (largest != nullptr) {
            Vsp32s lanes[kPlaces];
            peaks.store(lanes);
            *largest = 0;
            for (const Vsp32s lane : lanes) *largest = lane > *largest ? lane : *largest;
        }
        return sums;
    }

    // The mean v, every step saturated.
    void meansSaturating(const Pulse* pulses, int track, int count, int shift, Vsp16s* v) const {
        const Vsp16s weight = Vsp16s(1 << (15 - shift));
        for (int i = 0; i < L::places; i++) {
            Vsp32s sum = Mul2_16s32s(correlations_.diagonal(track)[i], weight);
            for (int n = 0; n < count; n++) sum = mac_32s(sum, correlations_.row(pulses[n], track)[i], Vsp16s(2 * weight));
            v[i] = round_32s(sum);
        }
    }

    void addBestPair(Attempt& attempt, int pair) const {
        Pulse* const pulses = attempt.pulses;
        const int count = 2 * pair, first = pulses[count].track, second = pulses[count + 1].track;
        const Weights weights = kWeights[pair - 1];
        // What the places of the first track have with the pulses before, and their targets.
        constexpr int kRows = L::places * kGroups;  // of eight candidates, kGroups for each place of the first track
        Vsp32s ofFirst[L::width], outer[kRows];
        Vsp16s psFirst[kRows];
        const Sums sumsOfFirst = withEarlier(pulses, first, count, nullptr);
        for (int g = 0; g < kGroups; g++) sumsOfFirst.v[g].store(ofFirst + kPlaces * g);
        Vsp32s largestOuter = 0;
        for (int i = 0; i < kRows; i++) {
            outer[i] = attempt.alp + ofFirst[i / kGroups] * weights.own;
            largestOuter = outer[i] > largestOuter ? outer[i] : largestOuter;
            psFirst[i] = Add_16s(attempt.ps, target_.d[first][i / kGroups]);
        }

        int largest = 0;
        Vsp16s v[L::width] = {};
        const Sums ofSecond = withEarlier(pulses, second, count, &largest);
        const int shift = weights.shiftOfV;
        if (largest < 1 << (15 + shift)) {
            for (int g = 0; g < kGroups; g++)
                narrowSat(shr(add(ofSecond.v[g], Eight32s::splat(1 << (shift - 1))), shift)).store(v + kPlaces * g);
        } else {
            meansSaturating(pulses, second, count, shift, v);
        }
        int largestV = 0;
        for (int i = 0; i < L::places; i++) largestV = v[i] > largestV ? v[i] : largestV;
        // The sums with v stay within 32 bits, so that only their end can leave them.
        const bool exact = Vsp64s(largestOuter) + largestV * Vsp64s(weights.v) < 1 << 30;

        using V = Sliding16;
        PrunedCandidates<kRows> candidates;
        const V factors{Wide<V>::splat(weights.v | weights.crossed << 16).v};
        const Vsp16s* const rows = correlations_.row({first, 0}, second);
        const auto places = [](const Vsp16s* p, int row) {
            return kGroups == 1 ? repeated(S16_128::load(p), V{}) : V::load(p + row % kGroups * kPlaces);
        };
        for (int i = 0; i < kRows; i += V::width / kPlaces) {
            const V vs = places(v, i), row = V::load(rows + kPlaces * i);
            const auto start = add(inBlocks(outer + i, Wide<V>{}), Wide<V>::splat(0x4000));
            V energies = packSat(shr(add(dot2(V{zipLo(vs, row).v}, factors), start), 15),
                                 shr(add(dot2(V{zipHi(vs, row).v}, factors), start), 15));
            if (!exact) [[unlikely]]
                energies = saturated(outer, v, rows, i, weights);
            const V sum = addSat(inBlocks(psFirst + i, V{}), places(target_.d[second], i));
            V square = mulShift15Sat(sum, sum), divisors = energies;
            if (kGroups > 1) {
                const V mask = places(kTenPlaces, i), one = V::splat(1);
                square.v &= mask.v;
                energies.v &= mask.v;
                divisors.v = energies.v | (one.v & ~mask.v);
            }
            candidates.add(square, energies, divisors);
        }
        Best best = kNoCandidate;
        const int number = candidates.best(best);
        const int a = number < 0 ? 0 : number / L::width, b = number < 0 ? 0 : number % L::width;
        pulses[count].place = a;
        pulses[count + 1].place = b;
        attempt.ps = number < 0 ? Vsp16s(0) : Add_16s(Add_16s(attempt.ps, target_.d[first][a]), target_.d[second][b]);
        attempt.alp = best.energy * 16384;
        attempt.best = best;
    }

    // A vector of energies from the given row on, every step saturated.
    [[gnu::noinline]] static Sliding16 saturated(const Vsp32s* outer, const Vsp16s* v, const Vsp16s* rows, int first,
                                                 Weights weights) {
        Vsp16s energies[Sliding16::width];
        for (int i = 0; i < Sliding16::width; i++) {
            const int at = kPlaces * first + i;
            const Vsp32s ofV = Cnvrt_64s32s(2 * Vsp64s(v[at % L::width]) * weights.v);
            const Vsp32s sum = Add_32s(Cnvrt_64s32s(2 * Vsp64s(outer[at / kPlaces])), ofV);
            energies[i] = round_32s(Add_32s(sum, 2 * rows[at] * weights.crossed));
        }
        return Sliding16::load(energies);
    }

    const SignedTarget<Tracks>& target_;
    const Correlations<Tracks>& correlations_;
};

template <int Tracks>
VSP_INLINE void searchPairs(const Vsp16s* d, const Vsp16s* residual, const Vsp16s* h, FoundPulses& found) {
    const SignedTarget<Tracks> target(d, residual);
    const Correlations<Tracks> correlations(h, target);
    Search<Tracks>(target, correlations).run(found);
}

}  // namespace

void ownSearchEight(const Vsp16s* d, const Vsp16s* residual, const Vsp16s* h, FoundPulses& found) {
    searchPairs<4>(d, residual, h, found);
}

void ownSearchTen(const Vsp16s* d, const Vsp16s* residual, const Vsp16s* h, FoundPulses& found) {
    searchPairs<5>(d, residual, h, found);
}

}  // namespace vsp::VSP_LEVEL
