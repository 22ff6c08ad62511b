// Test signals of ITU-T G.168: composite sources in the manner of P.501, tones, all at 8 kHz.
#pragma once

#include "audio/audio.h"

// Level of a power in dBm0: a full-scale sine has 3.14 dBm0.
constexpr double kDbm0OverDbov = 6.15;

constexpr double kSourceSeconds = 0.7;  // the period of the source

// A voiced sound of 48.62 ms, pseudo-noise of 200 ms, a pause of 101.38 ms, then the same with the other sign; again and
// again. The level is that of the sounds without the pause.
Samples compositeSource(double seconds, double dbm0);
// The part of its time that sounds.
double compositeActivity();

// For the near end: another voiced sound of 72.75 ms, noise of 200 ms that never repeats, a pause of 127.25 ms.
Samples doubleTalkSource(double seconds, double dbm0);

// One frequency or the sum of two of the same level.
Samples toneOf(double seconds, double dbm0, double hertz, double otherHertz = 0);
// Its phase is reversed again and again.
Samples reversingTone(double seconds, double dbm0, double hertz, double reversalSeconds);

Samples silence(double seconds);
