// The search of the multipulse code of 6.3 kbit/s (G.723.1 2.15, `Find_Fcbk` and `Find_Best`): five or six pulses of one
// amplitude on the even or the odd places, for short lags perhaps as a train that repeats with the lag.
#include "common/cross_correlation.h"
#include "core/checks.h"
#include "g723/convolution.h"
#include "g723/exports.h"
#include "g723/pitch_gains.h"
#include "g723/pulse_tables.h"
#include "g723/pulse_train.h"
#include "vector/largest.h"
#include "vector/magnitude.h"
#include "vector/signs.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kLen = 60, kPadded = 64, kPlaces = g723::kGridPlaces, kPaddedPlaces = 32;

struct Pulses {
    int grid, gainIndex;
    bool train;
    int count;
    int places[g723::kMostPulses];  // on the grid
    bool negative[g723::kMostPulses];

    int position(int i) const { return grid + 2 * places[i]; }
    Vsp16s amplitude(int i) const { return Vsp16s(negative[i] ? -g723::codeGains[gainIndex] : g723::codeGains[gainIndex]); }
};

struct Target {
    alignas(64) Vsp16s samples[kPadded];
    Vsp64s squares;

    [[gnu::always_inline]] explicit Target(const Vsp16s* target) : squares(energy(target, kLen)) {
        for (int n = 0; n < kPadded; n++) samples[n] = n < kLen ? target[n] : Vsp16s(0);
    }

    // How much closer the filtered code comes: the sum of 2 * t * y - y^2, saturated at every step.
    [[gnu::always_inline]] Vsp32s gain(const Vsp16s* y) const {
        const Vsp64s squaresOfY = energy(y, kPadded), products = 2 * dot(samples, y, kPadded);
        const Vsp64f room = Vsp64f((1 << 30) - squaresOfY);  // for the doubled products, with margin
        if (room > 0 && 4.0 * Vsp64f(squares) * Vsp64f(squaresOfY) < room * room) return Vsp32s(products - squaresOfY);
        Vsp32s sum = 0;
        for (int n = 0; n < kLen; n++) sum = Sub_32s(mac_32s(sum, samples[n], y[n]), Mul2_16s32s(y[n], y[n]) >> 1);
        return sum;
    }
};

// An impulse response, its correlations, and those with the target, in one scale.
class Response {
  public:
    [[gnu::always_inline]] Response(const Target& target, const Vsp16s* h)
        : padded_(h), largest_(maxMagnitude(h, kLen)), target_(target) {
        Vsp16s half[kPadded + kLen];
        for (int n = 0; n < kPadded + kLen; n++) half[n] = n < kLen ? Vsp16s(h[n] >> 1) : Vsp16s(0);
        Vsp32s sums[kLen];
        if (2 * energy(half, kLen) <= kMax32) {
            correlate(half, kLen, half, sums, kLen);
            for (Vsp32s& s : sums) s *= 2;
        } else {
            for (int k = 0; k < kLen; k++) sums[k] = dotSaturating(half, half + k, kLen - k);
        }
        const int norm = norm_32s(sums[0]);
        // Of even distances only: the pulses are on one grid.
        for (int i = 0; i < kPlaces; i++)
            correlations_[kPlaces + i] = correlations_[kPlaces - i] = round_32s(shl_32s(sums[2 * i], norm));
        correlations_[0] = correlations_[kCorrelations - 2] = correlations_[kCorrelations - 1] = 0;

        ownCrossCorr_32s(target.samples, h, kLen, sums);
        for (int grid = 0; grid < 2; grid++)
            for (int i = 0; i < kPaddedPlaces; i++)
                cross_[grid][i] = i < kPlaces ? shl_32s(sums[grid + 2 * i], norm - 4) : 0;
    }

    // Offers the pulses of both grids with four amplitudes each.
    template <class Offer>
    [[gnu::always_inline]] void search(int pulses, bool train, Offer offer) const {
        for (int grid = 0; grid < 2; grid++) {
            int first = 0;
            Vsp32s most = 0;
            for (int i = 0; i < kPlaces; i++) {
                const Vsp32s magnitude = Abs_32s(cross_[grid][i]);
                if (magnitude < most) continue;
                most = magnitude;
                first = i;
            }
            const int middle = nearestGain(most);
            for (int g = middle - 2; g <= middle + 1; g++) {
                Pulses p{grid, g, train, pulses, {first}, {cross_[grid][first] < 0}};
                // What the pulses can add to a correlation, none of which then leaves the range.
                const Vsp64s added = 2LL * pulses * g723::codeGains[g] * (kMax16 + 1);
                if (most + added <= kMax32)
                    place<false>(p);
                else
                    place<true>(p);
                alignas(64) Vsp16s y[kPadded];
                filter(p, y);
                offer(p, target_.gain(y));
            }
        }
    }

  private:
    static constexpr int kCorrelations = kPlaces + kPaddedPlaces;

    [[gnu::always_inline]] int nearestGain(Vsp32s largest) const {
        int index = 22;
        Vsp32s least = 0x40000000;
        for (int i = 22; i >= 2; i--) {
            const Vsp32s difference = Abs_32s(Sub_32s(Mul2_32s(g723::codeGains[i] * correlations_[kPlaces]), largest));
            if (difference >= least) continue;
            least = difference;
            index = i;
        }
        return index;
    }

    // All pulses but the first, one after the other where the rest of the correlation is largest.
    template <bool kSaturating>
    [[gnu::always_inline]] void place(Pulses& p) const {
        constexpr int kVectors = kPaddedPlaces / S32::width;
        alignas(64) Vsp32s taken[kPaddedPlaces] = {};
        for (int i = kPlaces; i < kPaddedPlaces; i++) taken[i] = -1;
        S32 rest[kVectors];
        for (int v = 0; v < kVectors; v++) rest[v] = S32::load(cross_[p.grid] + v * S32::width);
        for (int k = 1; k < p.count; k++) {
            taken[p.places[k - 1]] = -1;
            const Vsp32s* const row = correlations_ + kPlaces - p.places[k - 1];
            const S32 minusTwice = S32::splat(-2 * p.amplitude(k - 1));
            S32 magnitudes[kVectors], most = S32::splat(-1);
            for (int v = 0; v < kVectors; v++) {
                const S32 product = mulLo(S32::load(row + v * S32::width), minusTwice);
                rest[v] = kSaturating ? addSat32(rest[v], product) : add(rest[v], product);
                S32 magnitude_ = magnitude(rest[v]);
                if (kSaturating) magnitude_ = {minU(magnitude_, S32::splat(kMax32)).v};
                magnitudes[v] = {magnitude_.v | S32::load(taken + v * S32::width).v};
                most = max(most, magnitudes[v]);
            }
            const S32 largestEverywhere = S32::splat(largest(most));
            Vsp64u where = 0;
            for (int v = 0; v < kVectors; v++) where |= Vsp64u(equal(magnitudes[v], largestEverywhere)) << (v * S32::width);
            p.places[k] = __builtin_ctzll(where);
            Vsp32s values[kPaddedPlaces];
            for (int v = 0; v < kVectors; v++) rest[v].store(values + v * S32::width);
            p.negative[k] = values[p.places[k]] < 0;
        }
    }

    // The pulses through the impulse response, times 8 in the high half.
    [[gnu::always_inline]] void filter(const Pulses& p, Vsp16s* y) const {
        constexpr int kShift = 13;
        if (2LL * p.count * g723::codeGains[p.gainIndex] * largest_ > kMax32) [[unlikely]] {
            filterSaturating(p, y);
            return;
        }
        const Vsp16s* rows[g723::kMostPulses];
        S16 amplitudes[g723::kMostPulses / 2];
        for (int k = 0; k < g723::kMostPulses; k++)
            rows[k] = padded_.response() - (k < p.count ? p.position(k) : PaddedResponse::kZeros);
        for (int k = 0; k < g723::kMostPulses; k += 2) {
            const Vsp16s pair[2] = {p.amplitude(k), k + 1 < p.count ? p.amplitude(k + 1) : Vsp16s(0)};
            amplitudes[k / 2] = splatPair<S16>(pair);
        }
        for (int n = 0; n < kPadded; n += S16::width) {
            S32 lo = S32::splat(0), hi = lo;
            for (int k = 0; k < g723::kMostPulses; k += 2) {
                const S16 a = S16::load(rows[k] + n), b = S16::load(rows[k + 1] + n);
                lo = add(lo, dot2(S16{zipLo(a, b).v}, amplitudes[k / 2]));
                hi = add(hi, dot2(S16{zipHi(a, b).v}, amplitudes[k / 2]));
            }
            packSat(shr(lo, kShift), shr(hi, kShift)).store(y + n);
        }
        for (int n = kLen; n < kPadded; n++) y[n] = 0;
    }

    [[gnu::noinline]] void filterSaturating(const Pulses& p, Vsp16s* y) const {
        Vsp16s code[kLen] = {};
        for (int k = 0; k < p.count; k++) code[p.position(k)] = p.amplitude(k);
        for (int n = 0; n < kPadded; n++) {
            Vsp32s sum = 0;
            for (int j = 0; j <= n && n < kLen; j++) sum = mac_32s(sum, code[j], padded_.response()[n - j]);
            y[n] = high_32s(Mul4_32s(sum));
        }
    }

    PaddedResponse padded_;
    Vsp32s largest_;
    const Target& target_;
    Vsp32s correlations_[kCorrelations];  // by distance from kPlaces on, and mirrored before it
    alignas(64) Vsp32s cross_[2][kPaddedPlaces];
};

}  // namespace

VspStatus vspsFixedCodebookSearch_MLQ_G723_16s(const Vsp16s* pTarget, const Vsp16s* pImpulse, Vsp16s lag, Vsp32s subframe,
                                               Vsp16s* pCode, Vsp32s* pPos, Vsp16s* pIndex) {
    if (anyNull(pTarget, pImpulse, pCode, pPos, pIndex)) return vspStsNullPtrErr;
    if (subframe < 0 || subframe > 3) return vspStsRangeErr;
    if (lag < 18 || lag > 145) return vspStsRangeErr;
    const Target target(pTarget);
    const int pulses = g723::pulsesOf(subframe);
    Pulses best{0, 0, false, pulses, {0, 1, 2, 3, 4, 5}, {}};
    Vsp32s most = -0x40000000;
    const auto offer = [&](const Pulses& p, Vsp32s gain) {
        if (gain <= most) return;
        most = gain;
        best = p;
    };
    Response(target, pImpulse).search(pulses, false, offer);
    if (lag < g723::kShortLag) {
        Vsp16s repeated[kLen];
        repeatPulses(pImpulse, lag, repeated);
        Response(target, repeated).search(pulses, true, offer);
    }

    // `Fcbk_Pack`: the positions as one number, and the signs in their order.
    Vsp16s code[kLen] = {};
    for (int k = 0; k < pulses; k++) code[best.position(k)] = best.amplitude(k);
    Vsp32s position = 0;
    int signs = 0;
    for (int i = 0, j = g723::kMostPulses - pulses; i < kPlaces && j < g723::kMostPulses; i++) {
        const Vsp16s pulse = code[best.grid + 2 * i];
        if (pulse == 0) {
            position += g723::combinations[j][i];
        } else {
            signs = 2 * signs + (pulse < 0 ? 1 : 0);
            j++;
        }
    }
    if (best.train)
        repeatPulses(code, lag, pCode);
    else
        for (int n = 0; n < kLen; n++) pCode[n] = code[n];
    *pPos = position;
    pIndex[0] = Vsp16s(best.gainIndex);
    pIndex[1] = Vsp16s(best.grid);
    pIndex[2] = Vsp16s(best.train);
    pIndex[3] = Vsp16s(signs);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
