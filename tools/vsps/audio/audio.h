// Sampled sound as the commands process it.
#pragma once

#include <cstdint>
#include <vector>

constexpr int kRate = 8000;  // Hz, the rate of telephone speech and, unless it says otherwise, of what vsps processes

using Samples = std::vector<std::int16_t>;

// A stretch of a recording: the samples of each channel, all of one length.
using Block = std::vector<Samples>;

// What a command reads and writes at a time: a whole number of the frames of every standard, 200 ms at kRate.
constexpr std::size_t kBlockLength = 1600;
