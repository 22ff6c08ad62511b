// The waveform in a picture: its outline.
#pragma once

#include <span>
#include <string>

#include "audio/audio.h"
#include "audio/bounded_trace.h"

// Of a channel that comes block by block.
class WaveformOutline {
  public:
    void add(std::span<const std::int16_t> samples);

    // Time, smallest and largest sample for stretches of samples, relative to full scale; the rate in Hz.
    std::string data(int rate = kRate) const;
    // Half the height of the axis: the peak and some room, in tenths.
    double height() const;

  private:
    struct Extremes {
        std::int16_t low, high;

        void operator+=(const Extremes& next);
    };
    BoundedTrace<Extremes> extremes_{4800};  // two for each pixel, or more
};

// What "plot" draws of the block of data with that name; colours of gnuplot.
std::string waveformCurves(const std::string& name, const char* fill, const char* outline);
