// How far a decoded signal is from the original, in steps of 16 ms.
#pragma once

#include <cmath>
#include <cstdint>
#include <span>

#include "analysis/power_spectrum.h"

struct FidelityStep {
    bool active;                             // the original is above -50 dBov
    double snr;                              // dB, within -10 and 35
    double distance;                         // dB, between the spectra of the last 32 ms
    std::span<const float> original, heard;  // these spectra, valid until the next step
};

// Of signals at 8, 16 or 32 kHz that are aligned in time.
class FidelityMeter {
  public:
    explicit FidelityMeter(int rate);

    std::size_t step() const { return original_.step(); }  // samples
    double stepSeconds() const { return double(step()) / rate_; }

    // step() samples of each.
    FidelityStep process(std::span<const std::int16_t> original, std::span<const std::int16_t> heard);

    // Means over the active steps, dB; NaN if there is none.
    double segmentalSnr() const { return snr_ / double(active_); }
    double spectralDistance() const { return distance_ / double(active_); }
    std::size_t steps() const { return steps_; }

  private:
    int rate_;
    PowerSpectrum original_, heard_;
    double snr_ = 0, distance_ = 0;
    std::size_t active_ = 0, steps_ = 0;
};

// How many samples the second signal is later than the first, up to 100 ms either way; 0 if there is nothing to tell by.
int delayBetween(std::span<const std::int16_t> original, std::span<const std::int16_t> heard, int rate);
