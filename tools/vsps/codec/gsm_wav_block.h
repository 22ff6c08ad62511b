// GSM full rate as in WAV files: two frames in a block of 65 octets, without signatures and with the lowest bits first.
#pragma once

#include <string>

constexpr std::size_t kGsmFrameOctets = 33, kGsmWavBlockOctets = 65;

std::string gsmWavBlock(const std::string& twoFrames);
std::string framesOfGsmWavBlock(const std::string& block);
