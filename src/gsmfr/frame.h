// Dimensions of a frame of GSM full rate.
#pragma once

namespace vsp {

constexpr int kFrame = 160, kSubframe = 40, kPast = 120, kOrder = 8;
constexpr int kLagMin = 40, kLagMax = 120;
constexpr int kPulses = 13, kGrids = 4;

}  // namespace vsp
