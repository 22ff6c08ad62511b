// The table that vsps pitch writes while it searches.
#pragma once

#include <string>
#include <vector>

#include "console/output_file.h"
#include "pitch/pitch_track.h"

// One line for each subframe of each channel.
class PitchTable {
  public:
    explicit PitchTable(const std::string& file);

    // The next points of each channel, as many of each.
    void add(const std::vector<std::vector<VspvPitchPoint>>& points);
    void commit() { out_.commit(); }

  private:
    OutputFile out_;
    std::size_t points_ = 0;  // of each channel
};
