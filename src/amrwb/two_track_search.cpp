// The search of two pulses on the even and the odd positions: all pairs (`ACELP_2t64_fx`).
#include "amrwb/pulse_search.h"
#include "vector/magnitude.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kTracks = 2, kPlaces = kWideSubframe / kTracks, kGroups = kPlaces / kPlaces16;

// By tracks.
struct Tracks {
    alignas(64) Vsp16s d[kTracks][kPlaces], sign[kTracks][kPlaces];
    alignas(64) Vsp16s own[kTracks][kPlaces], crossed[kPlaces][kPlaces];  // half of the correlations, and those of a pair
};

// The energies of the response from each position on.
template <class Add>
VSP_INLINE void formOwn(const Vsp16s* h, Tracks& tracks, Vsp32s start, Add addSquare) {
    Vsp32s sum = start;
    for (int k = 0; k < kWideSubframe; k++) {
        const int position = kWideSubframe - 1 - k;
        sum = addSquare(sum, h[k]);
        tracks.own[position % kTracks][position / kTracks] = Vsp16s(sum >> 17);
    }
}

// Row by row, from the last: what a pair of positions has more than the pair one place later. Lanes are places from the
// last one on, so that a row's sums move up by one.
void formExact(const Vsp16s* h, Tracks& tracks) {
    formOwn(h, tracks, 0x10000, [](Vsp32s sum, Vsp16s x) { return sum + 2 * x * x; });
    constexpr int kParts = kPlaces / 8;
    Vsp16s padded[1 + kWideSubframe];
    padded[0] = 0;
    for (int i = 0; i < kWideSubframe; i++) padded[1 + i] = h[i];
    const Eight32s start = Eight32s::splat(0x4000);
    Eight32s sums[kParts] = {start, start, start, start}, more[kParts];
    for (int i = 0; i < kParts; i++) more[i] = loadPairs(padded + 16 * i);
    for (int place = kPlaces - 1; place >= 0; place--) {
        for (int i = kParts - 1; i >= 0; i--)
            sums[i] = add(movedUp(sums[i], i > 0 ? sums[i - 1] : start), dotPairs(more[i], h + 2 * (kPlaces - 1 - place)));
        const Sixteen16s sign = Sixteen16s::splat(tracks.sign[0][place] < 0 ? Vsp16s(-1) : Vsp16s(0));
        for (int g = 0; g < kGroups; g++) {
            const int part = kParts - 2 - 2 * g;
            const Sixteen16s row = narrowReversed(shr(sums[part], 15), shr(sums[part + 1], 15));
            const Vsp16s* const signs = tracks.sign[1] + kPlaces16 * g;
            mulShift15(row, exclusiveOr(Sixteen16s::load(signs), sign)).store(tracks.crossed[place] + kPlaces16 * g);
        }
    }
}

void formSaturating(const Vsp16s* h, Tracks& tracks) {
    formOwn(h, tracks, 0x10000, [](Vsp32s sum, Vsp16s x) { return mac_32s(sum, x, x); });
    for (int distance = 1; distance < kWideSubframe; distance += 2) {
        Vsp32s sum = 0x8000;
        for (int k = 0; k + distance < kWideSubframe; k++) {
            sum = mac_32s(sum, h[k], h[k + distance]);
            const int later = kWideSubframe - 1 - k, earlier = later - distance;
            const int p = later % 2 == 0 ? later : earlier, q = later + earlier - p;
            tracks.crossed[p / 2][q / 2] = withSigns(high_32s(sum), tracks.sign[0][p / 2], tracks.sign[1][q / 2]);
        }
    }
}

struct Found {
    int place[kTracks] = {0, 0};
};

// Every step saturated, one pair after the other.
[[gnu::noinline]] Found searchSaturating(const Tracks& tracks) {
    Found found;
    BestPulses best;
    for (int i = 0; i < kPlaces; i++)
        for (int j = 0; j < kPlaces; j++) {
            const Vsp16s sum = Add_16s(tracks.d[0][i], tracks.d[1][j]);
            const BestPulses candidate{Mul_16s(sum, sum),
                                       Add_16s(tracks.own[0][i], Add_16s(tracks.own[1][j], tracks.crossed[i][j]))};
            if (!best.isBeatenBy(candidate)) continue;
            best = candidate;
            found = {{i, j}};
        }
    return found;
}

Found search(const Tracks& tracks, bool noneSaturates) {
    if (!noneSaturates) return searchSaturating(tracks);
    Found found;
    BestPulses best;
    for (int g = 0; g < kGroups; g++) {
        LaneWinners winners;
        const Sixteen16s d = Sixteen16s::load(tracks.d[1] + kPlaces16 * g);
        const Sixteen16s own = Sixteen16s::load(tracks.own[1] + kPlaces16 * g);
        for (int i = 0; i < kPlaces; i++) {
            const Sixteen16s crossed = Sixteen16s::load(tracks.crossed[i] + kPlaces16 * g);
            winners.take(i, squareOf(add(d, Sixteen16s::splat(tracks.d[0][i]))),
                         add(add(own, Sixteen16s::splat(tracks.own[0][i])), crossed));
        }
        if (!winners.areAllPositive()) return searchSaturating(tracks);
        winners.settle(kPlaces16 * g, best, found.place[0], found.place[1]);
    }
    return found;
}

}  // namespace

void ownSearchTwoTracks(const PulseTarget& target, const Vsp16s* h, FoundWidePulses& found) {
    Tracks tracks;
    for (int i = 0; i < kWideSubframe; i++) {
        tracks.d[i % kTracks][i / kTracks] = target.d[i];
        tracks.sign[i % kTracks][i / kTracks] = target.sign[i];
    }
    const Vsp64s energyOfResponse = energy(h, kWideSubframe);
    // Four correlations, and twice the largest target, fit 16 bits.
    const bool exact = energyOfResponse < 1 << 28;
    if (exact)
        formExact(h, tracks);
    else
        formSaturating(h, tracks);
    const Found pair = search(tracks, exact && maxMagnitude(target.d, kWideSubframe) < 1 << 14);

    found.count = kTracks;
    found.amplitude = 512;
    Vsp16s sum[kWideSubframe] = {};
    for (int t = 0; t < kTracks; t++) {
        const int position = kTracks * pair.place[t] + t;
        found.position[t] = position;
        const bool negative = target.sign[position] < 0;
        for (int i = position; i < kWideSubframe; i++)
            sum[i] = Add_16s(sum[i], negative ? Negate_16s(h[i - position]) : h[i - position]);
    }
    for (int i = 0; i < kWideSubframe; i++) found.y[i] = Vsp16s((sum[i] + 4) >> 3);
}

}  // namespace vsp::VSP_LEVEL
