// The searches of the four-pulse codebook in floating point (G.729 Annex C).
#include "core/checks.h"
#include "g729/constants.h"
#include "g729/exports.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kTracks = 5, kPlaces = 8;
constexpr int kSearches = 75, kFirstExtra = 30;

void sharpen(Vsp32f* x, Vsp32s lag, Vsp32f sharp) {
    for (int i = lag; i < kL_subfr; i++) x[i] += sharp * x[i - lag];
}

// The target filtered backwards, as magnitudes, its signs, and the correlations of the response with these signs.
struct Problem {
    Vsp32f h[kL_subfr], d[kL_subfr], sign[kL_subfr];
    Vsp32f correlations[kL_subfr][kL_subfr];

    Problem(const Vsp32f* target, const Vsp32f* impulse, Vsp32s lag, Vsp32f sharp) {
        for (int i = 0; i < kL_subfr; i++) h[i] = impulse[i];
        sharpen(h, lag, sharp);
        for (int i = 0; i < kL_subfr; i++) {
            Vsp32f sum = 0;
            for (int j = i; j < kL_subfr; j++) sum += target[j] * h[j - i];
            sign[i] = sum >= 0 ? 1.0f : -1.0f;
            d[i] = sum >= 0 ? sum : -sum;
        }
        // Of positions p and q the sum of h[k] * h[k + q - p], k = 0 .. 39 - q: a vector of distances grows by one k.
        Vsp32f sums[kL_subfr] = {};
        for (int k = 0; k < kL_subfr; k++) {
            const int q = kL_subfr - 1 - k;
            for (int distance = 0; distance <= q; distance++) sums[distance] += h[k] * h[k + distance];
            for (int p = 0; p <= q; p++) {
                const Vsp32f sum = sums[q - p] * (sign[p] * sign[q]);
                correlations[p][q] = sum;
                correlations[q][p] = sum;
            }
        }
    }
};

// The larger square / energy wins, of equal ones the first.
struct Best {
    Vsp32f square, energy;

    bool replacedBy(Vsp32f newSquare, Vsp32f newEnergy) {
        if (!(newSquare * energy > square * newEnergy)) return false;
        square = newSquare;
        energy = newEnergy;
        return true;
    }
};

Vsp32f threshold(const Problem& problem) {
    Vsp32f max = 0, sum = 0;
    for (int t = 0; t < 3; t++) {
        Vsp32f largest = 0;
        for (int i = t; i < kL_subfr; i += kTracks) {
            largest = problem.d[i] > largest ? problem.d[i] : largest;
            sum += problem.d[i];
        }
        max += largest;
    }
    const Vsp32f average = sum * 0.125f;
    return average + (max - average) * 0.4f;
}

// Returns the time left.
int searchNested(const Problem& problem, int time, int (&positions)[4]) {
    const auto& d = problem.d;
    const auto& rr = problem.correlations;
    const Vsp32f limit = threshold(problem);
    Best best{0, 1000000};
    for (int p0 = 0; p0 < kL_subfr; p0 += kTracks)
        for (int p1 = 1; p1 < kL_subfr; p1 += kTracks)
            for (int p2 = 2; p2 < kL_subfr; p2 += kTracks) {
                const Vsp32f start = d[p0] + d[p1] + d[p2];
                if (!(start > limit)) continue;
                const Vsp32f energy = rr[p0][p0] + rr[p1][p1] + rr[p2][p2] + 2 * (rr[p0][p1] + rr[p0][p2] + rr[p1][p2]);
                for (int track = 3; track < kTracks; track++)
                    for (int p3 = track; p3 < kL_subfr; p3 += kTracks) {
                        const Vsp32f ps = start + d[p3];
                        const Vsp32f alp = energy + rr[p3][p3] + 2 * (rr[p0][p3] + rr[p1][p3] + rr[p2][p3]);
                        if (!best.replacedBy(ps * ps, alp)) continue;
                        positions[0] = p0;
                        positions[1] = p1;
                        positions[2] = p2;
                        positions[3] = p3;
                    }
                if (--time <= 0) return time;
            }
    return time;
}

constexpr Best kNone{-1, 1};

// Two pulses: the first at one of the two largest places of its track, the second anywhere on its own.
struct Pair {
    int first, second;
    Vsp32f sum, energy;
};

Pair bestPair(const Problem& problem, int firstTrack, int secondTrack) {
    const auto& rr = problem.correlations;
    Pair pair{firstTrack, secondTrack, 0, 1};
    Best best = kNone;
    int largest = -1;
    for (int n = 0; n < 2; n++) {
        int next = -1;
        for (int p = firstTrack; p < kL_subfr; p += kTracks)
            if (p != largest && (next < 0 || problem.d[p] > problem.d[next])) next = p;
        largest = next;
        for (int p = secondTrack; p < kL_subfr; p += kTracks) {
            const Vsp32f ps = problem.d[next] + problem.d[p];
            if (!best.replacedBy(ps * ps, 0.5f * rr[next][next] + rr[next][p] + 0.5f * rr[p][p])) continue;
            pair = {next, p, ps, best.energy};
        }
    }
    return pair;
}

// The two remaining pulses, all places of their tracks.
bool bestOfBoth(const Problem& problem, const Pair& pair, int outerTrack, int innerTrack, Best& best, int& outer,
                int& inner) {
    const auto& rr = problem.correlations;
    Vsp32f added[kPlaces];
    for (int i = 0; i < kPlaces; i++) {
        const int p = innerTrack + kTracks * i;
        added[i] = rr[pair.first][p] + rr[pair.second][p] + 0.5f * rr[p][p];
    }
    Best here = kNone;
    int outerHere = outerTrack, innerHere = innerTrack;
    for (int p = outerTrack; p < kL_subfr; p += kTracks) {
        const Vsp32f ps = pair.sum + problem.d[p];
        const Vsp32f energy = pair.energy + rr[pair.first][p] + rr[pair.second][p] + 0.5f * rr[p][p];
        for (int i = 0; i < kPlaces; i++) {
            const int q = innerTrack + kTracks * i;
            const Vsp32f sum = ps + problem.d[q];
            if (!here.replacedBy(sum * sum, energy + rr[p][q] + added[i])) continue;
            outerHere = p;
            innerHere = q;
        }
    }
    if (!best.replacedBy(here.square, here.energy)) return false;
    outer = outerHere;
    inner = innerHere;
    return true;
}

void searchDepthFirst(const Problem& problem, int (&positions)[4]) {
    Best best = kNone;
    for (int track = 3; track < kTracks; track++) {
        const Pair from2 = bestPair(problem, 2, track);
        if (bestOfBoth(problem, from2, 0, 1, best, positions[0], positions[1])) {
            positions[2] = from2.first;
            positions[3] = from2.second;
        }
        const Pair fromLast = bestPair(problem, track, 0);
        if (bestOfBoth(problem, fromLast, 1, 2, best, positions[1], positions[2])) {
            positions[3] = fromLast.first;
            positions[0] = fromLast.second;
        }
    }
}

void store(const Problem& problem, const int (&positions)[4], Vsp32s lag, Vsp32f sharp, Vsp32f* pCode, Vsp32f* pFiltered,
           Vsp32s* pIndex) {
    for (int i = 0; i < kL_subfr; i++) pCode[i] = pFiltered[i] = 0;
    Vsp32s signs = 0;
    for (int n = 0; n < 4; n++) {
        const int p = positions[n];
        pCode[p] = problem.sign[p];
        for (int i = p; i < kL_subfr; i++) pFiltered[i] += problem.sign[p] * problem.h[i - p];
        signs |= Vsp32s(problem.sign[p] > 0) << n;
    }
    sharpen(pCode, lag, sharp);
    const int last = 2 * (positions[3] / kTracks) + positions[3] % kTracks - 3;
    pIndex[0] = positions[0] / kTracks + (positions[1] / kTracks << 3) + (positions[2] / kTracks << 6) + (last << 9);
    pIndex[1] = signs;
}

}  // namespace

VspStatus vspsFixedCodebookSearch_G729_32f(const Vsp32f* pTarget, const Vsp32f* pImpulse, Vsp32s lag, Vsp32f sharp,
                                           Vsp32s subframe, Vsp32s* pExtra, Vsp32f* pCode, Vsp32f* pFiltered,
                                           Vsp32s* pIndex) {
    if (anyNull(pTarget, pImpulse, pExtra, pCode, pFiltered, pIndex)) return vspStsNullPtrErr;
    if (!isLegalLag(lag)) return vspStsRangeErr;
    if (subframe != 0 && subframe != 1) return vspStsRangeErr;
    const Problem problem(pTarget, pImpulse, lag, sharp);
    int positions[4] = {0, 1, 2, 3};
    const Vsp32s extra = subframe == 0 ? kFirstExtra : *pExtra;
    *pExtra = searchNested(problem, extra < 0x7FFFFFFF - kSearches ? kSearches + extra : extra, positions);
    store(problem, positions, lag, sharp, pCode, pFiltered, pIndex);
    return vspStsNoErr;
}

VspStatus vspsFixedCodebookSearch_G729A_32f(const Vsp32f* pTarget, const Vsp32f* pImpulse, Vsp32s lag, Vsp32f sharp,
                                            Vsp32f* pCode, Vsp32f* pFiltered, Vsp32s* pIndex) {
    if (anyNull(pTarget, pImpulse, pCode, pFiltered, pIndex)) return vspStsNullPtrErr;
    if (!isLegalLag(lag)) return vspStsRangeErr;
    const Problem problem(pTarget, pImpulse, lag, sharp);
    int positions[4] = {0, 1, 2, 3};
    searchDepthFirst(problem, positions);
    store(problem, positions, lag, sharp, pCode, pFiltered, pIndex);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
