// A spectrogram in a picture.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "audio/bounded_trace.h"

// Of a signal whose spectra come step by step.
class Spectrogram {
  public:
    void add(std::span<const float> power);  // of each bin from 0 to half the sampling rate, 1 at overload

    // A line for each row from 0 Hz on, a value in dB for each column.
    std::string data() const;
    // What "plot" draws of the block of data with that name.
    std::string image(const std::string& name, double stepSeconds, int rate) const;
    std::size_t steps() const { return columns_.units(); }

  private:
    struct Column {
        std::vector<float> power;  // sums over the steps

        void operator+=(const Column& next);
    };
    std::size_t bins() const { return columns_.points().front().power.size() - 1; }

    BoundedTrace<Column> columns_{800};
};

// Commands for the axes and colours of spectrograms.
std::string spectrogramAxes(int rate);
