// What vsps pitch has to say about a run.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "console/json.h"
#include "pitch/pitch_track.h"

// What is reported of a channel, gathered point by point.
class PitchSummary {
  public:
    void add(const VspvPitchPoint& point);

    std::size_t frames() const { return points_ / 2; }
    std::size_t voicedFrames() const { return voicedFrames_; }  // with two voiced subframes
    double voicedShare() const { return double(voicedFrames_) / double(frames()); }
    // Hz: so many of the voiced subframes are not above it; NaN if there are none, as are the next.
    double f0(double part) const;
    double predictionGain() const;  // dB, mean of the voiced subframes

  private:
    std::size_t points_ = 0, voicedFrames_ = 0, voicedPoints_ = 0;
    bool lastVoiced_ = false;
    std::map<double, std::size_t> f0_;  // how often; there are some hundred values
    double gains_ = 0;
};

struct PitchReport {
    std::string inFile, csvFile, plotFile;  // the last two may be empty
    int inRate;                             // Hz
    double seconds;
    std::string search;     // as on the command line
    double elapsedSeconds;  // from the beginning of the command
    std::vector<PitchSummary> channels;

    double timesRealTime() const { return seconds / elapsedSeconds; }
};

std::string toText(const PitchReport& report);
Json toJson(const PitchReport& report);
