// The codecs of the command line, and what follows from their records.
#pragma once

#include <string>
#include <vector>

#include "vspsvoice.h"

std::vector<std::string> codecNames();

// The rate that is asked for, which must be one of the codec's, or its first one for 0.
int chooseBitRate(const VspvCodec& codec, int asked);

std::size_t speechBytes(const VspvCodec& codec, int bitRate);  // octets of a frame

// Whether each sample has a fixed number of bits, so that a stream can end anywhere; otherwise it is whole frames.
bool codesSampleBySample(const VspvCodec& codec);
// Octets that code so many samples at the end of a stream, at most a frame, and samples that so many octets code.
std::size_t bytesOf(const VspvCodec& codec, std::size_t samples);
std::size_t samplesOf(const VspvCodec& codec, std::size_t bytes);
