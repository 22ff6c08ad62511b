// The searches of the codebooks with ten and twelve pulses, 35 and 44 bits (G.729 Annex E).
#include "common/inv_sqrt.h"
#include "core/checks.h"
#include "g729/exports.h"
#include "g729/fixed_codebook.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kMaxPulses = 12, kStarts = 3;
constexpr Best kNone{-1, 1};

// L_shl by a few bits, the high half of it
Vsp16s highOfShifted(Vsp32s a, int shift) { return Vsp16s(Cnvrt_64s32s(a * (1LL << shift)) >> 16); }

Vsp32s doubledEnergy(const Vsp16s* x) { return Cnvrt_64s32s(2 * energy(x, kL_subfr)); }

// The factor that gives a signal a fixed energy.
Vsp16s normalisation(const Vsp16s* x) {
    const Vsp32s total = doubledEnergy(x);
    return highOfShifted(ownInvSqrt(total > 512 ? total : 512), 5);
}

// The target filtered backwards, with the signs that a mean of it and the residual has, and the largest place of each
// track.
struct Target {
    Vsp16s d[kTracks][kPlaces], negative[kTracks][kPlaces];  // all bits or none
    int maximumPlace[kTracks];
    Vsp32s maximum[kTracks];

    Target(const Vsp16s* target, const Vsp16s* residual, const Vsp16s* impulse) {
        Vsp16s filtered[kL_subfr];
        filterBackwards<kTracks>(target, impulse, 2, filtered);
        const Vsp16s ofResidual = Vsp16s((normalisation(residual) * 32767) >> 15), ofTarget = normalisation(filtered);
        for (int t = 0; t < kTracks; t++) {
            maximum[t] = -1;
            for (int i = 0; i < kPlaces; i++) {
                const int position = positionOf(t, i);
                const Vsp16s x = filtered[position];
                const Vsp32s sum = mac_32s(mac_32s(0, ofResidual, residual[position]), ofTarget, x);
                negative[t][i] = Vsp16s(sum < 0 ? -1 : 0);
                d[t][i] = sum < 0 ? sat_16s(-x) : x;
                if (Abs_32s(sum) <= maximum[t]) continue;
                maximum[t] = Abs_32s(sum);
                maximumPlace[t] = i;
            }
        }
    }

    bool isNegative(Pulse pulse) const { return negative[pulse.track][pulse.place] != 0; }
};

// The impulse response with a fixed energy.
struct NormalisedResponse {
    Vsp16s h[kL_subfr];

    explicit NormalisedResponse(const Vsp16s* impulse) {
        const Vsp32s total = doubledEnergy(impulse);
        const int up = norm_32s_Pos(total) >> 1;
        const Vsp16s factor = highOfShifted(ownInvSqrt((total << 2 * up) >> 12), 8);
        for (int i = 0; i < kL_subfr; i++) h[i] = sat_16s((ShiftL_16s(impulse[i], up) * factor) >> 15);
    }
};

S16_128 negated(S16_128 a) { return subSat(S16_128::splat(0), a); }

// mult(a, +-32767), -32768 being the negative sign
S16_128 withSign(S16_128 a, S16_128 negative) { return select(negative, negated(a), mulShift15(a, S16_128::splat(32767))); }

class Search {
  public:
    Search(const Target& target, const Vsp16s* impulse)
        : target_(target), response_(impulse), positive_(response_.h), negative_(negatedResponse().h) {
        constexpr unsigned kNeighbours = 0x12;
        TrackCorrelations correlations;
        correlations.form<kNeighbours>(response_.h, 0x8000, 0x10000);
        for (int t = 0; t < kTracks; t++) {
            const int next = following(t, 1);
            const S16_128 negative = S16_128::load(target.negative[next]);
            correlations.pairs(t, next, crossed_[t], [&](S16_128 row, int i) {
                return withSign(row, {negative.v ^ S16_128::splat(target.negative[t][i]).v});
            });
            shr(S16_128::load(correlations.diagonal(t)), 1).store(diagonal_[t]);
        }
        responseEnergy_ = energy(response_.h, kL_subfr);
    }

    void run(int pulseCount) {
        Best best = kNone;
        Vsp32s sums[kTracks];
        for (int t = 0; t < kTracks; t++) sums[t] = Add_32s(target_.maximum[t], target_.maximum[following(t, 1)]);
        for (int i = 0; i < kStarts; i++) {
            int first = 0;
            for (int t = 1; t < kTracks; t++)
                if (sums[t] > sums[first]) first = t;
            sums[first] = -1;
            Pulse found[kMaxPulses];
            const Best result = from(first, pulseCount, found);
            if (i > 0 && !isBetter(best, result)) continue;
            if (isBetter(best, result)) best = result;
            for (int n = 0; n < pulseCount; n++) pulses[n] = found[n];
        }
    }

    Pulse pulses[kMaxPulses];

  private:
    static int following(int track, int distance) { return (track + distance) % kTracks; }

    NormalisedResponse negatedResponse() const {
        NormalisedResponse negative = response_;
        for (Vsp16s& x : negative.h) x = sat_16s(-x);
        return negative;
    }

    Pulse atMaximum(int track) const { return {track, target_.maximumPlace[track]}; }
    Vsp16s d(Pulse pulse) const { return target_.d[pulse.track][pulse.place]; }
    const Vsp16s* response(Pulse pulse) const {
        return (target_.isNegative(pulse) ? negative_ : positive_).at(pulse.position());
    }

    // Two pulses at the largest places of neighbouring tracks, then pair after pair on the tracks that follow.
    Best from(int first, int pulseCount, Pulse* found) const {
        found[0] = atMaximum(first);
        found[1] = atMaximum(following(first, 1));
        Vsp16s ps = sat_16s(d(found[0]) + d(found[1]));
        Vsp16s alp =
            sat_16s(sat_16s(diagonal_[found[0].track][found[0].place] + diagonal_[found[1].track][found[1].place]) +
                    crossed_[first][found[0].place][found[1].place]);
        Vsp16s filtered[kL_subfr] = {};
        Pulse pair[2] = {found[0], found[1]};
        for (int n = 2; n < pulseCount; n += 2) {
            addPair(filtered, response(pair[0]), response(pair[1]));
            alp = bestPair(following(first, n), filtered, ps, alp, pair);
            ps = sat_16s(sat_16s(ps + d(pair[0])) + d(pair[1]));
            found[n] = pair[0];
            found[n + 1] = pair[1];
        }
        return {first16(mulShift15Sat(S16_128::splat(ps), S16_128::splat(ps))), alp};
    }

    static Vsp16s first16(S16_128 a) { return vsp::VSP_LEVEL::first(a); }

    static void addPair(Vsp16s* filtered, const Vsp16s* a, const Vsp16s* b) {
        for (int i = 0; i < kL_subfr; i += S16_128::width)
            addSat(S16_128::load(filtered + i), addSat(S16_128::load(a + i), S16_128::load(b + i))).store(filtered + i);
    }

    // The best places on a track and the one after it. The pair stays as it is if there is none. Returns the energy.
    Vsp16s bestPair(int track, const Vsp16s* filtered, Vsp16s ps, Vsp16s alp, Pulse (&pair)[2]) const {
        const int next = following(track, 1);
        Vsp16s outer[kPlaces];
        S16_128 inner;
        {
            S16_128 added[2];
            const CorrelationWithResponse correlation(response_.h, responseEnergy_, filtered);
            for (int i = 0; i < 2; i++) {
                const int t = i == 0 ? track : next;
                added[i] =
                    addSat(withSign(correlation.at(t), S16_128::load(target_.negative[t])), S16_128::load(diagonal_[t]));
            }
            addSat(S16_128::splat(alp), added[0]).store(outer);
            inner = added[1];
        }
        const S16_128 d = S16_128::load(target_.d[next]);
        const auto candidates = [&](int i) {
            const S16_128 sums = addSat(S16_128::splat(sat_16s(ps + target_.d[track][i])), d);
            return Candidates{mulShift15Sat(sums, sums),
                              addSat(S16_128::splat(outer[i]), addSat(inner, S16_128::load(crossed_[track][i])))};
        };
        const Best best = bestOf(kPlaces, candidates, [&](int i, int place) {
            pair[0] = {track, i};
            pair[1] = {next, place};
        });
        return best.energy;
    }

    // round of the sum of 2 * h[j - p] * x[j], j = p .. 39, for the places of a track.
    class CorrelationWithResponse {
      public:
        CorrelationWithResponse(const Vsp16s* h, Vsp64s responseEnergy, const Vsp16s* x)
            : h_(h), x_(x), fits_(doubledSumsFit(responseEnergy, energy(x, kL_subfr))) {
            for (int t = 0; t < kTracks; t++)
                for (int i = 0; i < kPlaces; i++) {
                    const int position = positionOf(t, i);
                    const Vsp16u next = Vsp16u(position + 1 < kL_subfr ? x[position + 1] : 0);
                    pairs_[t][i] = Vsp32s(Vsp16u(x[position]) | Vsp32u(next) << 16);
                    pairs_[t][kPlaces + i] = 0;
                }
        }

        S16_128 at(int track) const {
            if (!fits_) {
                Vsp16s rounded[kPlaces];
                for (int i = 0; i < kPlaces; i++) {
                    const int position = positionOf(track, i);
                    rounded[i] = round_32s(dotSaturating(x_ + position, h_, kL_subfr - position));
                }
                return S16_128::load(rounded);
            }
            Eight32s sum = Eight32s::splat(0x4000);
            for (int j = 0; j < kL_subfr; j += 2) {
                const int first = track + j;
                sum = add(sum, dotPairs(Eight32s::load(pairs_[first % kTracks] + first / kTracks), h_ + j));
            }
            return narrowSat(shr(sum, 15));
        }

      private:
        const Vsp16s *h_, *x_;
        bool fits_;
        Vsp32s pairs_[kTracks][2 * kPlaces];
    };

    const Target& target_;
    NormalisedResponse response_;
    ShiftedResponse positive_, negative_;
    Vsp64s responseEnergy_;
    Vsp16s crossed_[kTracks][kPlaces][kPlaces];  // of a track with the next
    Vsp16s diagonal_[kTracks][kPlaces];
};

// --- The code of the positions and signs -------------------------------------------------------------------------------

int signOf(int index) { return index >> 3 & 1; }
int placeOf(int index) { return index & 7; }

// Two pulses of a track. Their order tells whether the signs are equal.
int pairCode(int a, int b) {
    if (signOf(a) == signOf(b)) return a <= b ? a << 4 | b : b << 4 | a;
    return placeOf(a) <= placeOf(b) ? b << 4 | a : a << 4 | b;
}

void sort(int& a, int& b) {
    if (placeOf(a) <= placeOf(b)) return;
    const int c = a;
    a = b;
    b = c;
}

// Three pulses of a track.
int tripleCode(int pulse, int pair) {
    int a = pulse, b = pair >> 4 & 15, c = pair & 15;
    sort(a, b);
    sort(a, c);
    sort(b, c);
    const auto code = [](int first, int second, int third) { return placeOf(first) << 7 | placeOf(second) << 4 | third; };
    switch (signOf(a) << 2 | signOf(b) << 1 | signOf(c)) {
        case 0:
        case 7: return code(a, b, c);
        case 1:
        case 6: return code(c, a, b);
        case 2:
        case 5: return code(b, a, c);
        default: return code(b, c, a);
    }
}

void storeIndex(const Pulse* pulses, bool backward, const Target& target, Vsp16s* pIndex) {
    const auto index = [&](int n) { return pulses[n].place | int(target.isNegative(pulses[n])) << 3; };
    int codes[kTracks];
    bool begun[kTracks] = {};
    for (int& code : codes) code = 0;
    for (int n = backward ? 2 : 0; n < (backward ? 12 : 10); n++) {
        const int track = pulses[n].track;
        codes[track] = begun[track] ? pairCode(codes[track] & 15, index(n)) : index(n);
        begun[track] = true;
    }
    if (!backward) {
        for (int t = 0; t < kTracks; t++) pIndex[t] = Vsp16s(codes[t] & 0x7F);
        return;
    }
    const int track = pulses[0].track;
    pIndex[0] = Vsp16s(tripleCode(index(0), codes[track]) | track << 10);
    pIndex[1] = Vsp16s(tripleCode(index(1), codes[(track + 1) % kTracks]));
    for (int i = 2; i < kTracks; i++) pIndex[i] = Vsp16s(codes[(track + i) % kTracks] & 0x7F);
}

}  // namespace

VspStatus vspsFixedCodebookSearch_G729E_16s(Vsp16s mode, const Vsp16s* pTarget, const Vsp16s* pResidual,
                                            const Vsp16s* pImpulse, Vsp16s lag, Vsp16s sharp, Vsp16s* pCode,
                                            Vsp16s* pFiltered, Vsp16s* pIndex) {
    if (anyNull(pTarget, pResidual, pImpulse, pCode, pFiltered, pIndex)) return vspStsNullPtrErr;
    if (mode != 0 && mode != 1) return vspStsRangeErr;
    if (!isLegalLag(lag)) return vspStsRangeErr;
    const bool backward = mode == 1;
    const int pulseCount = backward ? 12 : 10;
    Subframe h(pImpulse);
    sharpen(h, lag, sharp);
    const Target target(pTarget, pResidual, h.samples);
    Search search(target, h.samples);
    search.run(pulseCount);

    for (int i = 0; i < kL_subfr; i++) h.samples[i] >>= 1;
    const ShiftedResponse shifted(h.samples);
    for (int i = 0; i < kL_subfr; i++) pCode[i] = pFiltered[i] = 0;
    for (int n = 0; n < pulseCount; n++) {
        const Pulse pulse = search.pulses[n];
        const bool negative = target.isNegative(pulse);
        pCode[pulse.position()] = sat_16s(pCode[pulse.position()] + (negative ? -4096 : 4096));
        shifted.addTo(pFiltered, pulse.position(), !negative);
    }
    sharpenCode(pCode, lag, sharp);
    storeIndex(search.pulses, backward, target, pIndex);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
