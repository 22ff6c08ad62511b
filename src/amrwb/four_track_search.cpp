// The search on four tracks of sixteen places: pair after pair, in passes that begin with other tracks (`ACELP_4t64_fx`).
#include "amrwb/pulse_search.h"
#include "vector/magnitude.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kTracks = 4, kPlaces = kPlaces16, kMaxPulses = 24;

constexpr int trackOf(int position) { return position % kTracks; }
constexpr int placeOf(int position) { return position / kTracks; }
constexpr int nextTrack(int track) { return (track + 1) % kTracks; }

// The impulse response at any position, with either sign, and in pairs of samples.
class SignedResponse {
  public:
    SignedResponse(const Vsp16s* h, const Vsp16s* signs)
        : signs_(signs), energy_(vsp::VSP_LEVEL::energy(h, kWideSubframe)) {
        for (int i = 0; i < kWideSubframe; i++) {
            positive_[i] = negative_[i] = 0;
            positive_[kWideSubframe + i] = h[i];
            negative_[kWideSubframe + i] = Negate_16s(h[i]);
        }
        for (int t = 0; t < kTracks; t++)
            for (int i = 0; i < kPlaces; i += 8) {
                Eight32s even, odd;
                evenAndOdd(samples() - t + 4 * i, even, odd);
                even.store(pairs_[t][0] + kPlaces + i);
                odd.store(pairs_[t][1] + kPlaces + i);
                for (Vsp32s(&row)[2 * kPlaces] : pairs_[t]) Eight32s::splat(0).store(row + i);
            }
    }
    [[gnu::always_inline]] const Vsp16s* at(int position) const {
        return (signs_[position] < 0 ? negative_ : positive_) + kWideSubframe - position;
    }
    Vsp64s energy() const { return energy_; }
    // 64 samples, and zeros before them.
    [[gnu::always_inline]] const Vsp16s* samples() const { return positive_ + kWideSubframe; }
    // Element i is the pair of samples from 4 * i + 2 * second - track on; zeros for i = -16 .. -1.
    [[gnu::always_inline]] const Vsp32s* pairs(int track, int second) const { return pairs_[track][second] + kPlaces; }

  private:
    Vsp16s positive_[2 * kWideSubframe], negative_[2 * kWideSubframe];
    alignas(64) Vsp32s pairs_[kTracks][2][2 * kPlaces];
    const Vsp16s* signs_;
    Vsp64s energy_;
};

// Everything by tracks, with the signs.
struct Tracks {
    alignas(64) Vsp16s d[kTracks][kPlaces], sign[kTracks][kPlaces];
    alignas(64) Vsp16s own[kTracks][kPlaces];               // energies of the response
    alignas(64) Vsp16s crossed[kTracks][kPlaces][kPlaces];  // correlations with the places of the next track
    alignas(64) Vsp16s rank[kTracks][kPlaces];              // 0 for the largest mean

    int largestOwn, largestTarget;

    // The places of the first ranks.
    [[gnu::always_inline]] Vsp32u first(int track, int ranks) const {
        return bitsOf(whereGreater(Sixteen16s::splat(Vsp16s(ranks)), Sixteen16s::load(rank[track])));
    }
};

// How many means of its track are larger, or as large and earlier.
void rankMeans(const Vsp16s* mean, Tracks& tracks) {
    static constexpr Vsp16s kLater[2 * kPlaces] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                                   1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
    for (int t = 0; t < kTracks; t++) {
        Vsp16s b[kPlaces];
        for (int i = 0; i < kPlaces; i++) b[i] = mean[kTracks * i + t];
        const Sixteen16s means = Sixteen16s::load(b);
        Sixteen16s rank = Sixteen16s::splat(0);
        for (int i = 0; i < kPlaces; i++)
            rank = sub(rank, whereGreater(Sixteen16s::splat(b[i]), sub(means, Sixteen16s::load(kLater + kPlaces - 1 - i))));
        rank.store(tracks.rank[t]);
    }
}

template <class Add>
VSP_INLINE void formOwn(const Vsp16s* h, Tracks& tracks, Add addSquare) {
    Vsp32s sum = 0x8000;
    for (int k = 0; k < kWideSubframe; k++) {
        const int position = kWideSubframe - 1 - k;
        sum = addSquare(sum, h[k]);
        tracks.own[trackOf(position)][placeOf(position)] = high_32s(sum);
    }
}

// Row by row, from the last: what a pair of positions has more than the pair one place later. Lanes are places from the
// last one on, so that a row's sums move up by one.
void formExact(const SignedResponse& response, Tracks& tracks) {
    const Vsp16s* const h = response.samples();
    formOwn(h, tracks, [](Vsp32s sum, Vsp16s x) { return sum + 2 * x * x; });
    const Eight32s start = Eight32s::splat(0x4000);
    for (int t = 0; t < kTracks; t++) {
        const int next = nextTrack(t);
        Eight32s even[2], odd[2], sums[2] = {start, start};
        for (int i = 0; i < 2; i++) {
            even[i] = Eight32s::load(response.pairs(next, 0) + 8 * i);
            odd[i] = Eight32s::load(response.pairs(next, 1) + 8 * i);
        }
        const Sixteen16s signs = Sixteen16s::load(tracks.sign[next]);
        for (int place = kPlaces - 1; place >= 0; place--) {
            const Vsp16s* const x = h + kTracks * (kPlaces - 1 - place) - t;
            sums[1] = movedUp(sums[1], sums[0]);
            sums[0] = movedUp(sums[0], start);
            for (int i = 0; i < 2; i++) sums[i] = add(sums[i], add(dotPairs(even[i], x), dotPairs(odd[i], x + 2)));
            const Sixteen16s row = narrowReversed(shr(sums[0], 15), shr(sums[1], 15));
            const Sixteen16s sign = Sixteen16s::splat(tracks.sign[t][place] < 0 ? Vsp16s(-1) : Vsp16s(0));
            mulShift15(row, exclusiveOr(signs, sign)).store(tracks.crossed[t][place]);
        }
    }
}

void formSaturating(const Vsp16s* h, Tracks& tracks) {
    formOwn(h, tracks, [](Vsp32s sum, Vsp16s x) { return mac_32s(sum, x, x); });
    for (int distance = 1; distance < kWideSubframe; distance += 2) {
        Vsp32s sum = 0x8000;
        for (int k = 0; k + distance < kWideSubframe; k++) {
            sum = mac_32s(sum, h[k], h[k + distance]);
            const int later = kWideSubframe - 1 - k, earlier = later - distance;
            const bool inOrder = nextTrack(trackOf(earlier)) == trackOf(later);
            const int p = inOrder ? earlier : later, q = inOrder ? later : earlier, t = trackOf(p);
            tracks.crossed[t][placeOf(p)][placeOf(q)] =
                withSigns(high_32s(sum), tracks.sign[t][placeOf(p)], tracks.sign[trackOf(q)][placeOf(q)]);
        }
    }
}

// A pass: pulses so far and what they give.
class Pass {
  public:
    // exact: no correlation with all pulses together leaves 31 bits.
    Pass(const Tracks& tracks, const SignedResponse& response, bool exact)
        : tracks_(tracks), response_(response), exact_(exact) {}

    int position[kMaxPulses];

    Vsp16s sumOfTarget() const { return ps_; }
    BestPulses outcome() const { return {Mul_16s(ps_, ps_), alp_}; }
    const Vsp16s* filtered() const { return filtered_; }

    void beginWithTwo(int first, int second) {
        const int x = largest(first), y = largest(second);
        Vsp32s sum = Mul2_16s32s(tracks_.own[first][x], 4096);
        sum = mac_32s(mac_32s(sum, tracks_.own[second][y], 4096), tracks_.crossed[first][x][y], 8192);
        alp_ = round_32s(sum);
        put(first, x);
        put(second, y);
    }

    void beginWithFour(const int* order) {
        for (int i = 0; i < kTracks; i++) put(order[i], largest(order[i]));
        alp_ = round_32s(Cnvrt_64s32s(2 * energy(filtered_, kWideSubframe)) >> 3);
    }

    // The best two pulses on a track and the next one, the first of them at one of the first ranks.
    void addPair(int first, int ranks) {
        const int second = nextTrack(first);
        Sixteen16s ofFirst, ofSecond;
        correlate(first, second, ofFirst, ofSecond);
        int x = 0, y = 0;
        BestPulses best;
        if (!searchExact(first, ranks, ofFirst, ofSecond, best, x, y)) {
            best = BestPulses();
            x = y = 0;
            Vsp16s first16[kPlaces], second16[kPlaces];
            ofFirst.store(first16);
            ofSecond.store(second16);
            searchSaturating(first, ranks, first16, second16, best, x, y);
        }
        alp_ = best.energy;
        const Vsp16s ps = ps_;
        putBoth(first, x, second, y);
        ps_ = Add_16s(ps, Add_16s(tracks_.d[first][x], tracks_.d[second][y]));
    }

  private:
    int largest(int track) const { return __builtin_ctz(tracks_.first(track, 1)); }

    void put(int track, int place) {
        const int p = kTracks * place + track;
        position[count_++] = p;
        ps_ = Add_16s(ps_, tracks_.d[track][place]);
        const Vsp16s* const h = response_.at(p);
        for (int i = 0; i < kWideSubframe; i += S16::width)
            addSat(S16::load(filtered_ + i), S16::load(h + i)).store(filtered_ + i);
    }

    void putBoth(int first, int x, int second, int y) {
        const int p = kTracks * x + first, q = kTracks * y + second;
        position[count_++] = p;
        position[count_++] = q;
        const Vsp16s *const hp = response_.at(p), *const hq = response_.at(q);
        for (int i = 0; i < kWideSubframe; i += S16::width)
            addSat(S16::load(filtered_ + i), addSat(S16::load(hp + i), S16::load(hq + i))).store(filtered_ + i);
    }

    // What a pulse at each place of a track adds: its energy, and its correlation with the pulses so far (`cor_h_vec`).
    [[gnu::always_inline]] Sixteen16s withPulses(int track, Sixteen16s correlations) const {
        return addSat(mulShift15Sat(correlations, Sixteen16s::load(tracks_.sign[track])),
                      Sixteen16s::load(tracks_.own[track]));
    }

    [[gnu::always_inline]] void correlate(int first, int second, Sixteen16s& ofFirst, Sixteen16s& ofSecond) const {
        if (count_ == 0) {
            ofFirst = Sixteen16s::load(tracks_.own[first]);
            ofSecond = Sixteen16s::load(tracks_.own[second]);
        } else if (exact_ || doubledSumsFit(response_.energy(), energy(filtered_, kWideSubframe))) {
            Backwards a, b;
            for (int s = 0; s < kSteps; s++) {
                a.step(response_, first, filtered_, s);
                b.step(response_, second, filtered_, s);
            }
            ofFirst = withPulses(first, a.places());
            ofSecond = withPulses(second, b.places());
        } else {
            ofFirst = withPulses(first, correlateSaturating(first));
            ofSecond = withPulses(second, correlateSaturating(second));
        }
    }

    // The response correlated with the filtered pulses, lanes from the last place on.
    static constexpr int kSteps = kWideSubframe / 2;
    struct Backwards {
        Eight32s lo = Eight32s::splat(0x2000), hi = lo;

        // With two samples, which reach the upper half of the places in the second half of the steps.
        [[gnu::always_inline]] void step(const SignedResponse& response, int track, const Vsp16s* filtered, int s) {
            const Vsp32s* const pairs = response.pairs(track, s % 2) + s / 2 - (kPlaces - 1);
            hi = add(hi, dotPairs(Eight32s::load(pairs + 8), filtered + 2 * s));
            if (s >= kSteps / 2) lo = add(lo, dotPairs(Eight32s::load(pairs), filtered + 2 * s));
        }
        [[gnu::always_inline]] Sixteen16s places() const { return narrowReversed(shr(lo, 14), shr(hi, 14)); }
    };

    [[gnu::noinline]] Sixteen16s correlateSaturating(int track) const {
        Vsp16s correlations[kPlaces];
        for (int i = 0; i < kPlaces; i++) {
            const int p = kTracks * i + track;
            correlations[i] = round_32s(Mul2_32s(dotSaturating(response_.samples(), filtered_ + p, kWideSubframe - p)));
        }
        return Sixteen16s::load(correlations);
    }

    // Returns false where something might saturate or an energy is not positive.
    [[gnu::always_inline]] bool searchExact(int first, int ranks, Sixteen16s ofFirst, Sixteen16s ofSecond, BestPulses& best,
                                            int& x, int& y) const {
        const int second = nextTrack(first);
        const int most = 2 * largestMagnitude(ofFirst, ofSecond) + 4 + 2 * (tracks_.largestOwn + 1);
        if (most > kMax16 || (alp_ < 0 ? -alp_ : alp_) + most / 8 >= kMax16 ||
            (ps_ < 0 ? -ps_ : ps_) + 2 * tracks_.largestTarget >= kMax16)
            return false;
        Vsp16s ofPlaces[kPlaces];
        ofFirst.store(ofPlaces);
        const Vsp16s* const targets = tracks_.d[first];
        const Sixteen16s ofTrack = add(ofSecond, Sixteen16s::splat(4));
        const Sixteen16s ps = add(Sixteen16s::load(tracks_.d[second]), Sixteen16s::splat(ps_));
        const Sixteen16s alp = Sixteen16s::splat(alp_);
        LaneWinners winners;
        for (Vsp32u left = tracks_.first(first, ranks); left != 0; left &= left - 1) {
            const int i = __builtin_ctz(left);
            const Sixteen16s crossed = Sixteen16s::load(tracks_.crossed[first][i]);
            const Sixteen16s more = add(add(ofTrack, Sixteen16s::splat(ofPlaces[i])), add(crossed, crossed));
            winners.take(i, squareOf(add(ps, Sixteen16s::splat(targets[i]))), add(alp, shr(more, 3)));
        }
        if (!winners.areAllPositive()) return false;
        winners.settle(0, best, x, y);
        return true;
    }

    [[gnu::noinline]] void searchSaturating(int first, int ranks, const Vsp16s* ofFirst, const Vsp16s* ofSecond,
                                            BestPulses& best, int& x, int& y) const {
        const int second = nextTrack(first);
        const Vsp32s start = Add_32s(alp_ * 65536, 0x8000);
        for (Vsp32u left = tracks_.first(first, ranks); left != 0; left &= left - 1) {
            const int i = __builtin_ctz(left);
            const Vsp16s ps = Add_16s(ps_, tracks_.d[first][i]);
            const Vsp32s withFirst = mac_32s(start, ofFirst[i], 4096);
            for (int j = 0; j < kPlaces; j++) {
                const Vsp16s sum = Add_16s(ps, tracks_.d[second][j]);
                const Vsp32s total = mac_32s(mac_32s(withFirst, ofSecond[j], 4096), tracks_.crossed[first][i][j], 8192);
                const BestPulses candidate{Mul_16s(sum, sum), high_32s(total)};
                if (!best.isBeatenBy(candidate)) continue;
                best = candidate;
                x = i;
                y = j;
            }
        }
    }

    const Tracks& tracks_;
    const SignedResponse& response_;
    bool exact_;
    int count_ = 0;
    Vsp16s ps_ = 0, alp_ = 0;
    alignas(64) Vsp16s filtered_[kWideSubframe] = {};
};

// The tracks of the pulses; each pass begins a row later.
constexpr int kOrder[36] = {0, 1, 2, 3, 1, 2, 3, 0, 2, 3, 0, 1, 3, 0, 1, 2, 0, 1,
                            2, 3, 1, 2, 3, 0, 2, 3, 0, 1, 3, 0, 1, 2, 0, 1, 2, 3};

}  // namespace

void ownSearchFourTracks(const FourTrackSearch& search, const PulseTarget& target, const Vsp16s* impulse,
                         FoundWidePulses& found) {
    found.count = search.pulses;
    found.amplitude = 512;
    Vsp16s h[kWideSubframe];
    const bool scaled = search.pulses >= 12 && Cnvrt_64s32s(2 * energy(impulse, kWideSubframe)) >> 16 > 1024;
    for (int i = 0; i < kWideSubframe; i++) h[i] = scaled ? Vsp16s(impulse[i] >> 1) : impulse[i];
    if (scaled) found.amplitude = 256;

    Tracks tracks;
    for (int i = 0; i < kWideSubframe; i++) {
        tracks.d[trackOf(i)][placeOf(i)] = target.d[i];
        tracks.sign[trackOf(i)][placeOf(i)] = target.sign[i];
    }
    rankMeans(target.mean, tracks);
    const SignedResponse response(h, target.sign);
    constexpr Vsp64s kMaxExact = (1 << 30) - 0x8000;
    if (response.energy() < kMaxExact)
        formExact(response, tracks);
    else
        formSaturating(h, tracks);
    // A correlation is no larger than the energy, before it is rounded.
    tracks.largestOwn = tracks.own[0][0];
    tracks.largestTarget = maxMagnitude(target.d, kWideSubframe);
    const bool exact = search.pulses * response.energy() < kMaxExact;

    BestPulses best;
    for (int i = 0; i < search.pulses; i++) found.position[i] = i;
    for (Vsp16s& y : found.y) y = 0;
    for (int k = 0; k < search.passes; k++) {
        int order[kMaxPulses];
        for (int i = 0; i < search.pulses; i++) order[i] = kOrder[4 * k + i];
        if (search.lastOnFirst) {
            order[search.pulses - 2] = 0;
            order[search.pulses - 1] = 1;
        }
        Pass pass(tracks, response, exact);
        if (search.begun == 2) pass.beginWithTwo(order[0], order[1]);
        if (search.begun == 4) pass.beginWithFour(order);
        for (int i = search.begun, pair = 0; i < search.pulses; i += 2, pair++)
            pass.addPair(order[i], search.candidates[pair]);
        if (!best.isBeatenBy(pass.outcome())) continue;
        best = pass.outcome();
        for (int i = 0; i < search.pulses; i++) found.position[i] = pass.position[i];
        for (int i = 0; i < kWideSubframe; i++) found.y[i] = Vsp16s((pass.filtered()[i] + 4) >> 3);
    }
}

}  // namespace vsp::VSP_LEVEL
