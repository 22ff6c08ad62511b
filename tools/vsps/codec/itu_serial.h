// The serial format of the ITU's software for G.729 and G.722.1 (G.191): little-endian words, one for each bit. A frame
// begins with a word for synchronisation and the number of its bits.
#pragma once

#include "codec/coded_file.h"

// A file tells rates, silence and erased frames, but not the codec: without one it is taken to be g729.
std::unique_ptr<FrameReader> openItuSerial(const std::string& file, const VspvCodec* codec, int bitRate);
std::unique_ptr<FrameWriter> createItuSerial(const std::string& file, const VspvCodec* codec);
