#include "codec/codec_plot.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace {

using Point = FidelityCurves::Point;

constexpr double kDarkest = -100, kBrightest = -20;  // dB of overload
constexpr std::size_t kRows = 128;                   // of a spectrogram, at most

// A line for each row from 0 Hz on, a value in dB for each point.
std::string spectrogram(const BoundedTrace<Point>& trace, std::vector<float> Point::*side) {
    const std::vector<Point>& points = trace.points();
    const std::size_t bins = (points.front().*side).size() - 1, stretch = std::max<std::size_t>(1, bins / kRows);
    std::ostringstream data;
    data.precision(3);
    for (std::size_t k = 0; k < bins; k += stretch) {
        for (std::size_t i = 0; i < points.size(); i++) {
            const std::size_t steps = std::min(trace.unitsPerPoint(), trace.units() - i * trace.unitsPerPoint());
            double power = 0;
            for (std::size_t j = k; j < k + stretch; j++) power += double((points[i].*side)[j]);
            data << std::clamp(10 * std::log10(power / double(steps) + 1e-12), kDarkest, kBrightest) << ' ';
        }
        data << '\n';
    }
    return data.str();
}

// Time and mean distance; an empty line leaves a gap in pauses.
std::string distances(const BoundedTrace<Point>& trace, double stepSeconds) {
    std::ostringstream data;
    for (std::size_t i = 0; i < trace.points().size(); i++) {
        const Point& p = trace.points()[i];
        if (p.active > 0)
            data << (double(i) + 0.5) * double(trace.unitsPerPoint()) * stepSeconds << ' ' << p.distance / p.active;
        data << '\n';
    }
    return data.str();
}

}  // namespace

void FidelityCurves::Point::operator+=(const Point& next) {
    for (std::size_t k = 0; k < original.size(); k++) {
        original[k] += next.original[k];
        heard[k] += next.heard[k];
    }
    distance += next.distance;
    active += next.active;
}

void FidelityCurves::add(const FidelityStep& step) {
    points_.add({{step.original.begin(), step.original.end()},
                 {step.heard.begin(), step.heard.end()},
                 step.active ? step.distance : 0,
                 step.active ? 1.0 : 0.0});
}

std::string drawFidelity(const Gnuplot& gnuplot, const std::string& title, const FidelityCurves& curves, double stepSeconds,
                         int rate) {
    const BoundedTrace<Point>& trace = curves.points();
    const double seconds = double(trace.units()) * stepSeconds, column = double(trace.unitsPerPoint()) * stepSeconds;
    std::ostringstream commands;
    commands << kPlotStyle << "set lmargin at screen 0.07\nset rmargin at screen 0.9\n";
    const auto panel = [&](const char* name, const char* what, std::vector<float> Point::*side) {
        const std::size_t bins = (trace.points().front().*side).size() - 1, rows = std::min(bins, kRows);
        commands << "set title '" << what << "' left offset 2,-0.6\nplot $" << name << " matrix using (($1+0.5)*" << column
                 << "):(($2+0.5)*" << rate / 2000.0 / double(rows) << "):3 with image notitle\n";
    };
    const std::string gaps = distances(trace, stepSeconds);
    const bool any = gaps.find_first_not_of('\n') != std::string::npos;
    commands << dataBlock("original", spectrogram(trace, &Point::original))
             << dataBlock("heard", spectrogram(trace, &Point::heard)) << dataBlock("distance", any ? gaps : "-2 0\n")
             << "set multiplot layout 3,1 title " << quoted(title) << " noenhanced\nset xrange [0:" << seconds
             << "]\nset ylabel 'frequency, kHz'\nset yrange [0:" << rate / 2000.0 << "]\nset cbrange [" << kDarkest << ':'
             << kBrightest
             << "]\nset cblabel 'dBov in a band'\nset palette defined (0 '#0b1026', 1 '#4b2a8c', 2 '#c0392b', 3 "
                "'#f6c453', 4 '#fffbe6')\n";
    panel("original", "original", &Point::original);
    panel("heard", "decoded", &Point::heard);
    commands << "unset title\nset xlabel 'time, s'\nset ylabel 'distance, dB'\nset yrange [0:*]\n"
             << "plot 0 with lines lc rgb '#dddddd' notitle, $distance using 1:2 with lines lw 1.4 lc rgb '#0b62a4' title "
                "'log-spectral distance'\nunset multiplot\n";
    return gnuplot.draw(commands.str(), 1400, 1000);
}
