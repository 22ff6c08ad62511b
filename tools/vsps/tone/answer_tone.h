// Answer tones with phase reversals (2100 Hz, ITU-T V.25), with which modems and fax machines switch echo
// cancellers off.
#pragma once

#include <vector>

#include "audio/audio.h"

struct AnswerTone {
    double start, end;              // s, as far as 2100 Hz prevails
    double power;                   // mean square from start to end
    std::vector<double> reversals;  // s, when the detector reported a phase reversal: the second and later ones
};

// With the library's detector, in floating or in fixed point; the rate is 8000 or 16000 Hz.
std::vector<AnswerTone> findAnswerTones(const Samples& samples, int rate, bool fixedPoint);
