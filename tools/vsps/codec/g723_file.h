// Streams of G.723.1: frames behind each other, each of which tells its length; a frame without data is an octet of its
// own.
#pragma once

#include "codec/coded_file.h"

std::unique_ptr<FrameReader> openG723(const std::string& file, const VspvCodec* codec, int bitRate);
std::unique_ptr<FrameWriter> createG723(const std::string& file, const VspvCodec* codec);
