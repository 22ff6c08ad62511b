#include "vad/vad_detector.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <stdexcept>

namespace {

void check(VspStatus status) {
    if (status != vspStsNoErr) throw std::logic_error("voice activity detection: status " + std::to_string(status));
}

double toDb(double ratio) { return 10 * std::log10(ratio); }

class Option1 : public VadDetector {
  public:
    bool detect(const Vsp16s* pastAndFrame, const OpenLoopResult& openLoop) override {
        constexpr Vsp16s kNewestFlag = 0x4000;
        state_.pitchFlags = static_cast<Vsp16s>(state_.pitchFlags >> 1 | (openLoop.steadyPitch ? kNewestFlag : 0));
        std::copy(std::begin(state_.bckrEst), std::end(state_.bckrEst), noise_);
        Vsp16s flag = 0;
        check(vspsVAD1_GSMAMR_16s(pastAndFrame, &state_, &flag, openLoop.bestCorrHp, openLoop.toneFlags));
        return flag != 0;
    }

    // The levels are amplitudes.
    double snr() const override {
        double sum = 0;
        for (std::size_t b = 0; b < kBands; b++) sum += std::pow(double(state_.oldLevel[b]) / noise_[b], 2);
        return toDb(sum / kBands);
    }

    double reference() const override {
        const double noise = std::accumulate(noise_, noise_ + kBands, 0.0) / 8;
        return toDb(std::max(720.0, 1260 - 2808 * noise / 32768) / 512);
    }

  private:
    static constexpr std::size_t kBands = 9;
    VspGSMAMRVad1State state_ = VSP_GSMAMR_VAD1_STATE_INIT;
    Vsp16s noise_[kBands] = {};  // the estimate that the frame was compared with
};

class Option2 : public VadDetector {
  public:
    bool detect(const Vsp16s* pastAndFrame, const OpenLoopResult& openLoop) override {
        Vsp16s flag = 0;
        check(vspsVAD2_GSMAMR_16s(pastAndFrame + kAmrLookAhead, &state_, &flag, openLoop.ltpFlag));
        return flag != 0;
    }

    // Of the second half of the frame.
    double snr() const override {
        const double scale = state_.shiftState == 1 ? 32 : 1;  // 4 instead of 9 fraction bits
        double sum = 0;
        for (std::size_t c = 0; c < kChannels; c++) sum += scale * state_.chEnrg[c] / state_.chNoise[c];
        return toDb(sum / kChannels);
    }

    double reference() const override { return state_.tsnr / 256.0; }

  private:
    static constexpr std::size_t kChannels = 16;
    VspGSMAMRVad2State state_ = VSP_GSMAMR_VAD2_STATE_INIT;
};

}  // namespace

std::unique_ptr<VadDetector> makeVadDetector(int option) {
    if (option == 1) return std::make_unique<Option1>();
    return std::make_unique<Option2>();
}
