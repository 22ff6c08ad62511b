// The speech detector: the voice activity detectors of GSM-AMR and AMR-WB behind the encoders' steps that feed them.
#pragma GCC visibility push(default)  // of what the library exports
#include "vspsvoice/speech_detector.h"
#pragma GCC visibility pop

#include <math.h>

#include <new>

#include "codec/amrwb/analysis.h"
#include "detect/open_loop.h"
#include "vspsc/gsmamr.h"

namespace vspv {

namespace {

Vsp64f toDb(Vsp64f ratio) { return 10 * log10(ratio); }

// A detector of the standard with what it thinks of the signal: the ratio in the frame and that with which it is compared.
struct Option1 {
    static constexpr int kBands = 9;
    VspGSMAMRVad1State state = VSP_GSMAMR_VAD1_STATE_INIT;

    VspvSpeechDecision detect(const OpenLoop& openLoop) {
        Vsp16s noise[kBands], flag;  // the estimates that the frame is compared with
        for (int b = 0; b < kBands; b++) noise[b] = state.bckrEst[b];
        vspsVAD1_GSMAMR_16s(openLoop.frame() - 40, &state, &flag, openLoop.bestCorrHp(), openLoop.toneFlags());

        Vsp64f ratios = 0, noises = 0;  // the levels are amplitudes
        for (int b = 0; b < kBands; b++) {
            const Vsp64f ratio = Vsp64f(state.oldLevel[b]) / noise[b];
            ratios += ratio * ratio;
            noises += noise[b];
        }
        const Vsp64f threshold = 1260 - 2808 * (noises / 8) / 32768;
        return {flag, 0, 0, toDb(ratios / kBands), toDb((threshold > 720 ? threshold : 720) / 512)};
    }
};

struct Option2 {
    static constexpr int kChannels = 16;
    VspGSMAMRVad2State state = VSP_GSMAMR_VAD2_STATE_INIT;

    VspvSpeechDecision detect(const OpenLoop& openLoop) {
        Vsp16s flag;
        vspsVAD2_GSMAMR_16s(openLoop.frame(), &state, &flag, openLoop.ltpFlag());

        const Vsp64f scale = state.shiftState == 1 ? 32 : 1;  // 4 instead of 9 fraction bits
        Vsp64f ratios = 0;
        for (int c = 0; c < kChannels; c++) ratios += scale * state.chEnrg[c] / state.chNoise[c];
        return {flag, 0, 0, toDb(ratios / kChannels), state.tsnr / 256.0};
    }
};

// Either of them, at 8000 Hz.
class Narrow {
  public:
    static constexpr Vsp32s kFrame = vspv::kFrame;
    static_assert(kFrame == vspvSpeechFrame);

    Narrow(Vsp32s option, void* highPass) : option_(option), openLoop_(option, highPass) {
        if (option == 1)
            new (&option1_) Option1();
        else
            new (&option2_) Option2();
    }

    VspvSpeechDecision detect(const Vsp16s* frame, void* highPass) {
        openLoop_.read(frame, highPass);
        const VspvSpeechDecision decision = option_ == 1 ? option1_.detect(openLoop_) : option2_.detect(openLoop_);
        openLoop_.search(option_ == 1 ? &option1_.state.pitchFlags : nullptr);
        return decision;
    }

  private:
    Vsp32s option_;
    OpenLoop openLoop_;
    union {
        Option1 option1_;
        Option2 option2_;
    };
};

// That of AMR-WB, at 16000 Hz. The library keeps its levels and estimates to itself.
class Wide {
  public:
    static constexpr Vsp32s kFrame = amrwb::kFrame;
    static_assert(kFrame == vspvSpeechFrameWide);

    Wide(Vsp32s, void*) { analysis_.reset(); }

    VspvSpeechDecision detect(const Vsp16s* frame, void*) {
        Vsp16s samples[kFrame];
        amrwb::Analysis::Result result;
        const bool homing = amrwb::Analysis::clearLowBits(frame, samples);
        analysis_.take(samples, result);
        const bool speech = analysis_.isSpeech(result);
        analysis_.predict(result);
        analysis_.search(false, result);
        analysis_.finish();
        if (homing) analysis_.reset();
        return {speech, 0, 0, NAN, NAN};
    }

  private:
    amrwb::Analysis analysis_;
};

// What all objects begin with.
struct alignas(8) SpeechDetector {
    Vsp32s kind;  // its option
};

// Cuts the signal into the frames of a detector. In front of the state of an encoder's high-pass filter.
template <class Detector>
class FrameByFrame : public SpeechDetector {
  public:
    explicit FrameByFrame(Vsp32s option) : SpeechDetector{option}, detector_(option, this + 1) {}

    Vsp32s process(const Vsp16s* src, Vsp32s len, VspvSpeechDecision* decisions) {
        Vsp32s count = 0;
        for (Vsp32s i = 0; i < len;) {
            const Vsp32s missing = kFrame - filled_, taken = missing < len - i ? missing : len - i;
            for (Vsp32s k = 0; k < taken; k++) frame_[filled_ + k] = src[i + k];
            filled_ += taken;
            i += taken;
            if (filled_ == kFrame) decisions[count++] = detect();
        }
        return count;
    }

    Vsp32s finish(VspvSpeechDecision* decision) {
        if (filled_ == 0) return 0;
        for (Vsp32s i = filled_; i < kFrame; i++) frame_[i] = 0;
        *decision = detect();
        return 1;
    }

  private:
    static constexpr Vsp32s kFrame = Detector::kFrame;

    VspvSpeechDecision detect() {
        VspvSpeechDecision decision = detector_.detect(frame_, this + 1);
        decision.power = energy() / filled_;
        filled_ = 0;
        return decision;
    }

    Vsp64f energy() const {
        Vsp64s sum = 0;
        for (Vsp32s i = 0; i < kFrame; i += 2) sum += Vsp32u(frame_[i] * frame_[i]) + Vsp32u(frame_[i + 1] * frame_[i + 1]);
        return Vsp64f(sum);
    }

    Vsp32s filled_ = 0;  // samples of the frame
    Vsp16s frame_[kFrame];
    Detector detector_;
};

using NarrowDetector = FrameByFrame<Narrow>;
using WideDetector = FrameByFrame<Wide>;

bool isOption(Vsp32s option) { return option == 1 || option == 2 || option == vspvSpeechWide; }

bool isWide(VspvSpeechDetector* detector) { return reinterpret_cast<SpeechDetector*>(detector)->kind == vspvSpeechWide; }
NarrowDetector& narrow(VspvSpeechDetector* detector) { return *reinterpret_cast<NarrowDetector*>(detector); }
WideDetector& wide(VspvSpeechDetector* detector) { return *reinterpret_cast<WideDetector*>(detector); }

}  // namespace

}  // namespace vspv

using namespace vspv;

VspStatus vspvSpeechDetectorGetSize(Vsp32s option, Vsp32s* pSize) {
    if (pSize == nullptr) return vspStsNullPtrErr;
    if (!isOption(option)) return vspStsBadArgErr;
    *pSize = option == vspvSpeechWide ? Vsp32s(sizeof(WideDetector))
                                      : (Vsp32s(sizeof(NarrowDetector)) + OpenLoop::stateBytes() + 7) & ~7;
    return vspStsNoErr;
}

VspStatus vspvSpeechDetectorInit(VspvSpeechDetector* pDetector, Vsp32s option) {
    if (pDetector == nullptr) return vspStsNullPtrErr;
    if (!isOption(option)) return vspStsBadArgErr;
    if (option == vspvSpeechWide)
        new (pDetector) WideDetector(option);
    else
        new (pDetector) NarrowDetector(option);
    return vspStsNoErr;
}

VspStatus vspvSpeechDetectorProcess(VspvSpeechDetector* pDetector, const Vsp16s* pSrc, Vsp32s len,
                                    VspvSpeechDecision* pDecisions, Vsp32s* pCount) {
    if (pDetector == nullptr || pSrc == nullptr || pDecisions == nullptr || pCount == nullptr) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    *pCount = isWide(pDetector) ? wide(pDetector).process(pSrc, len, pDecisions)
                                : narrow(pDetector).process(pSrc, len, pDecisions);
    return vspStsNoErr;
}

VspStatus vspvSpeechDetectorFinish(VspvSpeechDetector* pDetector, VspvSpeechDecision* pDecision, Vsp32s* pCount) {
    if (pDetector == nullptr || pDecision == nullptr || pCount == nullptr) return vspStsNullPtrErr;
    *pCount = isWide(pDetector) ? wide(pDetector).finish(pDecision) : narrow(pDetector).finish(pDecision);
    return vspStsNoErr;
}
