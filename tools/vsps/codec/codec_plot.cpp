#include "codec/codec_plot.h"

#include <sstream>

void FidelityCurves::Distance::operator+=(const Distance& next) {
    sum += next.sum;
    active += next.active;
}

void FidelityCurves::add(const FidelityStep& step) {
    original_.add(step.original);
    heard_.add(step.heard);
    distances_.add({step.active ? step.distance : 0, step.active ? 1.0 : 0.0});
}

std::string FidelityCurves::distances(double stepSeconds) const {
    std::ostringstream data;
    for (std::size_t i = 0; i < distances_.points().size(); i++) {
        const Distance& d = distances_.points()[i];
        if (d.active > 0)
            data << (double(i) + 0.5) * double(distances_.unitsPerPoint()) * stepSeconds << ' ' << d.sum / d.active;
        data << '\n';
    }
    return data.str();
}

std::string drawFidelity(const Gnuplot& gnuplot, const std::string& title, const FidelityCurves& curves, double stepSeconds,
                         int rate) {
    const double seconds = double(curves.original().steps()) * stepSeconds;
    const std::string gaps = curves.distances(stepSeconds);
    const bool any = gaps.find_first_not_of('\n') != std::string::npos;
    std::ostringstream commands;
    commands << kPlotStyle << "set lmargin at screen 0.07\nset rmargin at screen 0.87\n"
             << dataBlock("original", curves.original().data()) << dataBlock("heard", curves.heard().data())
             << dataBlock("distance", any ? gaps : "-2 0\n") << "set multiplot layout 3,1 title " << quoted(title)
             << " noenhanced\nset xrange [0:" << seconds << "]\n"
             << spectrogramAxes(rate) << "set title 'original' left offset 2,-0.6\nplot "
             << curves.original().image("original", stepSeconds, rate) << "\nset title 'decoded' left offset 2,-0.6\nplot "
             << curves.heard().image("heard", stepSeconds, rate)
             << "\nunset title\nset xlabel 'time, s'\nset ylabel 'distance, dB'\nset yrange [0:*]\n"
             << "plot 0 with lines lc rgb '#dddddd' notitle, $distance using 1:2 with lines lw 1.4 lc rgb '#0b62a4' title "
                "'log-spectral distance'\nunset multiplot\n";
    return gnuplot.draw(commands.str(), 1400, 1000);
}
