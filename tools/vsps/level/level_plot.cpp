#include "level/level_plot.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <sstream>

#include "audio/active_level.h"

namespace {

constexpr std::size_t kPoints = 600;  // about as many as the picture can show
constexpr std::size_t kChannels = 8;  // more do not fit a picture
constexpr double kLowest = -90;       // dBov, for digital silence

// Time and the mean levels before and after, for stretches of the trace.
std::string levelData(const BoundedTrace<LevelPoint>& trace) {
    const auto& points = trace.points();
    const std::size_t stretch = std::max<std::size_t>(1, points.size() / kPoints);
    std::ostringstream data;
    for (std::size_t i = 0; i < points.size(); i += stretch) {
        LevelPoint sum;
        for (std::size_t j = i; j < std::min(i + stretch, points.size()); j++) sum += points[j];
        const double begin = double(i) * double(trace.unitsPerPoint()) * kFrameSeconds;
        data << begin + sum.samples / kRate / 2 << ' ' << std::max(kLowest, toDbov(sum.inPower())) << ' '
             << std::max(kLowest, toDbov(sum.outPower())) << '\n';
    }
    return data.str();
}

// Time and gain. It is plotted more finely than the levels, because its first rise takes a fraction of a second.
std::string gainData(const BoundedTrace<LevelPoint>& trace) {
    const auto& points = trace.points();
    const std::size_t step = std::max<std::size_t>(1, points.size() / (4 * kPoints));
    std::ostringstream data;
    for (std::size_t i = 0; i < points.size(); i += step)
        data << double(i) * double(trace.unitsPerPoint()) * kFrameSeconds << ' ' << 20 * std::log10(points[i].gain) << '\n';
    return data.str();
}

std::string levelPanel(const std::string& data, double target) {
    std::ostringstream panel;
    panel << "set ylabel 'level, dBov'\nset yrange [-80:0]\nset ytics 20\nset mytics 2\n"
          << "plot $" << data << " using 1:2 with filledcurves y=" << kLowest << " lc rgb '#c9d3dc' title 'input', \\\n"
          << "  $" << data << " using 1:3 with lines lw 1.6 lc rgb '#0b62a4' title 'output', \\\n"
          << "  " << -target << " with lines lw 1.2 dt 2 lc rgb '#c0392b' title 'target'\n";
    return panel.str();
}

std::string gainPanel(const std::string& data, double maxGain) {
    std::ostringstream panel;
    panel << "set ylabel 'gain, dB'\nset yrange [-35:" << std::max(10.0, 5 * std::ceil((maxGain + 2) / 5))
          << "]\nset ytics 10\nset mytics 2\n"
          << "plot 0 with lines lw 1 lc rgb '#888888' notitle, \\\n"
          << "  " << maxGain << " with lines lw 1.2 dt 2 lc rgb '#c0392b' title 'maximum', \\\n"
          << "  $" << data << " using 1:2 with lines lw 1.8 lc rgb '#1e8449' title 'gain'\n";
    return panel.str();
}

}  // namespace

std::string drawLevels(const Gnuplot& gnuplot, const std::string& title, const std::vector<ChannelMeter>& channels,
                       const LevelSettings& settings) {
    const std::size_t count = std::min(channels.size(), kChannels);
    if (count < channels.size()) std::cerr << "vsps: the plot shows the first " << kChannels << " channels\n";
    std::ostringstream commands;
    commands << kPlotStyle << "set xrange [0:" << kFrameSeconds * double(channels.front().trace().trace().units()) << "]\n";
    for (std::size_t i = 0; i < count; i++)
        commands << dataBlock("levels" + std::to_string(i), levelData(channels[i].trace().trace()))
                 << dataBlock("gains" + std::to_string(i), gainData(channels[i].trace().trace()));
    commands << "set multiplot layout " << 2 * count << ",1 title " << quoted(title) << " noenhanced\n";
    for (std::size_t i = 0; i < count; i++) {
        if (channels.size() > 1) commands << "set title 'channel " << i + 1 << "' left offset 2,0\n";
        commands << "unset xlabel\n" << levelPanel("levels" + std::to_string(i), settings.target);
        commands << "unset title\nset xlabel 'time, s'\n" << gainPanel("gains" + std::to_string(i), settings.maxGain);
    }
    commands << "unset multiplot\n";
    return gnuplot.draw(commands.str(), 1200, 60 + 640 * static_cast<int>(count));
}
