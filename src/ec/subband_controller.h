// Step sizes of the sub-band filters, and with them the protection against double talk.
//
// Each coefficient is taken for a random value that drifts slowly, and the mean square of what is still unknown of it, its
// uncertainty, is tracked as a Kalman filter with a diagonal covariance does (G. Enzner, P. Vary: Frequency-domain adaptive
// Kalman filter for acoustic echo control in hands-free telephones, Signal Processing 86, 2006). The step follows from the
// share of the error that the uncertainties explain: near-end speech makes the error larger than that and the step small,
// in the very frame in which it begins.
//
// A filter that is certain and wrong, because the echo path has changed, would not recover. So the error is also correlated
// with the echo estimate: near-end speech has nothing in common with it, the echo of another path has (J.-M. Valin: On
// adjusting the learning rate in frequency domain echo cancellation with double-talk, IEEE Trans. ASLP 15, 2007). Each band
// is compared for itself and counts as much as any other, however loud it is: that a hundred bands agree by chance is less
// likely than that a few loud ones do. What error and estimate have in common makes the filter uncertain again. If a filter
// that was certain leaves an error which contains most of the estimate with its sign reversed, the estimate has nothing to
// do with the echo any more, and the path is learned as a new one.
#pragma once

#include "ec/bands_single_32fc.h"
#include "ec/near_speech.h"
#include "ec/sixteen_bands.h"
#include "ec/subband_limits.h"

namespace vsp::VSP_LEVEL {

constexpr Vsp32s kControllerGroup = 4;  // neighbouring taps that have the steps in common

VSP_INLINE constexpr Vsp32s controllerGroups(Vsp32s len) { return (len + kControllerGroup - 1) / kControllerGroup; }

// The state; arrays of floats follow it.
struct SubbandController {
    Vsp32s len, numSubbands, groups, turn;
    Vsp32s changeFrames, certainFrames;  // how long a changed path has to show, and how long a certain filter has been one
    Vsp32s showing, certain;             // frames for which a change has shown, and that the filter still counts as certain
    Vsp32f noiseDecay, leakageDecay, changeDecay, drift;
    Vsp32f chance;               // of the squares of what the bands have in common, smoothed
    Vsp32f correlation, weight;  // over all bands, smoothed: of error and estimate, of the estimate with itself
    Vsp32f error, estimate;      // powers, smoothed
    Vsp32f noiseSum;
    Vsp32f bandUnit, coefUnit, stepUnit;  // what 1 is worth in a band and in a coefficient, and a step for the updates
    NearSpeech nearSpeech;
};

// Where they are: one value for a group, or for each band, or for each band of each group.
struct ControllerArrays {
    Vsp32f* prior;      // share of a coefficient in the power of a path, [group]
    Vsp32f* predicted;  // residual echo of a group when it adapted last, [group]
    Vsp32f *noise, *gain, *path;
    // Correlation of error and estimate, and of the estimate with itself; weighted, smoothed.
    Vsp32f *commonRe, *commonIm, *own;
    Vsp32f *farPower, *uncertainty, *coefPower;  // [group][band]

    [[gnu::always_inline]] explicit ControllerArrays(SubbandController* s) {
        Vsp32f* next = reinterpret_cast<Vsp32f*>(s + 1);
        const auto take = [&next](Vsp32s count) {
            Vsp32f* const begin = next;
            next += count;
            return begin;
        };
        const Vsp32s bands = s->numSubbands, all = s->groups * bands;
        prior = take(s->groups);
        predicted = take(s->groups);
        noise = take(bands);
        gain = take(bands);
        path = take(bands);
        commonRe = take(bands);
        commonIm = take(bands);
        own = take(bands);
        farPower = take(all);
        uncertainty = take(all);
        coefPower = take(all);
    }
};

VSP_INLINE constexpr Vsp32s controllerSize(Vsp32s len, Vsp32s numSubbands) {
    const Vsp32s groups = controllerGroups(len);
    return Vsp32s(sizeof(SubbandController)) +
           Vsp32s(sizeof(Vsp32f)) * (2 * groups + 6 * numSubbands + 3 * groups * numSubbands);
}

VSP_INLINE constexpr bool isController(Vsp32s len, Vsp32s numSubbands, Vsp32s frameSize, Vsp32s rate) {
    return len >= 1 && len <= kMaxSubbandTaps && numSubbands >= 1 && numSubbands <= kMaxSubbands && frameSize >= 1 &&
           frameSize <= rate && (rate == 8000 || rate == 16000);
}

// What is not a number, or beyond what powers of signals can be, counts as nothing.
template <class T>
VSP_INLINE T plausible(const T& power) {
    constexpr Vsp32f kMost = 1e16f;
    return upTo(power, kMost);
}

template <class Band>
VSP_INLINE Vsp32f powerOf(const Band& z, Vsp32f unit) {
    const Vsp32f re = unit * Vsp32f(z.re), im = unit * Vsp32f(z.im);
    return re * re + im * im;
}

VSP_INLINE Vsp32s tapsOf(const SubbandController& s, Vsp32s group) {
    const Vsp32s left = s.len - group * kControllerGroup;
    return left < kControllerGroup ? left : kControllerGroup;
}

// The path is thought to be as loud as the far end at most, and to fall off from tap to tap.
VSP_INLINE void resetController(SubbandController* s, Vsp32s shift) {
    const ControllerArrays a(s);
    const Vsp32s bands = s->numSubbands;
    for (Vsp32s i = 0; i < s->groups; i++) {
        const Vsp32s group = shift > 0 ? i : s->groups - 1 - i;
        const Vsp64s first = Vsp64s(group) * kControllerGroup + shift, last = first + tapsOf(*s, group) - 1;
        Vsp32f* to = a.uncertainty + group * bands;
        if (first < 0 || last >= s->len) {
            for (Vsp32s k = 0; k < bands; k++) to[k] = a.prior[group];
        } else {
            const Vsp32f* x = a.uncertainty + Vsp32s(first) / kControllerGroup * bands;
            const Vsp32f* y = a.uncertainty + Vsp32s(last) / kControllerGroup * bands;
            for (Vsp32s k = 0; k < bands; k++) to[k] = larger(x[k], y[k]);
        }
        a.predicted[group] = 1;
    }
    s->noiseSum = 0;
}

VSP_INLINE void initController(SubbandController* s, Vsp32s len, Vsp32s numSubbands, Vsp32s frameSize, Vsp32s rate,
                               Vsp32f bandUnit, Vsp32f coefUnit) {
    constexpr Vsp32f kNoiseTime = 0.02f;    // s, smoothing of the error power
    constexpr Vsp32f kLeakageTime = 0.25f;  // s, over which error and echo estimate are compared
    constexpr Vsp32f kChangeTime = 0.1f;    // s, the same for another path
    constexpr Vsp32f kShowing = 0.07f;      // s, for which another path has to show
    constexpr Vsp32f kCertainTime = 0.3f;   // s, for which a filter counts as certain that has been
    constexpr Vsp32f kDriftTime = 3e5f;     // s in which an echo path becomes another one
    constexpr Vsp32f kPriorDecay = 0.8f;    // of the power of an echo path from tap to tap
    const Vsp32f frameRate = Vsp32f(rate) / Vsp32f(frameSize);
    *s = {};
    s->len = len;
    s->numSubbands = numSubbands;
    s->groups = controllerGroups(len);
    s->noiseDecay = decay(kNoiseTime, frameRate);
    s->leakageDecay = decay(kLeakageTime, frameRate);
    s->changeDecay = decay(kChangeTime, frameRate);
    const auto frames = [frameRate](Vsp32f seconds) {
        const Vsp32f rounded = seconds * frameRate + 0.5f;
        return Vsp32s(rounded);
    };
    s->changeFrames = frames(kShowing);
    s->certainFrames = frames(kCertainTime);
    s->drift = 1 / (kDriftTime * frameRate);
    s->bandUnit = bandUnit;
    s->coefUnit = coefUnit;
    s->stepUnit = bandUnit * bandUnit / coefUnit;
    initNearSpeech(s->nearSpeech, frameRate);
    const Vsp32s floats = (controllerSize(len, numSubbands) - Vsp32s(sizeof *s)) / Vsp32s(sizeof(Vsp32f));
    const ControllerArrays a(s);
    for (Vsp32s i = 0; i < floats; i++) a.prior[i] = 0;
    Vsp32f sum = 0, tap = 1;
    for (Vsp32s t = 0; t < len; t++) {
        sum += tap;
        if (t % kControllerGroup == 0) a.prior[t / kControllerGroup] = tap;
        tap *= kPriorDecay;
    }
    for (Vsp32s g = 0; g < s->groups; g++) a.prior[g] /= sum;
    resetController(s, len);
}

// What a frame is, summed over the bands.
struct FramePowers {
    Vsp32f error, estimate, correlation;
};

template <class Band>
VSP_INLINE FramePowers measureFrame(const SubbandController& s, const Band* err, const Band* est) {
    BandSum error, estimate, correlation;
    clear(error, estimate, correlation);
    forSixteens(s.numSubbands, [&, unit = s.bandUnit]<class T>(Vsp32s k) {
        const Complex<T> e = bandsAt<T>(err + k, unit), y = bandsAt<T>(est + k, unit);
        error.add(k, powerOf(e));
        estimate.add(k, powerOf(y));
        correlation.add(k, e.re * y.re + e.im * y.im);
    });
    return {error.total(), estimate.total(), correlation.total()};
}

constexpr Vsp32f kNothing = 1;  // power in a band

// What error and estimate have in common, over all bands.
struct Common {
    Vsp32f leakage;  // share of the path that is not what the filter takes it for
    bool changed;    // the path is another one
};

// unknown: the power of the echo that the filter expects to leave.
template <class Band>
VSP_INLINE Common compare(SubbandController& s, const ControllerArrays& a, const FramePowers& frame, const Band* err,
                          const Band* est, Vsp32f unknown) {
    constexpr Vsp32f kChance = 2.5f, kShows = 1.75f;  // leakage, change: in units of what is expected by chance
    constexpr Vsp32f kCertain = 0.01f, kLeft = 0.5f;  // unknown, error: shares of the estimate's power
    constexpr Vsp32f kContrary = 0.4f;                // share of the estimate in the error, with its sign reversed
    constexpr Vsp32f kSilent = 0.001f;                // of the mean power of the bands: side lobes of a tone, rounding
    constexpr Vsp32f kFewest = 0.03f;                 // share of the bands that have to have a say; a tone has few
    constexpr Vsp32f kSmall = 0.003f;                 // share of the path that the drift follows as well
    constexpr Vsp32f kLittle = 0.001f, kLeast = 1e-9f;
    if (frame.estimate < kNothing) return {0, false};
    const Vsp32f unit = s.bandUnit, kept = s.leakageDecay, now = 1 - kept;
    const Vsp32s bands = s.numSubbands;
    const Vsp32f silent = kNothing + kSilent / Vsp32f(bands) * (frame.error + frame.estimate);
    BandSum correlations, weights, products, commons, owns;
    clear(correlations, weights, products, commons, owns);
    forSixteens(bands, [&]<class T>(Vsp32s k) {
        const auto smoothed = [=](Vsp32f* at, T value) {
            const T sum = kept * valuesAt<T>(at + k) + now * value;
            store(sum, at + k);
            return sum;
        };
        const Complex<T> error = bandsAt<T>(err + k, unit), estimate = bandsAt<T>(est + k, unit);
        const T e = powerOf(error), y = powerOf(estimate);
        const T w = 1 / (e + y + valuesAt<T>(a.noise + k) + silent), weight = w * y;
        const T correlation = w * (error.re * estimate.re + error.im * estimate.im);
        correlations.add(k, correlation);
        weights.add(k, weight);
        products.add(k, w * e * weight);
        const T re = smoothed(a.commonRe, correlation);
        const T im = smoothed(a.commonIm, w * (error.im * estimate.re - error.re * estimate.im));
        const T own = smoothed(a.own, weight);
        commons.add(k, re * re + im * im);
        owns.add(k, own * own);
    });
    const Vsp32f common = commons.total(), own = owns.total();
    s.chance = kept * s.chance + now * now * products.total();
    const Vsp32f excess = common - kChance * s.chance - kSmall * own;

    const Vsp32f keptOfChange = s.changeDecay, nowOfChange = 1 - keptOfChange;
    s.correlation = keptOfChange * s.correlation + nowOfChange * correlations.total();
    s.weight = keptOfChange * s.weight + nowOfChange * weights.total();
    s.error = keptOfChange * s.error + nowOfChange * frame.error;
    s.estimate = keptOfChange * s.estimate + nowOfChange * frame.estimate;
    if (unknown < kCertain * s.estimate)
        s.certain = s.certainFrames;
    else if (s.certain > 0)
        s.certain--;
    const bool shows = s.certain > 0 && s.error > kLeft * s.estimate && s.correlation < -kContrary * s.weight &&
                       common > kShows * s.chance + kLeast;
    s.showing = shows ? s.showing + 1 : 0;
    const bool changed = shows && s.showing >= s.changeFrames;
    if (changed) s.certain = 0;
    return {excess > 0 && own > kFewest * Vsp32f(bands) ? smaller(1, excess / (own + kLittle)) : 0, changed};
}

// The mean power of the coefficients of a group.
template <class Band>
VSP_INLINE void measureCoefficients(const SubbandController& s, const ControllerArrays& a, const Band* const* coef,
                                    Vsp32s group) {
    const Vsp32s taps = tapsOf(s, group);
    const Vsp32f share = s.coefUnit * s.coefUnit / Vsp32f(taps);
    Vsp32f* power = a.coefPower + group * s.numSubbands;
    forSixteens(s.numSubbands, [=]<class T>(Vsp32s k) {
        store(plausible(share * squaresAt<T>(coef + group * kControllerGroup, taps, k)), power + k);
    });
}

// Sums over the bands of what they are after a frame.
struct Learned {
    Vsp32f noise, far, residual;
};

// Predicts how much of the echo the groups that adapt leave, from what is unknown of their coefficients; then the steps,
// and how much they will reduce what is unknown.
template <class Arithmetic>
VSP_INLINE Learned learn(const SubbandController& s, const ControllerArrays& a, const typename Arithmetic::Band* const* src,
                         const typename Arithmetic::Band* err, const Common& common, bool leaks,
                         typename Arithmetic::Step* const* steps, const Vsp32s* adapt, Vsp32f* residual) {
    constexpr Vsp32f kNewPath = 16;       // its power over that of the one before
    constexpr Vsp32f kCorrelated = 0.4f;  // neighbouring taps are correlated: a frame teaches less than if they were not
    constexpr Vsp32s kMostGroups = controllerGroups(kMaxSubbandTaps);
    const Vsp32s bands = s.numSubbands, groups = s.groups;
    const Vsp32f unit = s.bandUnit, drift = s.drift, leak = common.leakage, kept = s.noiseDecay;
    BandSum noises, fars, residuals;
    clear(noises, fars, residuals);
    struct Group {
        const typename Arithmetic::Band* const* src;
        typename Arithmetic::Step* steps;
        Vsp32f *power, *uncertainty;
        const Vsp32f* coefficient;
        Vsp32f spread, share;
        Vsp32s taps, number;
        BandSum predicted;
    } active[kMostGroups];
    Vsp32s count = 0;
    for (Vsp32s g = 0; g < groups; g++) {
        if (adapt[g] == 0) continue;
        const Vsp32f prior = a.prior[g], change = common.changed ? kNewPath * prior : 0;
        const Vsp32s taps = tapsOf(s, g), at = g * bands;
        Group& group = active[count++];
        group.src = src + g * kControllerGroup;
        group.steps = steps[g];
        group.power = a.farPower + at;
        group.uncertainty = a.uncertainty + at;
        group.coefficient = a.coefPower + at;
        group.spread = larger(leak * prior, change);
        group.share = kCorrelated / Vsp32f(taps);
        group.taps = taps;
        group.number = g;
        clear(group.predicted);
    }
    forSixteens(
        bands, [&]<class T>(Vsp32s k) __attribute__((always_inline)) {
            T path = 0, left = 0;
            if (leaks)
                for (Vsp32s g = 0; g < groups; g++)
                    path = path + Vsp32f(tapsOf(s, g)) * valuesAt<T>(a.coefPower + g * bands + k);
            for (Vsp32s i = 0; i < count; i++) {
                Group& group = active[i];
                const T coefficient = valuesAt<T>(group.coefficient + k);
                const T drifted = valuesAt<T>(group.uncertainty + k) + drift * coefficient;
                const T leaked = leak * coefficient + group.spread * path;
                const T unknown = larger(drifted, leaked);
                const T present = plausible(unit * unit * squaresAt<T>(group.src, group.taps, k));
                store(unknown, group.uncertainty + k);
                store(present, group.power + k);
                group.predicted.add(k, unknown * present);
                left = left + unknown * present;
            }
            const T noise = kept * valuesAt<T>(a.noise + k) + (1 - kept) * powerOf(bandsAt<T>(err + k, unit));
            const T gain = 1 / (left + noise + kNothing), far = plausible(powerOf(bandsAt<T>(src[0] + k, unit)));
            for (Vsp32s i = 0; i < count; i++) {
                const Group& group = active[i];
                const T unknown = valuesAt<T>(group.uncertainty + k), present = valuesAt<T>(group.power + k);
                const T step = unknown * gain;
                store(unknown * (1 - group.share * step * present), group.uncertainty + k);
                Arithmetic::store(step, s.stepUnit, group.steps + k);
            }
            store(left, residual + k);
            store(noise, a.noise + k);
            store(gain, a.gain + k);
            store(far, a.path + k);
            noises.add(k, noise);
            fars.add(k, far);
            residuals.add(k, left);
        });
    for (Vsp32s i = 0; i < count; i++) a.predicted[active[i].number] = active[i].predicted.total();
    return {noises.total(), fars.total(), residuals.total()};
}

struct Verdict {
    Vsp32f learning;
    bool doubleTalk;
};

// A frame whose powers are not finite teaches nothing: no group adapts, and the state stays as it is.
template <class Arithmetic>
VSP_INLINE Verdict updateController(SubbandController* s, const typename Arithmetic::Band* const* src,
                                    const typename Arithmetic::Band* err, const typename Arithmetic::Band* est,
                                    const typename Arithmetic::Band* const* coef, bool cancelling,
                                    typename Arithmetic::Step* const* steps, Vsp32s* adapt, Vsp32f* residual) {
    constexpr Vsp32f kIdle = 0.0005f;  // share in what is to be learned below which a group is idle
    constexpr Vsp32f kMost = 1e16f;
    const ControllerArrays a(s);
    const Vsp32s bands = s->numSubbands;
    const FramePowers frame = measureFrame(*s, err, est);
    if (!(frame.error <= kMost && frame.estimate <= kMost)) {
        for (Vsp32s k = 0; k < bands; k++) residual[k] = 0;
        for (Vsp32s g = 0; g < s->groups; g++) adapt[g] = 0;
        return {0, false};
    }
    measureCoefficients(*s, a, coef, s->turn);
    s->turn = s->turn + 1 < s->groups ? s->turn + 1 : 0;

    Vsp32f total = 0;
    for (Vsp32s g = 0; g < s->groups; g++) total += a.predicted[g];
    const Common common = compare(*s, a, frame, err, est, total);
    const bool leaks = common.leakage > 0 || common.changed;
    for (Vsp32s g = 0; g < s->groups; g++)
        adapt[g] = leaks || g == s->turn || a.predicted[g] >= kIdle * (total + s->noiseSum);
    const Learned now = learn<Arithmetic>(*s, a, src, err, common, leaks, steps, adapt, residual);
    s->noiseSum = now.noise;

    const HeardPowers heard = {frame.error + frame.estimate + 2 * frame.correlation,
                               now.far,
                               frame.error,
                               frame.estimate,
                               now.noise,
                               now.residual};
    return {heard.predicted / (heard.predicted + heard.noise + kNothing), hearNearSpeech(s->nearSpeech, heard, cancelling)};
}

}  // namespace vsp::VSP_LEVEL
