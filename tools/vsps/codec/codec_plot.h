// The picture of a decoded signal beside its original.
#pragma once

#include <string>
#include <vector>

#include "analysis/fidelity.h"
#include "audio/bounded_trace.h"
#include "plot/gnuplot.h"

// What is drawn, gathered step by step.
class FidelityCurves {
  public:
    struct Point {
        std::vector<float> original, heard;  // power of each bin, sums over the steps
        double distance = 0, active = 0;     // sum over the active steps, and their number

        void operator+=(const Point& next);
    };

    void add(const FidelityStep& step);
    const BoundedTrace<Point>& points() const { return points_; }

  private:
    BoundedTrace<Point> points_{800};
};

// Both spectrograms and the distance between them over time. Returns the bytes of the picture.
std::string drawFidelity(const Gnuplot& gnuplot, const std::string& title, const FidelityCurves& curves, double stepSeconds,
                         int rate);
