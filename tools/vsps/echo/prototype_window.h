// Prototype windows of the canceller's filter bank.
#pragma once

#include <vector>

// The shape of a filter bank: transforms of 2^order samples every `frame` samples, windows of `window` samples.
struct BankShape {
    int order;
    int frame;
    int window;  // a multiple of 2^order

    int transform() const { return 1 << order; }
    int bands() const { return transform() / 2 + 1; }
};

// For the analysis: a low-pass with little beyond half the frame rate, which would alias into the bands and stay in the
// output as echo that no filter within the bands can remove. A sinc under a Kaiser window.
std::vector<double> analysisWindow(const BankShape& shape);

// For the synthesis: the shortest vector (least gain of rounding noise) among the windows with which analysis and synthesis
// together are a pure delay of window - frame samples. Its values are in the order in which the synthesis adds them.
std::vector<double> synthesisWindow(const BankShape& shape, const std::vector<double>& analysis);
