// The pure delay before an echo path: of networks, and of the buffers of sound devices.
//
// A canceller's filter covers a stretch of the delays that are possible. What it leaves is searched for echo at all the
// other ones, with a long adaptive filter in a few bands: rough, but enough to see where the echo path lies. While the near
// end talks, or where there is no echo, that filter explains nothing of what is left, and the delay stays as it is.
#pragma once

#include <array>
#include <span>

#include "echo/arithmetic.h"
#include "echo/delay_line.h"
#include "echo/filter_bank.h"

namespace vspv {

class BulkDelay {
  public:
    struct Shape {
        int maxFrames;     // the longest delay
        int covered;       // the canceller's filter covers so many frames from the delay on
        double spacing;    // between bands, Hz
        double frameRate;  // Hz
    };
    BulkDelay(const Shape& shape, Memory& memory);

    // All bands of the newest frame of the far end and of what the canceller left. True if it is time to decide.
    template <class Complex>
    bool update(const Complex* far, const Complex* left) {
        Power& p = power_;
        Vsp32fc* x = far_.push();
        for (std::size_t k = 0; k < kBands; k++) {
            x[k] = value(far[band(static_cast<int>(k))]);
            p.far[k] += double(powerOf(x[k])) - double(powerOf(far_.at(length_)[0][k]));
        }
        turn_ = (turn_ + 1) % (kRest * kDecide);
        if (turn_ % kDecide == 0) useful_ *= usefulDecay_;
        if (resting() && turn_ % kRest != 0) return false;
        for (std::size_t k = 0; k < kBands; k++) left_[k] = value(left[band(static_cast<int>(k))]);
        adapt();
        return turn_ % (resting() ? kRest * kDecide : kDecide) == 0;
    }

    // coveredEnergy: of the canceller's filter in each frame that it covers, a mean over the bands. leftShare: of the power
    // of the near end that the canceller leaves. True if the delay has changed.
    bool decide(std::span<const float> coveredEnergy, float leftShare);

    int frames() const { return delay_; }
    // The canceller removes echo with the present delay, or did so lately.
    bool useful() const { return useful_ > kUseful; }

    static constexpr int bands() { return kBands; }
    int band(int i) const { return firstBand_ + i * kBandStep; }

  private:
    static constexpr int kBands = 16, kBandStep = 2;
    static constexpr int kDecide = 8;  // frames until a decision
    static constexpr int kRest = 4;    // how many times as seldom it works while it rests
    static constexpr float kUseful = 0.5f;

    template <class Complex>
    static Vsp32fc value(Complex z) {
        return {static_cast<float>(z.re), static_cast<float>(z.im)};
    }
    // What has been heard of the far end lately told nothing.
    bool resting() const { return nothingNew_ > restAfter_; }
    void adapt();
    void weigh(float learned, float left, float unexplained);
    void measureEnergies(std::span<const float> covered);
    float energy(int from, int to) const {
        return upTo_[static_cast<std::size_t>(to)] - upTo_[static_cast<std::size_t>(from)];
    }
    float inside(int delay) const { return energy(delay, delay + covered_); }
    int find() const;
    float evidence(int found) const;

    // Both parts of the filter, before and behind what the canceller covers: first tap and number of taps.
    template <class Work>
    void forBothParts(Work work) {
        const int behind = delay_ + covered_;
        if (delay_ > 0) work(0, delay_);
        if (behind < length_) work(behind, length_ - behind);
    }

    struct Power {
        std::array<double, kBands> far{};   // over the length of the filter
        std::array<float, kBands> noise{};  // what is not explained
    };

    int maxFrames_, covered_, firstBand_, length_;
    float enough_, noiseShare_, evidenceShare_, drift_, restAfter_, usefulDecay_;
    DelayLine<Vsp32fc> far_, response_;
    Power power_;
    std::array<float, kBands> uncertainty_;  // mean square of what is unknown of a coefficient
    std::array<Vsp32fc, kBands> left_{}, estimate_{};
    std::array<double, kBands> steps_{};
    std::span<float> upTo_;  // energy of the whole response, the canceller's and this one, before each delay
    float leftPower_ = 0, unexplained_ = 0, nothingNew_ = 0, useful_ = 0, evidence_ = 0;
    int delay_ = 0, candidate_ = 0, turn_ = 0;
};

// The same for signals that are not in bands.
class SignalBulkDelay {
  public:
    SignalBulkDelay(const BankShape& shape, int maxFrames, int covered, int rate, Memory& memory);

    // A sample of each. True if it is time to decide.
    bool update(float far, float left);
    bool decide(std::span<const float> coveredEnergy, float leftShare) { return delay_.decide(coveredEnergy, leftShare); }
    int samples() const { return delay_.frames() * shape_.frame; }
    bool useful() const { return delay_.useful(); }

  private:
    BankShape shape_;
    FilterBank<FloatArithmetic> farBank_, leftBank_;
    std::span<float> farIn_, leftIn_;
    std::span<Vsp32fc> far_, left_;
    BulkDelay delay_;
    std::size_t filled_ = 0;
};

}  // namespace vspv
