// The sub-band filters' step-size controller: its state object of the library, and what it tells about a frame.
#pragma once

#include "echo/arithmetic.h"
#include "echo/delay_line.h"

namespace vspv {

template <class Arithmetic>
class SubbandController {
    using Complex = typename Arithmetic::Complex;
    using State = typename Arithmetic::SubbandControllerState;

  public:
    SubbandController(const BankShape& shape, int taps, int rate, Memory& memory)
        : taps_(taps),
          bands_(shape.bands()),
          groups_((taps + kGroup - 1) / kGroup),
          steps_(groups_, bands_, memory),
          adapt_(memory.take<Vsp32s>(groups_)),
          residual_(memory.take<float>(bands_)) {
        Vsp32s size = 0;
        Arithmetic::controllerSize(shape, taps, rate, &size);
        state_ = reinterpret_cast<State*>(memory.take<Vsp8u>(size).data());
        if (!memory.measures()) Arithmetic::initController(state_, shape, taps, rate);
    }

    // Adapts the filters by what they left of a frame.
    void adapt(const Complex* const* far, const Complex* error, const Complex* estimate, Complex* const* coefficients,
               bool cancelling) {
        Arithmetic::control(far, error, estimate, coefficients, cancelling, steps_.at(0), adapt_.data(), residual_.data(),
                            &learning_, &doubleTalk_, state_);
        for (int g = 0; g < groups_; g++) {
            const int first = g * kGroup;
            if (adapt_[static_cast<std::size_t>(g)] != 0)
                Arithmetic::adapt(steps_.at(g)[0], far + first, error, coefficients + first,
                                  std::min(kGroup, taps_ - first), bands_);
        }
    }

    // Tap t is now what tap t + shift was; nothing is known of those that were none.
    void shift(int shift) { Arithmetic::resetController(state_, shift); }
    // Nothing is known of the echo path any more.
    void reset() { Arithmetic::resetController(state_, taps_); }

    // The share of the error power that is still to be learned, 0 to 1: the step size over all bands.
    double learning() const { return learning_; }
    // The power of the error in each band as far as it is echo that has not been learned yet.
    const float* residual() const { return residual_.data(); }
    bool nearSpeech() const { return doubleTalk_ != 0; }

  private:
    static constexpr int kGroup = 4;  // taps that the library gives a step size in common

    int taps_, bands_, groups_;
    DelayLine<typename Arithmetic::Step> steps_;  // a row for each group
    std::span<Vsp32s> adapt_;
    std::span<float> residual_;
    State* state_;
    float learning_ = 0;
    Vsp32s doubleTalk_ = 0;
};

}  // namespace vspv
