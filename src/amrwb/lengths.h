#pragma once

namespace vsp {

constexpr int kWideSubframe = 64;  // samples at 12.8 kHz
constexpr int kWideFrame = 256;    // four of them
constexpr int kHighSubframe = 80;  // at 16 kHz
constexpr int kIsfOrder = 16;

}  // namespace vsp
