// The lags that a closed-loop search looks at.
#pragma once

namespace vsp {

constexpr int kLargestLagMin = 216;  // the first lag of a range at most
constexpr int kLagsOfRange = 16;
// From these lags of an absolute range on there are halves only, and no fractions.
struct Resolution {
    int halves, whole;
};
constexpr Resolution kLowResolution = {34, 92}, kResolution = {128, 160};  // at 6.60 and 8.85 kbit/s; at the other rates

}  // namespace vsp
