#pragma once

#include "core/level.h"
#include "gsmamr/modes.h"

namespace vsp::VSP_LEVEL {

// What the decoder knows of a frame and the one before, as the functions are given it.
struct FrameFlags {
    bool bad, prevBad, degraded, prevDegraded, inNoise;
    Vsp16s voicedHangover;

    [[gnu::always_inline]] explicit FrameFlags(const Vsp16s* flags)
        : bad(flags[0] != 0),
          prevBad(flags[1] != 0),
          degraded(flags[2] != 0),
          prevDegraded(flags[3] != 0),
          inNoise(flags[4] != 0),
          voicedHangover(flags[5]) {}

    [[gnu::always_inline]] bool badNow() const { return bad || prevBad; }
    [[gnu::always_inline]] bool doubtful() const { return (degraded && prevDegraded) || badNow(); }
};

VSP_INLINE bool isLowRate(Vsp32s mode) { return mode <= kMode590; }

}  // namespace vsp::VSP_LEVEL
