// What vsps encode and vsps decode tell about a stream.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "console/json.h"
#include "vspsvoice.h"

struct ComparisonReport {
    std::string original;
    double seconds;
    int delay;                              // samples that the decoded signal is late
    double segmentalSnr, spectralDistance;  // dB, NaN if there is only silence
};

struct CodecReport {
    std::string inFile, outFile;
    const VspvCodec* codec;
    int bitRate = 0;
    std::uint64_t frames = 0, bytes = 0, samples = 0;
    std::optional<std::uint64_t> lost = {};  // of a decoder
    double elapsedSeconds = 0;
    std::optional<ComparisonReport> comparison = {};
    std::string plot = {};  // file, or empty

    double seconds() const { return double(samples) / codec->samplingRate; }
    double timesRealTime() const { return seconds() / elapsedSeconds; }
};

std::string toText(const CodecReport& r);
Json toJson(const CodecReport& r);
