// The post-filter of Annex A (G.729 A.4.2).
#include "common/inv_sqrt.h"
#include "common/synthesis.h"
#include "core/checks.h"
#include "core/state_size.h"
#include "g729/constants.h"
#include "g729/exports.h"
#include "g729/high_pass.h"
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
              denominator, denominator, kTiltResponse, [&](int n) { return loadFour(numerator + n); },
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

// The step of the gain with which the energy of the input is followed slowly (G.729 A.4.2.4). Returns whether the output
// has an energy.
bool gainStep(const Vsp16s* input, const Vsp16s* output, Vsp16s& step) {
    const Vsp32s out = saturatedDouble(quarterEnergy(output));
    if (out == 0) return false;
    const Vsp32s in = saturatedDouble(quarterEnergy(input));
    step = 0;
    if (in != 0) {
        const int shiftOut = norm_32s(out) - 1, shiftIn = norm_32s(in);
        const Vsp16s ratio = Div_16s(round_32s(shl_32s(out, shiftOut)), round_32s(shl_32s(in, shiftIn)));
        const Vsp32s scaled = shr_32s(shl_32s(ratio, 7), shiftOut - shiftIn);
        step = Mul_16s(round_32s(shl_32s(ownInvSqrt(scaled), 9)), 3276);
    }
    return true;
}

void controlGain(const Vsp16s* input, Vsp16s* output, Vsp16s& gain) {
    Vsp16s step;
    if (gainStep(input, output, step))
        followGain(step, gain, output);
    else
        gain = 0;
}

// The weighted filters of a subframe.
struct Filters {
    Vsp16s numerator[kTiltRoom] = {}, denominator[11];  // zeros behind the former
    [[gnu::always_inline]] explicit Filters(const Vsp16s* lpc) {
        static constexpr KnownWeights<kGammaNumerator> kNumerator;
        static constexpr KnownWeights<kGammaDenominator> kDenominator;
        kNumerator.weight(lpc, numerator);
        kDenominator.weight(lpc, denominator);
    }
};

// G.729 A.4.2.1, or without it where no speech is coded.
[[gnu::always_inline]] inline void excite(const Vsp16s* residual, Vsp16s lag, Vsp16s frameType, Vsp16s* dst) {
    if (frameType == 1) return longTerm(residual, lag, dst);
    for (int n = 0; n < kL_subfr; n++) dst[n] = residual[n];
}

void filterSubframe(const Vsp16s* syn, const Vsp16s* lpc, Vsp16s lag, Vsp16s frameType, Vsp16s* dst, State& state) {
    const Filters filters(lpc);
    Vsp16s h[kTiltRoom] = {};
    TiltResponse response(filters.numerator, filters.denominator);  // waits for itself while the rest goes on
    response.nextEight(h);
    ResidualHistory<kPitMax> residual(state.residual);
    ownResidual(syn, filters.numerator, 10, residual.now, kL_subfr, 12);
    response.nextEight(h + 8);

    Vsp16s signal[1 + kL_subfr];
    Vsp16s* const x = signal + 1;
    excite(residual.now, lag, frameType, x);
    residual.keep(state.residual);
    response.nextEight(h + 16);
    if (!response.isRight()) [[unlikely]]
        impulseResponse<10>(filters.numerator, filters.denominator, kTiltResponse, h);

    const Vsp16s factor = responseTilt(h);
    Vsp16s compensated[kL_subfr], output[kL_subfr];
    signal[0] = state.tilt;
    compensateTilt(factor, x, compensated);
    state.tilt = x[kL_subfr - 1];
    synthesise<10>(filters.denominator, compensated, output, kL_subfr, state.synthesis);
    for (int i = 0; i < 10; i++) state.synthesis[i] = output[kL_subfr - 10 + i];
    controlGain(syn, output, state.gain);
    for (int n = 0; n < kL_subfr; n++) dst[n] = output[n];
}

// The end of decoding a frame.
struct Ending {
    const Vsp16s *excitation, *lpc, *lags;  // excitation of the second subframe
    Vsp16s frameType;
    Vsp16s *speech, *dst;
    State& state;
    HighPassState& output;
};

#if defined(__AVX2__)
// What waits for itself goes on beside something else: the responses of both filters at once, the synthesis of the speech
// of the second subframe with that of the post-filter of the first, the latter's gain and high-pass filter with the
// synthesis of the post-filter of the second. Returns false, and changes nothing, where some step may saturate.
bool endFrame(const Ending& e) {
    using Filter = SynthesisFilter<10>;
    State& state = e.state;
    if (state.gain < 0) return false;
    const Filters filters1(e.lpc), filters2(e.lpc + 11);
    S32_256 inputs[7];
    Filter::Unclipped<S32_256> responses(
        filters1.denominator, filters2.denominator, kTiltResponse,
        [&](int n) { return both<S32_256>(loadFour(filters1.numerator + n), loadFour(filters2.numerator + n)); },
        [](int) { return S32_256::splat(0); }, inputs);
    Vsp16s h[2][kTiltRoom] = {};
    const auto respond = [&](int n) {
        const S16_256 eight = responses.nextEight(inputs + n / 4 + 1, kTiltResponse - n);
        S16_128{_mm256_castsi256_si128(eight.v)}.store(h[0] + n);
        S16_128{_mm256_extracti128_si256(eight.v, 1)}.store(h[1] + n);
    };
    Vsp16s residual[kPitMax + 2 * kL_subfr], signal[1 + 2 * kL_subfr], compensated[kL_subfr];
    Vsp16s *const now = residual + kPitMax, *const x = signal + 1;
    respond(0);
    for (int i = 0; i < kPitMax; i++) residual[i] = state.residual[i];
    ownResidual(e.speech, filters1.numerator, 10, now, kL_subfr, 12);
    respond(8);
    excite(now, e.lags[0], e.frameType, x);
    respond(16);
    const Vsp16u largest = largestU(foldMaxU(responses.largest()));
    if (!Filter::areRight(filters1.denominator, largest) || !Filter::areRight(filters2.denominator, largest)) return false;
    signal[0] = state.tilt;
    compensateTilt(responseTilt(h[0]), x, compensated);

    Vsp16s speech[10 + kL_subfr], output[10 + 2 * kL_subfr];
    Vsp16s *const speech2 = speech + 10, *const output1 = output + 10, *const output2 = output1 + kL_subfr;
    for (int i = 0; i < 10; i++) speech[i] = e.speech[kL_subfr - 10 + i];
    for (int i = 0; i < 10; i++) output[i] = state.synthesis[i];
    if (!Filter::filterTwo({e.lpc + 11, e.excitation, speech2, speech},
                           {filters1.denominator, compensated, output1, output}))
        return false;
    Vsp16s step;
    if (!gainStep(e.speech, output1, step)) return false;

    ownResidual(speech2, filters2.numerator, 10, now + kL_subfr, kL_subfr, 12);
    excite(now + kL_subfr, e.lags[1], e.frameType, x + kL_subfr);
    compensateTilt(responseTilt(h[1]), x + kL_subfr, compensated);

    const OutputFilter outputFilter = e.output.filter<OutputFilter>();
    OutputFilter::Recursion recursion(outputFilter.c, e.output.memory);
    const Vsp16s past[8] = {0, 0, 0, 0, 0, 0, e.output.memory.x2, e.output.memory.x1};
    S16_128 newest = S16_128::load(past);
    Vsp32s sums[2 * kL_subfr];
    S16_128 gain = S16_128::splat(state.gain), steps = S16_128::splat(step), largestMagnitude = magnitude(newest);
    const auto controlAndFilter = [&](int n) {
        S16_128 gains = gain;
        nextGains(steps, gain, gains);
        const S16_128 eight = product<12, false>(gains, S16_128::load(output1 + n));
        largestMagnitude = maxU(largestMagnitude, magnitude(eight));
        Vsp32s halves[8];
        outputFilter.feedForward(newest, eight, halves);
        newest = eight;
        for (int i = 0; i < 8; i++) sums[n + i] = recursion.next(halves[i]);
    };
    S32_128 inputs2[kL_subfr / 4 + 1];
    Filter::Unclipped<S32_128> synthesis2(
        filters2.denominator, filters2.denominator, kL_subfr, [&](int n) { return loadFour(compensated + n); },
        [&](int n) { return Filter::earlier(output2 - 10, n); }, inputs2);
    for (int n = 0; n < kL_subfr; n += 8) {
        synthesis2.nextEight(inputs2 + n / 4 + 1, 8).store(output2 + n);
        controlAndFilter(n);
    }
    if (!Filter::areRight(filters2.denominator, largestU(synthesis2.largest()))) return false;
    if (!gainStep(speech2, output2, step)) return false;
    steps = S16_128::splat(step);
    for (int n = kL_subfr; n < 2 * kL_subfr; n += 8) controlAndFilter(n);
    if (!outputFilter.fits(largestU(largestMagnitude)) || !recursion.isRight()) return false;

    for (int i = 0; i < kPitMax; i++) state.residual[i] = residual[2 * kL_subfr + i];
    for (int i = 0; i < 10; i++) state.synthesis[i] = output2[kL_subfr - 10 + i];
    state.tilt = x[2 * kL_subfr - 1];
    state.gain = first(gain);
    recursion.keep(e.output.memory);
    Vsp16s controlled[8];
    newest.store(controlled);
    e.output.memory.x1 = controlled[7];
    e.output.memory.x2 = controlled[6];
    for (int n = 0; n < kL_subfr; n++) e.speech[kL_subfr + n] = speech2[n];
    OutputFilter::roundSums(sums, e.dst, 2 * kL_subfr);
    return true;
}
#else
bool endFrame(const Ending&) { return false; }
#endif

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
    filterSubframe(pSyn, pLPC, lag, frameType, pDst, *reinterpret_cast<State*>(pState));
    return vspStsNoErr;
}

VspStatus vspsSynthesisPostFilter_G729A_16s(const Vsp16s* pExc, const Vsp16s* pLPC, const Vsp16s* pLag, Vsp16s frameType,
                                            Vsp16s* pSrcDstSpeech, Vsp16s* pDst, VspPostFilterState_G729A_16s* pState,
                                            void* pHighPassState) {
    if (anyNull(pExc, pLPC, pLag, pSrcDstSpeech, pDst, pState, pHighPassState)) return vspStsNullPtrErr;
    if (!isLegalLag(pLag[0]) || !isLegalLag(pLag[1])) return vspStsRangeErr;
    if (frameType < 0 || frameType > 2) return vspStsRangeErr;
    State& state = *reinterpret_cast<State*>(pState);
    HighPassState& output = *static_cast<HighPassState*>(pHighPassState);
    if (endFrame({pExc, pLPC, pLag, frameType, pSrcDstSpeech, pDst, state, output})) return vspStsNoErr;
    Vsp16s speech[kL_subfr];
    if (SynthesisFilter<10>::run(pLPC + 11, pExc, speech, kL_subfr, 12, pSrcDstSpeech + kL_subfr - 10))
        return vspStsOverflow;
    for (int n = 0; n < kL_subfr; n++) pSrcDstSpeech[kL_subfr + n] = speech[n];
    for (int i = 0; i < 2; i++)
        filterSubframe(pSrcDstSpeech + kL_subfr * i, pLPC + 11 * i, pLag[i], frameType, pDst + kL_subfr * i, state);
    output.filter<OutputFilter>().run(pDst, 2 * kL_subfr, output.memory);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
