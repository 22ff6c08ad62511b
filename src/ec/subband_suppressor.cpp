// What a linear canceller cannot remove: the echo that its filters have not learned yet, that is longer than they are, or
// that the loudspeaker distorts. It is estimated in each band from what the controller expects and from the share of the
// echo estimate that has been left of late while the far end was alone, and taken from the error; comfort noise a little
// quieter than the near end's own takes its place.
#include "ec/near_speech.h"
#include "ec/partial_sums.h"
#include "ec/subband_limits.h"

#include "core/checks.h"
#include "ec/exports.h"

namespace vsp::VSP_LEVEL {

namespace {

struct Suppressor {
    Vsp32s numSubbands, frames, window;  // the lowest power is that of one to two windows
    Vsp32s onset;                        // frames in which a filter bank fills
    Vsp32s silence, sounding;            // frames of digital silence and since a long one, up to onset
    Vsp32f unit;                         // what 1 is worth in a band
    Vsp32f referenceDecay, leftDecay, talkDecay;
    Vsp32f comfort;  // power of independent bands that give noise of power 1, with overlapping frames
    Vsp32f talk;     // how sure it is that the near end talks, 0 to 1
    Vsp32u random;
};

// Arrays of a value for each band, behind the state.
struct SuppressorArrays {
    Vsp32f *noise, *smooth, *lowest, *lowestBefore, *reference, *left, *heard, *echo, *gain;

    [[gnu::always_inline]] explicit SuppressorArrays(Suppressor* s) {
        Vsp32f* const first = reinterpret_cast<Vsp32f*>(s + 1);
        const Vsp32s bands = s->numSubbands;
        noise = first;
        smooth = first + bands;
        lowest = first + 2 * bands;
        lowestBefore = first + 3 * bands;
        reference = first + 4 * bands;
        left = first + 5 * bands;
        heard = first + 6 * bands;
        echo = first + 7 * bands;
        gain = first + 8 * bands;
    }
};
constexpr Vsp32s kSuppressorArrays = 9;

constexpr Vsp32f kNothing = 1, kMost = 1e16f, kUnknown = 1e17f;  // powers in a band

VSP_INLINE constexpr Vsp32s suppressorSize(Vsp32s numSubbands) {
    return Vsp32s(sizeof(Suppressor)) + kSuppressorArrays * numSubbands * Vsp32s(sizeof(Vsp32f));
}

VSP_INLINE constexpr bool isSuppressor(Vsp32s numSubbands, Vsp32s frameSize, Vsp32s rate) {
    return numSubbands >= 1 && numSubbands <= kMaxSubbands && frameSize >= 1 && frameSize <= rate &&
           (rate == 8000 || rate == 16000);
}

VSP_INLINE VspStatus size(Vsp32s numSubbands, Vsp32s frameSize, Vsp32s rate, Vsp32s* pSize) {
    if (anyNull(pSize)) return vspStsNullPtrErr;
    if (!isSuppressor(numSubbands, frameSize, rate)) return vspStsBadArgErr;
    *pSize = suppressorSize(numSubbands);
    return vspStsNoErr;
}

VSP_INLINE void init(Suppressor* s, Vsp32s numSubbands, Vsp32s frameSize, Vsp32s rate, Vsp32f unit) {
    constexpr Vsp32f kReferenceTime = 0.03f;  // s in which an echo that is longer than the filters falls off
    constexpr Vsp32f kLeftTime = 2;           // s over which the share that is left is measured
    constexpr Vsp32f kTalkTime = 0.06f;       // s after which a talker is not heard any more
    constexpr Vsp32f kWindow = 4;             // s in which noise alone is heard at some time in each band
    constexpr Vsp32f kOnset = 0.1f;           // s after which a filter bank is full
    const Vsp32f frameRate = Vsp32f(rate) / Vsp32f(frameSize);
    *s = {numSubbands,
          0,
          Vsp32s(kWindow * frameRate) + 1,
          Vsp32s(kOnset * frameRate) + 1,
          0,
          0,
          unit,
          decay(kReferenceTime, frameRate),
          decay(kLeftTime, frameRate),
          decay(kTalkTime, frameRate),
          larger(1, 1.6f * Vsp32f(numSubbands - 1) / Vsp32f(frameSize)),
          0,
          1};
    const SuppressorArrays a(s);
    for (Vsp32s i = 0; i < kSuppressorArrays * numSubbands; i++) a.noise[i] = 0;
    for (Vsp32s k = 0; k < numSubbands; k++) a.lowest[k] = a.lowestBefore[k] = kUnknown;
}

VSP_INLINE Vsp32f limited(Vsp32f power) { return power <= kMost ? power : 0; }

template <class Band>
VSP_INLINE Vsp32f powerOf(const Band& z, Vsp32f unit) {
    const Vsp32f re = unit * Vsp32f(z.re), im = unit * Vsp32f(z.im);
    return re * re + im * im;
}

// The noise of the near end: a mean of what is not far above the lowest power of late. Digital silence tells nothing of it,
// nor does what is heard while the filter bank fills after a long one; and what is clearly less than the expected echo is
// echo for the most part.
VSP_INLINE void followNoise(Suppressor* s, const SuppressorArrays& a) {
    constexpr Vsp32f kLowest = 2;  // how much the mean of noise is above its lowest smoothed power
    constexpr Vsp32f kFar = 5, kMostAbove = 2, kShare = 0.05f, kSmoothing = 0.7f, kBelow = 8, kPart = 0.5f;
    s->frames = s->frames + 1 < s->window ? s->frames + 1 : 0;
    const bool renews = s->frames == 0;
    const bool sounds = sumOf(a.heard, s->numSubbands) > kNothing;
    s->silence = sounds ? 0 : s->silence + Vsp32s(s->silence < s->onset);
    if (s->silence == s->onset) s->sounding = 0;
    const bool fills = s->sounding < s->onset;
    if (sounds && fills) s->sounding++;
    const Vsp32f smoothing = fills ? 0 : kSmoothing;
    VSP_INDEPENDENT
    for (Vsp32s k = 0; k < s->numSubbands; k++) {
        const Vsp32f e = a.heard[k], before = a.lowestBefore[k], n = a.noise[k];
        const bool silent = e <= kNothing;
        const Vsp32f part = a.echo[k] < kBelow * e ? e : kPart * e,
                     mixed = smoothing * a.smooth[k] + (1 - smoothing) * part;
        const Vsp32f heard = a.smooth[k] > 0 ? mixed : part, smooth = silent ? a.smooth[k] : heard;
        const Vsp32f now = silent || fills ? kUnknown : heard, lowest = smaller(a.lowest[k], now);
        const Vsp32f floor = kLowest * smaller(lowest, before);
        const Vsp32f mean = n + kShare * (e - n), near = e < kFar * floor ? mean : n, next = a.echo[k] < n ? near : n;
        const Vsp32f within = larger(floor / kMostAbove, smaller(kMostAbove * floor, next));
        a.noise[k] = floor < kUnknown ? within : n;
        a.smooth[k] = smooth;
        a.lowestBefore[k] = renews ? lowest : before;
        a.lowest[k] = renews ? now : lowest;
    }
}

// The echo in the error: what the filters have not learned, and the share of the estimate that has been left of late. The
// estimate, whose powers are given in the place of the echo, fades out, and a part of it counts in all bands, where a
// loudspeaker's distortions go.
VSP_INLINE void expectEcho(Suppressor* s, const SuppressorArrays& a, const Vsp32f* residual) {
    constexpr Vsp32f kSpread = 0.5f;
    const Vsp32s bands = s->numSubbands;
    const Vsp32f fade = s->referenceDecay, spread = kSpread / Vsp32f(bands) * sumOf(a.echo, bands);
    VSP_INDEPENDENT
    for (Vsp32s k = 0; k < bands; k++) {
        const Vsp32f now = a.echo[k] + spread;
        const Vsp32f faded = fade * a.reference[k];
        a.reference[k] = larger(now, faded);
        const Vsp32f share = a.left[k];
        a.echo[k] = limited(residual[k]) + share * a.reference[k];
    }
}

// The share of the bands in which there is clearly more than echo and noise, and more than a loudspeaker adds. How clearly
// depends on how much of the echo has been left of late: what a loudspeaker adds comes and goes with the far end's level.
VSP_INLINE Vsp32f talkingShare(const Suppressor* s, const SuppressorArrays& a) {
    constexpr Vsp32f kClear = 8, kMostClear = 14, kAdded = 0.15f, kLittle = 0.002f, kMuch = 0.01f;
    const Vsp32f reference = sumOf(a.reference, s->numSubbands);
    const Vsp32f left = sumOverBands(s->numSubbands, [&](Vsp32s k) { return a.left[k] * a.reference[k]; });
    const Vsp32f much = larger(0, smaller(1, (left - kLittle * reference) / ((kMuch - kLittle) * reference + kNothing)));
    const Vsp32f clear = kClear + much * (kMostClear - kClear);
    const Vsp32f talking = sumOverBands(s->numSubbands, [&](Vsp32s k) {
        const Vsp32f expected = clear * (a.echo[k] + a.noise[k]), added = kAdded * a.reference[k];
        return a.heard[k] > larger(expected, added) ? 1.0f : 0.0f;
    });
    return talking / Vsp32f(s->numSubbands);
}

// From the bands in which the error is small beside the estimate, as it is not where the near end talks; slowly while it
// does so elsewhere.
VSP_INLINE void learnLeftShare(const Suppressor* s, const SuppressorArrays& a, Vsp32f speed) {
    constexpr Vsp32f kAudible = 4, kSmall = 0.3f;
    const Vsp32f share = speed * (1 - s->leftDecay);
    VSP_INDEPENDENT
    for (Vsp32s k = 0; k < s->numSubbands; k++) {
        const Vsp32f ref = a.reference[k], now = (a.heard[k] - a.noise[k]) / (ref + kNothing);
        const bool counts = ref > kAudible * a.noise[k] && now < kSmall;
        const Vsp32f next = a.left[k] + share * (now - a.left[k]);
        a.left[k] = larger(0, counts ? next : a.left[k]);
    }
}

VSP_INLINE Vsp32f noiseOf(Vsp32u x) {
    x = (x ^ x >> 16) * 0x7FEB352DU;
    x = (x ^ x >> 15) * 0x846CA68BU;
    return Vsp32f(Vsp32s(x ^ x >> 16)) * 0x1p-31f;
}

VSP_INLINE void storeValue(Vsp32f x, Vsp32f& to) { to = x; }
VSP_INLINE void storeValue(Vsp32f x, Vsp32s& to) {
    constexpr Vsp32f kHighest = 2147483520.0f;
    to = Vsp32s(smaller(larger(x, -kHighest), kHighest));
}

// An error that is not finite, or louder than signals can be, becomes 0.
template <class Band>
VSP_INLINE void suppress(Suppressor* s, const Band* est, const Vsp32f* residual, bool doubleTalk, Band* err) {
    constexpr Vsp32f kAlone = 0.12f, kTalking = 0.25f;  // shares of the bands
    constexpr Vsp32f kOver = 2.8f, kFirm = 12;          // how many times the echo is taken off
    constexpr Vsp32f kSlower = 0.8f;                    // while the near end talks
    const SuppressorArrays a(s);
    const Vsp32s bands = s->numSubbands;
    const Vsp32f unit = s->unit;
    VSP_INDEPENDENT
    for (Vsp32s k = 0; k < bands; k++) {
        const Band e = err[k];
        const Vsp32f power = powerOf(e, unit);
        a.heard[k] = limited(power);
        a.echo[k] = limited(powerOf(est[k], unit));
        err[k].re = power <= kMost ? e.re : 0;
        err[k].im = power <= kMost ? e.im : 0;
    }
    expectEcho(s, a, residual);
    const Vsp32f clear = larger(0, smaller(1, (talkingShare(s, a) - kAlone) / (kTalking - kAlone)));
    s->talk = larger(clear, s->talkDecay * s->talk);
    if (!doubleTalk) learnLeftShare(s, a, 1 - kSlower * s->talk);
    followNoise(s, a);

    const Vsp32f talk = s->talk, toBand = 1 / unit;
    VSP_INDEPENDENT
    for (Vsp32s k = 0; k < bands; k++) {
        const Vsp32f heard = a.heard[k] + kNothing, echo = a.echo[k], noise = a.noise[k];
        const Vsp32f soft = larger(0, 1 - kOver * echo / heard), least = noise + 0.01f,
                     firm = least / (least + kFirm * echo);
        a.gain[k] = talk * soft + (1 - talk) * smaller(soft, firm);
    }
    const Vsp32u random = s->random;
    s->random += 2 * Vsp32u(bands);
    VSP_INDEPENDENT
    for (Vsp32s k = 0; k < bands; k++) {
        const Vsp32f gain = __builtin_sqrtf(a.gain[k]);
        const Vsp32f comfort = toBand * __builtin_sqrtf(1.2f * s->comfort * a.noise[k] * (1 - a.gain[k]));
        const Vsp32u seed = random + 2 * Vsp32u(k);
        storeValue(gain * Vsp32f(err[k].re) + comfort * noiseOf(seed * 0x9E3779B9U), err[k].re);
        storeValue(gain * Vsp32f(err[k].im) + comfort * noiseOf((seed + 1) * 0x9E3779B9U), err[k].im);
    }
    err[0].im = err[bands - 1].im = 0;
}

template <class State>
VSP_INLINE Suppressor* suppressorOf(State* state) {
    return reinterpret_cast<Suppressor*>(state);
}

}  // namespace

VspStatus vspsSubbandSuppressorGetSize_EC_32f(Vsp32s numSubbands, Vsp32s frameSize, Vsp32s rate, Vsp32s* pSize) {
    return size(numSubbands, frameSize, rate, pSize);
}
VspStatus vspsSubbandSuppressorGetSize_EC_16s(Vsp32s numSubbands, Vsp32s frameSize, Vsp32s rate, Vsp32s* pSize) {
    return size(numSubbands, frameSize, rate, pSize);
}

VspStatus vspsSubbandSuppressorInit_EC_32f(VspSubbandSuppressorState_EC_32f* pState, Vsp32s numSubbands, Vsp32s frameSize,
                                           Vsp32s rate) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    if (!isSuppressor(numSubbands, frameSize, rate)) return vspStsBadArgErr;
    init(suppressorOf(pState), numSubbands, frameSize, rate, 1);
    return vspStsNoErr;
}
VspStatus vspsSubbandSuppressorInit_EC_16s(VspSubbandSuppressorState_EC_16s* pState, Vsp32s numSubbands, Vsp32s frameSize,
                                           Vsp32s rate, Vsp32s bandScale) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    if (!isSuppressor(numSubbands, frameSize, rate)) return vspStsBadArgErr;
    if (bandScale < -31 || bandScale > 31) return vspStsBadArgErr;
    init(suppressorOf(pState), numSubbands, frameSize, rate, Vsp32f(powerOfTwo(bandScale)));
    return vspStsNoErr;
}

VspStatus vspsSubbandSuppressor_EC_32fc_I(const Vsp32fc* pEst, const Vsp32f* pResidual, Vsp32s doubleTalk, Vsp32fc* pSrcDst,
                                          VspSubbandSuppressorState_EC_32f* pState) {
    if (anyNull(pEst, pResidual, pSrcDst, pState)) return vspStsNullPtrErr;
    suppress(suppressorOf(pState), pEst, pResidual, doubleTalk != 0, pSrcDst);
    return vspStsNoErr;
}
VspStatus vspsSubbandSuppressor_EC_32sc_I(const Vsp32sc* pEst, const Vsp32f* pResidual, Vsp32s doubleTalk, Vsp32sc* pSrcDst,
                                          VspSubbandSuppressorState_EC_16s* pState) {
    if (anyNull(pEst, pResidual, pSrcDst, pState)) return vspStsNullPtrErr;
    suppress(suppressorOf(pState), pEst, pResidual, doubleTalk != 0, pSrcDst);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
