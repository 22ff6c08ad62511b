// What vsps vad has to say about a recording.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "console/json.h"
#include "vad/voice_activity.h"

struct Segment {
    double start, end;  // s

    double seconds() const { return end - start; }
};

// What is reported of a channel, gathered frame by frame.
class ActivitySummary {
  public:
    void add(const VspvSpeechDecision& frame);
    // At the end of a channel of so many seconds.
    void finish(double seconds);

    std::size_t frames() const { return speech_.frames + other_.frames; }
    const std::vector<Segment>& segments() const { return segments_; }  // the stretches of speech that have ended
    double speechSeconds() const;
    double speechLevel() const { return speech_.level(); }  // dBov, NaN if there is no such frame
    double otherLevel() const { return other_.level(); }

  private:
    struct Mean {
        double power = 0;
        std::size_t frames = 0;

        double level() const;
    };

    Mean speech_, other_;
    std::optional<double> start_;  // of speech that has not ended
    std::vector<Segment> segments_;
};

struct VadOutputs {  // names of files; empty where there is none
    std::string csv, labels, plot;
};

struct VadReport {
    std::string inFile;
    VadOutputs outputs;
    int inRate;  // Hz
    double seconds;
    int option;
    std::vector<ActivitySummary> channels;
};

std::string toText(const VadReport& report);
Json toJson(const VadReport& report);
