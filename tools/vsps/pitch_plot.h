// The picture of a run of vsps pitch.
#pragma once

#include "audio.h"
#include "gnuplot.h"
#include "pitch_track.h"

// The waveform with the F0 contour over it, a panel for every channel. Returns the bytes of the picture.
std::string drawPitch(const Gnuplot& gnuplot, const std::string& title, const std::vector<Samples>& channels,
                      const std::vector<PitchTrack>& tracks);
