// What the filters leave of the echo: found by the library's suppressor in the bands of the error, given back as a signal.
#pragma once

#include "echo/arithmetic.h"
#include "echo/filter_bank.h"

namespace vspv {

template <class Arithmetic>
class ResidualEcho {
    using Complex = typename Arithmetic::Complex;
    using Sample = typename Arithmetic::Sample;

  public:
    ResidualEcho(const BankShape& shape, const Window& synthesis, int rate, Memory& memory)
        : bank_(shape, synthesis, memory),
          residual_(memory.take<Complex>(shape.bands())),
          samples_(memory.take<Sample>(shape.frame)),
          signal_(memory.take<float>(shape.frame)) {
        Vsp32s size = 0;
        Arithmetic::suppressorSize(shape, rate, &size);
        state_ = reinterpret_cast<typename Arithmetic::SuppressorState*>(memory.take<Vsp8u>(size).data());
        if (!memory.measures()) Arithmetic::initSuppressor(state_, shape, rate);
    }

    // What to subtract from a frame besides the estimate, comfort noise included. active: as far as the canceller is known
    // to remove echo.
    std::span<float> find(const Complex* estimate, const Complex* error, const float* expected, bool doubleTalk,
                          bool active) {
        std::copy_n(error, residual_.size(), residual_.begin());
        Arithmetic::suppress(estimate, expected, doubleTalk, residual_.data(), state_);
        if (active)
            Arithmetic::subtract(error, residual_.data(), residual_.data(), static_cast<int>(residual_.size()));
        else
            std::fill(residual_.begin(), residual_.end(), Complex{});
        bank_.synthesise(residual_.data(), signal_.data(), samples_);
        return signal_;
    }

  private:
    FilterBank<Arithmetic> bank_;
    std::span<Complex> residual_;
    std::span<Sample> samples_;
    std::span<float> signal_;
    typename Arithmetic::SuppressorState* state_;
};

}  // namespace vspv
