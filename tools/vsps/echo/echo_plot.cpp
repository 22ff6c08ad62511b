#include "echo/echo_plot.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "audio/active_level.h"

namespace {

constexpr std::size_t kPoints = 600;  // about as many as the picture can show
constexpr double kLowest = -90;       // dBov, for digital silence

double timeOf(const EchoTrace& trace, std::size_t point) {
    return double(point) * double(trace.unitsPerPoint()) * kEchoFrameSeconds;
}

double secondsOf(const EchoTrace& trace) { return double(trace.units()) * kEchoFrameSeconds; }

// Time and the mean levels of far end, near end and output, for stretches of the trace.
std::string levelData(const EchoTrace& trace) {
    const auto& points = trace.points();
    const std::size_t stretch = std::max<std::size_t>(1, points.size() / kPoints);
    const auto level = [](double power) { return std::max(kLowest, toDbov(power)); };
    std::ostringstream data;
    for (std::size_t i = 0; i < points.size(); i += stretch) {
        EchoPoint sum;
        for (std::size_t j = i; j < std::min(i + stretch, points.size()); j++) sum += points[j];
        data << timeOf(trace, i) + sum.frames / 2 * kEchoFrameSeconds << ' ' << level(sum.farPower / sum.frames) << ' '
             << level(sum.nearPower / sum.frames) << ' ' << level(sum.outPower / sum.frames) << '\n';
    }
    return data.str();
}

// Time and enhancement; an empty line leaves a gap where there is no echo alone.
std::string erleData(const EchoTrace& trace, std::optional<double> ErlePoint::*erle) {
    std::ostringstream data;
    for (const ErlePoint& point : erleOverTime(trace, std::max(0.2, secondsOf(trace) / kPoints)))
        if (point.*erle)
            data << point.seconds << ' ' << *(point.*erle) << '\n';
        else
            data << '\n';
    return data.str();
}

// Rectangles over the times of double talk.
std::string shading(const EchoTrace& trace) {
    const auto& points = trace.points();
    const auto isDoubleTalk = [&](std::size_t i) { return 2 * points[i].doubleTalk > points[i].frames; };
    std::ostringstream commands;
    for (std::size_t i = 0; i < points.size();) {
        std::size_t end = i;
        while (end < points.size() && isDoubleTalk(end)) end++;
        if (end > i)
            commands << "set object rectangle from " << timeOf(trace, i) << ", graph 0 to " << timeOf(trace, end)
                     << ", graph 1 fc rgb '#fae5d3' fs solid noborder behind\n";
        i = std::max(end, i + 1);
    }
    return commands.str();
}

}  // namespace

std::string drawEcho(const Gnuplot& gnuplot, const std::string& title, const EchoTrace& trace, bool suppresses) {
    const std::string erle = erleData(trace, &ErlePoint::erle);
    const bool anyErle = erle.find_first_not_of('\n') != std::string::npos;
    std::ostringstream commands;
    commands << kPlotStyle << "set xrange [0:" << secondsOf(trace) << "]\n"
             << dataBlock("levels", levelData(trace)) << dataBlock("erle", anyErle ? erle : "0 0\n")
             << dataBlock("output", anyErle ? erleData(trace, &ErlePoint::erleOfOutput) : "0 0\n")
             << "set multiplot layout 2,1 title " << quoted(title) << " noenhanced\n"
             << shading(trace) << "set ylabel 'level, dBov'\nset yrange [-80:0]\nset ytics 20\nset mytics 2\n"
             << "plot $levels using 1:2 with lines lw 1.2 lc rgb '#aab7c4' title 'far end', \\\n"
             << "  $levels using 1:3 with lines lw 1.6 lc rgb '#c0392b' title 'near end with echo', \\\n"
             << "  $levels using 1:4 with lines lw 1.6 lc rgb '#0b62a4' title 'output'\n"
             << "set xlabel 'time, s'\nset ylabel 'ERLE, dB'\nset yrange [-5:50]\nset ytics 10\nset mytics 2\n"
             << "plot 20 with lines lw 1 dt 2 lc rgb '#888888' notitle";
    if (anyErle && suppresses)
        commands << ", \\\n  $output using 1:2 with lines lw 1.2 lc rgb '#82c99d' title 'and suppressed'";
    if (anyErle)
        commands << ", \\\n  $erle using 1:2 with lines lw 1.8 lc rgb '#1e8449' title 'echo removed by the filters'";
    commands << ", \\\n  NaN with filledcurves lc rgb '#fae5d3' title 'double talk'\nunset multiplot\n";
    return gnuplot.draw(commands.str(), 1200, 700);
}
