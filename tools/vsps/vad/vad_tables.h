// The files with lines that vsps vad writes while it listens.
#pragma once

#include <memory>
#include <vector>

#include "console/output_file.h"
#include "vad/vad_report.h"

// A table with a line for each frame of each channel, and the segments as a label track of the editor Audacity.
class VadTables {
  public:
    VadTables(const VadOutputs& outputs, int option, std::size_t channels);

    void addFrames(const std::vector<std::vector<VspvSpeechDecision>>& frames);  // as many of each channel
    void addSegments(const std::vector<ActivitySummary>& channels);  // those that have ended since the last call
    void commit();

  private:
    bool ratios_;  // the detector tells them
    std::unique_ptr<OutputFile> csv_, labels_;
    std::size_t frames_ = 0;             // in the table, of each channel
    std::vector<std::size_t> segments_;  // in the label track, by channel
};
