// The picture of a run of vsps pitch.
#pragma once

#include "audio/audio.h"
#include "pitch/pitch_track.h"
#include "plot/gnuplot.h"

// The waveform with the F0 contour over it, a panel for every channel. Returns the bytes of the picture.
std::string drawPitch(const Gnuplot& gnuplot, const std::string& title, const std::vector<Samples>& channels,
                      const std::vector<PitchTrack>& tracks);
