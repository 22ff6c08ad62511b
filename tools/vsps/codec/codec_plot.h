// The picture of a decoded signal beside its original.
#pragma once

#include <string>

#include "analysis/fidelity.h"
#include "audio/bounded_trace.h"
#include "plot/gnuplot.h"
#include "plot/spectrogram.h"

// What is drawn, gathered step by step.
class FidelityCurves {
  public:
    void add(const FidelityStep& step);

    const Spectrogram& original() const { return original_; }
    const Spectrogram& heard() const { return heard_; }
    // Time and mean distance; an empty line leaves a gap in pauses.
    std::string distances(double stepSeconds) const;

  private:
    struct Distance {
        double sum = 0, active = 0;  // over the active steps, and their number

        void operator+=(const Distance& next);
    };

    Spectrogram original_, heard_;
    BoundedTrace<Distance> distances_{800};
};

// Both spectrograms and the distance between them over time. Returns the bytes of the picture.
std::string drawFidelity(const Gnuplot& gnuplot, const std::string& title, const FidelityCurves& curves, double stepSeconds,
                         int rate);
