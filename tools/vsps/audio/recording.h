// Whole recordings, where streaming does not pay.
#pragma once

#include <string>
#include <vector>

#include "audio/audio_reader.h"

struct Recording {
    int fileRate;  // Hz, before conversion
    int rate;      // Hz
    std::vector<Samples> channels;
    std::vector<std::string> notes;  // see AudioReader

    std::size_t length() const { return channels.front().size(); }
    double seconds() const { return static_cast<double>(length()) / rate; }
};

Recording readRecording(AudioReader in);
