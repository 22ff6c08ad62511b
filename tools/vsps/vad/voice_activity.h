// Where there is speech in a recording, as a GSM-AMR encoder detects it.
#pragma once

#include <vector>

#include "audio/audio.h"

struct ActivityFrame {  // 20 ms
    bool speech;
    double power;      // mean square
    double snr;        // dB, see VadDetector
    double reference;  // dB, see VadDetector
};

using ActivityTrack = std::vector<ActivityFrame>;

// One frame for every 160 samples begun; silence fills up the last.
ActivityTrack detectActivity(const Samples& samples, int option);

struct Segment {
    double start, end;  // s

    double seconds() const { return end - start; }
};

// The stretches of speech frames in a recording of so many seconds.
std::vector<Segment> speechSegments(const ActivityTrack& track, double seconds);
