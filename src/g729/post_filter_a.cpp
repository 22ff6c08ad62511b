// The post-filter of Annex A (G.729 A.4.2).
#include "common/inv_sqrt.h"
#include "common/synthesis.h"
#include "core/checks.h"
#include "core/state_size.h"
#include "g729/constants.h"
#include "g729/exports.h"
#include "g729/post_filter.h"
#include "vector/largest.h"

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

constexpr int kLags = 7;

// The sums of which a partial sum may leave 32 bits.
[[gnu::noinline]] void correlateSaturating(const Vsp16s* residual, const Vsp16s* earliest, Vsp32s* sums) {
    Vsp16s now[kL_subfr], earlier[kL_subfr + kLags];
    for (int n = 0; n < kL_subfr; n++) now[n] = Vsp16s(residual[n] >> 2);
    for (int n = 0; n < kL_subfr + kLags - 1; n++) earlier[n] = Vsp16s(earliest[n] >> 2);
    for (int i = 0; i < kLags; i++) sums[i] = dotSaturating(now, earlier + i, kL_subfr);
}

// The index of the largest of the sums, of equal ones the last. The last one stands there twice.
int lastLargest(const Vsp32s (&sums)[kLags + 1]) {
    const S32_128 lower = S32_128::load(sums), upper = S32_128::load(sums + 4);
    const S32_128 highest = S32_128::splat(largest(max(lower, upper)));
    const Vsp32u where = (equal(lower, highest) | equal(upper, highest) << 4) & ((1 << kLags) - 1);
    return 31 - __builtin_clz(where);
}

// G.729 A.4.2.1: the residual and the delayed residual, mixed by their correlation in 14 bits. kPitMax samples stand before
// it.
void longTerm(const Vsp16s* residual, int lag, Vsp16s* dst) {
    const int longest = lag + 3 > kPitMax ? kPitMax : lag + 3;
    const Vsp16s* const earliest = residual - longest;
    const Vsp32u energyNow = quarterEnergy(residual);
    Vsp32s correlations[kLags + 1];
    if (doubledSumsFit(energyNow, Vsp64s(quarterEnergy(earliest)) + quarterEnergy(earliest + kLags - 1))) {
        const auto at = [&](int i) { return quarterProducts(residual, earliest + i); };
        const S32_128 lower = sums(at(0), at(1), at(2), at(3)), upper = sums(at(4), at(5), at(6), at(6));
        add(lower, lower).store(correlations);
        add(upper, upper).store(correlations + 4);
    } else {
        correlateSaturating(residual, earliest, correlations);
        correlations[kLags] = correlations[kLags - 1];
    }
    const int chosen = lastLargest(correlations), delay = longest - chosen;
    const Vsp32s best = correlations[chosen];
    const auto oneMore = [](Vsp32s sum) { return Add_32s(sum, 1); };
    const Normalised n = normalised(best > 0 ? best : 0, oneMore(saturatedDouble(quarterEnergy(earliest + chosen))),
                                    oneMore(saturatedDouble(energyNow)));
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

// The response of which the tilt compensation takes the tilt, by eights. numerator: zeros behind the taps.
class TiltResponse {
  public:
    [[gnu::always_inline]] TiltResponse(const Vsp16s (&numerator)[kTiltRoom], const Vsp16s* denominator)
        : denominator_(denominator),
          outputs_(
              denominator, kTiltResponse, [&](int n) { return loadFour(numerator + n); },
              [](int) { return S32_128::splat(0); }, inputs_) {}
    [[gnu::always_inline]] void nextEight(Vsp16s* h) {
        outputs_.nextEight(inputs_ + done_ / 4 + 1, kTiltResponse - done_).store(h);
        done_ += 8;
    }
    bool isRight() const { return Filter::areRight(denominator_, largestU(outputs_.largest())); }

  private:
    using Filter = SynthesisFilter<10>;
    const Vsp16s* denominator_;
    S32_128 inputs_[7];
    Filter::Unclipped<S32_128> outputs_;
    int done_ = 0;
};

// The energy of the input, followed slowly (G.729 A.4.2.4).
void controlGain(const Vsp16s* input, Vsp16s* output, Vsp16s& gain) {
    const Vsp32s out = saturatedDouble(quarterEnergy(output));
    if (out == 0) {
        gain = 0;
        return;
    }
    const Vsp32s in = saturatedDouble(quarterEnergy(input));
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
    static constexpr KnownWeights<kGammaNumerator> kNumerator;
    static constexpr KnownWeights<kGammaDenominator> kDenominator;
    Vsp16s numerator[kTiltRoom] = {}, denominator[11], h[kTiltRoom] = {};
    kNumerator.weight(pLPC, numerator);
    kDenominator.weight(pLPC, denominator);
    TiltResponse response(numerator, denominator);  // waits for itself while the rest goes on
    response.nextEight(h);
    ResidualHistory<kPitMax> residual(state.residual);
    ownResidual(pSyn, numerator, 10, residual.now, kL_subfr, 12);
    response.nextEight(h + 8);

    Vsp16s signal[1 + kL_subfr];
    Vsp16s* const x = signal + 1;
    if (frameType == 1) {
        longTerm(residual.now, lag, x);
    } else {
        for (int n = 0; n < kL_subfr; n++) x[n] = residual.now[n];
    }
    residual.keep(state.residual);
    response.nextEight(h + 16);
    if (!response.isRight()) [[unlikely]]
        impulseResponse<10>(numerator, denominator, kTiltResponse, h);

    const Vsp16s factor = responseTilt(h);
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
