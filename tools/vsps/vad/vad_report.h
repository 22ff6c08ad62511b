// What vsps vad has to say about a recording.
#pragma once

#include <string>

#include "console/json.h"
#include "vad/voice_activity.h"

struct VadOutputs {  // names of files; empty where there is none
    std::string csv, labels, plot;
};

struct VadReport {
    std::string inFile;
    VadOutputs outputs;
    int inRate;           // Hz
    std::size_t samples;  // per channel
    int option;
    std::vector<ActivityTrack> channels;

    double seconds() const { return double(samples) / kRate; }
    std::vector<Segment> segments(std::size_t channel) const { return speechSegments(channels[channel], seconds()); }
};

std::string toText(const VadReport& report);
Json toJson(const VadReport& report);
// A table with one line for each frame.
std::string toCsv(const VadReport& report);
// The segments as a label track of the editor Audacity.
std::string toLabels(const VadReport& report);
