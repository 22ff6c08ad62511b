#include "g729/long_term_post_filter.h"

#include "arithmetic/split_32.h"
#include "g729/post_filter.h"
#include "g729/tables.h"
#include "vector/magnitude.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kShortTaps = 4, kLongTaps = 16;
constexpr int kAhead = kLongTaps / 2;

// dst[n] = the interpolated src[n], n = 0 .. len-1: src[n - i] * taps[i], doubled, rounded. No partial sum leaves 32 bits.
template <int Taps>
void interpolate(const Vsp16s* src, const Vsp16s* taps, Vsp16s* dst, int len) {
    for (int n = 0; n < len; n++) {
        Vsp32s sum = 0x4000;
        for (int i = 0; i < Taps; i++) sum += taps[i] * src[n - i];
        dst[n] = Vsp16s(sum >> 15);
    }
}

int shiftTo16Bits(Vsp32s a) {
    const int shift = 16 - norm_32s(a);
    return shift > 0 ? shift : 0;
}

// A correlation and an energy in 16 bits, and their scales.
struct Ratio {
    Vsp16s num, den;
    int shNum, shDen;
};

Vsp32s squareTimes(Vsp16s num, Vsp16s den) { return mulSplit_32s16s(Mul2_16s32s(num, num), den); }

// Whether num^2 / den of the second is larger.
bool secondWins(const Ratio& a, const Ratio& b) {
    if (b.den == 0) return false;
    const int scaleA = 2 * a.shNum + b.shDen, scaleB = 2 * b.shNum + a.shDen;
    Vsp32s ofA = squareTimes(a.num, b.den), ofB = squareTimes(b.num, a.den);
    if (scaleB > scaleA)
        ofA = shr_32s(ofA, scaleB - scaleA);
    else
        ofB = shr_32s(ofB, scaleA - scaleB);
    return ofA < ofB;
}

// The gain of the present sample; the delayed one has the rest.
Vsp16s gainOf(const Ratio& ratio, Vsp16s harmonic) {
    Vsp16s num = ratio.num, den = ratio.den;
    const int shift = ratio.shNum - ratio.shDen;
    if (shift >= 0)
        den = shr_16s(den, shift);
    else
        num = shl_16s(num, shift);
    if (harmonic == kPlainHarmonic) {
        if (num >= den) return 21845;
        num = Vsp16s(num >> 2);
    } else {
        num = Vsp16s(mulRound_16s(num >= den ? den : num, harmonic) >> 1);
    }
    den = Vsp16s(den >> 1);
    return Div_16s(den, Add_16s(den, num));
}

// The residual in 12 bits; zeros stand before the past, which the longest lags may reach.
struct Scaled {
    static constexpr int kZeros = 8;
    Vsp16s samples[kZeros + kLongTermPast + kL_subfr];
    const Vsp16s* const now = samples + kZeros + kLongTermPast;
    int shift;

    explicit Scaled(const Vsp16s* residual) {
        const Vsp16s* const past = residual - kLongTermPast;
        const Vsp16u largest = maxMagnitude(past, kLongTermPast + kL_subfr);
        shift = 3 - norm_16s(Vsp16s(largest < kMax16 ? largest : kMax16));
        for (int i = 0; i < kZeros; i++) samples[i] = 0;
        for (int i = 0; i < kLongTermPast + kL_subfr; i++)
            samples[kZeros + i] = Vsp16s(shift < 0 ? past[i] * (1 << -shift) : past[i] >> shift);
    }
};

class Search {
  public:
    Search(const Scaled& scaled, int lag) : s_(scaled.now), lag_(lag) {}

    // Returns the delay, 0 where the filter is not used. With 12 bits of the residual and filters of four taps, whose
    // magnitudes add up to less than 1.25, no sum leaves 32 bits.
    int run() {
        const Vsp32s total = doubledEnergy(s_, kL_subfr);
        if (total == 0) return 0;
        const int shEnergy = shiftTo16Bits(total);
        const Vsp16s energyNow = Vsp16s(total >> shEnergy);

        Vsp32s correlation = -1;
        int lambda = 0;
        for (int k = lag_ - 1; k <= lag_ + 1; k++) {
            const Vsp32s sum = correlate(s_ - k);
            if (sum <= correlation) continue;
            correlation = sum;
            lambda = k;
        }
        const Vsp32s energyDelayed = doubledEnergy(s_ - lambda, kL_subfr);
        if (correlation == 0 || energyDelayed == 0) return 0;

        Vsp32s energies[kPhases][2], largest = energyDelayed;
        for (int f = 0; f < kPhases; f++) {
            Vsp16s* const y = interpolated_[f];
            interpolate<kShortTaps>(s_ - (lambda - 1), tab_hup_s[f], y, kL_subfr + 1);
            const Vsp32s common = doubledEnergy(y + 1, kL_subfr - 1), first = 2 * y[0] * y[0],
                         last = 2 * y[kL_subfr] * y[kL_subfr];
            energies[f][0] = common + first;
            energies[f][1] = common + last;
            const Vsp32s larger = first > last ? energies[f][0] : energies[f][1];
            largest = larger > largest ? larger : largest;
        }
        best.shDen = 16 - norm_32s(largest);
        if (best.shDen <= 0) return 0;
        best.shNum = best.shDen > shEnergy ? best.shDen : shEnergy;
        best.den = Vsp16s(energyDelayed >> best.shDen);
        best.num = Vsp16s(correlation >> best.shNum);
        Vsp32s square = Mul2_16s32s(best.num, best.num);
        int phase = 0, offset = 1;
        for (int f = 0; f < kPhases; f++)
            for (int o = 0; o < 2; o++) {
                const Vsp16s num = Vsp16s(correlate(interpolated_[f] + o) >> best.shNum);
                const Vsp16s den = Vsp16s(energies[f][o] >> best.shDen);
                const Vsp32s candidate = Mul2_16s32s(num, num);
                if (mulSplit_32s16s(candidate, best.den) <= mulSplit_32s16s(square, den)) continue;
                square = candidate;
                best.num = num;
                best.den = den;
                phase = f + 1;
                offset = o;
            }
        if (best.num == 0 || best.den <= 1) return 0;
        Vsp32s product = Mul2_16s32s(best.den, energyNow);
        const int shift = 2 * best.shNum - best.shDen - shEnergy + 1;
        if (shift < 0)
            square = shr_32s(square, -shift);
        else
            product = shr_32s(product, shift);
        if (square < product) return 0;
        const int delay = lambda + 1 - offset;
        if (phase > 0) useInterpolation(phase - 1, offset, delay);
        return delay;
    }

    Ratio best{};
    const Vsp16s* delayed = nullptr;  // in the scale of the search; null for a delay without fraction

  private:
    static constexpr int kPhases = 7;

    // With the delayed signal or what four taps make of it: exact.
    Vsp32s correlate(const Vsp16s* y) const {
        const Vsp32s sum = Vsp32s(2 * dot(s_, y, kL_subfr));
        return sum > 0 ? sum : 0;
    }

    // With the filter of four taps or, where that gives more, that of sixteen.
    void useInterpolation(int phase, int offset, int delay) {
        delayed = interpolated_[phase] + offset;
        interpolate<kLongTaps>(s_ + kAhead - delay, tab_hup_l[phase], long_, kL_subfr);
        const Vsp32s sum = doubledDot(s_, long_, kL_subfr), total = doubledEnergy(long_, kL_subfr);
        const Vsp32s correlation = sum > 0 ? sum : 0;
        Ratio ratio{0, 0, shiftTo16Bits(correlation), shiftTo16Bits(total)};
        ratio.num = Vsp16s(correlation >> ratio.shNum);
        ratio.den = Vsp16s(total >> ratio.shDen);
        if (!secondWins(best, ratio)) return;
        best = ratio;
        delayed = long_;
    }

    const Vsp16s* s_;
    int lag_;
    Vsp16s interpolated_[kPhases][kL_subfr + 1], long_[kL_subfr];
};

}  // namespace

Vsp16s ownLongTermPostFilter(const Vsp16s* residual, int lag, Vsp16s harmonic, Vsp16s* dst) {
    const Scaled scaled(residual);
    Search search(scaled, lag);
    const int delay = search.run();
    if (delay == 0) return 0;
    const Vsp16s gain = gainOf(search.best, harmonic), rest = Add_16s(Sub_16s(32767, gain), 1);
    for (int n = 0; n < kL_subfr; n++) {
        const Vsp16s delayed = search.delayed == nullptr ? residual[n - delay] : shl_16s(search.delayed[n], scaled.shift);
        dst[n] = round_32s(mac_32s(Mul2_16s32s(gain, residual[n]), rest, delayed));
    }
    return Vsp16s(delay);
}

}  // namespace vsp::VSP_LEVEL
