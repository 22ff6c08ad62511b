// The pure delay before an echo path: of networks, and of the buffers of sound devices.
#pragma once

#include <vector>

#include "echo_canceller/arithmetic.h"
#include "echo_canceller/delay_line.h"
#include "echo_canceller/filter_bank.h"

// Finds the delay with a long adaptive filter in a few bands, which is rough but enough to see where the echo path lies.
class BulkDelay {
  public:
    // Delays of up to maxFrames, for a canceller whose own filter covers so many frames more. `spacing` is the distance
    // between bands, Hz.
    BulkDelay(int maxFrames, int covered, double spacing, double frameRate);

    // All bands of the newest frame of both signals. True if the delay has changed. There is no search while the caller is
    // satisfied.
    template <class Complex>
    bool update(const Complex* far, const Complex* near, bool satisfied = false) {
        pick(far, far_.push());
        turn_ = (turn_ + 1) % kDecide;
        if (satisfied || turn_ % kAdapt != 0) return false;
        pick(near, error_.data());
        adapt();
        return turn_ == 0 && decide();
    }

    int frames() const { return delay_; }

  private:
    static constexpr int kBands = 16, kBandStep = 2, kAdapt = 2, kDecide = 8;

    template <class Complex>
    void pick(const Complex* all, Vsp32fc* some) const {
        for (int i = 0; i < kBands; i++) {
            const Complex z = all[firstBand_ + i * kBandStep];
            some[i] = {static_cast<float>(z.re), static_cast<float>(z.im)};
        }
    }
    void adapt();
    bool decide();

    int maxFrames_, covered_, firstBand_, length_, hold_;
    double noiseShare_;
    DelayLine<Vsp32fc> far_, response_;
    std::vector<Vsp32fc> estimate_, error_;
    std::vector<double> farPower_, errorPower_, steps_;
    std::vector<double> energy_;  // of the response at each delay
    int delay_ = 0, candidate_ = 0, held_ = 0, turn_ = 0;
};

// The same for signals that are not in bands.
class SignalBulkDelay {
  public:
    SignalBulkDelay(const BankShape& shape, int maxFrames, int covered, int rate);

    // A sample of each. True if the delay has changed.
    bool update(float far, float near);
    int samples() const { return delay_.frames() * shape_.frame; }

  private:
    BankShape shape_;
    FilterBank<FloatArithmetic> farBank_, nearBank_;
    std::vector<float> farIn_, nearIn_;
    std::vector<Vsp32fc> far_, near_;
    BulkDelay delay_;
    std::size_t filled_ = 0;
};
