// Prototype windows of the canceller's filter bank.
#pragma once

#include <array>

namespace vspv {

// The shape of a filter bank: transforms of 2^order samples every `frame` samples, windows of `window` samples.
struct BankShape {
    int order;
    int frame;
    int window;  // a multiple of 2^order

    int transform() const { return 1 << order; }
    int bands() const { return transform() / 2 + 1; }
};

// The filter bank of the canceller: bands 31.25 Hz apart, 71 frames a second. Longer frames cost less, but more of the echo
// escapes by aliasing.
BankShape bankShape(int rate);

constexpr int kMaxWindow = 1536;
using Window = std::array<float, kMaxWindow>;  // of which the shape's are used

// For the far end: a sinc under a Kaiser window, wider than the near end's. Filters that work on a reference with empty
// band edges converge slowly there, just where neighbouring bands overlap (P. L. De Leon, D. M. Etter: Experimental results
// with increased bandwidth analysis filters in oversampled, subband acoustic echo cancelers, IEEE Signal Processing Letters
// 2, 1995).
Window farWindow(const BankShape& shape);

// Each in the order of the analysis; a synthesis applies its values to a frame backwards.
struct BankWindows {
    // A low-pass for the analysis of the near end, with next to nothing beyond half the frame rate. What is there aliases
    // into the band and stays in the output as echo that no filter within the band can remove.
    Window near;

    Window far;

    // For the synthesis: of all windows that, after an analysis with the near end's, give the signal back as it was but for
    // a delay of window - frame samples, the one with the least sum of squares, that is, the least gain of what is not a
    // signal that went through the analysis.
    Window synthesis;
};
BankWindows bankWindows(const BankShape& shape);

}  // namespace vspv
