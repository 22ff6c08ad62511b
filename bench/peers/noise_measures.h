// How far an enhanced signal is from the clean one. Signals at 8 kHz, on the scale of 16-bit samples, in step with each
// other.
#pragma once

#include "echo_scenario.h"

namespace noise {

using echo::kRate;
using echo::Signal;

// dB, mean over the frames of 32 ms with speech, each limited to -10 to 35 dB.
double segmentalSnr(const Signal& clean, const Signal& processed);

// dB, mean over frames of 32 ms of the root mean square over frequency, of spectra cut off 50 dB below the largest value.
double logSpectralDistance(const Signal& clean, const Signal& processed);

// Short-time objective intelligibility (Taal, Hendriks, Heusdens, Jensen 2011), at most 1.
double intelligibility(const Signal& clean, const Signal& processed);

// The mean square of the power in a band over the square of its mean: 2 for noise, more where single peaks stand out, which
// are heard as musical tones.
double peakiness(const Signal& noise);

}  // namespace noise
