// Coded speech as bare octets, frame after frame.
#pragma once

#include "codec/coded_file.h"

std::unique_ptr<FrameReader> openOctets(const std::string& file, const VspvCodec* codec, int bitRate);
std::unique_ptr<FrameWriter> createOctets(const std::string& file, const VspvCodec* codec);
