// The post-filters of the main body and Annex A in floating point (G.729 Annex C).
#include <math.h>

#include "core/checks.h"
#include "core/state_size.h"
#include "g729/constants.h"
#include "g729/exports.h"
#include "g729/tables.h"
#include "vector/partial_sums_dot.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kOrder = 10, kPast = 152;
constexpr Vsp32f kGammaNumerator = 0.55f, kGammaDenominator = 0.7f;

Vsp32f magnitude(Vsp32f x) { return x < 0 ? -x : x; }

Vsp32f dot(const Vsp32f* a, const Vsp32f* b, int len) { return partialSumsDot<8>(a, b, len); }

Vsp32f energy(const Vsp32f* a, int len) { return dot(a, a, len); }

Vsp32f sumOfMagnitudes(const Vsp32f* a, int len) {
    Vsp32f sum = 0;
    for (int n = 0; n < len; n++) sum += magnitude(a[n]);
    return sum;
}

// The coefficients of A(z / gamma), and zeros up to len.
void weight(const Vsp32f* lpc, Vsp32f gamma, Vsp32f* weighted, int len) {
    weighted[0] = lpc[0];
    Vsp32f power = gamma;
    for (int i = 1; i <= kOrder; i++) {
        weighted[i] = power * lpc[i];
        power *= gamma;
    }
    for (int i = kOrder + 1; i < len; i++) weighted[i] = 0;
}

// A(z) with the samples before src.
void analyse(const Vsp32f* lpc, const Vsp32f* src, Vsp32f* dst) {
    for (int n = 0; n < kL_subfr; n++) dst[n] = 0;
    for (int j = 0; j <= kOrder; j++)
        for (int n = 0; n < kL_subfr; n++) dst[n] += lpc[j] * src[n - j];
}

// 1/A(z). The memory holds the last outputs, the newest at the end.
void synthesise(const Vsp32f* lpc, const Vsp32f* src, Vsp32f* dst, int len, Vsp32f* memory) {
    Vsp32f buffer[kOrder + kL_subfr];
    for (int j = 0; j < kOrder; j++) buffer[j] = memory[j];
    Vsp32f* const y = buffer + kOrder;
    for (int n = 0; n < len; n++) {
        Vsp32f sum = src[n];
        for (int j = kOrder; j > 0; j--) sum -= lpc[j] * y[n - j];
        dst[n] = y[n] = sum;
    }
    for (int j = 0; j < kOrder; j++) memory[j] = y[len - kOrder + j];
}

// Both weighted filters, and the response of the one over the other.
template <int Length>
struct ShortTerm {
    Vsp32f numerator[Length], denominator[kOrder + 1], response[Length];

    explicit ShortTerm(const Vsp32f* lpc) {
        weight(lpc, kGammaNumerator, numerator, Length);
        weight(lpc, kGammaDenominator, denominator, kOrder + 1);
        Vsp32f memory[kOrder] = {};
        synthesise(denominator, numerator, response, Length, memory);
    }
};

// --- Main body ---------------------------------------------------------------------------------------------------------

constexpr int kPhases = 7, kShortTaps = 4, kLongTaps = 16, kZeros = 8;
constexpr Vsp32f kSilence = 0.1f;

template <int Taps>
void interpolate(const Vsp32f* src, const Vsp32f* taps, Vsp32f* dst, int len) {
    for (int n = 0; n < len; n++) dst[n] = 0;
    for (int i = 0; i < Taps; i++)
        for (int n = 0; n < len; n++) dst[n] += taps[i] * src[n - i];
}

Vsp32f correlation(const Vsp32f* r, const Vsp32f* y) {
    const Vsp32f sum = dot(r, y, kL_subfr);
    return sum > 0 ? sum : 0.0f;
}

// The residual mixed with the delayed one. Returns the delay, or 0, with dst untouched, where there is none.
int longTerm(const Vsp32f* r, int lag, Vsp32f* dst) {
    const Vsp32f now = energy(r, kL_subfr);
    if (now < kSilence) return 0;
    Vsp32f num = -1e30f;
    int lambda = lag;
    for (int k = lag - 1; k <= lag + 1; k++) {
        const Vsp32f sum = dot(r, r - k, kL_subfr);
        if (!(sum > num)) continue;
        num = sum;
        lambda = k;
    }
    if (!(num > 0)) return 0;
    Vsp32f den = energy(r - lambda, kL_subfr);
    if (den < kSilence) return 0;

    Vsp32f interpolated[kPhases][kL_subfr + 1], energies[kPhases][2], largest = den;
    for (int f = 0; f < kPhases; f++) {
        Vsp32f* const y = interpolated[f];
        interpolate<kShortTaps>(r - (lambda - 1), tab_hup_s_32f[f], y, kL_subfr + 1);
        const Vsp32f common = energy(y + 1, kL_subfr - 1);
        energies[f][0] = common + y[0] * y[0];
        energies[f][1] = common + y[kL_subfr] * y[kL_subfr];
        const Vsp32f larger = magnitude(y[0]) > magnitude(y[kL_subfr]) ? energies[f][0] : energies[f][1];
        largest = larger > largest ? larger : largest;
    }
    if (largest < kSilence) return 0;
    int phase = 0, offset = 1;
    for (int f = 0; f < kPhases; f++)
        for (int o = 0; o < 2; o++) {
            const Vsp32f candidate = correlation(r, interpolated[f] + o);
            if (!(candidate * candidate * den > num * num * energies[f][o])) continue;
            num = candidate;
            den = energies[f][o];
            phase = f + 1;
            offset = o;
        }
    if (num == 0 || den <= kSilence) return 0;
    if (!(num * num >= den * now * 0.5f)) return 0;
    const int delay = lambda + 1 - offset;
    const Vsp32f* delayed = r - delay;
    Vsp32f longFiltered[kL_subfr];
    if (phase > 0) {
        delayed = interpolated[phase - 1] + offset;
        interpolate<kLongTaps>(r + kLongTaps / 2 - delay, tab_hup_l_32f[phase - 1], longFiltered, kL_subfr);
        const Vsp32f num2 = correlation(r, longFiltered), den2 = energy(longFiltered, kL_subfr);
        if (den2 != 0 && num2 * num2 * den > num * num * den2) {
            num = num2;
            den = den2;
            delayed = longFiltered;
        }
    }
    const Vsp32f gain = num > den ? 2.0f / 3.0f : den / (den + 0.5f * num);
    for (int n = 0; n < kL_subfr; n++) dst[n] = gain * r[n] + (1 - gain) * delayed[n];
    return delay;
}

struct State {
    Vsp32f residual[kPast], synthesis[kOrder], gain;
};
static_assert(sizeof(State) == 652);

Vsp32f firstReflection(const Vsp32f* h, int len) {
    const Vsp32f acf0 = energy(h, len), acf1 = dot(h, h + 1, len - 1);
    return magnitude(acf1) > acf0 || acf0 == 0 ? 0.0f : (0 - acf1) / acf0;  // keeps the sign of a NaN
}

void controlGain(const Vsp32f* input, Vsp32f* output, Vsp32f& gain) {
    const Vsp32f in = sumOfMagnitudes(input, kL_subfr), out = sumOfMagnitudes(output, kL_subfr);
    Vsp32f g0 = 0;
    if (in != 0) {
        if (out == 0) {
            gain = 0;
            return;
        }
        g0 = in / out * 0.0125f;
    }
    for (int n = 0; n < kL_subfr; n++) {
        gain = 0.9875f * gain + g0;
        output[n] *= gain;
    }
}

// --- Annex A -----------------------------------------------------------------------------------------------------------

struct StateA {
    Vsp32f residual[kPitMax], synthesis[kOrder], tilt, gain;
};
static_assert(sizeof(StateA) == 620);

void longTermA(const Vsp32f* r, int lag, Vsp32f* dst) {
    const int longest = lag + 3 > kPitMax ? kPitMax : lag + 3, shortest = longest - 6;
    Vsp32f best = -1e37f;
    int delay = shortest;
    for (int k = shortest; k <= longest; k++) {
        const Vsp32f sum = dot(r, r - k, kL_subfr);
        if (!(sum > best)) continue;
        best = sum;
        delay = k;
    }
    Vsp32f cor = best > 0 ? best : 0.0f;
    const Vsp32f delayed = 0.5f + energy(r - delay, kL_subfr), now = 0.5f + energy(r, kL_subfr);
    Vsp32f gain = 0;
    if (cor * cor >= delayed * now * 0.5f) {
        cor = cor > delayed ? delayed : cor;
        gain = 0.5f * cor / (0.5f * cor + delayed);
    }
    for (int n = 0; n < kL_subfr; n++) dst[n] = (1 - gain) * r[n] + gain * r[n - delay];
}

void controlGainA(const Vsp32f* input, Vsp32f* output, Vsp32f& gain) {
    const Vsp32f out = energy(output, kL_subfr);
    if (out == 0) {
        gain = 0;
        return;
    }
    const Vsp32f in = energy(input, kL_subfr);
    const Vsp32f g0 = in == 0 ? 0.0f : sqrtf(in / out) * 0.1f;
    for (int n = 0; n < kL_subfr; n++) {
        gain = 0.9f * gain + g0;
        output[n] *= gain;
    }
}

void copy(const Vsp32f* from, Vsp32f* to, int len) {
    for (int n = 0; n < len; n++) to[n] = from[n];
}

void clear(Vsp32f* x, int len) {
    for (int n = 0; n < len; n++) x[n] = 0;
}

template <class S>
void initialise(S& state) {
    clear(state.residual, int(sizeof state.residual / sizeof(Vsp32f)));
    clear(state.synthesis, kOrder);
    state.gain = 1;
}

}  // namespace

VspStatus vspsPostFilterGetStateSize_G729_32f(Vsp32s* pSize) { return fixedSize(pSize, sizeof(State)); }
VspStatus vspsPostFilterGetStateSize_G729A_32f(Vsp32s* pSize) { return fixedSize(pSize, sizeof(StateA)); }

VspStatus vspsPostFilterInit_G729_32f(VspPostFilterState_G729_32f* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    initialise(*reinterpret_cast<State*>(pState));
    return vspStsNoErr;
}

VspStatus vspsPostFilterInit_G729A_32f(VspPostFilterState_G729A_32f* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    initialise(*reinterpret_cast<StateA*>(pState));
    reinterpret_cast<StateA*>(pState)->tilt = 0;
    return vspStsNoErr;
}

VspStatus vspsPostFilter_G729_32f(const Vsp32f* pSyn, const Vsp32f* pLPC, Vsp32s lag, Vsp32s frameType, Vsp32f* pDst,
                                  Vsp32s* pVoicing, VspPostFilterState_G729_32f* pState) {
    if (anyNull(pSyn, pLPC, pDst, pVoicing, pState)) return vspStsNullPtrErr;
    if (!isLegalLag(lag)) return vspStsRangeErr;
    if (frameType < 0 || frameType > 2) return vspStsRangeErr;
    State& state = *reinterpret_cast<State*>(pState);
    constexpr int kResponse = 20;
    const ShortTerm<kResponse> filters(pLPC);
    Vsp32f residual[kZeros + kPast + kL_subfr];  // zeros before the past, which the longest lags may reach
    Vsp32f* const now = residual + kZeros + kPast;
    clear(residual, kZeros);
    copy(state.residual, residual + kZeros, kPast);
    analyse(filters.numerator, pSyn, now);
    Vsp32f signal[kL_subfr], filtered[1 + kL_subfr], output[kL_subfr];
    *pVoicing = frameType == 1 ? longTerm(now, lag, signal) : 0;
    if (*pVoicing == 0) copy(now, signal, kL_subfr);
    copy(residual + kZeros + kL_subfr, state.residual, kPast);

    const Vsp32f k = firstReflection(filters.response, kResponse);
    const Vsp32f sum = sumOfMagnitudes(filters.response, kResponse);
    if (sum > 1)
        for (Vsp32f& x : signal) x *= 1 / sum;
    filtered[0] = state.synthesis[kOrder - 1];
    synthesise(filters.denominator, signal, filtered + 1, kL_subfr, state.synthesis);
    const Vsp32f mu = k * (k > 0 ? 0.2f : 0.9f), gain = 1 / (1 - magnitude(mu));
    for (int n = 0; n < kL_subfr; n++) output[n] = gain * (filtered[n + 1] + mu * filtered[n]);
    controlGain(pSyn, output, state.gain);
    copy(output, pDst, kL_subfr);
    return vspStsNoErr;
}

VspStatus vspsPostFilter_G729A_32f(const Vsp32f* pSyn, const Vsp32f* pLPC, Vsp32s lag, Vsp32s frameType, Vsp32f* pDst,
                                   VspPostFilterState_G729A_32f* pState) {
    if (anyNull(pSyn, pLPC, pDst, pState)) return vspStsNullPtrErr;
    if (!isLegalLag(lag)) return vspStsRangeErr;
    if (frameType < 0 || frameType > 2) return vspStsRangeErr;
    StateA& state = *reinterpret_cast<StateA*>(pState);
    constexpr int kResponse = 22;
    const ShortTerm<kResponse> filters(pLPC);
    Vsp32f residual[kPitMax + kL_subfr];
    Vsp32f* const now = residual + kPitMax;
    copy(state.residual, residual, kPitMax);
    analyse(filters.numerator, pSyn, now);
    Vsp32f signal[1 + kL_subfr], compensated[kL_subfr], output[kL_subfr];
    if (frameType == 1)
        longTermA(now, lag, signal + 1);
    else
        copy(now, signal + 1, kL_subfr);
    copy(residual + kL_subfr, state.residual, kPitMax);

    const Vsp32f acf0 = energy(filters.response, kResponse),
                 acf1 = dot(filters.response, filters.response + 1, kResponse - 1);
    const Vsp32f tilt = acf1 > 0 ? 0.8f * acf1 / acf0 : 0.0f;
    signal[0] = state.tilt;
    for (int n = 0; n < kL_subfr; n++) compensated[n] = signal[n + 1] - tilt * signal[n];
    state.tilt = signal[kL_subfr];
    synthesise(filters.denominator, compensated, output, kL_subfr, state.synthesis);
    controlGainA(pSyn, output, state.gain);
    copy(output, pDst, kL_subfr);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
