// The pitch tracker: the searches of a G.729 encoder on the signals that its analysis makes.
#pragma GCC visibility push(default)  // of what the library exports
#include "vspsvoice/pitch.h"
#pragma GCC visibility pop

#include <math.h>
#include <string.h>

#include <new>

#include "pitch/speech_analysis.h"
#include "vspsc/g729.h"

namespace vspv {

// A frame of weighted speech after the past that the longest lag needs.
class OpenLoopSearch {
  public:
    Vsp16s search(const Vsp16s* frame, Vsp32s search) {
        memmove(weighted_, weighted_ + kPitchFrame, kLongestLag * sizeof *weighted_);
        memcpy(weighted_ + kLongestLag, frame, kPitchFrame * sizeof *frame);
        Vsp16s lag = 0;
        (search == vspvPitchAnnexA ? vspsOpenLoopPitchSearch_G729A_16s : vspsOpenLoopPitchSearch_G729_16s)(
            weighted_ + kLongestLag, &lag);
        return lag;
    }

  private:
    static constexpr Vsp32s kLongestLag = 143;
    Vsp16s weighted_[kLongestLag + kPitchFrame] = {};
};

// 10 log10(|x|^2 / |x - g y|^2); a remainder below one unit counts as one.
static Vsp32f predictionGainOf(const Vsp16s* x, const Vsp16s* y, Vsp64f gain) {
    Vsp64f energy = 0, remainder = 0;
    for (Vsp32s n = 0; n < kPitchSubframe; n++) {
        const Vsp64f e = x[n] - gain * y[n];
        energy += Vsp64f(x[n]) * x[n];
        remainder += e * e;
    }
    return energy == 0 ? 0 : Vsp32f(10 * log10(energy / (remainder > 1 ? remainder : 1)));
}

// The excitation so far and the adaptive codebook made of it.
class ClosedLoopSearch {
  public:
    // Fills in lag, fraction, gain and prediction gain.
    void search(const SubframeSignals& s, Vsp16s aroundLag, Vsp16s subframe, Vsp32s search, VspvPitchPoint& point) {
        Vsp16s vector[kPitchSubframe], filtered[kPitchSubframe], delay[2], gain = 0;
        // Lags shorter than the subframe read the residual in the place of the excitation to come.
        memcpy(excitation_ + kPast, s.residual, sizeof s.residual);
        if (search == vspvPitchAnnexD) {
            vspsAdaptiveCodebookSearch_G729D_16s(aroundLag, s.target, s.impulse, excitation_, subframe, delay);
            vspsDecodeAdaptiveVector_G729_16s(delay, excitation_, vector);
        } else {
            (search == vspvPitchAnnexA ? vspsAdaptiveCodebookSearch_G729A_16s : vspsAdaptiveCodebookSearch_G729_16s)(
                aroundLag, s.target, s.impulse, excitation_, delay, vector, subframe);
        }
        if (search == vspvPitchAnnexA)
            vspsAdaptiveCodebookGain_G729A_16s(s.target, s.poles, vector, filtered, &gain);
        else
            vspsAdaptiveCodebookGain_G729_16s(s.target, s.impulse, vector, filtered, &gain);
        point.lag = delay[0];
        point.fraction = delay[1];
        point.gain = Vsp32f(gain) / 16384;
        point.predictionGain = predictionGainOf(s.target, filtered, point.gain);
        // An ideal fixed codebook adds all that the adaptive one lacks: the excitation becomes the residual.
        memcpy(excitation_ + kPast, s.residual, sizeof s.residual);
        memmove(excitation_, excitation_ + kPitchSubframe, kPast * sizeof *excitation_);
    }

  private:
    static constexpr Vsp32s kPast = 154;
    Vsp16s excitation_[kPast + kPitchSubframe] = {};
};

static Vsp64f powerOf(const Vsp16s* x) {
    Vsp64f energy = 0;
    for (Vsp32s n = 0; n < kPitchSubframe; n++) energy += Vsp64f(x[n]) * x[n];
    return energy / kPitchSubframe;
}

// In front of the state of the encoder's high-pass filter.
class alignas(8) PitchTracker {
  public:
    explicit PitchTracker(Vsp32s search) : search_(search), analysis_(search == vspvPitchAnnexA, this + 1) {}

    Vsp32s process(const Vsp16s* src, Vsp32s len, VspvPitchPoint* points) {
        Vsp32s count = 0;
        for (Vsp32s i = 0; i < len;) {
            const Vsp32s missing = kNeeded - filled_, taken = missing < len - i ? missing : len - i;
            memcpy(samples_ + filled_, src + i, static_cast<unsigned long>(taken) * sizeof *src);
            filled_ += taken;
            i += taken;
            if (filled_ < kNeeded) break;
            code(points + count);
            count += 2;
            memmove(samples_, samples_ + kPitchFrame, kPitchLookAhead * sizeof *samples_);
            filled_ = kPitchLookAhead;
        }
        return count;
    }

    Vsp32s finish(VspvPitchPoint* points) {
        const bool whole = filled_ >= kPitchFrame;
        if (whole) {
            for (Vsp32s i = filled_; i < kNeeded; i++) samples_[i] = 0;
            code(points);
        }
        filled_ = 0;
        return whole ? 2 : 0;
    }

  private:
    static constexpr Vsp32s kNeeded = kPitchFrame + kPitchLookAhead;

    void code(VspvPitchPoint* points) {
        if (!started_) analysis_.read(samples_, kPitchLookAhead, this + 1);
        started_ = true;
        analysis_.read(samples_ + kPitchLookAhead, kPitchFrame, this + 1);
        FrameSignals signals;
        analysis_.analyse(signals);
        const Vsp16s openLoopLag = openLoop_.search(signals.weighted, search_);
        Vsp16s aroundLag = openLoopLag;
        for (Vsp16s i = 0; i < 2; i++) {
            VspvPitchPoint& p = points[i];
            p.openLoopLag = openLoopLag;
            closedLoop_.search(signals.subframes[i], aroundLag, i, search_, p);
            p.f0 = 8000 / (p.lag + p.fraction / 3.0);
            p.voiced = p.gain >= 0.5f && p.predictionGain >= 3;
            p.power = powerOf(samples_ + i * kPitchSubframe);
            aroundLag = p.lag;
        }
    }

    Vsp32s search_, filled_ = 0;  // samples of the next frame and behind it
    Vsp16s samples_[kNeeded];
    bool started_ = false;
    SpeechAnalysis analysis_;
    OpenLoopSearch openLoop_;
    ClosedLoopSearch closedLoop_;
};

static PitchTracker& own(VspvPitchTracker* tracker) { return *reinterpret_cast<PitchTracker*>(tracker); }

}  // namespace vspv

using namespace vspv;

VspStatus vspvPitchTrackerGetSize(Vsp32s* pSize) {
    if (pSize == nullptr) return vspStsNullPtrErr;
    *pSize = (Vsp32s(sizeof(PitchTracker)) + SpeechAnalysis::stateBytes() + 7) & ~7;
    return vspStsNoErr;
}

VspStatus vspvPitchTrackerInit(VspvPitchTracker* pTracker, Vsp32s search) {
    if (pTracker == nullptr) return vspStsNullPtrErr;
    if (search < vspvPitchMain || search > vspvPitchAnnexD) return vspStsBadArgErr;
    new (pTracker) PitchTracker(search);
    return vspStsNoErr;
}

VspStatus vspvPitchTrackerProcess(VspvPitchTracker* pTracker, const Vsp16s* pSrc, Vsp32s len, VspvPitchPoint* pPoints,
                                  Vsp32s* pCount) {
    if (pTracker == nullptr || pSrc == nullptr || pPoints == nullptr || pCount == nullptr) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    *pCount = own(pTracker).process(pSrc, len, pPoints);
    return vspStsNoErr;
}

VspStatus vspvPitchTrackerFinish(VspvPitchTracker* pTracker, VspvPitchPoint* pPoints, Vsp32s* pCount) {
    if (pTracker == nullptr || pPoints == nullptr || pCount == nullptr) return vspStsNullPtrErr;
    *pCount = own(pTracker).finish(pPoints);
    return vspStsNoErr;
}
