// The picture of a run of vsps level.
#pragma once

#include "level/level_report.h"
#include "plot/gnuplot.h"

// Levels and gain over time, two panels for every channel. Returns the bytes of the picture.
std::string drawLevels(const Gnuplot& gnuplot, const std::string& title, const std::vector<ChannelMeter>& channels,
                       const LevelSettings& settings);
