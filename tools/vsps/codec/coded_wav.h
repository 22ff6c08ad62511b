// Coded speech in WAV files, as the format tag in the header says. libsndfile reads and writes such files, but decodes and
// codes them itself.
#pragma once

#include "codec/coded_file.h"

std::unique_ptr<FrameReader> openCodedWav(const std::string& file, const VspvCodec* codec, int bitRate);
std::unique_ptr<FrameWriter> createCodedWav(const std::string& file, const VspvCodec* codec);
