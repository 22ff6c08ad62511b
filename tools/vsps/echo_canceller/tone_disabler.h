// Modems disable echo cancellers by 2100 Hz with phase reversals, from either side. The canceller stays disabled as long as
// there is a signal in either direction (ITU-T G.168, clause 7).
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "echo_canceller/arithmetic.h"

class ToneDisabler {
  public:
    explicit ToneDisabler(int rate) : rate_(rate), far_(rate), near_(rate) {}

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
        far_.reset(rate_);
        near_.reset(rate_);
    }

    bool disabled() const { return disabled_; }

  private:
    // -36 dBm0; 0 dBm0 is 6.15 dB below the overload point.
    static constexpr double kRelease = 32768.0 * 32768.0 * 6.09e-5;
    static constexpr double kReleaseTime = 0.25;  // s

    // In fixed point for samples of either type: that is twice as fast.
    class Detector {
      public:
        explicit Detector(int rate) {
            Vsp32s size = 0;
            check(vspsToneDetectGetStateSize_EC_16s(rate, &size));
            state_.resize(static_cast<std::size_t>(size));
            reset(rate);
        }
        void reset(int rate) { check(vspsToneDetectInit_EC_16s(state(), rate)); }
        bool detect(const Vsp16s* in, int count) {
            Vsp32s found = 0;
            check(vspsToneDetect_EC_16s(in, count, &found, state()));
            return found != 0;
        }
        bool detect(const Vsp32f* in, int count) {
            samples_.resize(static_cast<std::size_t>(count));
            std::transform(in, in + count, samples_.begin(), [](float x) {
                return static_cast<Vsp16s>(static_cast<int>(std::clamp(x, -32768.0f, 32767.0f)));
            });
            return detect(samples_.data(), count);
        }

      private:
        VspToneDetectState_EC_16s* state() { return reinterpret_cast<VspToneDetectState_EC_16s*>(state_.data()); }
        std::vector<Vsp8u> state_;
        std::vector<Vsp16s> samples_;
    };

    template <class Sample>
    static double power(const Sample* x, int count) {
        double sum = 0;
        for (int i = 0; i < count; i++) sum += double(x[i]) * x[i];
        return sum / count;
    }

    int rate_;
    Detector far_, near_;
    int silence_ = 0;  // samples
    bool disabled_ = false;
};
