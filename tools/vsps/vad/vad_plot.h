// The picture of a run of vsps vad.
#pragma once

#include "plot/gnuplot.h"
#include "vad/vad_report.h"

constexpr std::size_t kPlottedChannels = 8;  // more do not fit a picture

// For every channel the waveform with the speech shaded, and below it the detector's signal-to-noise ratio. Returns the
// bytes of the picture.
std::string drawActivity(const Gnuplot& gnuplot, const VadReport& report, const std::vector<Samples>& channels);
