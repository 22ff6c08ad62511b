// The search of the algebraic code of 5.3 kbit/s (G.723.1 2.16, `search_T0` and `ACELP_LBC_code`): four pulses on tracks of
// eight places, track t having the places 8 * i + 2 * t, all of them even or all moved to the odd ones.
#include "arithmetic/standard_ops.h"
#include "common/algebraic_search.h"
#include "core/checks.h"
#include "g723/acelp.h"
#include "g723/exports.h"
#include "vector/correlate.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kLen = PitchSharpening::kLen, kPulses = 4, kCells = 64, kEven = kCells / 2;

// Place 2 * q is place q / 4 of track q % 4.
constexpr int trackOf(int q) { return q % kPulses; }
constexpr int placeOf(int q) { return q / kPulses; }

// The target filtered backwards. Of every pair of places the sign of their sum is taken out.
struct SignedCross {
    Vsp16s even[kPulses][kPlaces], odd[kPulses][kPlaces];
    bool negative[kEven];

    [[gnu::always_inline]] SignedCross(const Vsp16s* target, const Vsp16s* h) {
        Vsp32s sums[kLen];
        ownCrossCorr_32s(target, h, kLen, sums);
        Vsp32s largest = 0;
        for (const Vsp32s s : sums) largest = Abs_32s(s) > largest ? Abs_32s(s) : largest;
        const int norm = norm_32s(largest), shift = 18 - (norm < 16 ? norm : 16);
        for (int q = 0; q < kEven; q++) {
            const Vsp16s a = 2 * q < kLen ? Vsp16s(sums[2 * q] >> shift) : Vsp16s(0);
            const Vsp16s b = 2 * q < kLen ? Vsp16s(sums[2 * q + 1] >> shift) : Vsp16s(0);
            negative[q] = a + b < 0;
            even[trackOf(q)][placeOf(q)] = negative[q] ? Negate_16s(a) : a;
            odd[trackOf(q)][placeOf(q)] = negative[q] ? Negate_16s(b) : b;
        }
    }

    // What the first three pulses must exceed.
    [[gnu::always_inline]] Vsp16s threshold() const {
        const Vsp16s ofEven = threshold(even), ofOdd = threshold(odd);
        return ofEven > ofOdd ? ofEven : ofOdd;
    }

  private:
    static Vsp16s threshold(const Vsp16s (&d)[kPulses][kPlaces]) {
        constexpr Vsp16s kHalf = 16384;
        Vsp16s largest = 0;
        Vsp32s sum = 0;
        for (int t = 0; t < kPulses - 1; t++) {
            Vsp16s most = d[t][0];
            for (const Vsp16s x : d[t]) {
                most = x > most ? x : most;
                sum += 2 * x;
            }
            largest = Add_16s(largest, most);
        }
        const Vsp16s mean = Vsp16s(sum >> 4);
        return Add_16s(Mul_16s(Sub_16s(largest, mean), kHalf), mean);
    }
};

// Correlations of the impulse response by pairs of even places, with the signs of both.
struct PulseCorrelations {
    Vsp16s of[kEven][kPulses][kPlaces];

    [[gnu::always_inline]] PulseCorrelations(const Vsp16s* h, const bool* negative) {
        // Four zeros before the response, which then ends with the last place.
        Vsp16s scaled[2 * kCells] = {};
        Vsp16s* const x = scaled + kCells - kLen;
        const Vsp32s total = Cnvrt_64s32s(2 * energy(h, kLen));
        const int up = norm_32s(total) >> 1;
        for (int i = 0; i < kLen; i++) x[i] = total >> 16 > 32000 ? Vsp16s(h[i] >> 1) : ShiftL_16s(h[i], up);
        if (2 * energy(scaled, kCells) <= kMax32)
            formExact(scaled, negative);
        else
            formSaturating(scaled, negative);
    }

    Vsp16s between(int p, int track, int place) const { return of[p][track][place]; }
    Vsp16s diagonal(int p) const { return of[p][trackOf(p)][placeOf(p)]; }

  private:
    [[gnu::always_inline]] void set(int p, int q, Vsp16s value, const bool* negative) {
        const Vsp16s x = negative[p] != negative[q] ? Vsp16s(-value) : value;  // that of -32768 wraps
        of[p][trackOf(q)][placeOf(q)] = x;
        of[q][trackOf(p)][placeOf(p)] = x;
    }

    // Two samples more for each even place from the last one to the first; lanes are distances.
    [[gnu::always_inline]] void formExact(const Vsp16s* x, const bool* negative) {
        using W = Wide<Sliding16>;
        constexpr int kVectors = kEven / W::width;
        W sums[kVectors];
        for (W& s : sums) s = W::splat(0);
        for (int m = 0; m < kEven; m++) {
            const Sliding16 pair = splatPair<Sliding16>(x + 2 * m);
            Vsp32s lanes[kEven];
            for (int v = 0; v < kVectors; v++) {
                sums[v] = add(sums[v], dot2(pair, Sliding16::load(x + 2 * m + v * Sliding16::width)));
                shr(sums[v], 15).store(lanes + v * W::width);
            }
            const int p = kEven - 1 - m;
            for (int q = 0; q <= p; q++) set(p, q, Vsp16s(lanes[p - q]), negative);
        }
    }

    [[gnu::noinline]] void formSaturating(const Vsp16s* x, const bool* negative) {
        for (int p = 0; p < kEven; p++)
            for (int q = 0; q <= p; q++) set(p, q, high_32s(dotSaturating(x, x + 2 * (p - q), kCells - 2 * p)), negative);
    }
};

class Search {
  public:
    Search(const SignedCross& cross, const PulseCorrelations& correlations) : cross_(cross), correlations_(correlations) {}

    // Returns the visits of the last track that are left.
    int run(int visits) {
        const S16_128 limit = S16_128::splat(cross_.threshold());
        const S16_128 even2 = S16_128::load(cross_.even[2]), odd2 = S16_128::load(cross_.odd[2]);
        for (int i0 = 0; i0 < kPlaces; i0++)
            for (int i1 = 0; i1 < kPlaces; i1++) {
                const auto both = [&](const Vsp16s(&d)[kPulses][kPlaces]) {
                    return S16_128::splat(Add_16s(d[0][i0], d[1][i1]));
                };
                const S16_128 even = addSat(both(cross_.even), even2), odd = addSat(both(cross_.odd), odd2);
                const S16_128 sums = max(even, odd);
                Vsp32u above = maskAbove(sums, limit);
                if (above == 0) continue;
                const Vsp32u moved = maskAbove(odd, even);
                Vsp16s starts[kPlaces];
                sums.store(starts);
                for (; above != 0; above &= above - 1) {
                    const int i2 = __builtin_ctz(above);
                    visit(i0, i1, i2, starts[i2], moved >> i2 & 1);
                    if (--visits <= 0) return visits;
                }
            }
        return visits;
    }

    int places[kPulses] = {}, shift = 0;

  private:
    static Vsp32u maskAbove(S16_128 a, S16_128 limit) {
        return Vsp32u(_mm_movemask_epi8(_mm_packs_epi16(_mm_cmpgt_epi16(a.v, limit.v), _mm_setzero_si128())));
    }

    // All places of the last track with the first three pulses.
    void visit(int i0, int i1, int i2, Vsp16s start, int moved) {
        constexpr int kLast = kPulses - 1;
        const auto& c = correlations_;
        const int p0 = kPulses * i0, p1 = kPulses * i1 + 1, p2 = kPulses * i2 + 2;
        const Vsp32s fixed = c.diagonal(p0) + c.diagonal(p1) + c.diagonal(p2) +
                             2 * (c.between(p0, 1, i1) + c.between(p0, 2, i2) + c.between(p1, 2, i2));
        Vsp16s diagonal[kPlaces];
        for (int i = 0; i < kPlaces; i++) diagonal[i] = c.diagonal(kPulses * i + kLast);
        const auto row = [&](int p) { return widen(S16_128::load(c.of[p][kLast])); };
        const Eight32s crossed = add(row(p0), add(row(p1), row(p2)));
        const Eight32s sum = add(add(widen(S16_128::load(diagonal)), Eight32s::splat(fixed)), add(crossed, crossed));
        const S16_128 d3 = S16_128::load(moved != 0 ? cross_.odd[kLast] : cross_.even[kLast]);
        const S16_128 ps = addSat(S16_128::splat(start), d3);
        compare(best_, mulShift15Sat(ps, ps), narrowSat(shr(sum, 4)), [&](int i3) {
            places[0] = i0;
            places[1] = i1;
            places[2] = i2;
            places[3] = i3;
            shift = moved;
        });
    }

    const SignedCross& cross_;
    const PulseCorrelations& correlations_;
    Best best_{0, kMax16};
};

// The index of the gain that brings the filtered code y nearest to the target.
int gainIndex(const Vsp16s* target, Vsp16s* y) {
    for (int n = 0; n < kLen; n++) y[n] >>= 3;
    const auto sum = [](const Vsp16s* a, const Vsp16s* b) {
        if (doubledSumsFit(energy(a, kLen), energy(b, kLen))) return Vsp32s(2 * dot(a, b, kLen));
        return dotSaturating(a, b, kLen);
    };
    const Vsp32s product = sum(target, y), squares = sum(y, y);
    const int productNorm = norm_32s(product), squaresNorm = norm_32s(squares);
    const Vsp16s numerator = high_32s(shl_32s(product, productNorm)), denominator = high_32s(shl_32s(squares, squaresNorm));
    if (numerator <= 0) return 0;
    const Vsp16s gain = shr_16s(Div_16s(Vsp16s(numerator >> 1), denominator), productNorm + 5 - squaresNorm);
    int nearest = 0;
    Vsp16s least = Abs_16s(Sub_16s(gain, g723::codeGains[0]));
    for (int i = 1; i < g723::kCodeGains; i++) {
        const Vsp16s distance = Abs_16s(Sub_16s(gain, g723::codeGains[i]));
        if (distance >= least) continue;
        least = distance;
        nearest = i;
    }
    return nearest;
}

}  // namespace

VspStatus vspsFixedCodebookSearch_ACELP_G723_16s(const Vsp16s* pTarget, const Vsp16s* pImpulse, Vsp16s lag,
                                                 Vsp16s gainIndexOfLag, Vsp16s* pExtra, Vsp16s* pCode, Vsp32s* pPos,
                                                 Vsp16s* pIndex) {
    constexpr Vsp16s kVisits = 120;
    if (anyNull(pTarget, pImpulse, pExtra, pCode, pPos, pIndex)) return vspStsNullPtrErr;
    if (lag < 17 || lag > 144) return vspStsRangeErr;
    if (gainIndexOfLag < 0 || gainIndexOfLag >= g723::kLongCodebook) return vspStsCodeRangeErr;
    const PitchSharpening sharpening(lag, gainIndexOfLag);
    Vsp16s h[PitchSharpening::kRoom];
    for (int n = 0; n < kLen; n++) h[n] = Vsp16s(pImpulse[n] >> 1);
    sharpening.apply(h);
    const SignedCross cross(pTarget, h);
    const PulseCorrelations correlations(h, cross.negative);
    Search search(cross, correlations);
    *pExtra = Vsp16s(search.run(Add_16s(kVisits, *pExtra)));

    Vsp16s code[PitchSharpening::kRoom] = {}, y[kLen] = {};
    bool negative[kPulses];
    int signs = 0;
    Vsp32s position = 0;
    for (int k = 0; k < kPulses; k++) {
        const int q = kPulses * search.places[k] + k, at = 2 * q + search.shift;
        negative[k] = cross.negative[q];
        signs |= negative[k] ? 0 : 1 << k;
        position |= search.places[k] << 3 * k;
        for (int n = at; n < kLen; n++) y[n] = negative[k] ? Sub_16s(y[n], h[n - at]) : Add_16s(y[n], h[n - at]);
    }
    const int index = gainIndex(pTarget, y);
    for (int k = 0; k < kPulses; k++) {
        const int at = 2 * (kPulses * search.places[k] + k) + search.shift;
        if (at < kLen) code[at] = Vsp16s(negative[k] ? -g723::codeGains[index] : g723::codeGains[index]);
    }
    sharpening.apply(code);
    for (int n = 0; n < kLen; n++) pCode[n] = code[n];
    *pPos = position;
    pIndex[0] = Vsp16s(index);
    pIndex[1] = Vsp16s(search.shift);
    pIndex[2] = 0;
    pIndex[3] = Vsp16s(signs);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
