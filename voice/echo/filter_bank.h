// One signal's filter bank: its state object of the library and the memory for it.
#pragma once

#include "echo/arithmetic.h"
#include "echo/memory.h"

namespace vspv {

template <class Arithmetic>
class FilterBank {
  public:
    using Sample = typename Arithmetic::Sample;
    using Complex = typename Arithmetic::Complex;

    // w: may be anything while the memory only measures.
    FilterBank(const BankShape& shape, const Window& w, Memory& memory) {
        Vsp32s stateSize = 0, initSize = 0, workSize = 0;
        Arithmetic::bankSize(shape, &stateSize, &initSize, &workSize);
        state_ = memory.take<Vsp8u>(stateSize).data();
        work_ = memory.take<Vsp8u>(std::max(initSize, workSize)).data();
        if (memory.measures()) return;
        typename Arithmetic::WindowValue values[kMaxWindow];
        std::transform(w.begin(), w.begin() + shape.window, values, Arithmetic::windowValue);
        Arithmetic::initBank(state(), shape, values, work_);
    }
    FilterBank(const FilterBank&) = delete;  // the state points into itself
    FilterBank& operator=(const FilterBank&) = delete;

    void analyse(const Sample* in, Complex* out) { Arithmetic::analyse(in, out, state(), work_); }
    // room: for a frame of samples.
    void synthesise(const Complex* in, float* out, std::span<Sample> room) {
        if constexpr (std::is_same_v<Sample, float>) {
            Arithmetic::synthesise(in, out, state(), work_);
        } else {
            Arithmetic::synthesise(in, room.data(), state(), work_);
            std::copy(room.begin(), room.end(), out);
        }
    }

  private:
    typename Arithmetic::BankState* state() { return reinterpret_cast<typename Arithmetic::BankState*>(state_); }

    Vsp8u *state_, *work_;
};

}  // namespace vspv
