// The noise filter: the log-spectral amplitude estimator of Ephraim and Malah (1985), the a-priori ratio of speech to noise
// by the decision-directed rule, the noise by improved minima-controlled recursive averaging (Cohen 2003), and as much of
// the gain as speech is present nearby (Cohen and Berdugo 2001).
#include "arithmetic/log2_exp2_32f.h"
#include "core/checks.h"
#include "ec/exports.h"
#include "ec/noise_state.h"
#include "vector/real_fft.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr Vsp32f kLoudest = 16777216;                          // a sample beyond is clipped
constexpr Vsp32f kSilence = 1e-3f;                             // power of a sample, added to all
constexpr Vsp32f kMinimumBias = 1.66f;                         // the mean of noise over its minimum
constexpr Vsp32f kRoughPeak = 4.6f, kPeak = 3, kRise = 1.67f;  // over the noise, of what may be noise
constexpr Vsp32f kLeastNoise = 0.8f;                           // over the minimum
constexpr Vsp32f kNoiseBias = 1.3f;                            // compensates for averaging where speech is absent
constexpr Vsp32f kLargestExcess = 30, kSpeechFrom = 1.585f, kSpeechTo = 1.995f;  // 2 to 3 dB
constexpr Vsp32f kLeastPrior = 0.0630957f;                                       // -12 dB
constexpr Vsp32f kUnrestFloor = 9,
                 kUnrestBias = 0.5f;  // what unsteadiness adds to the least gain (dB) and takes off the noise
constexpr Vsp32f kLog2e = 1.442695f;
constexpr int kFirstFrames = 8;  // give the first noise estimate

VSP_INLINE Vsp32f larger(Vsp32f a, Vsp32f b) { return a > b ? a : b; }
VSP_INLINE Vsp32f smaller(Vsp32f a, Vsp32f b) { return a < b ? a : b; }
VSP_INLINE Vsp32f clamped(Vsp32f x, Vsp32f low, Vsp32f high) { return smaller(larger(x, low), high); }

// From 0, steady, to 1.
VSP_INLINE Vsp32f unsteadiness(Vsp32f unrest) {
    return smaller(clamped((unrest - 1.25f) * 10, 0, 1), clamped((2 - unrest) * 5, 0, 1));
}

// Noise keeps its natural sound because all of it is attenuated alike: the least gain, as a power of two.
VSP_INLINE Vsp32f floorOf(const NoiseState& s) {
    constexpr Vsp32f kSixDb = 6.0206f;
    switch (s.mode) {
        case vspFilterNoiseOff: return 0;
        case vspFilterNoiseLow: return -10 / kSixDb;
        case vspFilterNoiseNormal: return -14 / kSixDb;
        case vspFilterNoiseHigh: return -18 / kSixDb;
        default: return (-18 + kUnrestFloor * unsteadiness(s.unrest)) / kSixDb;
    }
}

// The mean over three bands, with weights of one quarter, one half and one quarter.
VSP_INLINE void smoothBands(const Vsp32f* src, Vsp32f* dst, Vsp32s bands) {
    dst[0] = 0.5f * src[0] + 0.5f * src[1];
    for (Vsp32s k = 1; k < bands - 1; k++) dst[k] = 0.25f * (src[k - 1] + src[k + 1]) + 0.5f * src[k];
    dst[bands - 1] = 0.5f * src[bands - 1] + 0.5f * src[bands - 2];
}

// The spectrum of the last samples, and its power.
void analyse(NoiseState& s, const Vsp32f* src, Vsp32fc* spectrum, const RealFftSpec_32f* fft) {
    const Vsp32s length = 1 << s.order, bands = bandsOf(s);
    Vsp32f* const line = signalOf(s, kNewest);
    Vsp32f* const frame = signalOf(s, kFrame);
    const Vsp32f* const window = signalOf(s, kWindow);
    const Vsp32s kept = length - s.frameLen;
    for (Vsp32s i = 0; i < kept; i++) line[i] = line[i + s.frameLen];
    for (Vsp32s i = 0; i < s.frameLen; i++) {
        const Vsp32f x = src[i] == src[i] ? src[i] : 0;
        line[kept + i] = clamped(x, -kLoudest, kLoudest);
    }
    for (Vsp32s i = 0; i < length; i++) frame[i] = line[i] * window[i];
    ownRealFftFwd_32f(frame, spectrum, fft, atOffset<Vsp8u>(s, s.workAt));
    Vsp32f* const power = bandOf(s, kPower);
    const Vsp32f silence = kSilence * Vsp32f(length);
    for (Vsp32s k = 0; k < bands; k++) {
        const Vsp32f re = spectrum[k].re * spectrum[k].re, im = spectrum[k].im * spectrum[k].im;
        power[k] = re + im + silence;
    }
}

void begin(NoiseState& s) {
    const Vsp32s bands = bandsOf(s);
    smoothBands(bandOf(s, kPower), bandOf(s, kSmoothed), bands);
    for (Vsp32s k = 0; k < bands; k++) {
        bandOf(s, kNoise)[k] = bandOf(s, kPower)[k];
        bandOf(s, kClean)[k] = bandOf(s, kExcess)[k] = 1;
        for (int band = kLowest; band <= kNextLowestPause; band++) bandOf(s, band)[k] = bandOf(s, kSmoothed)[k];
        for (int part = 0; part < 2 * kMinimumParts; part++) bandOf(s, kParts + part)[k] = 3e38f;
    }
}

// A value smoothed over time and its minimum so far.
struct Tracked {
    Vsp32f *value, *lowest, *next;
};

VSP_INLINE void track(const Tracked& t, Vsp32f memory, const Vsp32f* now, Vsp32s bands) {
    for (Vsp32s k = 0; k < bands; k++) {
        const Vsp32f value = memory * t.value[k] + (1 - memory) * now[k];
        t.value[k] = value;
        t.lowest[k] = smaller(t.lowest[k], value);
        t.next[k] = smaller(t.next[k], value);
    }
}

// The part that is under way ends.
void endPart(NoiseState& s, const Tracked& t, int firstPart) {
    const Vsp32s bands = bandsOf(s);
    Vsp32f* const ended = bandOf(s, firstPart + s.part);
    for (Vsp32s k = 0; k < bands; k++) ended[k] = t.lowest[k] = t.next[k];
    for (int part = 0; part < kMinimumParts; part++) {
        const Vsp32f* const other = bandOf(s, firstPart + part);
        for (Vsp32s k = 0; k < bands; k++) t.lowest[k] = smaller(t.lowest[k], other[k]);
    }
    for (Vsp32s k = 0; k < bands; k++) t.next[k] = t.value[k];
}

// Minima of the power, first of all of it, then of what these minima show to be hardly speech.
void trackMinima(NoiseState& s) {
    const Vsp32s bands = bandsOf(s);
    const Vsp32f* const power = bandOf(s, kPower);
    Vsp32f* const scratch = bandOf(s, kScratch);
    Vsp32f* const weights = bandOf(s, kGain);
    const Tracked all{bandOf(s, kSmoothed), bandOf(s, kLowest), bandOf(s, kNextLowest)};
    const Tracked pauses{bandOf(s, kPause), bandOf(s, kLowestPause), bandOf(s, kNextLowestPause)};

    smoothBands(power, scratch, bands);
    track(all, s.smoothing, scratch, bands);
    for (Vsp32s k = 0; k < bands; k++) {
        const Vsp32f mean = kMinimumBias * all.lowest[k];
        weights[k] = power[k] < kRoughPeak * mean && all.value[k] < kRise * mean ? 1.0f : 0.0f;
    }
    const auto pauseOf = [&](Vsp32s below, Vsp32s k, Vsp32s above) {
        const Vsp32f weight = 0.25f * (weights[below] + weights[above]) + 0.5f * weights[k];
        const Vsp32f sides = weights[below] * power[below] + weights[above] * power[above];
        const Vsp32f sum = 0.25f * sides + 0.5f * (weights[k] * power[k]);
        const Vsp32f mean = sum / (weight > 0 ? weight : 1);
        return weight > 0 ? mean : pauses.value[k];
    };
    scratch[0] = pauseOf(1, 0, 1);
    for (Vsp32s k = 1; k < bands - 1; k++) scratch[k] = pauseOf(k - 1, k, k + 1);
    scratch[bands - 1] = pauseOf(bands - 2, bands - 1, bands - 2);
    track(pauses, s.smoothing, scratch, bands);
}

void moveMinimaOn(NoiseState& s) {
    if (++s.framesInPart < s.framesPerPart) return;
    s.framesInPart = 0;
    endPart(s, {bandOf(s, kSmoothed), bandOf(s, kLowest), bandOf(s, kNextLowest)}, kParts);
    endPart(s, {bandOf(s, kPause), bandOf(s, kLowestPause), bandOf(s, kNextLowestPause)}, kPauseParts);
    s.part = (s.part + 1) % kMinimumParts;
}

// In a band: the a-priori ratio plus one, the exponential of minus what the gain depends on, and the estimator's gain.
struct Estimate {
    Vsp32f onePlusPrior, exponential, gain;
};

VSP_INLINE Estimate estimateOf(Vsp32f ratio, Vsp32f clean, Vsp32f memory) {
    const Vsp32f prior = larger(memory * clean + (1 - memory) * larger(ratio - 1, 0), kLeastPrior);
    const Vsp32f wiener = prior / (1 + prior), v = larger(ratio * wiener, 1e-6f), e = exp2Near_32f(-kLog2e * v);
    // exp(E1(v)) is 1 + e / v times a quotient of polynomials, within 2e-5.
    const Vsp32f quotient = (7.7095714f + v * (4.7430885f + v)) / (13.731286f + v * (5.4438578f + v));
    const Vsp32f gain = wiener * __builtin_sqrtf(1 + e * quotient / v);
    return {1 + prior, e, smaller(gain, 1)};
}

// Probability of speech from the probability of its absence before the band is looked at.
VSP_INLINE Vsp32f presence(Vsp32f absence, const Estimate& e) {
    return (1 - absence) / (1 - absence + absence * e.onePlusPrior * e.exponential);
}

void trackNoise(NoiseState& s) {
    const Vsp32s bands = bandsOf(s);
    const Vsp32f* const power = bandOf(s, kPower);
    const Vsp32f* const smoothed = bandOf(s, kSmoothed);
    const Vsp32f* const lowest = bandOf(s, kLowestPause);
    const Vsp32f* const clean = bandOf(s, kClean);
    Vsp32f* const noise = bandOf(s, kNoise);
    Vsp32f* const ratio = bandOf(s, kScratch);
    Vsp32f* const excess = bandOf(s, kExcess);
    if (s.frames < kFirstFrames) {
        const Vsp32f before = s.frames > 0 ? Vsp32f(s.frames) : 0, weight = before / (before + 1);
        for (Vsp32s k = 0; k < bands; k++) noise[k] = weight * noise[k] + (1 - weight) * power[k];
    }
    const Vsp32f memory = s.frames < kFirstFrames ? 1 : s.noiseMemory, cleanMemory = s.cleanMemory;
    const Vsp32f bias = s.mode == vspFilterNoiseAuto ? kNoiseBias - kUnrestBias * unsteadiness(s.unrest) : kNoiseBias;
    for (Vsp32s k = 0; k < bands; k++) {
        noise[k] = larger(noise[k], kLeastNoise * lowest[k]);
        ratio[k] = smaller(power[k] / (bias * noise[k]), 1e4f);
    }
    for (Vsp32s k = 0; k < bands; k++) {
        const Vsp32f mean = kMinimumBias * lowest[k];
        const Vsp32f unsure = clamped((kPeak - power[k] / mean) * (1 / (kPeak - 1)), 0, 0.99f);
        const Vsp32f absence = smoothed[k] < kRise * mean ? unsure : 0;
        const Vsp32f p = presence(absence, estimateOf(ratio[k], clean[k], cleanMemory));
        const Vsp32f keep = memory + (1 - memory) * p;
        noise[k] = keep * noise[k] + (1 - keep) * power[k];
    }
    const Vsp32f excessMemory = s.excessMemory;
    for (Vsp32s k = 0; k < bands; k++)
        excess[k] = excessMemory * excess[k] + (1 - excessMemory) * smaller(ratio[k], kLargestExcess);
}

// In every band, how sure it is that there is no speech within its reach. Returns the share of the telephone band with
// speech.
Vsp32f findSpeech(NoiseState& s, Vsp32f* absence) {
    const Vsp32s bands = bandsOf(s), reach = s.reach;
    const Vsp32f* const excess = bandOf(s, kExcess);
    Vsp32f* const sums = signalOf(s, kFrame);  // of the bands below
    sums[0] = 0;
    for (Vsp32s k = 0; k < bands; k++) sums[k + 1] = sums[k] + excess[k];
    const auto absenceFrom = [&](Vsp32s from, Vsp32s to) {
        const Vsp32f mean = (sums[to] - sums[from]) / Vsp32f(to - from);
        return clamped((kSpeechTo - mean) * (1 / (kSpeechTo - kSpeechFrom)), 0, 0.9995f);
    };
    for (Vsp32s k = 0; k < reach; k++) absence[k] = absenceFrom(0, k + reach + 1);
    for (Vsp32s k = reach; k < bands - reach; k++) absence[k] = absenceFrom(k - reach, k + reach + 1);
    for (Vsp32s k = bands - reach; k < bands; k++) absence[k] = absenceFrom(k - reach, bands);
    const Vsp32s from = (200 << s.order) / s.samplingRate, to = (3500 << s.order) / s.samplingRate + 1;
    Vsp32f present = 0;
    for (Vsp32s k = from; k < to; k++) present += 1 - absence[k];
    return present / Vsp32f(to - from);
}

// The mean of noise over its minima, in the mean over the bands: 1.1 to 1.2 if it is steady, 1.4 to 1.7 for voices. The
// gaps of a spectrum of lines, as that of hum, give 2 and more.
void followUnrest(NoiseState& s) {
    const Vsp32s bands = bandsOf(s);
    const Vsp32f* const noise = bandOf(s, kNoise);
    const Vsp32f* const lowest = bandOf(s, kLowestPause);
    Vsp32f sum = 0;
    for (Vsp32s k = 0; k < bands; k++) sum += smaller(noise[k] / lowest[k], 4);
    s.unrest = s.unrestMemory * s.unrest + (1 - s.unrestMemory) * (sum / Vsp32f(bands));
}

void findGains(NoiseState& s, const Vsp32f* absence) {
    const Vsp32s bands = bandsOf(s);
    const Vsp32f* const ratio = bandOf(s, kScratch);
    Vsp32f* const clean = bandOf(s, kClean);
    Vsp32f* const gain = bandOf(s, kGain);
    const Vsp32f floorLog2 = floorOf(s), floor = exp2Near_32f(floorLog2), memory = s.cleanMemory;
    for (Vsp32s k = 0; k < bands; k++) {
        const Estimate e = estimateOf(ratio[k], clean[k], memory);
        const Vsp32f p = presence(absence[k], e);
        clean[k] = e.gain * e.gain * ratio[k];
        gain[k] = larger(exp2Near_32f(p * log2Near_32f(e.gain) + (1 - p) * floorLog2), floor);
    }
}

void synthesise(NoiseState& s, Vsp32fc* spectrum, Vsp32f* dst, const RealFftSpec_32f* fft) {
    const Vsp32s length = 1 << s.order, bands = bandsOf(s), kept = length - s.frameLen;
    const Vsp32f* const gain = bandOf(s, kGain);
    const Vsp32f* const window = signalOf(s, kSynthesisWindow);
    Vsp32f* const frame = signalOf(s, kFrame);
    Vsp32f* const sum = signalOf(s, kOverlap);
    for (Vsp32s k = 0; k < bands; k++) {
        spectrum[k].re *= gain[k];
        spectrum[k].im *= gain[k];
    }
    ownRealFftInv_32f(spectrum, frame, fft, atOffset<Vsp8u>(s, s.workAt));
    for (Vsp32s i = 0; i < kept; i++) sum[i] = sum[i + s.frameLen];
    for (Vsp32s i = kept; i < length; i++) sum[i] = 0;
    for (Vsp32s i = 0; i < length; i++) sum[i] += frame[i] * window[i];
    for (Vsp32s i = 0; i < s.frameLen; i++) dst[i] = sum[i];
}

}  // namespace

VspStatus vspsFilterNoise_EC_32f_I(Vsp32f* pSrcDst, VspFilterNoiseState_EC_32f* pState, Vsp32f* pPresence) {
    if (anyNull(pSrcDst, pState, pPresence)) return vspStsNullPtrErr;
    NoiseState& s = noiseStateAt(pState);
    const auto* const fft = atOffset<const RealFftSpec_32f>(s, s.fftAt);
    Vsp32fc* const spectrum = atOffset<Vsp32fc>(s, s.spectrumAt);
    analyse(s, pSrcDst, spectrum, fft);
    if (s.frames <= 0) begin(s);
    trackMinima(s);
    trackNoise(s);
    Vsp32f* const absence = bandOf(s, kGain);
    *pPresence = findSpeech(s, absence);
    followUnrest(s);
    findGains(s, absence);
    moveMinimaOn(s);
    synthesise(s, spectrum, pSrcDst, fft);
    if (s.frames < kFirstFrames) s.frames++;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
