// Modems disable echo cancellers by 2100 Hz with phase reversals, from either side. The canceller stays disabled as long as
// there is a signal in either direction (ITU-T G.168, clause 7).
//
// The detector, a recursion that takes longer than all other looks at a block, listens only where some of every second
// block is at 2100 Hz, and begins anew each time: what rings in it after a loud signal does not count as a tone in the
// silence after it.
#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>
#include <span>

#include "echo/memory.h"
#include "echo/samples.h"
#include "vspsc/ec.h"

namespace vspv {

class ToneDisabler {
  public:
    // Of blocks of so many samples.
    ToneDisabler(int rate, int block, Memory& memory)
        : rate_(rate), far_(rate, block, memory), near_(rate, block, memory) {}

    template <class Sample>
    void process(const Sample* far, const Sample* near, int count) {
        const auto block = [count](const Sample* x) { return std::span(x, static_cast<std::size_t>(count)); };
        const bool heardFar = far_.detect(block(far)), heardNear = near_.detect(block(near));
        if (heardFar || heardNear) {
            disabled_ = true;
            silence_ = 0;
        }
        if (!disabled_) return;
        silence_ = meanSquare(block(far)) < kRelease && meanSquare(block(near)) < kRelease ? silence_ + count : 0;
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

    static constexpr float kSilence = 32768.0f * 32768.0f * 1e-6f;  // -60 dBov
    static constexpr float kLikely = 0.25f;  // share of a tone in the power of a block, of which it fills a part perhaps
    static constexpr double kPause = 0.03;   // s without a tone, longer than a reversal
    static constexpr double kTone = 2100;    // Hz

    // In fixed point for samples of either type: that is twice as fast.
    class Detector {
      public:
        // Of blocks of so many samples, a multiple of 4.
        Detector(int rate, int block, Memory& memory)
            : rate_(rate),
              cosine_(memory.take<float>(block)),
              sine_(memory.take<float>(block)),
              before_(memory.take<float>(2 * block)),
              samples_(memory.take<Vsp16s>(block)) {
            Vsp32s size = 0;
            vspsToneDetectGetStateSize_EC_16s(rate, &size);
            state_ = reinterpret_cast<VspToneDetectState_EC_16s*>(memory.take<Vsp8u>(size).data());
            if (memory.measures()) return;
            for (std::size_t n = 0; n < cosine_.size(); n++) {
                const double phase = 2 * std::numbers::pi * kTone / rate * static_cast<double>(n);
                cosine_[n] = static_cast<float>(std::cos(phase));
                sine_[n] = static_cast<float>(std::sin(phase));
            }
        }

        void reset() { listens_ = false; }

        template <class Sample>
        bool detect(std::span<const Sample> in) {
            looks_ = !looks_;
            if ((listens_ || looks_) && likely(in)) {
                pause_ = 0;
                if (!listens_) begin();
            } else if (listens_) {
                pause_ += static_cast<int>(in.size());
                listens_ = pause_ <= kPause * rate_;
            }
            const bool found = listens_ && finds(in);
            const std::span<float> older = before_.first(in.size()), newer = before_.last(in.size());
            std::copy(newer.begin(), newer.end(), older.begin());
            std::copy(in.begin(), in.end(), newer.begin());
            return found;
        }

      private:
        static Vsp16s inFixedPoint(Vsp16s x) { return x; }
        static Vsp16s inFixedPoint(float x) {
            return static_cast<Vsp16s>(static_cast<int>(std::clamp(x, -kFullScale, kHighest)));
        }

        template <class Sample>
        bool likely(std::span<const Sample> in) const {
            Four re{}, im{}, squares{};
            for (std::size_t n = 0; n < in.size(); n += 4) {
                const Four x = fourOf(&in[n]);
                re += x * fourOf(&cosine_[n]);
                im += x * fourOf(&sine_[n]);
                squares += x * x;
            }
            const auto count = static_cast<float>(in.size());
            const float energy = sumOf(squares), tone = 2 / count * (sumOf(re) * sumOf(re) + sumOf(im) * sumOf(im));
            return energy >= kSilence * count && tone > kLikely * energy;
        }

        // The tone may have begun in the block before, at which nobody looked, or in a part of the one before that.
        void begin() {
            listens_ = true;
            vspsToneDetectInit_EC_16s(state_, rate_);
            finds(std::span<const float>(before_.first(samples_.size())));
            finds(std::span<const float>(before_.last(samples_.size())));
        }
        template <class Sample>
        bool finds(std::span<const Sample> in) {
            std::transform(in.begin(), in.end(), samples_.begin(), [](Sample x) { return inFixedPoint(x); });
            Vsp32s found = 0;
            vspsToneDetect_EC_16s(samples_.data(), static_cast<Vsp32s>(samples_.size()), &found, state_);
            return found != 0;
        }

        int rate_, pause_ = 0;  // Hz, samples
        std::span<float> cosine_, sine_, before_;
        std::span<Vsp16s> samples_;
        VspToneDetectState_EC_16s* state_;
        bool listens_ = false, looks_ = false;  // looks: at every second block
    };

    int rate_;
    Detector far_, near_;
    int silence_ = 0;  // samples
    bool disabled_ = false;
};

}  // namespace vspv
