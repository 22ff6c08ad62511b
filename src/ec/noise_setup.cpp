// Size and state of the noise filter.
#include "arithmetic/elementary.h"
#include "core/checks.h"
#include "ec/exports.h"
#include "ec/noise_state.h"
#include "vector/real_fft.h"

namespace vsp::VSP_LEVEL {

namespace {

// s, of exponential smoothing; the decision-directed estimate keeps three quarters over 10 ms.
constexpr Vsp32f kSmoothing = 0.07f, kNoiseMemory = 0.3f, kCleanMemory = 0.03476f, kExcessMemory = 0.06f, kUnrestMemory = 2;
constexpr Vsp32s kMinimumMs = 800, kReachHertz = 500;

VSP_INLINE bool supported(Vsp32s rate) { return rate == 8000 || rate == 16000 || rate == 22050 || rate == 32000; }

VSP_INLINE bool legal(Vsp32s rate, Vsp32s frameLen, Vsp32s order) {
    return supported(rate) && order >= 5 && order <= 12 && frameLen >= 1 && frameLen <= 1 << (order - 1);
}

// Where everything lies; returns where it ends.
VSP_INLINE Vsp32s layOut(NoiseState& s, Vsp32s order) {
    Vsp32s spec = 0, init = 0, work = 0;
    ownRealFftGetSize_32f(order, &spec, &init, &work);
    s.order = order;
    s.signalsAt = Vsp32s(lineBytes(sizeof(NoiseState) / 4));
    s.bandsAt = s.signalsAt + Vsp32s(kNoiseSignals * lineBytes(1LL << order));
    s.spectrumAt = s.bandsAt + Vsp32s(kNoiseBands * lineBytes(bandsOf(s)));
    s.fftAt = s.spectrumAt + Vsp32s(2 * lineBytes(bandsOf(s)));
    s.workAt = s.fftAt + spec;
    return s.workAt + (work > init ? work : init);
}

// What is kept over a frame.
VSP_INLINE Vsp32f memoryOf(Vsp32f seconds, Vsp32s frameLen, Vsp32s rate) {
    return exp10_32f(-0.4342945f * Vsp32f(frameLen) / (Vsp32f(rate) * seconds));
}

// The square root of a Hann window, and what makes overlapping frames add up to one.
VSP_INLINE void makeWindows(NoiseState& s) {
    const Vsp32s length = 1 << s.order;
    Vsp32f* const window = signalOf(s, kWindow);
    Vsp32f* const synthesis = signalOf(s, kSynthesisWindow);
    for (Vsp32s i = 0; i < length; i++) window[i] = cos_32f(Vsp32f(kPi) * ((Vsp32f(i) + 0.5f) / Vsp32f(length) - 0.5f));
    for (Vsp32s i = 0; i < s.frameLen; i++) {
        Vsp32f sum = 0;
        for (Vsp32s j = i; j < length; j += s.frameLen) sum += window[j] * window[j];
        for (Vsp32s j = i; j < length; j += s.frameLen) synthesis[j] = window[j] / sum;
    }
}

}  // namespace

VspStatus vspsFilterNoiseGetStateSize_EC_32f(Vsp32s samplingRate, Vsp32s frameLen, Vsp32s order, Vsp32s* pSize) {
    if (anyNull(pSize)) return vspStsNullPtrErr;
    if (!legal(samplingRate, frameLen, order)) return vspStsBadArgErr;
    NoiseState s;
    *pSize = layOut(s, order) + kLine;
    return vspStsNoErr;
}

VspStatus vspsFilterNoiseInit_EC_32f(VspFilterNoiseState_EC_32f* pState, Vsp32s samplingRate, Vsp32s frameLen,
                                     Vsp32s order) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    if (!legal(samplingRate, frameLen, order)) return vspStsBadArgErr;
    NoiseState& s = noiseStateAt(pState);
    const Vsp32s end = layOut(s, order);
    for (Vsp32s i = s.signalsAt; i < end; i++) *atOffset<Vsp8u>(s, i) = 0;
    const RealFftSpec_32f* fft = nullptr;
    ownRealFftInit_32f(&fft, order, atOffset<Vsp8u>(s, s.fftAt), atOffset<Vsp8u>(s, s.workAt));
    s.fftAt = Vsp32s(reinterpret_cast<const Vsp8u*>(fft) - atOffset<Vsp8u>(s, 0));
    s.samplingRate = samplingRate;
    s.frameLen = frameLen;
    s.mode = vspFilterNoiseNormal;
    s.frames = 1 - ((1 << order) + frameLen - 1) / frameLen;
    s.part = s.framesInPart = 0;
    const Vsp32s perPart = kMinimumMs * samplingRate / (1000 * kMinimumParts * frameLen);
    s.framesPerPart = perPart > 1 ? perPart : 1;
    s.reach = ((kReachHertz << order) + samplingRate / 2) / samplingRate;
    s.smoothing = memoryOf(kSmoothing, frameLen, samplingRate);
    s.noiseMemory = memoryOf(kNoiseMemory, frameLen, samplingRate);
    s.cleanMemory = memoryOf(kCleanMemory, frameLen, samplingRate);
    s.excessMemory = memoryOf(kExcessMemory, frameLen, samplingRate);
    s.unrestMemory = memoryOf(kUnrestMemory, frameLen, samplingRate);
    s.unrest = 1;
    makeWindows(s);
    return vspStsNoErr;
}

VspStatus vspsFilterNoiseSetMode_EC_32f(VspFilterNoiseState_EC_32f* pState, Vsp32s mode) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    if (mode < vspFilterNoiseOff || mode > vspFilterNoiseAuto) return vspStsBadArgErr;
    noiseStateAt(pState).mode = mode;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
