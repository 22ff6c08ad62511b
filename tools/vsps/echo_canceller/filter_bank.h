// One signal's filter bank: its state object of the library and the memory for it.
#pragma once

#include <cstddef>
#include <vector>

#include "echo_canceller/arithmetic.h"

template <class Arithmetic>
class FilterBank {
  public:
    using Sample = typename Arithmetic::Sample;
    using Complex = typename Arithmetic::Complex;

    // The window in the order of the analysis; for a synthesis, which applies it backwards, back to front.
    FilterBank(const BankShape& shape, const std::vector<double>& window) {
        Vsp32s stateSize = 0, initSize = 0, workSize = 0;
        Arithmetic::bankSize(shape, &stateSize, &initSize, &workSize);
        state_.resize(static_cast<std::size_t>(stateSize));
        work_.resize(static_cast<std::size_t>(workSize));
        std::vector<Vsp8u> init(static_cast<std::size_t>(initSize));
        std::vector<typename Arithmetic::WindowValue> values;
        for (const double w : window) values.push_back(Arithmetic::windowValue(w));
        Arithmetic::initBank(state(), shape, values.data(), init.data());
    }
    FilterBank(const FilterBank&) = delete;  // the state points into itself
    FilterBank& operator=(const FilterBank&) = delete;

    void analyse(const Sample* in, Complex* out) { Arithmetic::analyse(in, out, state(), work_.data()); }
    void synthesise(const Complex* in, Sample* out) { Arithmetic::synthesise(in, out, state(), work_.data()); }

  private:
    typename Arithmetic::BankState* state() { return reinterpret_cast<typename Arithmetic::BankState*>(state_.data()); }

    std::vector<Vsp8u> state_, work_;
};
