// The speech detector: the voice activity detectors of GSM-AMR behind the encoder's steps that feed them.
#pragma GCC visibility push(default)  // of what the library exports
#include "vspsvoice/speech_detector.h"
#pragma GCC visibility pop

#include <math.h>

#include <new>

#include "detect/open_loop.h"
#include "vspsc/gsmamr.h"

namespace vspv {

static Vsp64f toDb(Vsp64f ratio) { return 10 * log10(ratio); }

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

static Vsp64f energyOf(const Vsp16s* samples) {
    Vsp64s energy = 0;
    for (Vsp32s i = 0; i < kFrame; i += 2)
        energy += Vsp32u(samples[i] * samples[i]) + Vsp32u(samples[i + 1] * samples[i + 1]);
    return Vsp64f(energy);
}

// In front of the state of the encoder's high-pass filter.
class alignas(8) SpeechDetector {
  public:
    explicit SpeechDetector(Vsp32s option) : option_(option), openLoop_(option, this + 1) {
        if (option == 1)
            new (&option1_) Option1();
        else
            new (&option2_) Option2();
    }

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
    VspvSpeechDecision detect() {
        openLoop_.read(frame_, this + 1);
        VspvSpeechDecision decision = option_ == 1 ? option1_.detect(openLoop_) : option2_.detect(openLoop_);
        openLoop_.search(option_ == 1 ? &option1_.state.pitchFlags : nullptr);
        decision.power = energyOf(frame_) / filled_;
        filled_ = 0;
        return decision;
    }

    Vsp32s option_, filled_ = 0;  // samples of the frame
    Vsp16s frame_[kFrame];
    OpenLoop openLoop_;
    union {
        Option1 option1_;
        Option2 option2_;
    };
};

static SpeechDetector& own(VspvSpeechDetector* detector) { return *reinterpret_cast<SpeechDetector*>(detector); }

}  // namespace vspv

using namespace vspv;

VspStatus vspvSpeechDetectorGetSize(Vsp32s option, Vsp32s* pSize) {
    if (pSize == nullptr) return vspStsNullPtrErr;
    if (option != 1 && option != 2) return vspStsBadArgErr;
    *pSize = (Vsp32s(sizeof(SpeechDetector)) + OpenLoop::stateBytes() + 7) & ~7;
    return vspStsNoErr;
}

VspStatus vspvSpeechDetectorInit(VspvSpeechDetector* pDetector, Vsp32s option) {
    if (pDetector == nullptr) return vspStsNullPtrErr;
    if (option != 1 && option != 2) return vspStsBadArgErr;
    new (pDetector) SpeechDetector(option);
    return vspStsNoErr;
}

VspStatus vspvSpeechDetectorProcess(VspvSpeechDetector* pDetector, const Vsp16s* pSrc, Vsp32s len,
                                    VspvSpeechDecision* pDecisions, Vsp32s* pCount) {
    if (pDetector == nullptr || pSrc == nullptr || pDecisions == nullptr || pCount == nullptr) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    *pCount = own(pDetector).process(pSrc, len, pDecisions);
    return vspStsNoErr;
}

VspStatus vspvSpeechDetectorFinish(VspvSpeechDetector* pDetector, VspvSpeechDecision* pDecision, Vsp32s* pCount) {
    if (pDetector == nullptr || pDecision == nullptr || pCount == nullptr) return vspStsNullPtrErr;
    *pCount = own(pDetector).finish(pDecision);
    return vspStsNoErr;
}
