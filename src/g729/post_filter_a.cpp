// The post-filter of Annex A (G.729 A.4.2).
#include "common/inv_sqrt.h"
#include "core/checks.h"
#include "core/state_size.h"
#include "g729/constants.h"
#include "g729/exports.h"
#include "g729/post_filter.h"
#include "vector/correlate.h"

namespace vsp::VSP_LEVEL {

namespace {

struct State {
    Vsp16s residual[kPitMax];
    Vsp16s synthesis[10];  // the last outputs of 1/A(z / gamma), the newest at the end
    Vsp16s tilt;           // the last input of the tilt compensation
    Vsp16s gain, unused;
};
static_assert(sizeof(State) == 312);

// The largest of a sum and the energies beside it, in 16 bits.
struct Normalised {
    Vsp16s correlation, delayed, present;
};

Normalised normalised(Vsp32s correlation, Vsp32s delayed, Vsp32s present) {
    const Vsp32s energies = delayed > present ? delayed : present;
    const int shift = norm_32s(correlation > energies ? correlation : energies);
    return {round_32s(correlation << shift), round_32s(delayed << shift), round_32s(present << shift)};
}

// G.729 A.4.2.1: the residual and the delayed residual, mixed by their correlation. Both have Past samples before them.
void longTerm(const Vsp16s* residual, const Vsp16s* scaled, int lag, Vsp16s* dst) {
    const int longest = lag + 3 > kPitMax ? kPitMax : lag + 3, shortest = longest - 6;
    constexpr int kLags = 7;
    const Vsp16s* const earliest = scaled - longest;
    Vsp32s sums[kLags + 1];
    if (doubledSumsFit(energy(scaled, kL_subfr), energy(earliest, kL_subfr + kLags - 1))) {
        correlateUnits<1, S16_128>(scaled, kL_subfr, earliest, sums);
        for (Vsp32s& sum : sums) sum *= 2;
    } else {
        for (int i = 0; i < kLags; i++) sums[i] = dotSaturating(scaled, earliest + i, kL_subfr);
    }
    Vsp32s best = kMin32;
    int delay = shortest;
    for (int i = kLags - 1; i >= 0; i--) {
        if (sums[i] <= best) continue;
        best = sums[i];
        delay = longest - i;
    }
    const auto oneMore = [](Vsp32s sum) { return Add_32s(sum, 1); };
    Normalised n = normalised(best > 0 ? best : 0, oneMore(doubledEnergy(scaled - delay, kL_subfr)),
                              oneMore(doubledEnergy(scaled, kL_subfr)));
    Vsp16s present = 32767, past = 0;
    if (Mul2_16s32s(n.correlation, n.correlation) >= Mul2_16s32s(n.delayed, n.present) >> 1) {
        if (n.correlation > n.delayed) {
            present = 21845;
            past = 10923;
        } else {
            const Vsp16s correlation = Vsp16s(Mul_16s(n.correlation, 16384) >> 1), delayed = Vsp16s(n.delayed >> 1);
            const Vsp16s sum = Add_16s(correlation, delayed);
            if (sum > 0) {
                past = Div_16s(correlation, sum);
                present = Vsp16s(32767 - past);
            }
        }
        const S16_128 ofPresent = S16_128::splat(present), ofPast = S16_128::splat(past);
        for (int i = 0; i < kL_subfr; i += S16_128::width)
            addSat(mulShift15(S16_128::load(residual + i), ofPresent),
                   mulShift15(S16_128::load(residual + i - delay), ofPast))
                .store(dst + i);
        return;
    }
    for (int i = 0; i < kL_subfr; i++) dst[i] = residual[i];
}

Vsp32s quarterEnergy(const Vsp16s* x) {
    Vsp16s quarter[kL_subfr];
    for (int n = 0; n < kL_subfr; n++) quarter[n] = Vsp16s(x[n] >> 2);
    return doubledEnergy(quarter, kL_subfr);
}

// The energy of the input, followed slowly (G.729 A.4.2.4).
void controlGain(const Vsp16s* input, Vsp16s* output, Vsp16s& gain) {
    const Vsp32s out = quarterEnergy(output);
    if (out == 0) {
        gain = 0;
        return;
    }
    const Vsp32s in = quarterEnergy(input);
    Vsp16s g0 = 0;
    if (in != 0) {
        const int shiftOut = norm_32s(out) - 1, shiftIn = norm_32s(in);
        const Vsp16s ratio = Div_16s(round_32s(shl_32s(out, shiftOut)), round_32s(shl_32s(in, shiftIn)));
        const Vsp32s scaled = shr_32s(shl_32s(ratio, 7), shiftOut - shiftIn);
        g0 = Mul_16s(round_32s(shl_32s(ownInvSqrt(scaled), 9)), 3276);
    }
    followGain(g0, gain, output);
}

}  // namespace

VspStatus vspsPostFilterGetStateSize_G729A_16s(Vsp32s* pSize) { return fixedSize(pSize, sizeof(State)); }

VspStatus vspsPostFilterInit_G729A_16s(VspPostFilterState_G729A_16s* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    State& state = *reinterpret_cast<State*>(pState);
    for (Vsp16s& x : state.residual) x = 0;
    for (Vsp16s& x : state.synthesis) x = 0;
    state.tilt = 0;
    state.gain = 4096;
    state.unused = 0;
    return vspStsNoErr;
}

VspStatus vspsPostFilter_G729A_16s(const Vsp16s* pSyn, const Vsp16s* pLPC, Vsp16s lag, Vsp16s frameType, Vsp16s* pDst,
                                   VspPostFilterState_G729A_16s* pState) {
    if (anyNull(pSyn, pLPC, pDst, pState)) return vspStsNullPtrErr;
    if (!isLegalLag(lag)) return vspStsRangeErr;
    if (frameType < 0 || frameType > 2) return vspStsRangeErr;
    State& state = *reinterpret_cast<State*>(pState);
    constexpr int kResponse = 22;
    Vsp16s numerator[kResponse], denominator[11], h[kResponse];
    weight<10>(pLPC, kGammaNumerator, numerator, kResponse);
    weight<10>(pLPC, kGammaDenominator, denominator, 11);
    ResidualHistory<kPitMax> residual(state.residual);
    ownResidual(pSyn, numerator, 10, residual.now, kL_subfr, 12);

    Vsp16s signal[1 + kL_subfr];
    Vsp16s* const x = signal + 1;
    if (frameType == 1) {
        Vsp16s scaled[kPitMax + kL_subfr];
        for (int i = 0; i < kPitMax + kL_subfr; i++) scaled[i] = Vsp16s(residual.samples[i] >> 2);
        longTerm(residual.now, scaled + kPitMax, lag, x);
    } else {
        for (int n = 0; n < kL_subfr; n++) x[n] = residual.now[n];
    }
    residual.keep(state.residual);

    impulseResponse<10>(numerator, denominator, kResponse, h);
    const Vsp16s factor = responseTilt(h, kResponse);
    Vsp16s compensated[kL_subfr], output[kL_subfr];
    signal[0] = state.tilt;
    compensateTilt(factor, x, compensated);
    state.tilt = x[kL_subfr - 1];
    synthesise<10>(denominator, compensated, output, kL_subfr, state.synthesis);
    for (int i = 0; i < 10; i++) state.synthesis[i] = output[kL_subfr - 10 + i];
    controlGain(pSyn, output, state.gain);
    for (int n = 0; n < kL_subfr; n++) pDst[n] = output[n];
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
