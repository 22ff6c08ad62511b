// What vsps tone has to say about a recording.
#pragma once

#include <string>

#include "console/json.h"
#include "tone/answer_tone.h"

struct ToneReport {
    std::string inFile;
    int inRate, rate;  // Hz, of the file and of the detection
    double seconds;
    std::vector<std::vector<AnswerTone>> channels;
};

std::string toText(const ToneReport& report);
Json toJson(const ToneReport& report);
