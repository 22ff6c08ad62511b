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

constexpr Vsp16s kLastPlaces[kPlaces] = {-1, -1};  // of the tracks of ten places, in the second vector

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
                if (i > 0) rounded.v &= S16_128::load(kLastPlaces).v;
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
        int order[2 * Tracks];
        for (int i = 0; i < 2 * Tracks; i++) order[i] = (target_.firstTrack + i) % Tracks;
        Pulse best[kPulses];
        for (int i = 0; i < kPulses; i++) best[i] = {i % Tracks, i / Tracks};
        Best bestSums = kNoCandidate;
        for (int n = 1; n < Tracks; n++) {
            const Best candidate = attempt(order);
            if (isBetter(bestSums, candidate)) {
                bestSums = candidate;
                for (int i = 0; i < kPulses; i++) best[i] = pulses_[i];
            }
            const int second = order[1];
            for (int i = 1; i + 1 < 2 * Tracks; i++) order[i] = order[i + 1];
            order[2 * Tracks - 1] = second;
        }
        for (int i = 0; i < kPulses; i++) {
            found.position[i] = L::position(best[i].track, best[i].place);
            found.negative[i] = target_.negative[best[i].track][best[i].place] != 0;
        }
    }

  private:
    struct Sums {
        S32_128 v[2 * kGroups];
    };

    Vsp16s d(Pulse p) const { return target_.d[p.track][p.place]; }
    Vsp16s own(Pulse p) const { return correlations_.diagonal(p.track)[p.place]; }
    Vsp16s crossed(Pulse p, Pulse q) const { return correlations_.row(p, q.track)[q.place]; }

    // Two pulses at the largest places, then pair after pair.
    Best attempt(const int* order) {
        for (int i = 0; i < 2; i++) pulses_[i] = {order[i], target_.maximumPlace[order[i]]};
        ps_ = Add_16s(d(pulses_[0]), d(pulses_[1]));
        Vsp32s alp = (own(pulses_[0]) + own(pulses_[1])) * 2048 + crossed(pulses_[0], pulses_[1]) * 4096;
        Best best = kNoCandidate;
        for (int pair = 1; pair < Tracks; pair++) {
            best = bestPair(order[2 * pair], order[2 * pair + 1], 2 * pair, kWeights[pair - 1], alp);
            alp = best.energy * 16384;
        }
        return best;
    }

    // The energy of a pulse and twice its correlations with the pulses before, for the places of a track, and the largest
    // sum of the positive ones.
    Sums withEarlier(int track, int count, int* largest) const {
        Sums sums;
        S32_128 peaks = S32_128::splat(0);
        for (int half = 0; half < 2 * kGroups; half++) {
            S32_128 sum = loadFour(correlations_.diagonal(track) + 4 * half), positive = sum;
            for (int n = 0; n < count; n++) {
                const S32_128 row = loadFour(correlations_.row(pulses_[n], track) + 4 * half), twice = add(row, row);
                sum = add(sum, twice);
                positive = add(positive, max(twice, S32_128::splat(0)));
            }
            sums.v[half] = sum;
            peaks = max(peaks, positive);
        }
        if (largest != nullptr) {
            Vsp32s lanes[4];
            peaks.store(lanes);
            *largest = 0;
            for (const Vsp32s lane : lanes) *largest = lane > *largest ? lane : *largest;
        }
        return sums;
    }

    // The mean v, every step saturated.
    void meansSaturating(int track, int count, int shift, Vsp16s* v) const {
        const Vsp16s weight = Vsp16s(1 << (15 - shift));
        for (int i = 0; i < L::places; i++) {
            Vsp32s sum = Mul2_16s32s(correlations_.diagonal(track)[i], weight);
            for (int n = 0; n < count; n++) sum = mac_32s(sum, correlations_.row(pulses_[n], track)[i], Vsp16s(2 * weight));
            v[i] = round_32s(sum);
        }
    }

    Best bestPair(int first, int second, int count, Weights weights, Vsp32s alp) {
        // What the places of the first track have with the pulses before.
        alignas(64) Vsp32s outer[L::width];
        const Sums ofFirst = withEarlier(first, count, nullptr);
        for (int half = 0; half < 2 * kGroups; half++)
            add(mulLo(ofFirst.v[half], S32_128::splat(weights.own)), S32_128::splat(alp)).store(outer + 4 * half);

        int largest = 0;
        Vsp16s v[L::width] = {};
        const Sums ofSecond = withEarlier(second, count, &largest);
        const int shift = weights.shiftOfV;
        if (largest < 1 << (15 + shift)) {
            const S32_128 half = S32_128::splat(1 << (shift - 1));
            for (int g = 0; g < kGroups; g++)
                packSat(shr(add(ofSecond.v[2 * g], half), shift), shr(add(ofSecond.v[2 * g + 1], half), shift))
                    .store(v + kPlaces * g);
        } else {
            meansSaturating(second, count, shift, v);
        }
        int largestV = 0;
        for (int i = 0; i < L::places; i++) largestV = v[i] > largestV ? v[i] : largestV;

        PrunedCandidates<L::places * kGroups> candidates;
        const S16_128 factors{S32_128::splat(weights.v | weights.crossed << 16).v};
        for (int i = 0; i < L::places; i++) {
            const Vsp16s* const row = correlations_.row({first, i}, second);
            const Vsp16s psFirst = Add_16s(ps_, target_.d[first][i]);
            // The sums with v stay within 32 bits, so that only their end can leave them.
            const bool exact = Vsp64s(outer[i]) + largestV * Vsp64s(weights.v) < 1 << 30;
            for (int g = 0; g < kGroups; g++) {
                const S16_128 vs = S16_128::load(v + kPlaces * g), rows = S16_128::load(row + kPlaces * g);
                const S32_128 start = S32_128::splat(outer[i] + 0x4000);
                S16_128 energies = packSat(shr(add(dot2(S16_128{zipLo(vs, rows).v}, factors), start), 15),
                                           shr(add(dot2(S16_128{zipHi(vs, rows).v}, factors), start), 15));
                if (!exact) [[unlikely]]
                    energies = saturated(outer[i], v + kPlaces * g, row + kPlaces * g, weights);
                const S16_128 sum = addSat(S16_128::splat(psFirst), S16_128::load(target_.d[second] + kPlaces * g));
                S16_128 square = mulShift15Sat(sum, sum);
                S16_128 divisors = energies;
                if (g > 0) {
                    const S16_128 mask = S16_128::load(kLastPlaces);
                    square.v &= mask.v;
                    energies.v &= mask.v;
                    divisors = select(mask, energies, S16_128::splat(1));
                }
                candidates.add(square, energies, divisors);
            }
        }
        Best best = kNoCandidate;
        const int number = candidates.best(best);
        const int a = number < 0 ? 0 : number / L::width, b = number < 0 ? 0 : number % L::width;
        pulses_[count] = {first, a};
        pulses_[count + 1] = {second, b};
        ps_ = number < 0 ? Vsp16s(0) : Add_16s(Add_16s(ps_, target_.d[first][a]), target_.d[second][b]);
        return best;
    }

    static S16_128 saturated(Vsp32s outer, const Vsp16s* v, const Vsp16s* row, Weights weights) {
        Vsp16s energies[kPlaces];
        for (int i = 0; i < kPlaces; i++) {
            const Vsp32s sum = Add_32s(Cnvrt_64s32s(2 * Vsp64s(outer)), Cnvrt_64s32s(2 * Vsp64s(v[i]) * weights.v));
            energies[i] = round_32s(Add_32s(sum, 2 * row[i] * weights.crossed));
        }
        return S16_128::load(energies);
    }

    const SignedTarget<Tracks>& target_;
    const Correlations<Tracks>& correlations_;
    Pulse pulses_[kPulses];
    Vsp16s ps_;
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
