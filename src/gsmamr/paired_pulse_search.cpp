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
        // A track has an element of each vector of magnitudes that begins with a place of the first track.
        const S16_128 zero = S16_128::splat(0);
        Vsp16s signedTarget[kL_subfr], magnitudes[kL_subfr + S16_128::width];
        for (int n = 0; n < kL_subfr; n += S16_128::width) {
            const S16_128 mean = S16_128::load(means + n), x = S16_128::load(filtered + n);
            select(shr(mean, 15), subSat(zero, x), x).store(signedTarget + n);
            max(mean, subSat(zero, mean)).store(magnitudes + n);
        }
        zero.store(magnitudes + kL_subfr);
        S16_128 maximum = S16_128::splat(-1), places = zero;
        for (int i = 0; i < L::places; i++) {
            const S16_128 row = S16_128::load(magnitudes + L::position(0, i));
            places = select({_mm_cmpgt_epi16(row.v, maximum.v)}, S16_128::splat(Vsp16s(i)), places);
            maximum = max(maximum, row);
        }
        Vsp16s largestOf[kPlaces], placeOf[kPlaces];
        maximum.store(largestOf);
        places.store(placeOf);
        firstTrack = 0;
        for (int t = 0; t < Tracks; t++) {
            maximumPlace[t] = placeOf[t];
            if (largestOf[t] > largestOf[firstTrack]) firstTrack = t;
            for (int i = 0; i < L::places; i++) {
                const int n = L::position(t, i);
                negative[t][i] = Vsp16s(means[n] >> 15);
                d[t][i] = signedTarget[n];
            }
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
    for (int b = 0; b < kTracks; b++) {
        const TrackSigns signs(target.negative[b]);
        for (int a = 0; a <= b; a++)
            formPairs(correlations, a, b, target.negative[a], signs, crossed_[a][b], crossed_[b][a]);
        for (int i = 0; i < kPlaces; i++) diagonal_[b][i] = correlations.diagonal(b)[i];
    }
}

// Row by row of the later position: lane i of a track's sums has the distance of the row to place i, so that from one row
// to the next the sums move along their array.
template <>
Correlations<4>::Correlations(const Vsp16s* impulse, const SignedTarget<4>& target) {
    constexpr int kLanes = 2 * kPlaces;
    const ScaledResponse response(impulse);
    const Vsp16s* const h = response.h;
    const bool exact = 2 * energy(h, kL_subfr) + 0x8000 <= kMax32;
    const auto signsOf = [&](int track, int group) { return TrackSigns(target.negative[track] + kPlaces * group); };
    const TrackSigns signs[4][2] = {{signsOf(0, 0), signsOf(0, 1)},
                                    {signsOf(1, 0), signsOf(1, 1)},
                                    {signsOf(2, 0), signsOf(2, 1)},
                                    {signsOf(3, 0), signsOf(3, 1)}};
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
            } else {
                for (int i = 0; i < kLanes; i += kPlaces) {
                    const Eight32s sum = add(Eight32s::load(at + i), mulLower(Eight32s::load(mirrored[a] + i), h[k]));
                    sum.store(at + i);
                    S16_128 rounded = narrowSat(shr(add(sum, Eight32s::splat(0x4000)), 15));
                    if (i > 0) rounded.v &= S16_128::load(kTenPlaces + kPlaces).v;
                    rounded.store(cells + i);
                }
            }
            const Vsp16s own = cells[place];
            for (int g = 0; g < kLanes / kPlaces; g++) {
                const S16_128 row = S16_128::load(cells + kPlaces * g);
                signs[a][g].applied(row, target.negative[track][place]).store(cells + kPlaces * g);
            }
            if (a == track) diagonal_[track][place] = cells[place] = own;
        }
    }
    for (int p = 0; p < kL_subfr; p++)
        for (int q = 0; q < p; q++) crossed_[q % 4][p % 4][q / 4][p / 4] = crossed_[p % 4][q % 4][p / 4][q / 4];
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
    static constexpr int kGroups = L::width / kPlaces;  // of eight places
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
        for (Attempt& attempt : attempts) addBestPair<1>(attempt);
        for (Attempt& attempt : attempts) addBestPair<2>(attempt);
        for (Attempt& attempt : attempts) addBestPair<3>(attempt);
        if constexpr (Tracks > 4)
            for (Attempt& attempt : attempts) addBestPair<4>(attempt);

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
        Eight32s sum, peak;
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

    // The energy of a pulse and twice its correlations with the pulses before, for eight places of a track, and the largest
    // of the partial sums.
    template <int Count>
    [[gnu::always_inline]] Sums withEarlier(const Pulse* pulses, int track, int group) const {
        Eight32s crossed = Eight32s::splat(0), peaks = crossed;
        for (int n = 0; n < Count; n++) {
            crossed = add(crossed, widen(S16_128::load(correlations_.row(pulses[n], track) + kPlaces * group)));
            peaks = max(peaks, crossed);
        }
        const Eight32s own = widen(S16_128::load(correlations_.diagonal(track) + kPlaces * group));
        return {add(own, shl(crossed, 1)), add(own, shl(peaks, 1))};
    }

    template <int Pair>
    [[gnu::always_inline]] void addBestPair(Attempt& attempt) const {
        constexpr int kCount = 2 * Pair;
        constexpr Weights kOf = kWeights[Pair - 1];
        Pulse* const pulses = attempt.pulses;
        const int first = pulses[kCount].track, second = pulses[kCount + 1].track;
        // What the places of the first track have with the pulses before, and their targets. The means v of the second
        // track, weighted, for its even and its odd places.
        Vsp32s outer[L::width], even[L::width / 2], odd[L::width / 2];
        Vsp16s psFirst[L::width];
        Eight32s room = Eight32s::splat(1);  // positive where no sum with v saturates on the way
        for (int g = 0; g < kGroups; g++) {
            const Eight32s ofFirst = shl(withEarlier<kCount>(pulses, first, g).sum, __builtin_ctz(kOf.own));
            const Eight32s sums = add(Eight32s::splat(attempt.alp), ofFirst);
            sums.store(outer + kPlaces * g);
            addSat(S16_128::splat(attempt.ps), S16_128::load(target_.d[first] + kPlaces * g)).store(psFirst + kPlaces * g);

            const auto [sum, peak] = withEarlier<kCount>(pulses, second, g);
            const S16_128 v = narrowSat(shr(add(sum, Eight32s::splat(1 << (kOf.shiftOfV - 1))), kOf.shiftOfV));
            const S32_128 half = S32_128::splat(0x4000);
            add(dot2(v, S16_128{S32_128::splat(kOf.v).v}), half).store(even + kPlaces / 2 * g);
            add(dot2(v, S16_128{S32_128::splat(kOf.v << 16).v}), half).store(odd + kPlaces / 2 * g);
            room = min(room, min(sub(Eight32s::splat((1 << 30) - 32767 * kOf.v), sums),
                                 sub(Eight32s::splat(1 << (15 + kOf.shiftOfV)), peak)));
        }

        // The candidates: rows of eight places of the second track, kGroups for each place of the first. Even and odd ones
        // have vectors of their own.
        using V = S16;
        using W = Wide<V>;
        constexpr int kVectors = L::places * kGroups / kBlocks<V>;
        const Vsp16s* const rows = correlations_.row({first, 0}, second);
        const V ofEven{W::splat(kOf.crossed).v}, ofOdd{W::splat(kOf.crossed << 16).v};
        const W most = W::splat(kMax16);
        Vsp16s squares[kVectors * V::width];
        Vsp32s energies[2 * kVectors * W::width];
        F32 quotients[2 * kVectors], largestQuotient = F32::splat(0);
        W least = W::splat(1);
#pragma GCC unroll 5
        for (int i = 0; i < kVectors; i++) {
            const W start = splatInBlocks<W, kGroups>(outer + i * kBlocks<V> / kGroups);
            const V row = V::load(rows + V::width * i);
            const auto energy = [&](const Vsp32s* v, V weights) {
                const W sums = add(add(start, repeatedBlocks<W, kGroups>(v, i)), dot2(row, weights));
                return min(shr(sums, 15), most);
            };
            W e0 = energy(even, ofEven), e1 = energy(odd, ofOdd);
            const V sum = addSat(splatInBlocks<V, kGroups>(psFirst + i * kBlocks<V> / kGroups),
                                 repeatedBlocks<V, kGroups>(target_.d[second], i));
            const V square = mulHiU(addSatU(magnitude(sum), magnitude(sum)), magnitude(sum));
            W s0{square.v & W::splat(0xFFFF).v}, s1 = shrU(W{square.v}, 16);
            if constexpr (kGroups > 1) {  // the places that are not there lose
                const W mask = repeatedBlocks<W, kGroups>(kTenPlaces, i), none{~mask.v};
                const W one{none.v & W::splat(1).v};
                e0.v = (e0.v & mask.v) | one.v;
                e1.v = (e1.v & mask.v) | one.v;
                s0.v |= none.v;
                s1.v |= none.v;
            }
            square.store(squares + V::width * i);
            e0.store(energies + 2 * i * W::width);
            e1.store(energies + (2 * i + 1) * W::width);
            least = min(least, min(e0, e1));
            quotients[2 * i] = quotientEstimate(s0, e0);
            quotients[2 * i + 1] = quotientEstimate(s1, e1);
            largestQuotient = max(largestQuotient, max(quotients[2 * i], quotients[2 * i + 1]));
        }

        Best best = kNoCandidate;
        int found = 0;
        if (anyNotPositive(least) || anyNotPositive(room)) [[unlikely]] {
            found = bestSaturating(attempt, Pair, best);
        } else {
            // Where all energies are positive the order of the quotients square / energy is that of the comparisons. Those
            // that may be the largest are compared, of equal ones the first wins.
            constexpr Vsp32f kNearly = 1 - 3 * kQuotientError;
            constexpr int kInWord = 64 / W::width;
            const F32 threshold = F32::splat(largest(largestQuotient) * kNearly);
            for (int from = 0; from < 2 * kVectors; from += kInWord) {
                Vsp64u near = 0;
                for (int i = 0; i < kInWord && from + i < 2 * kVectors; i++)
                    near |= Vsp64u(atLeast(quotients[from + i], threshold)) << (W::width * i);
                for (; near != 0; near &= near - 1) {
                    const int at = from * W::width + __builtin_ctzll(near), vector = at / W::width, lane = at % W::width;
                    const int number = vector / 2 * V::width + 2 * lane + vector % 2;
                    const Best candidate{squares[number], Vsp16s(energies[at])};
                    const Vsp32s gain = best.energy * candidate.square - best.square * candidate.energy;
                    if (gain < 0 || (gain == 0 && number > found)) continue;
                    best = candidate;
                    found = number;
                }
            }
        }
        const int a = found < 0 ? 0 : found / L::width, b = found < 0 ? 0 : found % L::width;
        pulses[kCount].place = a;
        pulses[kCount + 1].place = b;
        attempt.ps = found < 0 ? Vsp16s(0) : Add_16s(psFirst[a], target_.d[second][b]);
        attempt.alp = best.energy * 16384;
        attempt.best = best;
    }

    // The best pair with every step saturated, candidate after candidate. Returns its number, -1 if there is none.
    [[gnu::noinline]] int bestSaturating(const Attempt& attempt, int pair, Best& best) const {
        const Pulse* const pulses = attempt.pulses;
        const int count = 2 * pair, first = pulses[count].track, second = pulses[count + 1].track;
        const Weights of = kWeights[pair - 1];
        Vsp16s v[L::places];
        for (int b = 0; b < L::places; b++) {
            const Vsp16s weight = Vsp16s(1 << (15 - of.shiftOfV));
            Vsp32s sum = Mul2_16s32s(correlations_.diagonal(second)[b], weight);
            for (int n = 0; n < count; n++) sum = mac_32s(sum, correlations_.row(pulses[n], second)[b], Vsp16s(2 * weight));
            v[b] = round_32s(sum);
        }
        int found = -1;
        for (int a = 0; a < L::places; a++) {
            const Pulse p{first, a};
            Vsp32s ofFirst = own(p);
            for (int n = 0; n < count; n++) ofFirst += 2 * crossed(pulses[n], p);
            const Vsp32s outer = Cnvrt_64s32s(2 * (attempt.alp + Vsp64s(ofFirst) * of.own));
            const Vsp16s ps = Add_16s(attempt.ps, d(p));
            for (int b = 0; b < L::places; b++) {
                const Vsp32s sum = Add_32s(outer, Cnvrt_64s32s(2 * Vsp64s(v[b]) * of.v));
                const Vsp16s energy = round_32s(Add_32s(sum, 2 * crossed(p, {second, b}) * of.crossed));
                const Vsp16s ofPair = Add_16s(ps, target_.d[second][b]);
                const Best candidate{Mul_16s(ofPair, ofPair), energy};
                if (!isBetter(best, candidate)) continue;
                best = candidate;
                found = L::width * a + b;
            }
        }
        return found;
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
