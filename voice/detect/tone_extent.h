// Where 2100 Hz prevails.
#pragma once

#include "vspsc/types.h"

namespace vspv {

// A stretch, in blocks of 10 ms, across gaps of three of them, as at phase reversals.
struct ToneStretch {
    Vsp64s first, last;  // blocks; last: one behind
    Vsp64f energy;       // sum of squares from first to last
};

class ToneExtent {
  public:
    explicit ToneExtent(Vsp32s rate)
        : length_(rate / 100), twiceCosine_(rate == 8000 ? -0.15691819145568975 : 1.3576014910658836) {}

    Vsp64s blockLength() const { return length_; }

    // Takes a millisecond. Returns whether it ends a stretch.
    bool process(const Vsp16s* block, Vsp32s count, ToneStretch* ended) {
        for (Vsp32s i = 0; i < count; i++) {
            const Vsp64f x = block[i], next = x + twiceCosine_ * last_ - secondLast_;
            secondLast_ = last_;
            last_ = next;
            energy_ += x * x;
        }
        heard_ += count;
        return heard_ == length_ && endBlock(ended);
    }

    // There is a tone before the next block, whether it prevails or not.
    void claim() {
        if (!inTone_) begin(position_, 0);
        extend();
    }

    // At the end of the signal: the stretch that has not ended.
    bool finish(ToneStretch* ended) {
        if (!inTone_) return false;
        inTone_ = false;
        *ended = current_;
        return true;
    }

  private:
    void begin(Vsp64s first, Vsp64f energy) {
        inTone_ = true;
        current_ = {first, first, 0};
        gapEnergy_ = energy;
    }

    void extend() {
        current_.last = position_;
        current_.energy += gapEnergy_;
        gapEnergy_ = 0;
    }

    bool endBlock(ToneStretch* ended) {
        constexpr Vsp64s kLongestGap = 3;  // blocks
        const Vsp64f power = last_ * last_ + secondLast_ * secondLast_ - twiceCosine_ * last_ * secondLast_;
        const bool prevails = 2 * power > 0.5 * energy_ * length_;
        position_++;
        gapEnergy_ += energy_;
        if (prevails && !inTone_) begin(position_ - 1, energy_);
        if (prevails) extend();
        heard_ = 0;
        last_ = secondLast_ = energy_ = 0;
        return inTone_ && position_ - current_.last > kLongestGap && finish(ended);
    }

    Vsp32s length_, heard_ = 0;  // samples of a block, and those of the current one
    bool inTone_ = false;
    Vsp64f twiceCosine_, last_ = 0, secondLast_ = 0;  // Goertzel's recursion at 2100 Hz
    Vsp64f energy_ = 0, gapEnergy_ = 0;               // of the current block; behind the current stretch
    Vsp64s position_ = 0;                             // blocks
    ToneStretch current_{};
};

}  // namespace vspv
