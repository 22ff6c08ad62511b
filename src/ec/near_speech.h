// Whether somebody talks at the near end. A filter that cancels leaves little of the echo, so what is comparable to the
// echo is speech. Without such a filter only what cannot be an echo is, as it is louder than the far end.
#pragma once

#include "arithmetic/elementary.h"
#include "core/level.h"

namespace vsp::VSP_LEVEL {

VSP_INLINE Vsp32f larger(Vsp32f a, Vsp32f b) { return a > b ? a : b; }
VSP_INLINE Vsp32f smaller(Vsp32f a, Vsp32f b) { return a < b ? a : b; }

// What is left of a value after a frame when it falls off within `time` seconds.
VSP_INLINE Vsp32f decay(Vsp32f time, Vsp32f frameRate) { return exp10_32f(Vsp32f(-1 / (kLn10 * time * frameRate))); }

struct NearSpeech {
    Vsp32s startFrames, started;
    Vsp32f floorRise, echoFall, farFall;
    Vsp32f floor, echo, far;
};

// Powers of a frame.
struct HeardPowers {
    Vsp32f near, far, error, estimate;
    Vsp32f noise;      // of the error, smoothed
    Vsp32f predicted;  // of the error, as far as it is echo that has not been learned yet
};

VSP_INLINE void initNearSpeech(NearSpeech& s, Vsp32f frameRate) {
    constexpr Vsp32f kFloorTime = 5, kEchoTime = 0.1f, kFarTime = 0.5f, kStart = 0.2f;  // s
    s = {Vsp32s(kStart * frameRate),
         0,
         1 - decay(kFloorTime, frameRate),
         decay(kEchoTime, frameRate),
         decay(kFarTime, frameRate),
         0,
         0,
         0};
}

// cancelling: the filter has been seen to remove echo.
VSP_INLINE bool hearNearSpeech(NearSpeech& s, const HeardPowers& p, bool cancelling) {
    constexpr Vsp32f kAbove = 4, kComparable = 0.25f, kLouder = 4;
    if (p.near > 0 && s.started < s.startFrames) s.started++;
    if (s.started < s.startFrames) s.floor = p.noise;
    s.floor = p.noise < s.floor || s.floor == 0 ? p.noise : s.floor + s.floorRise * (p.noise - s.floor);
    s.echo = larger(p.estimate, s.echoFall * s.echo);
    s.far = larger(p.far, s.farFall * s.far);
    const Vsp32f explained = cancelling ? kComparable * s.echo : kLouder * s.far;
    return s.started >= s.startFrames &&
           (cancelling ? p.error : p.near) > larger(kAbove * (p.predicted + s.floor), explained);
}

}  // namespace vsp::VSP_LEVEL
