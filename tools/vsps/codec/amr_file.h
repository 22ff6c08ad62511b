// Files of GSM-AMR and AMR-WB frames as phones write them (RFC 4867 5).
#pragma once

#include "codec/coded_file.h"

std::unique_ptr<FrameReader> openAmr(const std::string& file, const VspvCodec* codec, int bitRate);
std::unique_ptr<FrameReader> openAmrWb(const std::string& file, const VspvCodec* codec, int bitRate);
std::unique_ptr<FrameWriter> createAmr(const std::string& file, const VspvCodec* codec);
std::unique_ptr<FrameWriter> createAmrWb(const std::string& file, const VspvCodec* codec);
