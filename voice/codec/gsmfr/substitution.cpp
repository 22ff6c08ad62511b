#include "codec/gsmfr/substitution.h"

namespace vspv::gsmfr {

static constexpr Vsp16s kMuting = 4;  // of the logarithmic maximum of a sub-frame, per frame

static constexpr SubFrame kQuiet = {40, 0, 1, 0, {3, 4, 3, 4, 4, 3, 3, 3, 3, 4, 4, 3, 3}};
static constexpr Frame kSilence = {{42, 39, 21, 10, 9, 4, 3, 2}, {kQuiet, kQuiet, kQuiet, kQuiet}};

void Substitution::reset() {
    good(kSilence);
    random_ = 1;
}

void Substitution::good(const Frame& frame) {
    last_ = frame;
    lost_ = false;
}

const Frame& Substitution::lost() {
    if (!lost_) {
        lost_ = true;
        return last_;
    }
    bool silent = true;
    for (SubFrame& s : last_.subFrames) {
        s.max = s.max > kMuting ? Vsp16s(s.max - kMuting) : Vsp16s(0);
        random_ = random_ * 1664525u + 1013904223u;
        s.grid = Vsp16s(random_ >> 30);
        silent = silent && s.max == 0;
    }
    if (silent) last_ = kSilence;
    return last_;
}

}  // namespace vspv::gsmfr
