// What vsps pitch has to say about a run.
#pragma once

#include <string>

#include "console/json.h"
#include "pitch/pitch_track.h"

struct PitchReport {
    std::string inFile, csvFile, plotFile;  // the last two may be empty
    int inRate;                             // Hz
    std::size_t samples;                    // per channel
    std::string search;                     // as on the command line
    double searchSeconds;                   // that analysis and searches took
    std::vector<PitchTrack> channels;

    double seconds() const { return double(samples) / kRate; }
    double timesRealTime() const { return seconds() / searchSeconds; }
};

std::string toText(const PitchReport& report);
Json toJson(const PitchReport& report);
// A table with one line for each subframe.
std::string toCsv(const std::vector<PitchTrack>& channels);
