// The waveform in a picture: its outline.
#pragma once

#include <string>

#include "audio/audio.h"

// Time, smallest and largest sample for stretches of samples, relative to full scale.
std::string waveformData(const Samples& x);

// Half the height of its axis: the peak and some room, in tenths.
double waveformHeight(const Samples& x);

// What "plot" draws of the block of data with that name; colours of gnuplot.
std::string waveformCurves(const std::string& name, const char* fill, const char* outline);
