// The waveform in a picture: its outline.
#pragma once

#include <span>
#include <string>

#include "audio/audio.h"
#include "audio/bounded_trace.h"

// Of a channel at 8000 Hz that comes block by block.
class WaveformOutline {
  public:
    void add(std::span<const std::int16_t> samples);

    // Time, smallest and largest sample for stretches of samples, relative to full scale.
    std::string data() const;
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
