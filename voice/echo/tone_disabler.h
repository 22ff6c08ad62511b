// Modems disable echo cancellers by 2100 Hz with phase reversals, from either side. The canceller stays disabled as long as
// there is a signal in either direction (ITU-T G.168, clause 7).
#pragma once

#include <algorithm>
#include <span>

#include "echo/memory.h"
#include "echo/samples.h"
#include "vspsc/ec.h"

namespace vspv {

class ToneDisabler {
  public:
    // Of blocks of up to so many samples.
    ToneDisabler(int rate, int block, Memory& memory)
        : rate_(rate), far_(rate, block, memory), near_(rate, block, memory) {}

    template <class Sample>
    void process(const Sample* far, const Sample* near, int count) {
        const bool heardFar = far_.detect(far, count), heardNear = near_.detect(near, count);
        if (heardFar || heardNear) {
            disabled_ = true;
            silence_ = 0;
        }
        if (!disabled_) return;
        silence_ = power(far, count) < kRelease && power(near, count) < kRelease ? silence_ + count : 0;
        if (silence_ < kReleaseTime * rate_) return;
        disabled_ = false;
        far_.reset();
        near_.reset();
    }

    bool disabled() const { return disabled_; }

  private:
    // -36 dBm0; 0 dBm0 is 6.15 dB below the overload point.
    static constexpr double kRelease = 32768.0 * 32768.0 * 6.09e-5;
    static constexpr double kReleaseTime = 0.25;  // s

    static constexpr double kSilence = 32768.0 * 32768.0 * 1e-6;  // -60 dBov
    static constexpr double kGap = 0.02;                          // s of silence, after which a tone is another one

    // In fixed point for samples of either type: that is twice as fast. What rings in the detector after a loud signal
    // would count as a tone in the silence after it, so it begins anew there.
    class Detector {
      public:
        Detector(int rate, int block, Memory& memory) : rate_(rate), samples_(memory.take<Vsp16s>(block).data()) {
            Vsp32s size = 0;
            vspsToneDetectGetStateSize_EC_16s(rate, &size);
            state_ = reinterpret_cast<VspToneDetectState_EC_16s*>(memory.take<Vsp8u>(size).data());
            if (!memory.measures()) reset();
        }
        void reset() { vspsToneDetectInit_EC_16s(state_, rate_); }
        bool detect(const Vsp16s* in, int count) {
            silence_ = power(in, count) < kSilence ? silence_ + count : 0;
            if (silence_ > kGap * rate_) {
                silence_ = 0;
                reset();
                return false;
            }
            Vsp32s found = 0;
            vspsToneDetect_EC_16s(in, count, &found, state_);
            return found != 0;
        }
        bool detect(const Vsp32f* in, int count) {
            std::transform(in, in + count, samples_, [](float x) {
                return static_cast<Vsp16s>(static_cast<int>(std::clamp(x, -kFullScale, kHighest)));
            });
            return detect(samples_, count);
        }

      private:
        int rate_, silence_ = 0;  // Hz, samples
        VspToneDetectState_EC_16s* state_;
        Vsp16s* samples_;
    };

    // The mean square of a block.
    template <class Sample>
    static float power(const Sample* x, int count) {
        return meanSquare(std::span(x, static_cast<std::size_t>(count)));
    }

    int rate_;
    Detector far_, near_;
    int silence_ = 0;  // samples
    bool disabled_ = false;
};

}  // namespace vspv
