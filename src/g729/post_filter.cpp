// The post-filter of the main body (G.729 4.2) and that of Annex E.
#include "g729/post_filter.h"
#include "core/checks.h"
#include "core/state_size.h"
#include "g729/constants.h"
#include "g729/exports.h"
#include "g729/long_term_post_filter.h"

namespace vsp::VSP_LEVEL {

namespace {

template <int Order>
struct State {
    Vsp16s residual[kLongTermPast];
    Vsp16s synthesis[Order];  // the last outputs of 1/A(z / gamma), the newest at the end
    Vsp16s gain, unused;
};
using MainState = State<10>;
using LongState = State<30>;
static_assert(sizeof(MainState) == 328 && sizeof(LongState) == 368);

struct Weights {
    Vsp16s denominator, numerator, harmonic;
};

template <int Memory>
void initialise(State<Memory>& state) {
    for (Vsp16s& x : state.residual) x = 0;
    for (Vsp16s& x : state.synthesis) x = 0;
    state.gain = 16384;
    state.unused = 0;
}

// The first reflection coefficient of a response.
Vsp16s firstReflection(const Vsp16s* h, int len) {
    const Vsp32s r0 = doubledEnergy(h, len), r1 = neighbourCorrelation(h, len, r0);
    const int shift = norm_32s(r0);
    const Vsp16s acf0 = high_32s(shl_32s(r0, shift)), acf1 = high_32s(shl_32s(r1, shift)), magnitude = Abs_16s(acf1);
    if (magnitude > acf0 || acf0 == 0) return 0;
    const Vsp16s k = Div_16s(magnitude, acf0);
    return acf1 > 0 ? Vsp16s(-k) : k;
}

// The signal divided by the sum of the response's magnitudes where that is above 1.
void reduceGain(const Vsp16s* h, int len, Vsp16s* signal) {
    Vsp32s sum = 0;
    for (int i = 0; i < len; i++) sum += h[i] < 0 ? -h[i] : h[i];
    const Vsp16s g0 = high_32s(shl_32s(sum, 14));
    if (g0 <= 1024) return;
    const Vsp16s factor = Div_16s(1024, g0);
    for (int n = 0; n < kL_subfr; n++) signal[n] = mulRound_16s(signal[n], factor);
}

// 1 + mu / z, and the gain 1 / (1 - |mu|). previous is what stands before the signal.
void compensateTilt(const Vsp16s* signal, Vsp16s previous, Vsp16s k, Vsp16s* dst) {
    const bool positive = k > 0;
    const Vsp16s fact = positive ? 0x4000 : 0x0800;
    const int shift = positive ? 15 : 12;
    const Vsp16s mu = mulRound_16s(k, positive ? 6554 : 29491);
    const Vsp16s gain = Div_16s(fact, Add_16s(32767, Sub_16s(1, Abs_16s(mu))));
    const Vsp16s half = Vsp16s(mu >> 1);
    for (int n = 0; n < kL_subfr; n++) {
        const Vsp16s before = n == 0 ? previous : signal[n - 1];
        const Vsp32s sum = 2 * half * before + signal[n] * 0x8000;  // |half| < 14746
        const Vsp16s filtered = Vsp16s((sum + 0x4000) >> 15);
        dst[n] = sat_16s((2 * filtered * gain + fact) >> shift);
    }
}

Vsp32s sumOfMagnitudes(const Vsp16s* x) {
    Vsp32s sum = 0;
    for (int n = 0; n < kL_subfr; n++) sum += x[n] < 0 ? -x[n] : x[n];
    return sum;
}

// The magnitude of the input, followed slowly (G.729 4.2.4).
void controlGain(const Vsp16s* input, Vsp16s* output, Vsp16s& gain) {
    const Vsp32s in = sumOfMagnitudes(input), out = sumOfMagnitudes(output);
    Vsp16s g0 = 0;
    if (in != 0) {
        if (out == 0) {
            gain = 0;
            return;
        }
        const int nIn = norm_32s(in), nOut = norm_32s(out);
        const Vsp16s a = high_32s(in << nIn), b = high_32s(out << nOut);
        int shift = nIn + 1 - nOut;
        if (a < b) {
            g0 = Div_16s(a, b);
        } else {
            g0 = Add_16s(Vsp16s(Div_16s(Vsp16s(a - b), b) >> 1), 0x4000);
            shift--;
        }
        g0 = mulRound_16s(shr_16s(g0, shift), 410);
    }
    Vsp16s gains[kL_subfr];
    int current = gain;
    for (Vsp16s& g : gains) {
        current = ((32358 * current + 0x4000) >> 15) + g0;  // g0 is at most 410
        g = Vsp16s(current);
    }
    gain = Vsp16s(current);
    multiplyGains<14, true>(gains, output);
}

template <int Order, int Memory>
void filter(const Vsp16s* syn, const Vsp16s* lpc, Vsp16s lag, bool voiced, const Weights& weights, int length, Vsp16s* dst,
            Vsp16s* voicing, State<Memory>& state) {
    constexpr int kLongest = 32;
    Vsp16s numerator[kLongest], denominator[Order + 1], h[kLongest];
    weight<Order>(lpc, weights.numerator, numerator, kLongest);
    weight<Order>(lpc, weights.denominator, denominator, Order + 1);
    ResidualHistory<kLongTermPast> residual(state.residual);
    ownResidual(syn, numerator, Order, residual.now, kL_subfr, 12);

    Vsp16s signal[kL_subfr];
    *voicing = voiced ? ownLongTermPostFilter(residual.now, lag, weights.harmonic, signal) : Vsp16s(0);
    if (*voicing == 0)
        for (int n = 0; n < kL_subfr; n++) signal[n] = residual.now[n];
    residual.keep(state.residual);

    impulseResponse<Order>(numerator, denominator, length, h);
    const Vsp16s k = firstReflection(h, length), previous = state.synthesis[Memory - 1];
    reduceGain(h, length, signal);
    Vsp16s filtered[kL_subfr], output[kL_subfr];
    synthesise<Order>(denominator, signal, filtered, kL_subfr, state.synthesis + Memory - Order);
    for (int i = 0; i < Memory; i++) state.synthesis[i] = filtered[kL_subfr - Memory + i];
    compensateTilt(filtered, previous, k, output);
    controlGain(syn, output, state.gain);
    for (int n = 0; n < kL_subfr; n++) dst[n] = output[n];
}

}  // namespace

VspStatus vspsPostFilterGetStateSize_G729_16s(Vsp32s* pSize) { return fixedSize(pSize, sizeof(MainState)); }
VspStatus vspsPostFilterGetStateSize_G729E_16s(Vsp32s* pSize) { return fixedSize(pSize, sizeof(LongState)); }

VspStatus vspsPostFilterInit_G729_16s(VspPostFilterState_G729_16s* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    initialise(*reinterpret_cast<MainState*>(pState));
    return vspStsNoErr;
}

VspStatus vspsPostFilterInit_G729E_16s(VspPostFilterState_G729E_16s* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    initialise(*reinterpret_cast<LongState*>(pState));
    return vspStsNoErr;
}

VspStatus vspsPostFilter_G729_16s(const Vsp16s* pSyn, const Vsp16s* pLPC, Vsp16s lag, Vsp16s frameType, Vsp16s* pDst,
                                  Vsp16s* pVoicing, VspPostFilterState_G729_16s* pState) {
    if (anyNull(pSyn, pLPC, pDst, pVoicing, pState)) return vspStsNullPtrErr;
    if (!isLegalLag(lag)) return vspStsRangeErr;
    if (frameType < 0 || frameType > 2) return vspStsRangeErr;
    filter<10>(pSyn, pLPC, lag, frameType == 1, {kGammaDenominator, kGammaNumerator, kPlainHarmonic}, 20, pDst, pVoicing,
               *reinterpret_cast<MainState*>(pState));
    return vspStsNoErr;
}

VspStatus vspsPostFilter_G729E_16s(const Vsp16s* pSyn, const Vsp16s* pLPC, Vsp32s order, Vsp16s lag, Vsp16s frameType,
                                   const Vsp16s* pGamma, Vsp32s length, Vsp16s* pDst, Vsp16s* pVoicing,
                                   VspPostFilterState_G729E_16s* pState) {
    if (anyNull(pSyn, pLPC, pGamma, pDst, pVoicing, pState)) return vspStsNullPtrErr;
    if (order != 10 && order != 30) return vspStsRangeErr;
    if (!isLegalLag(lag)) return vspStsRangeErr;
    if (frameType < 0 || frameType > 2) return vspStsRangeErr;
    if (length != 20 && length != 32) return vspStsRangeErr;
    LongState& state = *reinterpret_cast<LongState*>(pState);
    const Weights weights{pGamma[0], pGamma[1], pGamma[2]};
    const auto run = order == 10 ? filter<10, 30> : filter<30, 30>;
    run(pSyn, pLPC, lag, frameType == 1, weights, length, pDst, pVoicing, state);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
